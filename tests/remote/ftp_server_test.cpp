// The FTP server to the byte, on scripted sockets and files.
#include <gmock/gmock.h>

#include <algorithm>

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
      EXPECT_EQ(line.substr(0, 11), "14:04:30 - ");
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
  // The end of a transfer that runs; what the client has got then, and what it is told.
  std::string Received() {
    Data().Connected();
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
  const std::pair<const char*, const char*> cases[] = {
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
  };
  for (const auto& [line, reply] : cases) {
    EXPECT_EQ(Say(line), reply + std::string("\n")) << line;
  }
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

}  // namespace
}  // namespace orvanto
