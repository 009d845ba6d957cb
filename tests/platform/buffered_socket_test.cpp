// What all hosts' sockets have in common, over a system that does exactly what a test says.
#include "platform/net/BufferedSocket.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using namespace std::string_literals;
using Use = SocketHost::Use;
using Socket = FakeSocketHost::Socket;

constexpr std::size_t kAny = FakeSocketHost::kAny;
constexpr std::size_t kMost = TcpSocket::kMostPerArrival;

// What happens to a socket, and what comes of it, both in words.
class BufferedSocketTest : public testing::Test {
 protected:
  BufferedSocketTest() {
    socket.onConnected = [this] { told += 'C'; };
    socket.onSendComplete = [this] { told += 'S'; };
    socket.onDataArrival = [this] { told += 'D'; };
    socket.onClosed = [this] { told += 'X'; };
    socket.onError = [this](int error) { told += 'E' + std::to_string(error); };
  }
  // A new connection, and all that, "send:abc more", one after the other. Returns the events (as
  // above), <what was sent>, [what is waited for], (the addresses tried), 'what was fetched', and
  // at the end what the socket is, when it is not connected.
  std::string After(const std::string& happenings) {
    Begin();
    std::istringstream words(happenings);
    for (std::string word; words >> word;) {
      const std::size_t colon = std::min(word.find(':'), word.size() - 1);
      Happen(word.substr(0, word.find(':')), word.substr(colon + 1));
      if (const std::string sent = socket.Sent(); !sent.empty()) told += '<' + Short(sent) + '>';
      const std::string wants = std::exchange(socket.wants, {});
      if (!wants.empty()) told += '[' + wants.substr(0, wants.find_last_not_of(' ') + 1) + ']';
      for (const auto& tried : std::exchange(socket.tried, {})) {
        told += '(' + std::to_string(tried.first) + ':' + std::to_string(tried.second) + ')';
      }
    }
    const char* states[] = {" closed", " listens", " connecting", "", " closing", " failed "};
    told += states[static_cast<int>(socket.GetState())];
    if (told.ends_with(' ')) told += std::to_string(socket.LastError());
    if (!socket.waiting.empty()) told += " unread";
    return std::exchange(told, {});
  }

  FakeClock clock;
  FakeLoop loop{clock};
  FakeSocketHost host{loop};
  Socket socket{host, Use::Conversation};
  std::string told;

 private:
  static std::string Short(std::string_view text) {
    return text.size() < 20 ? std::string(text) : text[0] + std::to_string(text.size());
  }
  void Begin() {
    socket.Close();
    socket.waiting.clear();
    socket.ended = false;
    socket.receiveError = socket.sendError = 0;
    socket.room = socket.atOnce = kAny;
    socket.Connected();
    socket.Sent();
    socket.wants.clear();
    told.pop_back();
  }
  void Happen(const std::string& what, const std::string& with) {
    const std::size_t size = std::strtoul(with.c_str(), nullptr, 10);
    const int number = static_cast<int>(size);
    if (what == "begin") return Begin();
    if (what == "connect") return socket.Connect(with, 7);
    if (what == "answered") return socket.Connected();
    if (what == "refused") return socket.ConnectFailed(number);
    if (what == "send") return socket.Send(with);
    if (what == "fill") return socket.Send(std::string(size, 'x'));
    if (what == "room") socket.room = with == "any" ? kAny : size;
    if (what == "atonce") socket.atOnce = size;
    if (what == "more") return socket.SendMore();
    if (what == "sendfails") socket.sendError = number;
    if (what == "fail") return socket.FailSending(number);
    if (what == "peer") socket.waiting += with;
    if (what == "flood") socket.waiting.append(kMost + 3, 'f');
    if (what == "ended") socket.ended = true;
    if (what == "receivefails") socket.receiveError = number;
    if (what == "receive") return socket.Receive();
    if (what == "rest") return socket.ReceiveRest();
    if (what == "get") told += '\'' + Short(socket.GetData()) + '\'';
    if (what == "loop") return loop.DoEvents();
    if (what == "wait") return loop.Advance(number);
    if (what == "gently") return socket.CloseGently();
    if (what == "close") return socket.Close();
  }
};

using Rows = std::initializer_list<std::pair<std::string, const char*>>;

TEST_F(BufferedSocketTest, SendsAllInOrderAndTellsOnceUpToALimitOfWhatWaits) {
  for (const auto& [what, then] :
       Rows{{"send:i send:j send: loop send:k loop", "<i><j>S<k>S"},
            {"atonce:2 room:3 send:abcdef room:5 send: send:gh loop more more loop",
             "<abc>[rw][rw]S<defgh>[r]"},
            {"send:k room:0 send:l loop room:any more loop", "<k>[rw]S<l>[r]"},
            {"room:0 send:abcdef room:5 more send:g room:any more", "[rw]<abcde>[rw]S<fg>[r]"},
            {"room:0 fill:4194304 room:9 more fill:9 loop room:any more",
             "[rw]<xxxxxxxxx>[rw]S<x4194304>[r]"},
            // It ends from the loop.
            {"room:0 fill:4194304 send:y peer:more loop", "[rw][r]E10055 failed 10055 unread"}}) {
    EXPECT_EQ(After(what), then) << what;
  }
}

TEST_F(BufferedSocketTest, ArrivalsInsideOneAnotherKeepTheirOwn) {
  Socket other(host, Use::Data);
  for (Socket* each : {&socket, &other}) each->Connected();
  other.PeerSends("uno");
  for (const char* text : {"one", "two"}) socket.PeerSends(text);
  EXPECT_EQ(socket.GetData(), "onetwo");
  EXPECT_EQ(other.GetData(), "uno");
  {
    Socket brief(host, Use::Data);
    brief.Connected();
    brief.PeerSends("gone");
  }
  socket.PeerSends("here");
  EXPECT_EQ(socket.GetData(), "here");
}

TEST_F(BufferedSocketTest, EndsAfterWhatHasArrived) {
  // What has been received waits to be fetched, and only then does more, and the end, come.
  for (const auto& [what, then] : Rows{
           {"receive receive loop get loop receive loop", "<a>D[]S'f16384'[r]D'fff'"},
           {"ended receive receive loop get loop receive loop", "<a>D[]S'f16384'[r]DX'fff' closed"},
           {"receivefails:7 receive receive loop get loop receive loop",
            "<a>D[]S'f16384'[r]DE7'fff' failed 7"},
           {"rest loop loop get loop loop", "<a>SD[]'f16384'[r]DX'fff' closed"},
           {"fail:5 fail:6 send:lost loop loop get loop loop",
            "<a>[r]D[]'f16384'[r]DE5'fff' failed 5"},
           {"ended fail:5 loop loop get loop loop", "<a>[r]D[]'f16384'[r]DX'fff' closed"}}) {
    EXPECT_EQ(After("send:a flood " + what + " get"), then) << what;
  }
}

TEST_F(BufferedSocketTest, WhatWasSentBeforeThePeersEndStillGoesOut) {
  int left = 3;
  socket.onSendComplete = [&] {
    told += 'S';
    if (--left == 0) throw 1;  // a loop would report it
    socket.Send("more");
  };
  const std::string before = "room:2 send:sent rest ended loop room:any ";
  EXPECT_EQ(After(before + "sendfails:7 more loop"), "<se>[rw][w][]X closed") << "in good order";
  EXPECT_THROW(After(before + "more"), int);
  loop.DoEvents();
  EXPECT_EQ(told + socket.sent, "<se>[rw][w]SSSXntmoremore");
}

TEST_F(BufferedSocketTest, AGentleCloseSendsTheRestAndDropsWhatArrives) {
  // The room for what is sent at first, what happens after the close, and what comes of it.
  const std::array<const char*, 3> cases[] = {
      {"any", "ended receive", "<bye>D[r .]'' closed"},
      {"any", "wait:30000", "<bye>D[r .]'' closed"},
      {"1", "gently", "<b>[rw]D[rw]'' closing"},
      {"1", "wait:20000 more wait:20000", "<b>[rw]D[rw]<ye>[r .]'' closing"},
      {"1", "ended receive more", "<b>[rw]D[rw][w]<ye>'' closed"},
      {"1", "sendfails:7 more", "<b>[rw]D[rw]'' closed"},
      {"1", "receivefails:7 receive", "<b>[rw]D[rw]<ye>'' closed"}};
  for (const auto& [room, then, expected] : cases) {
    const std::string before = " send:bye flood flood receive gently receive receive receive";
    EXPECT_EQ(After("room:" + (room + before) + " send:not room:any " + then + " loop get"),
              expected);
  }
}

TEST_F(BufferedSocketTest, NothingOfAConnectionReachesTheNext) {
  const std::string next = " close close begin wait:60000 send:new flood receive receive loop get";
  for (const auto& [what, then] : Rows{{"send:a", "<a>"},
                                       {"rest", ""},
                                       {"fail:7", "[r]"},
                                       {"room:2 send:byes room:1", "<by>[rw]<e>"},
                                       {"gently", "[r .]"},
                                       {"flood receive receive", "D[]"}}) {
    EXPECT_EQ(After(what + next), then + "<new>D[]S'f16384'[r] unread"s) << what;
  }
}

TEST_F(BufferedSocketTest, ConnectsToTheFirstAddressThatAnswersAndListensOnNumericOnes) {
  host.names = {{"many", {1, 2, 3, 4}}, {"", {7}}};
  host.unreachable = {{2, 5}, {4, 6}};
  for (const auto& [what, then] :
       Rows{{"connect:many refused:8 loop answered loop refused:9", "(1:7)(2:7)(3:7)C[r]"},
            {"connect:many refused:8 loop refused:9 loop connect:many refused:8 answered",
             "(1:7)(2:7)(3:7)(4:7)E6(1:7)(2:7)(3:7)C[r]"},
            {"connect:10.0.255.3", "(167837443:7) connecting"},
            {"connect:nobody loop", "E11001 failed 11001"},
            {"connect: loop", "E11001 failed 11001"},
            {"connect:nobody close loop", " closed"}}) {
    EXPECT_EQ(After(what), then) << what;
  }
  EXPECT_TRUE(socket.Listen(7, "10.0.255.3"));
  for (const char* text : {"", "name", "1.2.3", "1.2.3.4.5", "1.2.3.4 ", "1.2.3.256", "1.2.3.04"}) {
    EXPECT_FALSE(socket.Listen(7, text)) << text;
  }
}

}  // namespace
}  // namespace orvanto
