// What the TCP sockets of every host keep to.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/contracts.h"

namespace orvanto {
namespace {

using State = TcpSocket::State;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* kHost = "127.0.0.1";

// Different at every place, so that what is lost, doubled or exchanged shows.
std::string Pattern(std::size_t size) {
  std::string text(size, '\0');
  std::uint32_t state = 1;
  for (char& c : text) {
    state = state * 1664525 + 1013904223;
    c = static_cast<char>(state >> 24);
  }
  return text;
}

// The events of a socket, a letter for each.
struct Events {
  explicit Events(TcpSocket& socket) {
    socket.onConnected = [this] { seen += 'C'; };
    socket.onSendComplete = [this] { seen += 'S'; };
    socket.onClosed = [this] { seen += 'X'; };
    socket.onError = [this](int systemError) {
      seen += 'E';
      error = systemError;
    };
    socket.onDataArrival = [this, &socket] {
      const std::string chunk = socket.GetData();
      if (seen.empty() || seen.back() != 'D') seen += 'D';
      EXPECT_LE(chunk.size(), TcpSocket::kMostPerArrival);
      EXPECT_FALSE(chunk.empty());
      data += chunk;
    };
  }
  bool Ended() const { return seen.find_first_of("XE") != std::string::npos; }

  std::string seen;
  std::string data;
  int error = 0;
};

class SocketContract : public testing::Test {
 protected:
  std::unique_ptr<TcpSocket> NewSocket() const { return host->NewSocket(); }

  // Runs the loop until `reached`; false when that takes too long.
  bool Until(const std::function<bool()>& reached) const {
    const auto deadline = steady_clock::now() + std::chrono::seconds(20);
    while (!reached()) {
      if (steady_clock::now() > deadline) return false;
      loop->DoEvents();
      std::this_thread::yield();
    }
    return true;
  }
  // Handles what happens on this machine anyway within a moment.
  void Settle() const {
    const auto end = steady_clock::now() + milliseconds(40);
    while (steady_clock::now() < end) {
      loop->DoEvents();
      std::this_thread::sleep_for(milliseconds(1));
    }
  }
  // The server listens and takes its first client itself. Both ends are connected then.
  void ConnectEnds() const {
    client->Close();
    ASSERT_TRUE(server->Listen(0));
    server->onConnectionRequest = [this](TcpSocket::RequestId request) {
      server->Close();
      EXPECT_TRUE(server->Accept(request));
    };
    client->Connect(kHost, server->LocalPort());
    ASSERT_TRUE(Until([&] {
      return server->GetState() == State::Connected && client->GetState() == State::Connected;
    }));
  }

  const std::unique_ptr<EventLoop> loop = NewHostLoop();
  const std::unique_ptr<SocketHost> host = NewHostSockets(*loop);
  const std::unique_ptr<TcpSocket> server = NewSocket();
  const std::unique_ptr<TcpSocket> client = NewSocket();
  Events atServer{*server};
  Events atClient{*client};
};

TEST_F(SocketContract, TheListenerTakesTheClientOnItself) {
  EXPECT_EQ(server->GetState(), State::Closed);
  EXPECT_EQ(server->LocalPort(), 0);
  EXPECT_EQ(server->RemoteAddress(), "");
  ConnectEnds();
  EXPECT_EQ(atClient.seen, "C");
  EXPECT_EQ(server->RemoteAddress(), kHost);
  EXPECT_EQ(client->RemoteAddress(), kHost);
  EXPECT_NE(server->LocalAddress(), "");
  const std::uint16_t port = server->LocalPort();

  // Nobody listens any more.
  const auto second = NewSocket();
  Events refused(*second);
  second->Connect(kHost, port);
  EXPECT_EQ(second->GetState(), State::Connecting);
  EXPECT_EQ(refused.seen, "");
  ASSERT_TRUE(Until([&] { return refused.Ended(); }));
  EXPECT_EQ(refused.seen, "E");
  EXPECT_NE(refused.error, 0);
  EXPECT_EQ(second->GetState(), State::Closed);

  ASSERT_TRUE(second->Listen(0));
  EXPECT_EQ(second->GetState(), State::Listening);
  EXPECT_FALSE(server->Listen(second->LocalPort())) << "it is taken";
  EXPECT_EQ(server->GetState(), State::Closed);
  EXPECT_TRUE(server->Listen(port)) << "though the client has not closed his end";
}

TEST_F(SocketContract, AConnectThatCannotBeginFailsFromTheLoop) {
  client->Connect("no such host.invalid", 80);
  EXPECT_EQ(atClient.seen, "");
  ASSERT_TRUE(Until([&] { return atClient.Ended(); }));
  EXPECT_EQ(atClient.seen, "E");
  client->Connect("no such host.invalid", 80);
  client->Close();
  client->Send("lost");
  Settle();
  EXPECT_EQ(atClient.seen, "E");
}

TEST_F(SocketContract, WhatTheClientSentBeforeItWasTakenArrives) {
  const auto listener = NewSocket();
  ASSERT_TRUE(listener->Listen(0));
  client->onConnected = [&] {
    client->Send("early");
    client->Close();
  };
  listener->onConnectionRequest = [&](TcpSocket::RequestId request) {
    std::this_thread::sleep_for(milliseconds(20));
    // The events of the client come in here.
    EXPECT_TRUE(Until([&] { return client->GetState() == State::Closed; }));
    EXPECT_TRUE(server->Accept(request));
    EXPECT_FALSE(NewSocket()->Accept(request));
  };
  client->Connect(kHost, listener->LocalPort());
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_EQ(atServer.seen, "DX");
  EXPECT_EQ(atServer.data, "early");
  EXPECT_EQ(listener->GetState(), State::Listening);
  EXPECT_EQ(atClient.seen, "");
}

TEST_F(SocketContract, ARequestThatNobodyTakesIsTurnedAway) {
  ASSERT_TRUE(server->Listen(0));
  TcpSocket::RequestId last = 0;
  int requests = 0;
  server->onConnectionRequest = [&](TcpSocket::RequestId request) {
    last = request;
    if (++requests == 2) server->Close();
  };
  for (int i = 1; i <= 2; ++i) {
    atClient.seen.clear();
    client->Connect(kHost, server->LocalPort());
    ASSERT_TRUE(Until([&] { return atClient.Ended(); }));
    EXPECT_EQ(requests, i);
  }
  EXPECT_FALSE(NewSocket()->Accept(last));
}

TEST_F(SocketContract, MuchArrivesWholeAndThenTheEnd) {
  ConnectEnds();
  client->Send("up");
  server->Send("down");
  ASSERT_TRUE(Until([&] { return atServer.data == "up" && atClient.data == "down"; }));

  const std::string all = Pattern(9 << 20);
  const std::size_t piece = 3 << 20;
  ASSERT_LT(piece, TcpSocket::kMostUnsent);
  std::size_t sent = 0;
  client->onSendComplete = [&] {
    if (sent == all.size()) return client->Close();
    client->Send(std::string_view(all).substr(sent, piece));
    sent += piece;
  };
  atServer.data.clear();
  client->onSendComplete();
  EXPECT_TRUE(Until([&] { return atServer.Ended(); })) << sent;
  EXPECT_TRUE(atServer.data == all) << atServer.data.size();
  EXPECT_EQ(atServer.seen.back(), 'X');
  const std::string seen = atServer.seen;
  server->Send("to nobody");
  Settle();
  EXPECT_EQ(atServer.seen, seen);
  EXPECT_EQ(server->GetState(), State::Closed);
}

TEST_F(SocketContract, SendCompleteComesOnceForWhatIsSentTogether) {
  ConnectEnds();
  for (const char* text : {"one", "two", ""}) client->Send(text);
  EXPECT_EQ(atClient.seen, "C");
  ASSERT_TRUE(Until([&] { return atClient.seen == "CS"; }));
  client->Send("three");
  ASSERT_TRUE(Until([&] { return atClient.seen == "CSS"; }));
}

// The peer goes while data of both ways are under way.
TEST_F(SocketContract, WhatArrivedComesBeforeTheEndEvenWhenSendingFails) {
  ConnectEnds();
  const std::string text = Pattern(100 << 10);
  server->onDataArrival = [&, fetch = server->onDataArrival] {
    fetch();
    server->Send("answer");
  };
  client->Send(text);
  ASSERT_TRUE(Until([&] { return !atServer.data.empty(); }));
  client->Close();
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_TRUE(text.starts_with(atServer.data));
  EXPECT_EQ(atServer.seen.find_first_of("XE"), atServer.seen.size() - 1);
}

TEST_F(SocketContract, NothingComesAfterCloseThoughDataWait) {
  ConnectEnds();
  client->Send(Pattern(200 << 10));
  const auto fetch = server->onDataArrival;
  server->onDataArrival = [&] {
    fetch();
    server->Send("last words");
    server->Close();
  };
  ASSERT_TRUE(Until([&] { return server->GetState() == State::Closed; }));
  Settle();
  EXPECT_EQ(atServer.seen, "D");
  EXPECT_EQ(server->GetData(), "");

  // Nor does anything of the old connection reach the next one of the same object.
  atServer.seen.clear();
  atServer.data.clear();
  server->onDataArrival = fetch;
  ConnectEnds();
  client->Send("fresh");
  ASSERT_TRUE(Until([&] { return !atServer.data.empty(); }));
  Settle();
  EXPECT_EQ(atServer.seen, "D");
  EXPECT_EQ(atServer.data, "fresh");
}

TEST_F(SocketContract, WithoutGetDataReadingStopsAndTheRestIsThere) {
  ConnectEnds();
  const auto fetch = server->onDataArrival;
  int arrivals = 0;
  server->onDataArrival = [&] { ++arrivals; };
  const std::string text = Pattern(100 << 10);
  client->Send(text);
  ASSERT_TRUE(Until([&] { return arrivals > 0; }));
  Settle();
  client->Close();
  Settle();
  EXPECT_EQ(server->GetState(), State::Connected);
  server->onDataArrival = fetch;
  fetch();
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_TRUE(atServer.data == text) << atServer.data.size();
  EXPECT_EQ(atServer.seen, "DX");
}

TEST_F(SocketContract, ArrivalsInsideOneAnotherTakeLittleStack) {
  ConnectEnds();
  std::vector<std::uintptr_t> frames;
  server->onDataArrival = [&] {
    const std::string chunk = server->GetData();
    frames.push_back(reinterpret_cast<std::uintptr_t>(&chunk));
    if (frames.size() > 1) return;
    client->Send("in");
    EXPECT_TRUE(Until([&] { return frames.size() > 1; }));
  };
  client->Send("out");
  ASSERT_TRUE(Until([&] { return frames.size() > 1; }));
  EXPECT_LT(frames[0] - frames[1], TcpSocket::kMostPerArrival);
}

TEST_F(SocketContract, AHoldKeepsEverythingUntilItsEnd) {
  const auto second = NewSocket();
  const auto listener = NewSocket();
  int requests = 0;
  ConnectEnds();
  ASSERT_TRUE(listener->Listen(0));
  listener->onConnectionRequest = [&](TcpSocket::RequestId) { ++requests; };
  {
    const EventLoop::Hold hold(*loop);
    client->Send("held");
    second->Connect(kHost, listener->LocalPort());
    Settle();
    RunSystemLoop();
    client->Close();
    Settle();
    RunSystemLoop();
    EXPECT_EQ(atServer.seen, "");
    EXPECT_EQ(requests, 0);
  }
  ASSERT_TRUE(Until([&] { return atServer.Ended() && requests == 1; }));
  EXPECT_EQ(atServer.seen, "DX");
  EXPECT_EQ(atServer.data, "held");
  EXPECT_EQ(atClient.seen, "C");
}

TEST_F(SocketContract, APeerThatNeverReadsEndsTheConnection) {
  ConnectEnds();
  client->onDataArrival = [] {};
  const std::string piece = Pattern(64 << 10);
  // What the system buffers is its own affair; it ends somewhere.
  std::size_t pieces = 0;
  while (!atServer.Ended() && pieces < 4096) {
    server->Send(piece);
    ++pieces;
    loop->DoEvents();
  }
  EXPECT_LT(pieces, 4096U);
  EXPECT_EQ(atServer.seen.back(), 'E');
  EXPECT_NE(atServer.error, 0);
  EXPECT_EQ(server->GetState(), State::Closed);

  // The same at a single stroke, and not from inside Send.
  atServer.seen.clear();
  ConnectEnds();
  server->Send(Pattern(64 << 20));
  EXPECT_EQ(atServer.seen, "");
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_EQ(atServer.seen, "E");
}

TEST_F(SocketContract, ConnectionsLeaveNoHandleBehind) {
  const auto listener = NewSocket();
  ASSERT_TRUE(listener->Listen(0));
  listener->onConnectionRequest = [&](TcpSocket::RequestId request) {
    if (server->GetState() == State::Closed) server->Accept(request);
  };
  server->onDataArrival = [&] { server->Close(); };
  std::size_t before = 0;
  for (int i = 0; i <= 2000; ++i) {
    atServer.seen.clear();
    const auto peer = NewSocket();
    const Events atPeer(*peer);
    // One side closes or the other.
    peer->onConnected = [&] { i % 2 == 0 ? peer->Send("x") : peer->Close(); };
    peer->Connect(kHost, listener->LocalPort());
    ASSERT_TRUE(Until([&] { return atPeer.Ended() || atServer.Ended(); })) << i;
    if (i == 0) before = OpenHandles();
  }
  ASSERT_GT(before, 0U);
  EXPECT_EQ(OpenHandles(), before);
}

}  // namespace
}  // namespace orvanto
