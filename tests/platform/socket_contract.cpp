// What a real system shows of the TCP sockets of every host; the rest is in buffered_socket_test.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "platform/net/SocketError.h"
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
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(i * 2654435761U >> 13);
  return text;
}

// The events of a socket, a letter for each.
struct Events {
  explicit Events(TcpSocket& socket) {
    socket.onConnected = [this] { seen += 'C'; };
    socket.onClosed = [this] { seen += 'X'; };
    socket.onError = [this](int systemError) { seen += systemError != 0 ? 'E' : '?'; };
    socket.onDataArrival = [this, &socket] {
      data += socket.GetData();
      if (seen.empty() || seen.back() != 'D') seen += 'D';
    };
  }
  bool Ended() const { return seen.find_first_of("XE") != std::string::npos; }

  std::string seen;
  std::string data;
};

class SocketContract : public testing::TestWithParam<SocketHost::Use> {
 protected:
  std::unique_ptr<TcpSocket> NewSocket() const { return host->NewSocket(GetParam()); }

  // Runs the loop until `reached`; false when that takes too long.
  bool Until(const std::function<bool()>& reached, milliseconds limit = milliseconds(20'000)) {
    const auto deadline = steady_clock::now() + limit;
    while (!reached()) {
      if (steady_clock::now() > deadline) return false;
      loop->DoEvents();
      std::this_thread::yield();
    }
    return true;
  }
  // Handles what happens on this machine anyway within a moment.
  void Settle() {
    Until([] { return false; }, milliseconds(40));
  }
  // The server listens and takes its first client itself. Both ends are connected then.
  void ConnectEnds() {
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

INSTANTIATE_TEST_SUITE_P(Uses, SocketContract,
                         testing::Values(SocketHost::Use::Conversation, SocketHost::Use::Data));

TEST_P(SocketContract, TheListenerTakesTheClientOnItself) {
  EXPECT_EQ(server->LocalPort(), 0);
  EXPECT_EQ(server->RemoteAddress() + server->BoundAddress(), "");
  ConnectEnds();
  EXPECT_EQ(atClient.seen, "C");
  for (const TcpSocket* end : {server.get(), client.get()}) {
    EXPECT_EQ(end->RemoteAddress() + end->BoundAddress(), "127.0.0.1127.0.0.1");
    EXPECT_NE(end->LocalAddress(), "");
  }
  // Nobody listens any more, or nobody is known.
  const std::uint16_t port = server->LocalPort();
  const std::pair<const char*, int> cases[] = {
      {kHost, kConnectionRefused}, {"localhost", kConnectionRefused}, {"no such", kHostNotFound}};
  for (const auto& [name, error] : cases) {
    const auto second = NewSocket();
    const Events refused(*second);
    second->Connect(name, port);
    EXPECT_EQ(second->GetState(), State::Connecting);
    EXPECT_EQ(refused.seen, "");
    ASSERT_TRUE(Until([&] { return refused.seen == "E"; }));
    EXPECT_EQ(second->GetState(), State::Failed);
    EXPECT_EQ(second->LastError(), error) << name;
  }
  // A name is looked up while everything goes on, and Close takes the question back.
  const auto second = NewSocket();
  second->Connect("localhost", port);
  second->Close();
  ASSERT_TRUE(second->Listen(0));
  EXPECT_EQ(second->BoundAddress(), TcpSocket::kAllAddresses);
  EXPECT_FALSE(server->Listen(second->LocalPort())) << "it is taken";
  EXPECT_EQ(server->LastError(), kAddressInUse);
  EXPECT_FALSE(server->Listen(0, "192.0.2.1"));
  EXPECT_EQ(server->LastError(), kAddressNotAvailable);
  EXPECT_TRUE(server->Listen(0, kHost));
  EXPECT_EQ(server->BoundAddress(), kHost);
  EXPECT_TRUE(server->Listen(port)) << "though the client has not closed his end";
}

TEST_P(SocketContract, WhatTheClientSentBeforeItWasTakenArrives) {
  const auto listener = NewSocket();
  ASSERT_TRUE(listener->Listen(0));
  client->onConnected = [&] {
    client->Send("early");
    client->Close();
  };
  listener->onConnectionRequest = [&](TcpSocket::RequestId request) {
    // The events of the client come in here.
    EXPECT_TRUE(Until([&] { return client->GetState() == State::Closed; }));
    EXPECT_TRUE(server->Accept(request));
    EXPECT_FALSE(NewSocket()->Accept(request)) << "it is taken";
  };
  client->Connect(kHost, listener->LocalPort());
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_EQ(atServer.seen + atServer.data, "DXearly");
  EXPECT_EQ(atClient.seen, "");

  // One that nobody takes is turned away, though the listener goes meanwhile.
  client->onConnected = nullptr;
  listener->onConnectionRequest = [&](TcpSocket::RequestId) { listener->Close(); };
  client->Connect(kHost, listener->LocalPort());
  EXPECT_TRUE(Until([&] { return atClient.Ended(); }));
}

TEST_P(SocketContract, MuchArrivesWholeAndThenTheEnd) {
  ConnectEnds();
  const std::string all = Pattern(9 << 20);
  std::size_t sent = 0;
  int ticks = 0;
  const auto timer = loop->NewTimer([&] { ++ticks; });
  timer->Start(milliseconds(1));
  client->onSendComplete = [&] {
    if (sent == all.size()) return client->Close();
    client->Send(std::string_view(all).substr(sent, 3 << 20));
    sent += 3 << 20;
  };
  client->onSendComplete();
  EXPECT_TRUE(Until([&] { return atServer.Ended(); })) << sent;
  EXPECT_TRUE(atServer.data == all) << atServer.data.size();
  EXPECT_EQ(atServer.seen, "DX");
  EXPECT_GT(ticks, 0) << "a flood does not starve a timer";
}

TEST_P(SocketContract, ACloseOnBothSidesLosesNothingThatWasSent) {
  // Neither over what the closing side has not read...
  ConnectEnds();
  server->onDataArrival = [] {};
  const std::string text = Pattern(1 << 20);
  client->Send(std::string(100 << 10, 'x'));
  server->Send(text);
  Settle();
  server->CloseGently();
  ASSERT_TRUE(Until([&] { return atClient.Ended() && server->GetState() == State::Closed; }));
  EXPECT_EQ(atClient.seen, "CDX");
  EXPECT_TRUE(atClient.data == text) << atClient.data.size();

  // ...nor when the other side has ended first, and goes on reading.
  ConnectEnds();
  atServer.seen.clear();
  server->onSendComplete = [&] { atServer.seen += 'S'; };
  client->Send("last words");
  server->Send(std::string(TcpSocket::kMostUnsent, 'x'));
  client->CloseGently();
  EXPECT_EQ(client->GetState(), State::Closing);
  ASSERT_TRUE(Until([&] { return atServer.Ended() && client->GetState() == State::Closed; }));
  EXPECT_EQ(atServer.seen.back(), 'X');
  EXPECT_EQ(std::count(atServer.seen.begin(), atServer.seen.end(), 'S'), 1);
  EXPECT_EQ(atClient.seen, "CDXC") << "no event comes of a gentle close";
}

TEST_P(SocketContract, AHoldKeepsEverythingUntilItsEnd) {
  const auto second = NewSocket(), listener = NewSocket();
  ConnectEnds();
  ASSERT_TRUE(listener->Listen(0));
  listener->onConnectionRequest = [&](TcpSocket::RequestId) { atServer.seen += 'R'; };
  {
    const EventLoop::Hold hold(*loop);
    client->Send("held");
    second->Connect(kHost, listener->LocalPort());
    for (int i = 0; i < 2; ++i) {
      Settle();
      RunSystemLoop();
      client->Close();
    }
    EXPECT_EQ(atServer.seen, "");
  }
  ASSERT_TRUE(Until([&] { return atServer.Ended() && atServer.seen.size() == 3; }));
  std::erase(atServer.seen, 'R');
  EXPECT_EQ(atServer.seen + atServer.data, "DXheld");
}

}  // namespace
}  // namespace orvanto
