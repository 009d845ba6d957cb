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
constexpr const char* kSending = "150 Opening BINARY mode data connection for ";
constexpr const char* kComplete = "226 Transfer complete.\n";

// Lines are told with a LF at their ends.
std::string Plain(std::string text) {
  std::erase(text, '\r');
  return text;
}

class FtpServerTest : public testing::Test, protected CoreDesk {
 protected:
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
  // Lines with '|' between them; what they are answered at once.
  std::string Say(const std::string& lines, std::size_t client = 0) {
    std::string text = lines + "\r\n";
    for (std::size_t at = 0; (at = text.find('|')) != text.npos;) text.replace(at, 1, "\r\n");
    Command(client).PeerSends(text);
    return Plain(Command(client).Sent());
  }
  using Row = std::pair<std::string, std::string>;
  void Talk(std::initializer_list<Row> rows, std::size_t client = 0) {
    for (const auto& [line, reply] : rows) EXPECT_EQ(Say(line, client), reply + "\n") << line;
  }
  // Somebody connects to the client's passive port; whether he is let in.
  bool Enter(const std::string& who = "10.1.2.3") {
    const auto open = [this] { return SocketAt(4).GetState() == TcpSocket::State::Listening; };
    if (!open()) return false;
    Data().peer = who;
    SocketAt(4).PeerConnects();
    return !open();
  }
  // The end of a transfer that runs; what the client has got then, and what it is told.
  std::string Received() {
    if (Data().GetState() != TcpSocket::State::Connected) Data().Connected();
    for (int i = 0; i < 9; ++i) loop.DoEvents();
    return Data().Sent();
  }
  std::string Answered() { return Plain(Command().Sent()); }

  RemoteSettings remote;
  frmFtpserver window{forms};
  FtpServer server{{loop, sockets, files, clock, folder, window}, remote};
  Texts log;
  Subscription logged_;
};

TEST_F(FtpServerTest, AnswersEachCommand) {
  files.contents[kScripts + "old"] = "x";
  files.contents[kScripts + "kept"] = "x";
  files.locked.insert(kScripts + "kept");
  files.listings[kScripts + "empty\\"] = {};
  files.listings[kScripts + "full\\"] = {"file"};
  Connect();
  Talk({
      {"user anna", "331 User name ok, need password."},
      {"PASS any", "230 User logged in, proceed."},
      {"tYpE A n", "200 Type set to A n"},
      {"REST -5", "350 Restarting at 0"},
      {"REST x1", "350 Restarting at 0"},
      {"REST 00.5", "504 Resuming is currently unsupported"},
      {"REST +99999999999999999999", "504 Resuming is currently unsupported"},
      {"PWD", "257 \"/\" is current directory."},
      {"CWD nowhere", "250 Directory changed to /"},
      {"CDUP", "250 Directory changed to /"},
      {"RETR none", "550 none: No such file or directory"},
      {"NOOP", "200 Command ok."},
      {"SYST", "200 Command ok."},
      {"DELE OLD", "250 DELE command successful."},
      {"DELE old", "550 Permission denied."},
      {"DELE kept", "550 Permission denied."},
      {"DELE", "550 Permission denied."},
      {"RMD empty", "250 RMD command successful."},
      {"RMD full", "550 Delete directory failed."},
      {"RMD", "550 Delete directory failed."},
      {"MKD a b", "550 Failed to create a b"},
      {"PORT 1,2,3,4,127,255", "200 Port command successful."},
      {"PORT 1,2,3,4,128,0",
       "501 The data port 32768 is above 32767, the highest that can be used."},
      {"PORT 1,2,3,4,5,256", "501 Syntax error in parameters or arguments."},
      {"PORT 1,2,3,4,5,", "501 Syntax error in parameters or arguments."},
      {"PORT 1,2,3,4,5,6,7", "501 Syntax error in parameters or arguments."},
      {"PORT 1,2,3,4,-5,6", "501 Syntax error in parameters or arguments."},
      {"PORT 1,2,3,4,0,0", "501 Syntax error in parameters or arguments."},
  });
  for (const char* line : {"", "FEAT", "STO R", " NOOP", "NOOP\nx"}) EXPECT_EQ(Say(line), "");
  EXPECT_EQ(files.contents.count(kScripts + "old"), 0U);
  EXPECT_EQ(Say("QUIT|NOOP"), "200 Command ok.\n");
  EXPECT_EQ(Command().wants, "r .") << "the goodbye is on its way";
  EXPECT_THAT(log,
              ElementsAre("Server started - Listening on port 22", "Connection requested...",
                          "Connected to 10.1.2.3, logging in...", "User anna logged in.",
                          "ERROR - PORT: data port 32768 is above 32767, the highest that can be "
                          "used.",
                          "User anna logged out.", "Server started - Listening on port 22"));
}

TEST_F(FtpServerTest, APasswordIsAskedForWhereItIsRequired) {
  remote.password = "secret";
  const std::tuple<bool, const char*, bool> cases[] = {
      {false, "wrong", true},        {true, "Secret", false}, {true, "secre", false},
      {true, "secretsecret", false}, {true, "", false},       {true, "secret", true}};
  for (const auto& [required, password, in] : cases) {
    Connect();
    remote.passwordRequired = required;
    const std::string reply = in ? "230 User logged in, proceed.\n" : "530 Not logged in.\n";
    EXPECT_EQ(Say(std::string("PASS ") + password), reply);
    EXPECT_EQ(log.back() == "User  logged in.", in);
    EXPECT_EQ(Say("NOOP"), "200 Command ok.\n") << "all the same";
    Command().PeerSends("half a comm");
    Command().PeerCloses();
  }
  Connect();
  Command().PeerSends("PWD" + std::string(8000, ' '));
  EXPECT_EQ(Say("and so on"), "257 \"/\" is current directory.\n") << "an endless line is cut";
}

TEST_F(FtpServerTest, ListsFoldersThenFiles) {
  Connect();
  Say(kPort);
  const std::string opening = "150 Opening ASCII mode data connection for /bin/ls.\n";
  EXPECT_EQ(Say("LIST -la"), opening);
  EXPECT_EQ(Data().tried.back(), std::pair(Ipv4{0x0A010203}, std::uint16_t{20000}));
  EXPECT_EQ(Received(), "") << "an empty folder";
  EXPECT_EQ(Answered(), kComplete);

  files.listings[kScripts] = {"b.txt", "sub\\", "link@", ".h*", "a\nb"};
  files.contents[kScripts + "b.txt"] = std::string(1234, 'x');
  files.changed[kScripts + "sub"] = {2026, 11, 5, 14, 7, 0, 5};
  EXPECT_EQ(Say("LIST"), opening);
  EXPECT_EQ(Received(),
            "drwx------ 1 user group 0  Nov 05 14:07 sub\r\n"
            "drwx------ 1 user group 0  Feb 03 04:05 link\r\n"
            "-rwx------ 1 user group 1234 Feb 03 04:05 b.txt\r\n"
            "-rwx------ 1 user group 0 Feb 03 04:05 .h\r\n");
  EXPECT_EQ(Answered(), kComplete);

  files.listings[kScripts].assign(90'000, "file");  // more than a socket keeps
  Say("LIST");
  EXPECT_EQ(Received().size(),
            90'000 * std::string("-rwx------ 1 user group 0 Feb 03 04:05 file\r\n").size());
}

TEST_F(FtpServerTest, SendsFilesInChunks) {
  Connect();
  Say(kPort);
  for (const std::size_t size : {0U, 1U, 1023U, 1024U, 1025U, 2500U}) {
    std::string contents(size, '\0');
    for (std::size_t i = 0; i < size; ++i) contents[i] = static_cast<char>(i * 7 + i / 256);
    files.contents[kScripts + "f"] = contents;
    EXPECT_EQ(Say("RETR f"), kSending + std::string("f\n"));
    Data().Connected();
    EXPECT_EQ(Data().sent.size(), std::min<std::size_t>(size, 1024)) << "one at a time";
    for (int i = 0; i < 3; ++i) loop.DoEvents();
    EXPECT_EQ(Data().pieces, static_cast<int>((size + 1023) / 1024));
    EXPECT_EQ(Data().GetState(), TcpSocket::State::Closing);
    EXPECT_TRUE(Data().Sent() == contents);
    EXPECT_EQ(Answered(), kComplete);
    EXPECT_EQ(files.open, 0);
  }
}

TEST_F(FtpServerTest, StoresWhatArrivesWhereItBelongs) {
  files.contents[kScripts + "new"] = "longer";
  Connect();
  Say(kPort);
  EXPECT_EQ(Say("STOR new"), kSending + std::string("new\n"));
  Data().Connected();
  for (const char* piece : {"a", "bc"}) Data().PeerSends(piece);
  EXPECT_EQ(Answered(), "");
  Data().PeerCloses();
  EXPECT_EQ(Answered(), kComplete);
  EXPECT_EQ(files.contents[kScripts + "new"], "abcger");
  for (std::size_t cut = 0; cut <= 3; ++cut) {
    EXPECT_EQ(Say("STOR cut"), kSending + std::string("cut\n"));
    Data().Connected();
    Data().PeerSends(std::string("abc").substr(0, cut));
    Data().receiveError = kConnectionReset;
    Data().Receive();
    Data().receiveError = 0;
    EXPECT_EQ(Answered(), "426 Connection closed; transfer aborted.\n");
    EXPECT_EQ(files.contents[kScripts + "cut"], std::string("abc").substr(0, cut));
    EXPECT_EQ(files.open, 0);
    files.contents.erase(kScripts + "cut");
  }
}

TEST_F(FtpServerTest, TransfersThatFailSaySoAndLeaveNothingOpen) {
  files.contents[kScripts + "f"] = std::string(3000, 'x');
  const std::string denied = "550 Permission denied.\n";
  const std::string cannot = "425 Can't open data connection.\n";
  const struct {
    std::string command;
    std::function<void()> fault;  // before there is a connection
    std::function<void()> then;
    std::string reply;
  } cases[] = {
      {"RETR f", [&] { files.locked = {kScripts + "f"}; }, [] {}, denied},
      {{"STOR f\0x", 8}, [] {}, [] {}, denied},
      {"RETR f", [&] { files.readsLeft = 1; }, [&] { loop.DoEvents(); },
       "451 Requested action aborted: local error in processing.\n"},
      {"RETR f", [] {}, [&] { files.contents[kScripts + "f"] = "cut", loop.DoEvents(); },
       "451 Requested action aborted: local error in processing.\n"},
      {"STOR g", [&] { files.diskLeft = 2; }, [&] { Data().PeerSends("abc"); },
       "452 Requested action not taken.\n"},
      {"STOR g", [&] { files.writesLeft = 0; }, [&] { Data().PeerSends("abc"); },
       "452 Requested action not taken.\n"},
      {"RETR f", [&] { Data().room = 0; }, [&] { Data().PeerCloses(); }, ""},
      {"RETR f", [] {}, [&] { Data().PeerCloses(), loop.DoEvents(); }, kComplete},
      {"LIST", [&] { Data().ConnectFailed(kConnectionRefused), loop.DoEvents(); }, [] {}, cannot},
      {"RETR f", [&] { Data().ConnectFailed(kConnectionRefused), loop.DoEvents(); }, [] {}, cannot},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    Connect();
    Say(kPort);
    Say(c.command);
    c.fault();
    if (Data().GetState() == TcpSocket::State::Connecting) Data().Connected();
    c.then();
    EXPECT_EQ(Answered(), c.reply);
    EXPECT_EQ(files.open, c.reply.empty() ? 1 : 0);
    Data().room = FakeSocketHost::kAny;
    Data().receiveError = 0;
    Command().PeerCloses();
    EXPECT_EQ(files.open, 0);
    files.locked.clear();
    files.diskLeft = files.readsLeft = files.writesLeft = FakeFiles::kAny;
    files.contents[kScripts + "f"] = std::string(3000, 'x');
  }
  Connect();
  EXPECT_EQ(Say("LIST"), "150 Opening ASCII mode data connection for /bin/ls.\n" + cannot);
  EXPECT_EQ(log.back(), "ERROR - dataSock: No PORT was given (0)");
  std::string many = "LIST";
  for (int i = 0; i < 3000; ++i) many += "|LIST";
  Say(many);  // each ends at once
}

TEST_F(FtpServerTest, WhatWouldDisturbATransferWaitsForItsEnd) {
  files.contents[kScripts + "f"] = std::string(1025, 'x');
  files.contents[kScripts + "g"] = "g";
  Connect();
  Say(kPort + "|RETR f");
  Data().room = 0;
  Data().Connected();
  EXPECT_EQ(Say("PORT 1,2,3,4,30,0|RETR g|DELE F|NOOP|DELE none"),
            "200 Command ok.\n550 Permission denied.\n");
  server.RefreshClients();
  EXPECT_THAT(
      window.lstConnectedClients.Items(),
      ElementsAre("(no name yet)  10.1.2.3  since 14:04:30  fetches f: 1024 of 1025 bytes"));
  EXPECT_EQ(files.contents.count(kScripts + "f"), 1U);
  Data().room = FakeSocketHost::kAny;
  Data().SendMore();
  loop.DoEvents();
  EXPECT_EQ(Answered(),
            kComplete + std::string("200 Port command successful.\n") + kSending + "g\n");
  EXPECT_EQ(Data().tried.back().second, 7680);
  EXPECT_EQ(Received(), std::string(1025, 'x') + "g");
  EXPECT_EQ(Answered(), kComplete + std::string("250 DELE command successful.\n"));
  Say("LIST");
  EXPECT_EQ(Say("QUIT"), "200 Command ok.\n") << "and ends what runs";
  EXPECT_EQ(Data().GetState(), TcpSocket::State::Closed);

  // Not without limit.
  Connect(1);
  Say(kPort + "|RETR g", 1);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(Say("LIST", 1), "");
  EXPECT_EQ(Say("LIST", 1), "421 Too many commands are waiting.\n");
  EXPECT_EQ(log.back(), "User  logged out.");
  EXPECT_EQ(Data(1).GetState(), TcpSocket::State::Closed);
}

TEST_F(FtpServerTest, TheTableHoldsAHundredAndOne) {
  for (std::size_t i = 0; i < 101; ++i) Connect(i);
  SocketAt(0).PeerConnects();
  EXPECT_EQ(SocketAt(1).sent, "421 Too many users.\r\n");
  EXPECT_EQ(SocketAt(1).GetState(), TcpSocket::State::Closing);
  Say(kPort + "|LIST", 49);  // which holds nobody up
  EXPECT_EQ(Say("USER bob", 50), "331 User name ok, need password.\n");
  Command(50).receiveError = kConnectionReset;
  Command(50).Receive();
  EXPECT_EQ(log.end()[-2], "ERROR - commandSock: The other side has broken the connection (10054)");
  EXPECT_EQ(log.back(), "User bob logged out.");
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

const std::string kOpening = "150 Opening ASCII mode data connection for ";
const std::string kPassive = "227 Entering Passive Mode (10,9,8,7,19,136).";
const std::string kExtended = "229 Entering Extended Passive Mode (|||5000|)";
const std::string kSyntax = "501 Syntax error in parameters or arguments.";
const std::string kFeatures =
    "211-Features:\n EPRT\n EPSV\n MDTM\n PASV\n REST STREAM\n SIZE\n UTF8\n211 End";
const std::string kNone = ": No such file or directory";
const std::string kPortDone = "200 Port command successful.";

TEST_F(FtpServerTest, AnswersWhatTodaysClientsAsk) {
  remote.compat = true;
  files.contents = {{kScripts + "f", "123456"}, {kScripts + "sub\\g", "g"}};
  files.changed[kScripts + "f"] = {2026, 11, 5, 14, 7, 9, 0};
  files.listings = {{kScripts, {"f", "sub\\", "a.b.c"}}, {kScripts + "\\", {}}};
  Connect();
  const std::string other = "522 Network protocol not supported, use (1)";
  Talk({
      {"", "502 Command not implemented."},
      {"NOOP\nnoop\r\nFEAT", "200 Command ok.\n200 Command ok.\n" + kFeatures},
      {"OPTS UTF8 OFF", kSyntax},
      {"SIZE /f|SIZE sub", "213 6\n550 sub" + kNone},
      {"MDTM ./f|MDTM x", "213 20261105140709\n550 x" + kNone},
      {"CWD .|CDUP|CWD sub", "250 Directory changed to /\n550 .." + kNone + "\n550 sub" + kNone},
      {"RMD /", "550 Delete directory failed."},
      {"PORT 1,2,3,4,255,255|EPRT !1!1.2.3.4!65535!", kPortDone + "\n" + kPortDone},
      {"EPRT !2!::1!2000!|EPSV 2", other + "\n" + other},
      {"EPRT !1!1.2.3.4!65536!|EPRT !1!1.2.3.4!2x!", kSyntax + "\n" + kSyntax},
      {"EPRT !1!1.2.3.4!2000", kSyntax},
      {"EPRT !1!|EPRT", kSyntax + "\n" + kSyntax},
      {"REST 7|REST x", "350 Restarting at 7\n350 Restarting at 0"},
      {"REST 99999999999999999999", "504 Resuming is currently unsupported"},
      {"EPSV ALL|PASV|" + kPort, "200 EPSV ALL command successful.\n" + kSyntax + "\n" + kSyntax},
      {"EPSV 1|LIST /f", kExtended + "\n" + kOpening + "/bin/ls."},
  });
  EXPECT_TRUE(Enter());
  EXPECT_EQ(Received(), "-rwx------ 1 user group 6 Nov 05 14:07 f\r\n");
  Answered();
  const std::string all = "sub\r\nf\r\na.b.c\r\n";
  const Row listings[] = {{"", all},       {" -a -F /", all},      {" .", all},    {" *", all},
                          {" f", "f\r\n"}, {" ?.*c", "a.b.c\r\n"}, {" *.b", ""},   {" ..", ""},
                          {" sub/*", ""},  {" /a*", "a.b.c\r\n"},  {" a.b.c?", ""}};
  for (const auto& [what, names] : listings) {
    Talk({{"EPSV|NLST" + what, kExtended + "\n" + kOpening + "file list."}});
    EXPECT_TRUE(Enter());
    EXPECT_EQ(Received(), names) << what;
    EXPECT_EQ(Answered(), kComplete);
  }
}

TEST_F(FtpServerTest, TodaysTransfers) {
  remote.compat = true;
  files.contents[kScripts + "f"] = std::string(2000, 'x') + "end";
  const std::string sending = kSending + std::string("f\n");
  Connect();
  Talk({{"PASV", kPassive}});
  EXPECT_EQ(SocketAt(4).listensOn, Ipv4{0x0A090807}) << "where the client has connected";
  EXPECT_TRUE(Enter("10.6.6.6")) << "whoever it is, and before the command";
  EXPECT_FALSE(SocketAt(4).PeerConnects()) << "one only";
  EXPECT_EQ(Say("REST 2000|RETR f"), "350 Restarting at 2000\n" + sending);
  EXPECT_EQ(Received(), "end");
  EXPECT_EQ(Answered(), kComplete);
  EXPECT_EQ(Say("RETR f"), sending + "425 Can't open data connection.\n");
  for (const char* rest : {"NOOP", "REST 7|REST x"}) {
    Say(std::string(rest) + "|PASV|RETR f"), Enter();
    EXPECT_EQ(Received().size(), 2003U);
    Answered();
  }
  EXPECT_TRUE((Say("PASV|REST 2004|RETR f"), Enter()));
  EXPECT_EQ(Answered(), "554 The file is shorter than that.\n");
  EXPECT_EQ(Say("REST 1|STOR f"), "350 Restarting at 1\n504 Resuming is currently unsupported\n");

  EXPECT_TRUE((Say("PASV|RETR f"), Enter()));
  EXPECT_EQ(Say("PASV|REST 1|RETR f"), "") << "wait for its end";
  const std::string aborted = "426 Connection closed; transfer aborted.\n";
  const std::string over = "226 ABOR command successful.";
  const std::string telnet = "\xFF\xF4\xFF\xF2";
  Talk({{telnet + "ABOR",
         aborted + over + "\n" + kPassive + "\n350 Restarting at 1\n" + kSending + "f"},
        {"ABOR|ABOR", aborted + over + "\n" + over}});

  EXPECT_TRUE((Say("PASV"), Enter()));
  Data().PeerSends("new"), Data().PeerCloses();
  EXPECT_EQ(Say("STOR f"), sending + kComplete) << "all of it was there before the command";
  Say("PASV|STOR f");
  EXPECT_EQ(files.contents[kScripts + "f"], "new") << "nothing of what was there before, and yet";
  Enter(), Data().PeerCloses();
  EXPECT_EQ(Answered(), kComplete);
  EXPECT_EQ(files.contents[kScripts + "f"], "");
  Say("PASV|STOR new"), Enter(), Data().PeerCloses();
  EXPECT_EQ(Answered(), kComplete);
  files.locked.insert(kScripts + "f");
  Say("PASV|STOR f"), Enter();
  EXPECT_EQ(Answered(), "550 Permission denied.\n");

  for (const char* line : {"LIST", "STOR g"}) {
    Say("PASV"), Enter(), Data().receiveError = kConnectionReset, Data().Receive();
    EXPECT_TRUE(Say(line).ends_with("\n" + aborted));
    Data().receiveError = 0;
  }
  Say("PASV"), Enter(), Say("PASV");
  EXPECT_EQ(Data().GetState(), TcpSocket::State::Closed) << "it was for the other port";
  for (const std::string& line : {kPort, std::string("ABOR"), std::string("QUIT")}) {
    Say("PASV|" + line);
    EXPECT_FALSE(Enter()) << "the port is not left open by " << line;
  }
}

// As they are recorded; after a listing there is its data connection.
TEST_F(FtpServerTest, DialoguesOfClientsThatAreNotTriedHere) {
  remote.compat = true;
  files.listings[kScripts] = {"f"};
  const std::initializer_list<Row> ftpOfWindows = {
      {"OPTS UTF8 ON|USER anna", "200 Names are in UTF-8.\n331 User name ok, need password."},
      {"PASS x", "230 User logged in, proceed."},
      {kPort + "|NLST", kPortDone + "\n" + kOpening + "file list."},
  };
  const std::initializer_list<Row> fileZilla = {
      {"AUTH TLS|AUTH SSL", "502 Command not implemented.\n502 Command not implemented."},
      {"USER anna", "331 User name ok, need password."},
      {"PASS x|SYST|FEAT", "230 User logged in, proceed.\n200 Command ok.\n" + kFeatures},
      {"OPTS UTF8 ON|PWD", "200 Names are in UTF-8.\n257 \"/\" is current directory."},
      {"TYPE I|PASV|LIST", "200 Type set to I\n" + kPassive + "\n" + kOpening + "/bin/ls."},
  };
  for (const auto& dialogue : {ftpOfWindows, fileZilla}) {
    Connect();
    Talk(dialogue);
    Enter();
    EXPECT_TRUE(Received().ends_with("f\r\n"));
    EXPECT_EQ(Answered(), kComplete);
    Talk({{"XPWD|QUIT", "257 \"/\" is current directory.\n200 Command ok."}});
    Command().Close();
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
  const std::string notIn = "530 Not logged in.";
  for (const bool compat : {false, true}) {
    remote.compat = compat;
    Connect();
    Talk({{"LIST|PASV|DELE f|OPTS UTF8 ON", notIn + "\n" + notIn + "\n" + notIn + "\n" + notIn},
          {"NOOP|SYST|PASS p", "200 Command ok.\n200 Command ok.\n230 User logged in, proceed."}});
    EXPECT_EQ(Say(std::regex_replace(names, std::regex("\\|"), "|STOR ")).find("150"),
              std::string::npos);
    Talk({{"RETR ..\\f|DELE ..\\f", "550 ..\\f" + kNone + "\n550 Permission denied."},
          {"RMD .|CWD sub", "550 Delete directory failed.\n550 sub" + kNone},
          {"RETR sub/../sub/f|CWD /", "550 sub/../sub/f" + kNone + "\n250 Directory changed to /"},
          {"RETR sub\\f", kSending + std::string("sub\\f\n425 Can't open data connection.")},
          {"PORT 10,1,2,4,78,32", "504 Only your own address, and ports from 1024."},
          {"PORT 10,1,2,3,3,255", "504 Only your own address, and ports from 1024."},
          {"PORT 10,1,2,3,4,0", kPortDone}});
    if (!compat) Command().PeerCloses();
  }
  Talk({{"EPRT !1!10.1.2.4!2000!", "504 Only your own address, and ports from 1024."},
        {"PASV", kPassive}});
  Say("RETR /sub\\f");
  EXPECT_FALSE(Enter("10.6.6.6"));
  EXPECT_TRUE(Enter()) << "the port waits for the client";
  Received();
  EXPECT_EQ(Answered(), kComplete);
}

TEST_F(FtpServerTest, StrictHasLimitsOfTime) {
  remote.compat = remote.strict = remote.passwordRequired = true;
  remote.password = "p";
  Connect(0), Connect(1);
  EXPECT_EQ(Say("PASS x|FEAT"), "");
  EXPECT_EQ(Say("PASS p", 1), "");
  loop.Advance(999);
  EXPECT_EQ(Answered(), "");
  loop.Advance(2);
  EXPECT_EQ(Answered(), "530 Not logged in.\n" + kFeatures + "\n");
  EXPECT_EQ(Plain(Command(1).Sent()), "230 User logged in, proceed.\n") << "not before the other";
  for (const int seconds : {1, 2, 4, 8, 16, 32, 32}) {
    EXPECT_EQ(Say("PASS x"), "") << seconds;
    Command().PeerCloses(), Connect();  // which is of no use
    EXPECT_EQ(Say("NOOP|PASS x"), "200 Command ok.\n");
    loop.Advance(seconds * 1000 - 1);
    EXPECT_EQ(Answered(), "");
    Command().PeerCloses(), loop.Advance(1), Connect();
  }
  EXPECT_EQ(Say("PASS p"), "230 User logged in, proceed.\n");
  EXPECT_EQ(Say("PASS x"), "") << "from the beginning again";
  loop.Advance(1000);
  clock.Move(-60'000);
  EXPECT_EQ(Answered(), "530 Not logged in.\n");
  EXPECT_EQ(Say("PASS p"), "230 User logged in, proceed.\n");

  for (const std::string& how : {kPort, std::string("PASV")}) {
    Say(how + "|LIST"), loop.Advance(14'999);
    EXPECT_EQ(Answered(), "");
    loop.Advance(1);
    EXPECT_EQ(Answered(), "425 Can't open data connection.\n");
  }
  Say("PASV"), loop.Advance(15'000);
  EXPECT_FALSE(Enter()) << "which nobody has used";
  files.contents[kScripts + "f"] = std::string(3000, 'x');
  loop.Advance(14 * 60'000), Say(kPort), loop.Advance(14 * 60'000);
  Say("RETR f"), Data().Connected();
  Data().room = 0, loop.DoEvents(), loop.Advance(14 * 60'000);
  Data().room = 1024, Data().SendMore(), loop.DoEvents(), loop.Advance(14 * 60'000);
  EXPECT_EQ(Answered(), "") << "it has moved meanwhile";
  loop.Advance(60'000);
  EXPECT_EQ(Answered(), "421 Idle for too long.\n");
  EXPECT_EQ(log.back(), "User  logged out.");
  for (int i = 0; i < 2; ++i) {  // what was long ago does not count
    loop.Advance(30'000), Connect(), Say("PASS x"), loop.Advance(1000);
    EXPECT_EQ(Answered(), "530 Not logged in.\n");
    loop.Advance(15 * 60'000), Answered();
  }
}

TEST_F(FtpServerTest, TheSwitchesCountForWhatBeginsFromThenOn) {
  Connect();
  remote.password = "other", server.Relisten();
  EXPECT_TRUE(log.back().starts_with("Connected")) << "it listens there already";
  remote.password.clear();
  remote.compat = remote.strict = true;
  remote.ftpPort = "21";
  remote.bindAddress = "10.9.8.7";
  EXPECT_EQ(Say("FEAT|PASS any"), "230 User logged in, proceed.\n") << "as it began";
  Connect(1);
  Say("PASS any", 1), loop.Advance(1000);
  EXPECT_EQ(Plain(Command(1).Sent()), "530 Not logged in.\n") << "from another computer";
  Command(1).peer = "127.0.0.1";
  EXPECT_EQ(Say("PASS any", 1), "230 User logged in, proceed.\n");
  server.Relisten();
  EXPECT_EQ(Say("NOOP", 1), "200 Command ok.\n") << "it goes on";
  EXPECT_EQ(log.end()[-2], "No password is set: nobody is let in from other computers.");
  EXPECT_EQ(log.back(), "Server started - Listening on port 21");
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
