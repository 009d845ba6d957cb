// What all hosts' sockets have in common, over a system that does exactly what a test says.
#include "platform/net/BufferedSocket.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

constexpr int kTooMuch = 99;
constexpr std::size_t kAny = std::string::npos;
constexpr std::size_t kMost = TcpSocket::kMostPerArrival;

class ScriptedSocket : public BufferedSocket {
 public:
  explicit ScriptedSocket(EventLoop& loop) : BufferedSocket(loop, kTooMuch) {
    onConnected = [this] { seen += 'C'; };
    onSendComplete = [this] { seen += 'S'; };
    onDataArrival = [this] { seen += 'D'; };
    onClosed = [this] { seen += 'X'; };
    onError = [this](int error) { seen += 'E' + std::to_string(error); };
  }
  ~ScriptedSocket() override { Close(); }
  using BufferedSocket::Connected;
  using BufferedSocket::Fail;
  using BufferedSocket::FailLater;
  using BufferedSocket::Finish;
  using BufferedSocket::Receive;
  using BufferedSocket::SendMore;

  bool Listen(std::uint16_t) override { return false; }
  std::uint16_t LocalPort() const override { return 0; }
  bool Accept(RequestId) override { return false; }
  void Connect(const std::string&, std::uint16_t) override {}
  std::string RemoteAddress() const override { return ""; }
  std::string LocalAddress() const override { return ""; }

  std::size_t room = kAny;     // what the system still takes
  std::size_t atOnce = kAny;   // and of one send
  std::string taken, waiting;  // by the system; to be received
  int sendError = 0, receiveError = 0;
  bool ended = false;       // behind what waits
  std::string seen, waits;  // the events; what it waited for, one after the other

 protected:
  Moved SystemSend(const char* bytes, std::size_t size) override {
    if (sendError != 0) return {.error = sendError};
    size = std::min({size, room, atOnce});
    if (room != kAny) room -= size;
    taken.append(bytes, size);
    return {.count = size};
  }
  Moved SystemReceive(char* bytes, std::size_t size) override {
    size = waiting.copy(bytes, size);
    waiting.erase(0, size);
    if (size == 0) return {.error = receiveError, .end = ended};
    return {.count = size};
  }
  void SystemClose() override { waits.clear(); }
  void WantsChanged() override {
    waits += std::string(WantsToReceive() ? "r" : "") + (WantsToSend() ? "w " : " ");
  }
};

class BufferedSocketTest : public testing::Test {
 protected:
  BufferedSocketTest() { Begin(); }
  void Begin() {
    socket.Close();
    socket.seen.clear();
    socket.taken.clear();
    socket.Connected();
  }
  // The events since the last call, those that are due now among them.
  std::string Seen() {
    loop.DoEvents();
    return std::exchange(socket.seen, {});
  }

  FakeClock clock;
  FakeLoop loop{clock};
  ScriptedSocket socket{loop};
};

TEST_F(BufferedSocketTest, SendsAllInOrderAndTellsOnce) {
  EXPECT_EQ(Seen(), "C");
  socket.atOnce = 2;
  socket.room = 3;
  for (const char* text : {"abcdef", "", "gh"}) {
    socket.Send(text);
    EXPECT_EQ(socket.taken, "abc");
    socket.room = 5;  // nothing overtakes what waits
  }
  EXPECT_EQ(Seen(), "");
  socket.room = 2;
  socket.SendMore();
  EXPECT_EQ(Seen(), "");
  socket.room = kAny;
  for (int i = 0; i < 2; ++i) socket.SendMore();
  EXPECT_EQ(socket.taken, "abcdefgh");
  EXPECT_EQ(Seen(), "S");
  EXPECT_EQ(socket.waits, "r rw rw r ");
  for (const char* text : {"i", "j", ""}) socket.Send(text);
  EXPECT_EQ(socket.seen, "") << "never from inside";
  EXPECT_EQ(Seen(), "S");
  socket.Send("k");
  socket.room = 0;
  socket.Send("l");
  EXPECT_EQ(Seen(), "") << "the rest is not sent yet";
  socket.room = kAny;
  socket.SendMore();
  EXPECT_EQ(Seen(), "S");
  EXPECT_EQ(socket.taken, "abcdefghijkl");
}

TEST_F(BufferedSocketTest, WhatWaitsToBeSentHasALimit) {
  std::string text(TcpSocket::kMostUnsent + (3 << 20), '\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i * 2654435761U >> 13);
  socket.room = 0;
  socket.Send(std::string_view(text).substr(0, TcpSocket::kMostUnsent));
  socket.room = 3 << 20;
  socket.SendMore();
  socket.Send(std::string_view(text).substr(TcpSocket::kMostUnsent));
  EXPECT_EQ(Seen(), "C") << "what was sent makes room";
  socket.room = kAny;
  socket.SendMore();
  EXPECT_EQ(Seen(), "S");
  EXPECT_TRUE(socket.taken == text);

  socket.room = 0;
  socket.Send(std::string(TcpSocket::kMostUnsent, 'x'));
  socket.Send("y");
  EXPECT_EQ(socket.GetState(), TcpSocket::State::Connected) << "it ends from the loop";
  socket.waiting = "a peer that goes on";
  EXPECT_EQ(Seen(), "DE99");
  EXPECT_EQ(socket.GetState(), TcpSocket::State::Closed);
}

TEST_F(BufferedSocketTest, NothingIsReadWhileTheMostWaits) {
  socket.waiting = std::string(kMost + 3, 'x');
  for (int i = 0; i < 3; ++i) socket.Receive();
  EXPECT_EQ(Seen(), "CD");
  EXPECT_EQ(socket.waits, "r  ");
  EXPECT_EQ(socket.waiting.size(), 3U);
  EXPECT_EQ(socket.GetData().size(), kMost);
  EXPECT_EQ(socket.seen, "");
  EXPECT_EQ(Seen(), "D");
  EXPECT_EQ(socket.waits, "r  r ");
  EXPECT_EQ(socket.GetData() + socket.GetData(), "xxx");
  EXPECT_EQ(Seen(), "");

  // Arrivals inside one another keep what they read off the stack.
  std::vector<std::uintptr_t> frames;
  socket.onDataArrival = [&] {
    const std::string chunk = socket.GetData();
    frames.push_back(reinterpret_cast<std::uintptr_t>(&chunk));
    if (frames.size() == 1) socket.waiting = "in";
    socket.Receive();
  };
  socket.waiting = "out";
  socket.Receive();
  ASSERT_EQ(frames.size(), 2U);
  EXPECT_LT(frames[0] - frames[1], kMost);
}

TEST_F(BufferedSocketTest, EndsAfterWhatHasArrived) {
  const struct {
    std::optional<int> finish;  // by that error of sending
    int receiveError;
    bool ended;
    const char* last;
  } cases[] = {{{}, 0, false, ""},  {{}, 0, true, "X"}, {{}, 7, false, "E7"},
               {0, 0, false, "X"},  {0, 0, true, "X"},  {0, 7, false, "E7"},
               {5, 0, false, "E5"}, {5, 0, true, "X"},  {5, 7, false, "E7"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    Begin();
    socket.Send("a");
    socket.waiting = std::string(kMost + 3, 'x');
    socket.receiveError = c.receiveError;
    socket.ended = c.ended;
    if (c.finish) {
      socket.Finish(*c.finish);
      socket.Finish(6);
      socket.Send("lost");
      EXPECT_EQ(Seen() + Seen(), "CD") << "and no sending is complete";
    } else {
      socket.Receive();
      EXPECT_EQ(Seen(), "CDS");
    }
    EXPECT_EQ(Seen(), "") << "until it is fetched";
    EXPECT_EQ(socket.GetData().size(), kMost);
    if (!c.finish) socket.Receive();
    EXPECT_EQ(Seen(), "D");
    if (!c.finish) socket.Receive();
    EXPECT_EQ(Seen(), c.last);
    EXPECT_EQ(socket.GetData(), "xxx") << "after the end too";
    EXPECT_EQ(socket.taken, "a");
  }
}

TEST_F(BufferedSocketTest, WhatFailsIsNotSentAnyMore) {
  const std::function<void()> failures[] = {[&] { socket.Finish(7); }, [&] { socket.Fail(7); },
                                            [&] { socket.SendMore(); }, [&] { socket.Send("b"); }};
  for (const auto& fail : failures) {
    SCOPED_TRACE(&fail - failures);
    Begin();
    socket.room = &fail == &failures[3] ? kAny : 0;
    socket.Send("a");
    socket.room = kAny;
    socket.sendError = &fail >= &failures[2] ? 7 : 0;
    fail();
    socket.sendError = 0;
    if (&fail != &failures[1]) {
      EXPECT_EQ(socket.waits, &fail == &failures[3] ? "r r " : "r rw r ");
      EXPECT_EQ(socket.seen, "C") << "what has arrived comes first";
    }
    EXPECT_EQ(Seen(), "CE7");
    EXPECT_EQ(socket.taken, &fail == &failures[3] ? "a" : "");
  }
}

TEST_F(BufferedSocketTest, NothingOfAConnectionReachesTheNext) {
  const std::function<void()> pasts[] = {[&] { socket.Send("a"); }, [&] { socket.Finish(0); },
                                         [&] {
                                           socket.room = 2;
                                           socket.Send("byes");
                                           socket.room = 1;
                                         },
                                         [&] {
                                           socket.waiting = std::string(kMost + 3, 'x');
                                           for (int i = 0; i < 2; ++i) socket.Receive();
                                         },
                                         [&] {
                                           socket.waiting = std::string(kMost + 3, 'x');
                                           for (int i = 0; i < 2; ++i) socket.Receive();
                                           socket.GetData();
                                         }};
  for (const auto& past : pasts) {
    SCOPED_TRACE(&past - pasts);
    Begin();
    past();
    socket.Close();
    socket.Close();
    EXPECT_EQ(socket.taken, &past == &pasts[2] ? "bye" : &past == &pasts[0] ? "a" : "");
    socket.waiting.clear();
    socket.room = kAny;
    Begin();
    EXPECT_EQ(Seen(), "C");
    socket.Send("new");
    socket.waiting = std::string(kMost, 'y');
    for (int i = 0; i < 2; ++i) socket.Receive();
    EXPECT_EQ(Seen(), "DS");
    EXPECT_EQ(socket.taken, "new");
    socket.waiting = "z";
    EXPECT_EQ(socket.GetData(), std::string(kMost, 'y'));
    EXPECT_EQ(Seen(), "D");
  }
  ScriptedSocket(loop).Connected();
  auto brief = std::make_unique<ScriptedSocket>(loop);
  brief->Connected();
  brief->Send("posts");
  brief.reset();
  loop.DoEvents();
}

TEST_F(BufferedSocketTest, AConnectionThatCannotBeginFailsFromTheLoop) {
  for (const bool closed : {false, true}) {
    Begin();
    socket.Close();
    socket.FailLater(8);
    EXPECT_EQ(socket.GetState(), TcpSocket::State::Connecting);
    if (closed) socket.Close();
    EXPECT_EQ(Seen(), closed ? "C" : "CE8");
  }
}

TEST(ConnectionRequests, AreThereWhileTheyAreAnnounced) {
  ConnectionRequests<std::shared_ptr<int>> requests;
  std::weak_ptr<int> dropped;
  for (const bool taken : {true, false}) {
    auto connection = std::make_shared<int>(1);
    dropped = connection;
    TcpSocket::RequestId last = 0;
    requests.Offer(std::move(connection), [&](TcpSocket::RequestId id) {
      last = id;
      if (taken) {
        EXPECT_TRUE(requests.Take(id));
        EXPECT_FALSE(requests.Take(id));
      }
    });
    EXPECT_TRUE(dropped.expired());
    EXPECT_FALSE(requests.Take(last));
  }
}

}  // namespace
}  // namespace orvanto
