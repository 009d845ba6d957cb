#include "tests/platform/socket_contract.h"

#include <chrono>
#include <string>
#include <thread>
#include <vector>

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

}  // namespace

bool SocketContract::Until(const std::function<bool()>& reached) const {
  const auto deadline = steady_clock::now() + std::chrono::seconds(20);
  while (!reached()) {
    if (steady_clock::now() > deadline) return false;
    loop_.DoEvents();
    std::this_thread::yield();
  }
  return true;
}

void SocketContract::Settle() const {
  const auto end = steady_clock::now() + milliseconds(40);
  while (steady_clock::now() < end) {
    loop_.DoEvents();
    std::this_thread::sleep_for(milliseconds(1));
  }
}

void SocketContract::ConnectEnds(TcpSocket& server, TcpSocket& client) const {
  ASSERT_TRUE(server.Listen(0));
  server.onConnectionRequest = [&server](TcpSocket::RequestId request) {
    server.Close();
    EXPECT_TRUE(server.Accept(request));
  };
  client.Connect(kHost, server.LocalPort());
  ASSERT_TRUE(Until([&] {
    return server.GetState() == State::Connected && client.GetState() == State::Connected;
  }));
}

namespace {

TEST_P(SocketContract, TheListenerTakesTheClientOnItself) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events events(*client);
  EXPECT_EQ(server->GetState(), State::Closed);
  EXPECT_EQ(server->LocalPort(), 0);
  EXPECT_EQ(server->RemoteAddress(), "");
  ConnectEnds(*server, *client);
  EXPECT_EQ(events.seen, "C");
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
}

TEST_P(SocketContract, APortThatIsTakenIsRefused) {
  const auto first = NewSocket();
  const auto second = NewSocket();
  ASSERT_TRUE(first->Listen(0));
  EXPECT_EQ(first->GetState(), State::Listening);
  EXPECT_NE(first->LocalPort(), 0);
  EXPECT_FALSE(second->Listen(first->LocalPort()));
  EXPECT_EQ(second->GetState(), State::Closed);
}

TEST_P(SocketContract, AConnectThatCannotBeginFailsFromTheLoop) {
  const auto client = NewSocket();
  Events events(*client);
  client->Connect("no such host.invalid", 80);
  EXPECT_EQ(events.seen, "");
  ASSERT_TRUE(Until([&] { return events.Ended(); }));
  EXPECT_EQ(events.seen, "E");
  client->Connect("no such host.invalid", 80);
  client->Close();
  client->Send("lost");
  Settle();
  EXPECT_EQ(events.seen, "E");
}

TEST_P(SocketContract, WhatTheClientSentBeforeItWasTakenArrives) {
  const auto listener = NewSocket();
  const auto server = NewSocket();
  const auto client = NewSocket();
  const auto other = NewSocket();
  Events atServer(*server);
  Events atClient(*client);
  Events atOther(*other);
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
    EXPECT_FALSE(other->Accept(request));
  };
  client->Connect(kHost, listener->LocalPort());
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_EQ(atServer.seen, "DX");
  EXPECT_EQ(atServer.data, "early");
  EXPECT_EQ(listener->GetState(), State::Listening);
  EXPECT_EQ(atClient.seen + atOther.seen, "");
}

TEST_P(SocketContract, ARequestThatNobodyTakesIsTurnedAway) {
  const auto listener = NewSocket();
  ASSERT_TRUE(listener->Listen(0));
  TcpSocket::RequestId last = 0;
  int requests = 0;
  listener->onConnectionRequest = [&](TcpSocket::RequestId request) {
    last = request;
    if (++requests == 2) listener->Close();
  };
  for (int i = 0; i < 2; ++i) {
    const auto client = NewSocket();
    Events events(*client);
    client->Connect(kHost, listener->LocalPort());
    ASSERT_TRUE(Until([&] { return events.Ended(); }));
    EXPECT_EQ(requests, i + 1);
  }
  EXPECT_FALSE(NewSocket()->Accept(last));
}

TEST_P(SocketContract, MuchArrivesWholeAndThenTheEnd) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events atServer(*server);
  Events atClient(*client);
  ConnectEnds(*server, *client);
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

TEST_P(SocketContract, SendCompleteComesOnceForWhatIsSentTogether) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events events(*client);
  ConnectEnds(*server, *client);
  client->Send("one");
  client->Send("two");
  client->Send("");
  EXPECT_EQ(events.seen, "C");
  ASSERT_TRUE(Until([&] { return events.seen == "CS"; }));
  client->Send("three");
  ASSERT_TRUE(Until([&] { return events.seen == "CSS"; }));
}

// The peer goes while data of both ways are under way.
TEST_P(SocketContract, WhatArrivedComesBeforeTheEndEvenWhenSendingFails) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events events(*server);
  ConnectEnds(*server, *client);
  const std::string text = Pattern(100 << 10);
  server->onDataArrival = [&, count = std::function(server->onDataArrival)] {
    count();
    server->Send("answer");
  };
  client->Send(text);
  ASSERT_TRUE(Until([&] { return !events.data.empty(); }));
  client->Close();
  ASSERT_TRUE(Until([&] { return events.Ended(); }));
  EXPECT_EQ(events.data.compare(0, events.data.size(), text, 0, events.data.size()), 0);
  EXPECT_EQ(events.seen.find_first_of("XE"), events.seen.size() - 1);
}

TEST_P(SocketContract, NothingComesAfterCloseThoughDataWait) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events events(*server);
  ConnectEnds(*server, *client);
  client->Send(Pattern(200 << 10));
  const auto count = server->onDataArrival;
  server->onDataArrival = [&] {
    count();
    server->Send("last words");
    server->Close();
  };
  ASSERT_TRUE(Until([&] { return server->GetState() == State::Closed; }));
  Settle();
  EXPECT_EQ(events.seen, "D");
  EXPECT_EQ(server->GetData(), "");

  // Nor does anything of the old connection reach the next one of the same object.
  events.seen.clear();
  events.data.clear();
  server->onDataArrival = count;
  const auto next = NewSocket();
  ConnectEnds(*server, *next);
  next->Send("fresh");
  ASSERT_TRUE(Until([&] { return !events.data.empty(); }));
  Settle();
  EXPECT_EQ(events.seen, "D");
  EXPECT_EQ(events.data, "fresh");
}

TEST_P(SocketContract, WithoutGetDataReadingStopsAndTheRestIsThere) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events events(*server);
  ConnectEnds(*server, *client);
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
  ASSERT_TRUE(Until([&] { return events.Ended(); }));
  EXPECT_TRUE(events.data == text) << events.data.size();
  EXPECT_EQ(events.seen, "DX");
}

TEST_P(SocketContract, AHoldKeepsEverythingUntilItsEnd) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  const auto second = NewSocket();
  const auto listener = NewSocket();
  Events atServer(*server);
  Events atClient(*client);
  int requests = 0;
  ConnectEnds(*server, *client);
  ASSERT_TRUE(listener->Listen(0));
  listener->onConnectionRequest = [&](TcpSocket::RequestId) { ++requests; };
  {
    const EventLoop::Hold hold(loop_);
    client->Send("held");
    second->Connect(kHost, listener->LocalPort());
    Settle();
    made_.systemLoop();
    client->Close();
    Settle();
    made_.systemLoop();
    EXPECT_EQ(atServer.seen, "");
    EXPECT_EQ(requests, 0);
  }
  ASSERT_TRUE(Until([&] { return atServer.Ended() && requests == 1; }));
  EXPECT_EQ(atServer.seen, "DX");
  EXPECT_EQ(atServer.data, "held");
  EXPECT_EQ(atClient.seen, "C");
}

TEST_P(SocketContract, APeerThatNeverReadsEndsTheConnection) {
  const auto server = NewSocket();
  const auto client = NewSocket();
  Events events(*server);
  ConnectEnds(*server, *client);
  client->onDataArrival = [] {};
  const std::string piece = Pattern(64 << 10);
  // What the system buffers is its own affair; it ends somewhere.
  std::size_t pieces = 0;
  while (!events.Ended() && pieces < 4096) {
    server->Send(piece);
    ++pieces;
    loop_.DoEvents();
  }
  EXPECT_LT(pieces, 4096U);
  EXPECT_EQ(events.seen.back(), 'E');
  EXPECT_NE(events.error, 0);
  EXPECT_EQ(server->GetState(), State::Closed);

  // The same at a single stroke, and not from inside Send.
  const auto again = NewSocket();
  events.seen.clear();
  ConnectEnds(*server, *again);
  again->onDataArrival = [] {};
  server->Send(Pattern(64 << 20));
  EXPECT_EQ(events.seen, "");
  ASSERT_TRUE(Until([&] { return events.Ended(); }));
  EXPECT_EQ(events.seen, "E");
}

TEST_P(SocketContract, ConnectionsLeaveNoHandleBehind) {
  const auto listener = NewSocket();
  ASSERT_TRUE(listener->Listen(0));
  const auto server = NewSocket();
  listener->onConnectionRequest = [&](TcpSocket::RequestId request) {
    if (server->GetState() == State::Closed) server->Accept(request);
  };
  const auto once = [&](int number) {
    const auto client = NewSocket();
    bool ended = false;
    client->onClosed = [&] { ended = true; };
    client->onError = [&](int) { ended = true; };
    server->onDataArrival = [&] {
      server->GetData();
      server->Close();
    };
    server->onClosed = [&] { ended = true; };
    client->onConnected = [&] {
      if (number % 2 == 0) return client->Send("x");
      client->Close();
    };
    client->Connect(kHost, listener->LocalPort());
    return Until([&] { return ended; });
  };
  ASSERT_TRUE(once(0));
  const std::size_t before = made_.openHandles();
  ASSERT_GT(before, 0U);
  for (int i = 0; i < 2000; ++i) ASSERT_TRUE(once(i)) << i;
  EXPECT_EQ(made_.openHandles(), before);
}

}  // namespace

}  // namespace orvanto
