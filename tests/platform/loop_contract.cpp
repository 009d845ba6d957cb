// What every event loop keeps to, and what a real system shows of the TCP sockets of every host;
// the rest of them is in buffered_socket_test.
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <thread>

#include "tests/platform/host.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using State = TcpSocket::State;
using std::chrono::milliseconds;

constexpr milliseconds kInterval(4);

// On the host's, and on the fake.
class EventLoopContract : public testing::TestWithParam<bool> {
 protected:
  // Time passes and nothing is delivered.
  void Busy(milliseconds time) {
    GetParam() ? fake_.Block(time.count()) : std::this_thread::sleep_for(time);
  }

  FakeClock clock_;
  FakeLoop fake_{clock_};
  HostLoop host_;
  EventLoop& loop_ = GetParam() ? static_cast<EventLoop&>(fake_) : host_;
};

INSTANTIATE_TEST_SUITE_P(Loops, EventLoopContract, testing::Bool());

TEST_P(EventLoopContract, WorkComesInOrderAndNotAtOnceAndReentersAndCanBeTakenBack) {
  std::string order;
  const auto again = loop_.NewDeferred([&] { order += 'b'; });
  const auto cancelled = loop_.NewDeferred([] { ADD_FAILURE() << "it was cancelled"; });
  auto gone = loop_.NewDeferred([] { ADD_FAILURE() << "it was destroyed"; });
  loop_.Post([&] {
    order += 'a';
    gone.reset();
    loop_.DoEvents();
    order += 'd';
    again->Post();
    loop_.DoEvents();
    order += 'e';
  });
  for (Deferred* each : {gone.get(), cancelled.get(), again.get(), again.get()}) each->Post();
  cancelled->Cancel();
  loop_.Post([&] { order += 'c'; });
  EXPECT_EQ(order, "");
  loop_.DoEvents();
  EXPECT_EQ(order, "abcdbe");
}

TEST_P(EventLoopContract, ATimerComesWhenDueAndMayStopAndRestartItselfAndDestroyOthers) {
  int calls = 0;
  std::unique_ptr<Timer> other = loop_.NewTimer([] { ADD_FAILURE() << "it was destroyed"; });
  std::unique_ptr<Timer> timer = loop_.NewTimer([&] {
    other.reset();  // due as well
    timer->Stop();
    if (++calls == 1) timer->Start(2 * kInterval);
  });
  timer->Start(milliseconds::max());
  EXPECT_TRUE(timer->Enabled());
  Busy(kInterval);
  loop_.DoEvents();
  EXPECT_EQ(calls, 0);
  timer->Start(milliseconds(0));  // taken as one
  other->Start(4 * kInterval);
  for (int i = 0; i < 9; ++i) {
    Busy(5 * kInterval);
    loop_.DoEvents();
  }
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(timer->Enabled());
}

TEST_P(EventLoopContract, AHoldKeepsEverythingUntilItsEnd) {
  std::string order;
  const auto timer = loop_.NewTimer([&] { order += 't'; });
  timer->Start(kInterval);
  {
    const EventLoop::Hold outer(loop_);
    {
      const EventLoop::Hold inner(loop_);
      loop_.Post([&] { order += 'p'; });
      Busy(50 * kInterval);
      RunSystemLoop();
    }
    loop_.DoEvents();
    EXPECT_EQ(order, "");
  }
  loop_.DoEvents();
  EXPECT_EQ(std::count(order.begin(), order.end(), 'p'), 1);
  EXPECT_TRUE(order.size() > 1 && order.size() < 25) << order;
}

TEST_P(EventLoopContract, AWaitEndsByItsConditionItsLimitItsOwnerAndTheEnd) {
  using Waited = EventLoop::Waited;
  auto owner = std::make_shared<int>();
  bool reached = false;
  std::function<void()> happens;
  const auto timer = loop_.NewTimer([&] {
    if (const auto now = happens) now();
  });
  timer->Start(kInterval);
  const auto wait = [&](std::optional<milliseconds> limit) {
    reached = false;
    return loop_.WaitFor(
        owner, [&] { return !owner || reached; }, limit);
  };
  EXPECT_EQ(wait(5 * kInterval), Waited::TimedOut);
  {
    const EventLoop::Hold hold(loop_);
    EXPECT_EQ(wait({}), Waited::TimedOut) << "nothing could come";
  }
  const std::pair<std::function<void()>, Waited> cases[] = {
      {[&] { loop_.Post([&] { reached = true; }); }, Waited::Met},
      {[&] { owner.reset(); }, Waited::OwnerGone},
      {[&] { loop_.Quit(); }, Waited::Quit},
      {nullptr, Waited::Quit}};
  for (const auto& [what, then] : cases) {
    owner = std::make_shared<int>();
    happens = what;
    EXPECT_EQ(wait({}), then);
  }
  EXPECT_EQ(loop_.WaitFor(owner, [] { return true; }, {}), Waited::Met);
}

TEST(EventLoop, NeitherAFloodOfPostsNorAnExceptionStopsATimer) {
  HostLoop loop;
  int calls = 0;
  const auto timer = loop.NewTimer([&] {
    if (++calls == 2) loop.Quit();
    throw std::runtime_error("from a timer");
  });
  timer->Start(kInterval);
  std::function<void()> again = [&] { loop.Post(again); };
  loop.Post(again);
  loop.Post([] { throw 1; });
  loop.Run();
  EXPECT_EQ(calls, 2);
  loop.Run();  // returns at once
}

constexpr const char* kHost = "127.0.0.1";

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
  std::unique_ptr<TcpSocket> NewSocket() { return host.NewSocket(GetParam()); }

  // Runs the loop until `reached`; false when that takes too long.
  bool Until(const std::function<bool()>& reached, milliseconds limit = milliseconds(20'000)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!reached()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      loop.DoEvents();
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

  HostLoop loop;
  HostSockets host{loop};
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
    EXPECT_EQ(refused.seen, "");
    ASSERT_TRUE(Until([&] { return refused.seen == "E"; }));
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

TEST_P(SocketContract, ACloseOnBothSidesLosesNothingThatWasSent) {
  // Neither over what the closing side has not read...
  ConnectEnds();
  server->onDataArrival = [] {};
  // Different at every place, so that what is lost, doubled or exchanged shows.
  std::string text(TcpSocket::kMostUnsent, '\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i * 2654435761U >> 13);
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
  client->Send("last words");
  server->Send(std::string(TcpSocket::kMostUnsent, 'x'));
  client->CloseGently();
  ASSERT_TRUE(Until([&] { return atServer.Ended() && client->GetState() == State::Closed; }));
  EXPECT_EQ(atServer.seen.back(), 'X');
  EXPECT_EQ(atClient.seen, "CDXC") << "no event comes of a gentle close";
}

TEST_P(SocketContract, AHoldKeepsEverythingUntilItsEnd) {
  ConnectEnds();
  {
    const EventLoop::Hold hold(loop);
    client->Send("held");
    for (int i = 0; i < 2; ++i) {
      Settle();
      RunSystemLoop();
      client->Close();
    }
    EXPECT_EQ(atServer.seen, "");
  }
  ASSERT_TRUE(Until([&] { return atServer.Ended(); }));
  EXPECT_EQ(atServer.seen + atServer.data, "DXheld");
}

}  // namespace
}  // namespace orvanto
