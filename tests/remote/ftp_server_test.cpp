// The FTP server to the byte, on scripted sockets and files.
#include <gmock/gmock.h>

#include <algorithm>
#include <regex>

#include "core/ProgramSettings.h"
#include "platform/net/SocketError.h"
#include "remote/ftpserver/frmFtpserver.h"
#include "remote/ftpserver/server_control.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

using testing::ElementsAre;
using Socket = FakeSocketHost::Socket;

const std::string kScripts = "C:\\Orvanto\\scripts\\";
const std::string kPort = "PORT 10,1,2,3,78,32";  // 20000
const std::string kLoggedIn = "230 User logged in, proceed.\n";
const std::string kNotIn = "530 Not logged in.\n";
const std::string kOk = "200 Command ok.\n";
const std::string kDenied = "550 Permission denied.\n";
const std::string kNone = ": No such file or directory\n";
const std::string kRoot = "257 \"/\" is current directory.\n";
const std::string kInRoot = "250 Directory changed to /\n";
const std::string kSyntax = "501 Syntax error in parameters or arguments.\n";
const std::string kPortDone = "200 Port command successful.\n";
const std::string kPassive = "227 Entering Passive Mode (10,9,8,7,19,136).\n";
const std::string kExtended = "229 Entering Extended Passive Mode (|||5000|)\n";
const std::string kNoResuming = "504 Resuming is currently unsupported\n";
const std::string kFeatures =
    "211-Features:\n EPRT\n EPSV\n MDTM\n PASV\n REST STREAM\n SIZE\n UTF8\n211 End\n";
const std::string kSending = "150 Opening BINARY mode data connection for ";
const std::string kOpening = "150 Opening ASCII mode data connection for ";
const std::string kListing = kOpening + "/bin/ls.\n";
const std::string kComplete = "226 Transfer complete.\n";
const std::string kAborted = "426 Connection closed; transfer aborted.\n";
const std::string kCannot = "425 Can't open data connection.\n";

// Lines are told with a LF at their ends.
std::string Plain(std::string text) {
  std::erase(text, '\r');
  return text;
}

struct FtpServerTest : testing::Test, CoreDesk {
  FtpServerTest() {
    logged_ = server.logged.Subscribe([this](const std::string& line) {
      EXPECT_EQ(line.substr(8, 3), " - ");
      log.push_back(line.substr(11));
    });
    server.Load();
  }
  ~FtpServerTest() override {
    server.Unload();
    EXPECT_EQ(files.open, 0);
  }

  Socket& SocketAt(std::size_t i) { return **std::next(sockets.sockets.begin(), long(i)); }
  Socket& Command(std::size_t client = 0) { return SocketAt(2 + 3 * client); }
  Socket& Data(std::size_t client = 0) { return SocketAt(3 + 3 * client); }

  void Connect(std::size_t client = 0) {
    SocketAt(0).PeerConnects();
    EXPECT_EQ(Plain(Command(client).Sent()), "220 Quellmark FTP ready...\n");
  }
  // Steps with '|' between them, and what the client gets and is told then. "+": the data
  // connection comes about, "<x": x arrives there, ".": it is closed, "!": it breaks, "@9": so many
  // milliseconds go by; ";" at an end: all is sent that can be. Any other is the client's line.
  std::string Say(const std::string& steps, std::size_t client = 0) {
    std::string lines;
    std::istringstream each(steps + "|");
    for (std::string step; std::getline(each, step, '|');) {
      if (step.find_first_of("+<.!@;") != 0) {
        lines += step + "\r\n";
        continue;
      }
      if (!lines.empty()) Command(client).PeerSends(std::exchange(lines, {}));
      if (step[0] == '<') Data(client).PeerSends(step.substr(1));
      if (step[0] == '.') Data(client).PeerCloses();
      if (step[0] == '@') loop.Advance(std::stoi(step.substr(1)));
      if (step[0] == '!') Data(client).receiveError = kConnectionReset, Data(client).Receive();
      Data(client).receiveError = 0;
      if (step[0] == '+' && !Enter() && Data(client).GetState() == TcpSocket::State::Connecting) {
        Data(client).Connected();
      }
      for (int i = 0; i < 9 && step.ends_with(';'); ++i) loop.DoEvents();
    }
    if (!lines.empty()) Command(client).PeerSends(lines);
    const std::string got = Data(client).Sent();
    return got + Plain(Command(client).Sent());
  }
  // Each of the steps alone, and what that is answered.
  using Row = std::pair<std::string, std::string>;
  void Talk(std::initializer_list<Row> rows) {
    for (const auto& [lines, reply] : rows) {
      std::istringstream each(lines + "|");
      for (std::string line; std::getline(each, line, '|');) EXPECT_EQ(Say(line), reply) << line;
    }
  }
  // Somebody connects to the client's passive port; whether he is let in.
  bool Enter(const std::string& who = "10.1.2.3") {
    const auto open = [this] { return SocketAt(4).GetState() == TcpSocket::State::Listening; };
    if (!open()) return false;
    Data().peer = who;
    SocketAt(4).PeerConnects();
    return !open();
  }
  std::string Held(const std::string& name) { return files.contents[kScripts + name]; }

  RemoteSettings remote;
  frmFtpserver window{forms};
  FtpServer server{{loop, sockets, files, clock, folder, window}, remote};
  Texts log;
  Subscription logged_;
};

TEST_F(FtpServerTest, AnswersEachCommand) {
  files.contents = {{kScripts + "old", "x"}, {kScripts + "kept", "x"}};
  files.locked = {kScripts + "kept"};
  files.listings = {{kScripts + "empty\\", {}}, {kScripts + "full\\", {"file"}}};
  Connect();
  Talk({
      {"user anna", "331 User name ok, need password.\n"},
      {"PASS any", kLoggedIn},
      {"tYpE A n", "200 Type set to A n\n"},
      {"REST -5|REST x1", "350 Restarting at 0\n"},
      {"REST 00.5|REST +99999999999999999999", kNoResuming},
      {"CWD nowhere|CDUP", kInRoot},
      {"RETR none", "550 none" + kNone},
      {"DELE OLD", "250 DELE command successful.\n"},
      {"DELE old|DELE kept|DELE", kDenied},
      {"RMD empty", "250 RMD command successful.\n"},
      {"RMD full|RMD", "550 Delete directory failed.\n"},
      {"MKD a b", "550 Failed to create a b\n"},
      {"PORT 1,2,3,4,127,255", kPortDone},
      {"PORT 1,2,3,4,128,0",
       "501 The data port 32768 is above 32767, the highest that can be used.\n"},
      {"PORT 1,2,3,4,5,256|PORT 1,2,3,4,5,|PORT 1,2,3,4,5,6,7", kSyntax},
      {"PORT 1,2,3,4,-5,6|PORT 1,2,3,4,0,0", kSyntax},
      {"|FEAT|STO R| NOOP|NOOP\nx", ""},
  });
  EXPECT_EQ(Say("QUIT|NOOP"), kOk);
  EXPECT_THAT(log,
              ElementsAre("Server started - Listening on port 22", "Connection requested...",
                          "Connected to 10.1.2.3, logging in...", "User anna logged in.",
                          "ERROR - PORT: data port 32768 is above 32767, the highest that can be "
                          "used.",
                          "User anna logged out.", "Server started - Listening on port 22"));
}

TEST_F(FtpServerTest, APasswordIsAskedForWhereItIsRequired) {
  remote.password = "secret";
  Connect();
  Talk({{"PASS wrong", kLoggedIn}});
  remote.passwordRequired = true;
  Talk({{"PASS Secret|PASS secre|PASS secretsecret|PASS", kNotIn}, {"NOOP", kOk}});
  Command().PeerSends("half a comm");
  Command().PeerCloses();
  Connect();
  Talk({{"PASS secret", kLoggedIn}});
  Command().PeerSends("PWD" + std::string(8000, ' '));
  EXPECT_EQ(Say("and so on"), kRoot) << "an endless line is cut";
}

TEST_F(FtpServerTest, ListsFoldersThenFiles) {
  Connect();
  files.listings[kScripts] = {"b.txt", "sub\\", "link@", ".h*", "a\nb"};
  files.contents[kScripts + "b.txt"] = std::string(1234, 'x');
  files.changed[kScripts + "sub"] = {2026, 11, 5, 14, 7, 0, 5};
  Talk({{kPort, kPortDone},
        {"LIST -la", kListing},
        {"+;",
         "drwx------ 1 user group 0  Nov 05 14:07 sub\r\n"
         "drwx------ 1 user group 0  Feb 03 04:05 link\r\n"
         "-rwx------ 1 user group 1234 Feb 03 04:05 b.txt\r\n"
         "-rwx------ 1 user group 0 Feb 03 04:05 .h\r\n" +
             kComplete}});
  files.listings[kScripts].assign(90'000, "file");  // more than a socket keeps
  EXPECT_EQ(std::ranges::count(Say("LIST|+;"), '\r'), 90'000);
}

TEST_F(FtpServerTest, StoresWhatArrivesWhereItBelongs) {
  files.contents[kScripts + "new"] = "longer";
  Connect();
  Talk({{kPort, kPortDone},
        {"STOR new", kSending + "new\n"},
        {"+|<a|<bc", ""},
        {".", kComplete},
        {"STOR cut", kSending + "cut\n"},
        {"+|<abc", ""},
        {"!", kAborted}});
  EXPECT_EQ(Held("new") + Held("cut"), "abcgerabc");
}

TEST_F(FtpServerTest, TransfersThatFailSaySoAndLeaveNothingOpen) {
  const auto refused = [&] { Data().ConnectFailed(kConnectionRefused), loop.DoEvents(); };
  // The command, what goes wrong before there is a connection, what happens then, and the reply.
  const std::tuple<std::string, std::function<void()>, const char*, std::string> cases[] = {
      {"RETR f", [&] { files.locked = {kScripts + "f"}; }, ";", kDenied},
      {{"STOR f\0x", 8}, [] {}, ";", kDenied},
      {"RETR f", [&] { files.readsLeft = 1; }, ";",
       "451 Requested action aborted: local error in processing.\n"},
      {"STOR g", [&] { files.writesLeft = 0; }, "<abc", "452 Requested action not taken.\n"},
      {"RETR f", [&] { Data().room = 0; }, ".", ""},
      {"RETR f", [] {}, ".|;", kComplete},
      {"RETR f", refused, ";", kCannot}};
  for (const auto& [command, fault, then, reply] : cases) {
    SCOPED_TRACE(command + then);
    files.contents[kScripts + "f"] = std::string(3000, 'x');
    Connect();
    Say(kPort + "|" + command);
    fault();
    std::string told = Say(std::string("+|") + then);
    EXPECT_EQ(told.erase(0, told.find_first_not_of('x')), reply);
    EXPECT_EQ(files.open, reply.empty() ? 1 : 0);
    Data().room = FakeSocketHost::kAny;
    Command().PeerCloses();
    files.locked.clear();
    files.readsLeft = files.writesLeft = FakeFiles::kAny;
  }
  Connect();
  EXPECT_EQ(Say("LIST"), kListing + kCannot);
  EXPECT_EQ(log.back(), "ERROR - dataSock: No PORT was given (0)");
  std::string many = "LIST";
  for (int i = 0; i < 3000; ++i) many += "|LIST";
  Say(many);  // each ends at once
}

TEST_F(FtpServerTest, WhatWouldDisturbATransferWaitsForItsEnd) {
  files.contents = {{kScripts + "f", std::string(1025, 'x')}, {kScripts + "g", ""}};
  Connect();
  Data().room = 0;
  Say(kPort + "|RETR f|+");
  EXPECT_EQ(Say("PORT 1,2,3,4,30,5|RETR g|DELE F|NOOP|DELE none"), kOk + kDenied);
  server.RefreshClients();
  EXPECT_THAT(
      window.lstConnectedClients.Items(),
      ElementsAre("(no name yet)  10.1.2.3  since 14:04:30  fetches f: 1024 of 1025 bytes"));
  Data().room = FakeSocketHost::kAny;
  Data().SendMore();
  EXPECT_EQ(Say(";"), std::string(1025, 'x') + kComplete + kPortDone + kSending + "g\n");
  EXPECT_EQ(Data().tried.back(), std::pair(Ipv4{0x0A010203}, std::uint16_t{7685}));
  EXPECT_EQ(Say("+;"), kComplete + "250 DELE command successful.\n");
  EXPECT_EQ(Data().GetState(), TcpSocket::State::Closing) << "what is on its way arrives";
  Say("LIST");
  EXPECT_EQ(Say("QUIT"), kOk) << "and ends what runs";
  EXPECT_EQ(Data().GetState(), TcpSocket::State::Closed);

  // Not without limit.
  Connect(1);
  Say(kPort + "|RETR g", 1);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(Say("LIST", 1), "");
  EXPECT_EQ(Say("LIST", 1), "421 Too many commands are waiting.\n");
  EXPECT_EQ(log.back(), "User  logged out.");
}

TEST_F(FtpServerTest, TheTableHoldsAHundredAndOne) {
  for (std::size_t i = 0; i < 101; ++i) Connect(i);
  SocketAt(0).PeerConnects();
  EXPECT_EQ(SocketAt(1).sent, "421 Too many users.\r\n");
  EXPECT_EQ(SocketAt(1).GetState(), TcpSocket::State::Closing);
  Say(kPort + "|LIST", 49);  // which holds nobody up
  Say("USER bob", 50);
  Command(50).receiveError = kConnectionReset;
  Command(50).Receive();
  EXPECT_EQ(log.end()[-2] + log.back(),
            "ERROR - commandSock: The other side has broken the connection (10054)"
            "User bob logged out.");
  Command(50).receiveError = 0;
  Connect(50);
  server.RefreshClients();
  EXPECT_EQ(window.lstConnectedClients.Items()[50], "(no name yet)  10.1.2.3  since 14:04:30");
  for (int i = 0; i < 2000; ++i) Say("QUIT", 7), Connect(7);
  EXPECT_LE(window.lstServerLog.Items().size(), frmFtpserver::kMostLines);
  EXPECT_TRUE(window.lstServerLog.Items().back().ends_with("logging in..."));

  server.Unload();
  EXPECT_TRUE(window.lstConnectedClients.Items().empty());
  sockets.taken = {22, 2100};
  server.Load();
  EXPECT_EQ(log.back(), "ERROR - start_server: port 22 is in use.");
  server.SetPort(2101);
  EXPECT_FALSE(SocketAt(0).PeerConnects());
}

TEST_F(FtpServerTest, AnswersWhatTodaysClientsAsk) {
  remote.compat = true;
  files.contents = {{kScripts + "f", "123456"}, {kScripts + "sub\\g", "g"}};
  files.changed[kScripts + "f"] = {2026, 11, 5, 14, 7, 9, 0};
  files.listings = {{kScripts, {"f", "sub\\", "a.b.c"}}, {kScripts + "\\", {}}};
  Connect();
  Talk({
      {"|AUTH TLS", "502 Command not implemented.\n"},
      {"NOOP\nnoop\r\nFEAT", kOk + kOk + kFeatures},
      {"OPTS UTF8 ON", "200 Names are in UTF-8.\n"},
      {"OPTS UTF8 OFF", kSyntax},
      {"SIZE /f", "213 6\n"},
      {"MDTM ./f", "213 20261105140709\n"},
      {"SIZE sub|MDTM sub|CWD sub", "550 sub" + kNone},
      {"CWD .", kInRoot},
      {"CDUP", "550 .." + kNone},
      {"RMD /", "550 Delete directory failed.\n"},
      {"PORT 1,2,3,4,255,255|EPRT !1!1.2.3.4!65535!", kPortDone},
      {"EPRT !2!::1!2000!|EPSV 2", "522 Network protocol not supported, use (1)\n"},
      {"EPRT !1!1.2.3.4!65536!|EPRT !1!1.2.3.4!2x!|EPRT !1!1.2.3.4!2000|EPRT !1!|EPRT", kSyntax},
      {"REST 7", "350 Restarting at 7\n"},
      {"REST x", "350 Restarting at 0\n"},
      {"REST 99999999999999999999", kNoResuming},
      {"EPSV ALL", "200 EPSV ALL command successful.\n"},
      {"PASV|" + kPort, kSyntax},
      {"EPSV 1", kExtended},
      {"LIST /f", kListing},
      {"+;", "-rwx------ 1 user group 6 Nov 05 14:07 f\r\n" + kComplete},
  });
  const std::string all = "sub\r\nf\r\na.b.c\r\n";
  const Row listings[] = {{"", all},       {" -a -F /", all},      {" .", all},    {" *", all},
                          {" f", "f\r\n"}, {" ?.*c", "a.b.c\r\n"}, {" *.b", ""},   {" ..", ""},
                          {" sub/*", ""},  {" /a*", "a.b.c\r\n"},  {" a.b.c?", ""}};
  for (const auto& [what, names] : listings) {
    Talk({{"EPSV", kExtended},
          {"NLST" + what, kOpening + "file list.\n"},
          {"+;", names + kComplete}});
  }
}

TEST_F(FtpServerTest, TodaysTransfers) {
  remote.compat = true;
  const std::string contents = std::string(2000, 'x') + "end";
  files.contents[kScripts + "f"] = contents;
  const std::string sending = kSending + "f\n";
  Connect();
  Talk({{"PASV", kPassive}});
  EXPECT_EQ(SocketAt(4).listensOn, Ipv4{0x0A090807}) << "where the client has connected";
  EXPECT_TRUE(Enter("10.6.6.6")) << "whoever it is, and before the command";
  Talk({{"REST 2000", "350 Restarting at 2000\n"},
        {"RETR f", "end" + sending},
        {";", kComplete},
        {"RETR f", sending + kCannot}});
  Say("PASV|RETR f");
  EXPECT_EQ(Say("+;"), contents + kComplete) << "from its beginning again";
  Say("PASV|REST 2004|RETR f");
  EXPECT_EQ(Say("+;"), "554 The file is shorter than that.\n");
  EXPECT_EQ(Say("REST 1|STOR f"), "350 Restarting at 1\n" + kNoResuming);

  Data().room = 0;
  Say("PASV|RETR f|+");
  EXPECT_EQ(Say("PASV|REST 1|RETR f"), "") << "wait for its end";
  const std::string over = "226 ABOR command successful.\n";
  EXPECT_EQ(Say("\xFF\xF4\xFF\xF2"
                "ABOR"),
            kAborted + over + kPassive + "350 Restarting at 1\n" + sending);
  EXPECT_EQ(Say("ABOR|ABOR"), kAborted + over + over);
  Data().room = FakeSocketHost::kAny;
  Say("PASV|RETR f");
  sockets.clientsGo = true;
  EXPECT_EQ(Say("+"), kCannot) << "he has gone before he was let in";
  sockets.clientsGo = false;

  EXPECT_EQ(Say("PASV|+|<new|.|STOR f"), kPassive + sending + kComplete) << "all of it was there";
  EXPECT_EQ(Say("PASV|STOR f"), kPassive + sending);
  EXPECT_EQ(Held("f"), "new") << "of before, and not begun";
  EXPECT_EQ(Say("+|."), kComplete);
  EXPECT_EQ(Held("f"), "");
  EXPECT_EQ(Say("PASV|STOR new|+|."), kPassive + kSending + "new\n" + kComplete);
  files.locked.insert(kScripts + "f");
  Say("PASV|STOR f");
  EXPECT_EQ(Say("+;"), kDenied);

  EXPECT_TRUE(Say("PASV|+|!|STOR g").ends_with("\n" + kAborted));
  Say("PASV|+|PASV");
  EXPECT_EQ(Data().GetState(), TcpSocket::State::Closed) << "it was for the other port";
  for (const std::string& line : {kPort, std::string("ABOR"), std::string("QUIT")}) {
    Say("PASV|" + line);
    EXPECT_FALSE(Enter()) << "the port is not left open by " << line;
  }
}

TEST_F(FtpServerTest, StrictKeepsToTheClientsOwn) {
  remote.strict = remote.passwordRequired = true;
  remote.password = "p";
  for (const char* name : {"link", "dir\\f", "dir/f", "..\\f", "sub\\f"}) {
    files.contents[kScripts + name] = "x";
  }
  files.links = {kScripts + "link", kScripts + "dir"};
  const std::string names =
      R"(STOR ..\f|../f|sub/../f|sub\..\..\f|.||sub//f|sub/|sub\|\f|C:\O\f|C:f|f:s|f::$DATA|f.|f )"
      R"(|sub /f|sub./f|...|nul|sub/Com1.txt|CONOUT$ .x|f*|link|dir/f|dir\f|\\h\f|//?/C:/f/)"
      "|LPT\xC2\xB9|f\x01";
  for (const bool compat : {false, true}) {
    remote.compat = compat;
    Connect();
    Talk({{"LIST|PASV|DELE f|OPTS UTF8 ON", kNotIn}, {"NOOP|SYST", kOk}, {"PASS p", kLoggedIn}});
    EXPECT_EQ(Say(std::regex_replace(names, std::regex("\\|"), "|STOR ")).find("150"),
              std::string::npos);
    Talk({{"RETR ..\\f", "550 ..\\f" + kNone},
          {"CWD sub", "550 sub" + kNone},
          {"CWD /", kInRoot},
          {"RETR sub\\f", kSending + "sub\\f\n" + kCannot},
          {"PORT 10,1,2,4,78,32|PORT 10,1,2,3,3,255",
           "504 Only your own address, and ports from 1024.\n"},
          {"PORT 10,1,2,3,4,0", kPortDone}});
    if (!compat) Command().PeerCloses();
  }
  Talk({{"EPRT !1!10.1.2.4!2000!", "504 Only your own address, and ports from 1024.\n"}});
  Say("PASV|RETR /sub\\f");
  EXPECT_FALSE(Enter("10.6.6.6"));
  EXPECT_EQ(Say("+;"), "x" + kComplete) << "the port waits for the client";
}

TEST_F(FtpServerTest, StrictHasLimitsOfTime) {
  remote.compat = remote.strict = remote.passwordRequired = true;
  remote.password = "p";
  Connect(0);
  Connect(1);
  EXPECT_EQ(Say("PASS x|FEAT"), "");
  EXPECT_EQ(Say("PASS p", 1), "");
  Talk({{"@999", ""}, {"@2", kNotIn + kFeatures}});
  EXPECT_EQ(Plain(Command(1).Sent()), kLoggedIn) << "not before the other";
  for (const int seconds : {1, 2, 4, 8, 16, 32, 32}) {
    EXPECT_EQ(Say("PASS x"), "") << seconds;
    Command().PeerCloses();
    Connect();  // which is of no use
    EXPECT_EQ(Say("NOOP|PASS x|@" + std::to_string(seconds * 1000 - 1)), kOk);
    Command().PeerCloses();
    loop.Advance(1);
    Connect();
  }
  // From the beginning again, whatever the clock says.
  Talk({{"PASS p", kLoggedIn}, {"PASS x", ""}, {"@1000", kNotIn}});
  clock.Move(-60'000);
  Talk({{"PASS p", kLoggedIn}});
  for (const std::string& how : {kPort, std::string("PASV")}) {
    Say(how + "|LIST");
    Talk({{"@14999", ""}, {"@1", kCannot}});
  }
  Say("PASV|@15000");
  EXPECT_FALSE(Enter()) << "which nobody has used";
  files.contents[kScripts + "f"] = std::string(3000, 'x');
  Data().room = 0;
  Say("@840000|" + kPort + "|@840000|RETR f|+|@840000");
  Data().room = 1024;
  Data().SendMore();
  Say(";");
  Talk({{"@840000", ""}, {"@60000", "421 Idle for too long.\n"}});  // it has moved meanwhile
  for (int i = 0; i < 2; ++i) {  // what was long ago does not count
    loop.Advance(30'000);
    Connect();
    Talk({{"PASS x", ""}, {"@1000", kNotIn}});
    loop.Advance(15 * 60'000);
    Command().Sent();
  }
}

TEST_F(FtpServerTest, TheSwitchesCountForWhatBeginsFromThenOn) {
  Connect();
  remote.password = "other";
  server.Relisten();
  EXPECT_TRUE(log.back().starts_with("Connected")) << "it listens there already";
  remote.password.clear();
  remote.compat = remote.strict = true;
  remote.ftpPort = "21";
  remote.bindAddress = "10.9.8.7";
  EXPECT_EQ(Say("FEAT|PASS any"), kLoggedIn) << "as it began";
  Connect(1);
  Say("PASS any", 1);
  loop.Advance(1000);
  EXPECT_EQ(Plain(Command(1).Sent()), kNotIn) << "from another computer";
  Command(1).peer = "127.0.0.1";
  EXPECT_EQ(Say("PASS any", 1), kLoggedIn);
  server.Relisten();
  EXPECT_EQ(log.end()[-2], "No password is set: nobody is let in from other computers.");
  EXPECT_EQ(SocketAt(0).listensOn, Ipv4{0x0A090807});
  for (const char* text : {"", "0", "65536", "2x"}) {
    remote.ftpPort = text;
    server.Relisten();
    EXPECT_EQ(log.back(), "ERROR - start_server: \"" + remote.ftpPort + "\" is no port.");
  }
  remote.ftpPort = "21";
  server.Unload();
  server.Relisten();
  EXPECT_EQ(SocketAt(0).GetState(), TcpSocket::State::Closed);
}

}  // namespace
}  // namespace orvanto
