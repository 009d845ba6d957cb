// What all hosts' sockets have in common, over a system that does exactly what a test says.
#include "platform/net/BufferedSocket.h"

#include <gtest/gtest.h>

#include "platform/net/SocketError.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using State = TcpSocket::State;
using Use = SocketHost::Use;
using Socket = FakeSocketHost::Socket;

constexpr std::size_t kAny = FakeSocketHost::kAny;
constexpr std::size_t kMost = TcpSocket::kMostPerArrival;
constexpr std::uint16_t kPort = 7;

class BufferedSocketTest : public testing::Test {
 protected:
  BufferedSocketTest() {
    socket.onConnected = [this] { seen += 'C'; };
    socket.onSendComplete = [this] { seen += 'S'; };
    socket.onDataArrival = [this] { seen += 'D'; };
    socket.onClosed = [this] { seen += 'X'; };
    socket.onError = [this](int error) { seen += 'E' + std::to_string(error); };
    Begin();
  }
  void Begin() {
    socket.Close();
    socket.waiting.clear();
    socket.ended = false;
    socket.receiveError = socket.sendError = 0;
    socket.room = kAny;
    socket.Connected();
    socket.sent.clear();
    seen.clear();
  }
  // The events since the last call, those that are due now among them.
  std::string Seen() {
    loop.DoEvents();
    return std::exchange(seen, {});
  }

  // More than is read at once, of which that much is read.
  void ReceiveMuch() {
    socket.waiting = std::string(kMost + 3, 'x');
    for (int i = 0; i < 2; ++i) socket.Receive();
  }
  // The addresses since the last call.
  std::string Tried() {
    std::string all;
    for (const auto& [address, port] : std::exchange(socket.tried, {})) {
      EXPECT_EQ(port, kPort);
      all += std::to_string(address) + ' ';
    }
    return all;
  }

  FakeClock clock;
  FakeLoop loop{clock};
  FakeSocketHost host{loop};
  Socket socket{host, Use::Conversation};
  std::string seen;
};

TEST_F(BufferedSocketTest, SendsAllInOrderAndTellsOnce) {
  socket.atOnce = 2;
  socket.room = 3;
  for (const char* text : {"abcdef", "", "gh"}) {
    socket.Send(text);
    EXPECT_EQ(socket.sent, "abc");
    socket.room = 5;  // nothing overtakes what waits
  }
  EXPECT_EQ(socket.Unsent(), 5U);
  EXPECT_EQ(Seen(), "");
  socket.room = 2;
  socket.SendMore();
  EXPECT_EQ(socket.Unsent(), 3U);
  EXPECT_EQ(Seen(), "");
  socket.room = kAny;
  for (int i = 0; i < 2; ++i) socket.SendMore();
  EXPECT_EQ(socket.sent, "abcdefgh");
  EXPECT_EQ(Seen(), "S");
  EXPECT_EQ(socket.wants, "r rw rw r ");
  for (const char* text : {"i", "j", ""}) socket.Send(text);
  EXPECT_EQ(seen, "") << "never from inside";
  EXPECT_EQ(Seen(), "S");
  socket.Send("k");
  socket.room = 0;
  socket.Send("l");
  EXPECT_EQ(Seen(), "") << "the rest is not sent yet";
  socket.room = kAny;
  socket.SendMore();
  EXPECT_EQ(Seen(), "S");
  EXPECT_EQ(socket.sent, "abcdefghijkl");
}

TEST_F(BufferedSocketTest, WhatWaitsToBeSentHasALimit) {
  std::string text(TcpSocket::kMostUnsent + (3 << 20), '\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(i * 2654435761U >> 13);
  socket.room = 0;
  socket.Send(std::string_view(text).substr(0, TcpSocket::kMostUnsent));
  socket.room = 3 << 20;
  socket.SendMore();
  socket.Send(std::string_view(text).substr(TcpSocket::kMostUnsent));
  EXPECT_EQ(Seen(), "") << "what was sent makes room";
  socket.room = kAny;
  socket.SendMore();
  EXPECT_EQ(Seen(), "S");
  EXPECT_TRUE(socket.sent == text);

  socket.room = 0;
  socket.Send(std::string(TcpSocket::kMostUnsent, 'x'));
  socket.Send("y");
  EXPECT_EQ(socket.GetState(), State::Connected) << "it ends from the loop";
  socket.waiting = "a peer that goes on";
  EXPECT_EQ(Seen(), "E10055");
  EXPECT_EQ(socket.GetState(), State::Failed);
  EXPECT_EQ(socket.LastError(), kNoBufferSpace);
}

TEST_F(BufferedSocketTest, ArrivalsInsideOneAnotherKeepTheirOwn) {
  Socket other(host, Use::Data);
  other.Connected();
  for (const char* text : {"one", "two"}) socket.PeerSends(text);
  for (const char* text : {"uno", "due"}) {
    other.PeerSends(text);
    socket.PeerSends("!");
  }
  EXPECT_EQ(socket.GetData(), "onetwo!!");
  EXPECT_EQ(other.GetData(), "unodue");
  other.waiting = std::string(2 * TcpSocket::kMostDataPerArrival, 'x');
  other.Receive();
  EXPECT_EQ(other.GetData().size(), TcpSocket::kMostDataPerArrival);
  {
    Socket brief(host, Use::Data);
    brief.Connected();
    brief.PeerSends("gone");
  }
  socket.PeerSends("here");
  EXPECT_EQ(socket.GetData(), "here");
}

TEST_F(BufferedSocketTest, EndsAfterWhatHasArrived) {
  enum Report { None, Rest, SendFailed };
  // By which nothing more is reported, the receive's error, whether it has ended, the last event.
  const std::tuple<Report, int, bool, const char*> cases[] = {
      {None, 0, false, ""},         {None, 0, true, "X"},       {None, 7, false, "E7"},
      {Rest, 0, false, "X"},        {Rest, 0, true, "X"},       {Rest, 7, false, "E7"},
      {SendFailed, 0, false, "E5"}, {SendFailed, 0, true, "X"}, {SendFailed, 7, false, "E7"}};
  for (int number = 0; const auto& [report, receiveError, ended, last] : cases) {
    SCOPED_TRACE(number++);
    Begin();
    socket.Send("a");
    socket.waiting = std::string(kMost + 3, 'x');
    socket.receiveError = receiveError;
    socket.ended = ended;
    if (report == SendFailed) {
      for (const int error : {5, 6}) socket.FailSending(error);
      socket.Send("lost");
      EXPECT_EQ(Seen(), "D") << "and no sending is complete";
    } else {
      report == Rest ? socket.ReceiveRest() : socket.Receive();
      EXPECT_EQ(Seen().size(), 2U);
    }
    if (report == None) socket.Receive();
    EXPECT_EQ(Seen(), "") << "until it is fetched";
    EXPECT_FALSE(socket.wants.ends_with("r ")) << "nor is anything read";
    EXPECT_EQ(socket.GetData().size(), kMost);
    EXPECT_EQ(Seen(), "D");
    if (report == None) socket.Receive();
    EXPECT_EQ(Seen(), last);
    EXPECT_EQ(socket.GetData(), "xxx") << "after the end too";
    EXPECT_EQ(socket.sent, "a");
  }
}

TEST_F(BufferedSocketTest, WhatWasSentBeforeThePeersEndStillGoesOut) {
  for (const int error : {0, 7}) {
    Begin();
    socket.room = 2;
    socket.Send("sent");
    socket.ReceiveRest();
    socket.ended = true;
    EXPECT_EQ(Seen(), "");
    EXPECT_EQ(socket.wants, "r rw w ");
    socket.room = kAny;
    socket.sendError = error;
    socket.onSendComplete = [this] {
      seen += 'S';
      if (seen == "SSS") throw 1;
      socket.Send("more");
    };
    try {
      socket.SendMore();
    } catch (int) {  // a loop would report it
    }
    for (int i = 0; i < 3; ++i) loop.DoEvents();
    EXPECT_EQ(Seen(), error == 0 ? "SSSX" : "X") << "it has closed in good order";
    EXPECT_EQ(socket.sent, error == 0 ? "sentmoremore" : "se");
    EXPECT_EQ(socket.GetState(), State::Closed);
  }
}

TEST_F(BufferedSocketTest, AGentleCloseSendsTheRestAndDropsWhatArrives) {
  // The room for what is sent at first, what happens then, and what comes of it.
  const std::tuple<std::size_t, std::function<void()>, State, const char*, const char*> cases[] = {
      {kAny, [] {}, State::Closing, "r r .", "bye"},
      {1, [] {}, State::Closing, "r rw rw ", "b"},
      {1, [this] { socket.CloseGently(); }, State::Closing, "r rw rw ", "b"},
      {1, [this] { socket.SendMore(); }, State::Closing, "r rw rw r .", "bye"},
      {kAny, [this] { socket.PeerCloses(); }, State::Closed, "", "bye"},
      {1, [this] { socket.PeerCloses(); }, State::Closing, "r rw rw w ", "b"},
      {1, [this] { socket.PeerCloses(), socket.SendMore(); }, State::Closed, "", "bye"},
      {1, [this] { socket.sendError = 7, socket.SendMore(); }, State::Closed, "", "b"},
      {1, [this] { socket.receiveError = 7, socket.Receive(); }, State::Closed, "", "bye"},
      {1, [this] { socket.Close(); }, State::Closed, "", "bye"},
      {kAny, [this] { loop.Advance(29'999); }, State::Closing, "r r .", "bye"},
      {kAny, [this] { loop.Advance(30'000); }, State::Closed, "", "bye"},
  };
  for (int number = 0; const auto& [room, then, state, wants, sent] : cases) {
    SCOPED_TRACE(number++);
    Begin();
    socket.room = room;
    socket.Send("bye");
    socket.waiting = std::string(3 * kMost, 'x');
    socket.Receive();
    socket.CloseGently();
    seen.clear();
    for (int i = 0; i < 3; ++i) socket.Receive();
    EXPECT_EQ(socket.waiting, "");
    socket.Send("not this");
    socket.room = kAny;
    then();
    EXPECT_EQ(Seen(), "");
    EXPECT_EQ(socket.GetState(), state);
    EXPECT_EQ(socket.wants, wants);
    EXPECT_EQ(socket.sent, sent);
    EXPECT_EQ(socket.GetData(), "");
  }
}

TEST_F(BufferedSocketTest, NothingOfAConnectionReachesTheNext) {
  // What has happened, and what of it has been sent by the end.
  const std::pair<std::function<void()>, const char*> pasts[] = {
      {[&] { socket.Send("a"); }, "a"},
      {[&] { socket.ReceiveRest(); }, ""},
      {[&] { socket.FailSending(7); }, ""},
      {[&] {
         socket.room = 2;
         socket.Send("byes");
         socket.room = 1;
       },
       "bye"},
      {[&] { socket.CloseGently(); }, ""},
      {[&] { ReceiveMuch(); }, ""},
      {[&] { ReceiveMuch(), socket.GetData(); }, ""}};
  for (const auto& [past, sent] : pasts) {
    Begin();
    past();
    for (int i = 0; i < 2; ++i) socket.Close();
    EXPECT_EQ(socket.sent, sent);
    Begin();
    loop.Advance(60'000);
    EXPECT_EQ(Seen(), "");
    socket.Send("new");
    socket.waiting = std::string(kMost, 'y');
    for (int i = 0; i < 2; ++i) socket.Receive();
    EXPECT_EQ(Seen(), "DS");
    EXPECT_EQ(socket.sent, "new");
    socket.waiting = "z";
    EXPECT_EQ(socket.GetData(), std::string(kMost, 'y'));
    EXPECT_EQ(Seen(), "D");
  }
  Socket brief(host, Use::Conversation);
  brief.Connected();
  brief.onSendComplete = [] { ADD_FAILURE() << "it has gone"; };
  brief.Send("posts");
}

TEST_F(BufferedSocketTest, ConnectsToTheFirstAddressThatAnswers) {
  host.names = {{"many", {1, 2, 3, 4}}, {"silent", {}}, {"", {7}}};
  host.unreachable = {{2, 5}, {4, 6}};
  for (const bool answers : {true, false}) {
    socket.Connect("many", kPort);
    EXPECT_EQ(Tried(), "1 ");
    socket.ConnectFailed(8);
    EXPECT_EQ(Tried(), "2 3 ");
    EXPECT_EQ(Seen(), "");
    answers ? socket.Connected() : socket.ConnectFailed(9);
    EXPECT_EQ(socket.GetState(), answers ? State::Connected : State::Connecting);
    EXPECT_EQ(Seen(), answers ? "C" : "E6");
    EXPECT_EQ(Tried(), answers ? "" : "4 ");
  }
  EXPECT_EQ(socket.GetState(), State::Failed);
  EXPECT_EQ(socket.LastError(), 6);

  for (const auto& [name, closed] :
       {std::pair{"nobody", false}, {"", false}, {"nobody", true}, {"silent", true}}) {
    socket.Connect(name, kPort);
    EXPECT_EQ(socket.GetState(), State::Connecting);
    if (closed) socket.Close();
    EXPECT_EQ(Seen(), closed ? "" : "E11001");
    EXPECT_EQ(socket.GetState(), closed ? State::Closed : State::Failed);
  }
}

TEST_F(BufferedSocketTest, NeedsNoLookUpForANumericAddressAndListensOnNothingElse) {
  socket.Connect("10.0.255.3", kPort);
  EXPECT_EQ(Tried(), std::to_string(0x0A00FF03) + ' ');
  EXPECT_TRUE(socket.Listen(kPort, "10.0.255.3"));
  for (const char* text : {"", "name", "1.2.3", "1.2.3.", "1.2.3.4.5", "1.2.3.4 ", " 1.2.3.4",
                           "1.2.3.256", "1.2.3.04", "1.2.3.-0", "1..2.3", "1,2,3,4"}) {
    EXPECT_FALSE(socket.Listen(kPort, text)) << text;
    EXPECT_EQ(socket.LastError(), kAddressNotAvailable);
  }
}

}  // namespace
}  // namespace orvanto
