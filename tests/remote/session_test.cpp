// Conversations byte for byte: connection, login, menu, lists, chat, the task wizard.
#include "tests/remote/RemoteDesk.h"

namespace orvanto {
namespace {

const std::string kWaiting = "Waiting for Connection...";
const std::string kIdle = "shown 10.9.8.7 -N 0.0.0.0";
const std::string kOff = "hidden 10.9.8.7 -- 0.0.0.0";

struct SessionTest : testing::Test, RemoteDesk {
  // Each of the lines with '|' between them, alone, and what that is answered.
  void Talk(std::initializer_list<std::pair<std::string, std::string>> rows) {
    for (const auto& [lines, reply] : rows) {
      std::istringstream each(lines + "|");
      for (std::string line; std::getline(each, line, '|');) EXPECT_EQ(Line(line), reply) << line;
    }
  }
};

TEST_F(SessionTest, SwitchedOnItWaitsWhereItCan) {
  std::string switched;
  const Subscription listens =
      server.switched.Subscribe([&](bool on) { switched += on ? "1" : "0"; });
  server.Restart();
  EXPECT_FALSE(server.Listening()) << "off stays off";
  server.ServerOn();
  settings.WriteSetting(kGeneral, "Inet_ServerPort", "601");
  ASSERT_TRUE(socket.PeerConnects());
  server.Restart();
  EXPECT_EQ(area.Text() + std::to_string(server.Port()), kIdle + "601");
  server.ServerOff();
  EXPECT_EQ(area.Text() + switched, kOff + "10");
  sockets.taken = {2301};
  for (const std::string port : {"1", "0", "-1", "65535", "65536", "2301"}) {
    settings.WriteSetting(kGeneral, "Inet_ServerPort", port);
    server.ServerOn();
    EXPECT_EQ(server.Listening(), port == "1" || port == "65535") << port;
    EXPECT_EQ(Log(), server.Listening() ? kWaiting : "Port " + port + " cannot be used.");
  }
}

TEST_F(SessionTest, AClientWithoutPasswordGetsTheMenu) {
  EXPECT_EQ(Connect(), kMenu);
  EXPECT_EQ(area.Text(), "shown 10.9.8.7 Y- 10.1.2.3 commands");
  EXPECT_EQ(Log(), kWaiting +
                       "\r\n10.1.2.3: Connection from(hostname): 10.1.2.3"
                       "\r\n10.1.2.3: Connection from(IP): 10.1.2.3\r\n10.1.2.3: Main Menu");
  EXPECT_FALSE(socket.PeerConnects()) << "nothing listens while a client is there";
  EXPECT_EQ(Send("-\xFF"), "-") << "half a command";
  socket.PeerCloses();
  EXPECT_EQ(area.Text() + Log(), kIdle + kWaiting);
  // The line survives its connection; half a command does not.
  Connect();
  EXPECT_EQ(Line("5"), kMenu) << "-5";
  server.Kick();
  Connect();
  Send("7");
  EXPECT_EQ(Send("\xFF\xFD\x06\r\n"), "\xFF\xFB\x06") << "before he goes";
  sockets.clientsGo = true;
  EXPECT_FALSE(socket.PeerConnects());
  EXPECT_TRUE(server.Listening());
  sockets.clientsGo = false;
  Connect();
  socket.Close();
  socket.onError(104);
  EXPECT_EQ(area.Text(), kIdle);
}

TEST_F(SessionTest, ThreeWrongPasswordsOverTheLifeOfTheProgram) {
  remote.password = "Secret";
  remote.passwordRequired = 1;
  EXPECT_EQ(Connect(), "Enter Password: ");
  EXPECT_EQ(Send("Secr"), "*") << "one star for each chunk";
  EXPECT_EQ(Line("et"), "\r\n\r\n" + kMenu);
  // A line end of the next client is not the rest of this one's.
  for (const char* end : {"\r", "\n"}) {
    socket.PeerCloses();
    Connect();
    EXPECT_EQ(Send(end), "\r\n\r\nEnter Password: ");
  }
  EXPECT_EQ(Line("secret"), "\r\n\r\nEnter Password: ");
  EXPECT_TRUE(Log().ends_with("Incorrect Password: Attempt 3"));
  EXPECT_EQ(Line("Secret"), "\r\n\r\n" + kMenu) << "right is right";
  // The fourth ends the connection, and so does every one from then on.
  for (int i = 0; i < 2; ++i) {
    socket.PeerCloses();
    Connect();
    EXPECT_EQ(Line("wrong"), "");
    EXPECT_TRUE(server.Listening());
    Connect();
  }
  // A chat lets in without one.
  server.StartChat();
  EXPECT_TRUE(Line("/").ends_with(kMenu));
}

TEST_F(SessionTest, ALineIsANumber) {
  Connect();
  EXPECT_EQ(Send("3\r\n"), "3\r\n") << "echoed, and no line";
  // What is no number is skipped; a line whose number is too large stays until it is none.
  Talk({{"", ""}, {"8|99|0|-5| 8 ", kMenu}, {"|q|1x", ""}, {"99999|8|x", ""}});
  for (int i = 0; i < 5000; ++i) Talk({{"8", kMenu}});
  EXPECT_TRUE(Log().starts_with("10.1.2.3: ")) << "whole lines go";
}

TEST_F(SessionTest, ListsAndQuestions) {
  Connect();
  const std::string back = "\r\nPress 'q' for Main Menu\r\n";
  Talk({{"3", back + "Which task do you want to run?"}, {"q", kMenu}});
  AddMessages({"One", "a\xFF", "Three"});
  const std::string list =
      "\r\n\r\nTask List\r\n---------\r\n\r\n1) One\r\n2) a\xFF\xFF\r\n3) Three\r\n";
  const std::pair<std::string, const char*> questions[] = {
      {"\r\nCreate a new task(y/n)?", "Create New Task"},
      {back + "Which task do you want to delete?", "Delete Task"},
      {back + "Which task do you want to run?", "Run Task"},
      {back + "Which task do you want to edit?", "Edit Task"}};
  for (int choice = 1; const auto& [question, log] : questions) {
    Talk({{std::to_string(choice++), list + question}});
    EXPECT_TRUE(Log().ends_with(log)) << log;
    Talk({{choice == 2 ? "q" : "Q", kMenu}});  // nothing is done
  }
  messageBoxes.expected = {{"Three"}};
  const std::pair<const char*, std::string> answers[] = {
      {"2|2", "\r\nDeleted Task: a\xFF\xFF\r\n"}, {"2|3", ""},
      {"2|0", "\r\nDeleted Task: \r\n"},          {"3|3", ""},
      {"3|2", "\r\nStarted Task: Three\r\n"},     {"3|-1", "\r\nStarted Task: \r\n"},
      {"2|2", "\r\nDeleted Task: Three\r\n"}};
  for (const auto& [lines, text] : answers) EXPECT_EQ(Lines(lines), text + kMenu);

  // Every second script is listed.
  const std::pair<Texts, std::string> listings[] = {
      {{"a", "dir\\", "b", "c"}, "a\r\nc"}, {{"hidden*", "b", "A", "_", "c"}, "A\r\nc\r\n"}};
  for (const auto& [names, text] : listings) {
    files.listings["C:\\Orvanto\\scripts\\"] = names;
    Talk({{"5", "\r\n\r\nScripts Folder\r\n--------------\r\n\r\n" + text + back},
          {"x", ""},
          {"q", kMenu}});
  }
}

constexpr const char* kOffer = "\xFF\xFB\x01\xFF\xFB\x03";

TEST_F(SessionTest, TodaysClientsSendLinesOrHaveTheirKeysEchoed) {
  Connect();
  Send("8");
  remote.compat = true;
  EXPECT_EQ(Send(kCrLf), kMenu) << "an open connection goes on as it began";
  Send("left");
  socket.PeerCloses();
  EXPECT_EQ(Connect(), kOffer + kMenu);
  EXPECT_EQ(Send("8\n"), kMenu) << "he echoes himself, and what was left has gone";
  EXPECT_EQ(Send("99999\n8\n"), "");
  loop.DoEvents();
  EXPECT_EQ(socket.Sent(), kMenu) << "after a line that failed";
  EXPECT_EQ(Send("\xFF\xFD\x01\xFF\xFD\x03"), "");
  EXPECT_EQ(Send("98\x7F\b\b8"), "98\b \b\b \b8");
  EXPECT_EQ(Send(std::string("\r\0", 2)), kMenu);
  // The rest of what a client has sent ends with him.
  Send("7\n8\n");
  socket.Sent();
  loop.DoEvents();
  EXPECT_EQ(socket.Sent(), "");
  remote.password = "S\xC3\xA9";
  remote.passwordRequired = true;
  EXPECT_EQ(Connect(), kOffer + std::string("Enter Password: "));
  EXPECT_EQ(Send("\xFF\xFD\x01S\xC3\xA9\n"), "**\r\n\r\n" + kMenu);
}

struct StrictSessionTest : SessionTest {
  std::string After(std::int64_t milliseconds) {
    loop.Advance(milliseconds);
    return socket.Sent();
  }
  StrictSessionTest() {
    remote.strict = remote.passwordRequired = true;
    remote.password = "Secret";
  }
};

TEST_F(StrictSessionTest, AWrongPasswordMakesEverybodyWait) {
  const std::string again = "\r\n\r\nEnter Password: ";
  Connect();
  for (const int seconds : {2, 4, 8}) {
    EXPECT_EQ(Line("wrong"), "");
    EXPECT_EQ(After(seconds * 1000 - 1), "");
    EXPECT_EQ(After(1), again);
  }
  // Who does not wait for his answer is no better off.
  Line("wrong");
  socket.PeerCloses();
  EXPECT_EQ(Connect(), "Enter Password: ");
  EXPECT_EQ(Line("Secret"), "");
  EXPECT_EQ(After(7999), "");
  loop.Advance(1);
  for (int i = 0; i < 10; ++i) loop.DoEvents();
  EXPECT_EQ(socket.Sent(), "******\r\n\r\n" + kMenu);
}

TEST_F(StrictSessionTest, AChatLetsNobodyInAndSilenceEnds) {
  for (const bool here : {true, false}) {
    Connect();
    server.StartChat();
    socket.Sent();
    if (here) chat.cmdQuit.Press();
    EXPECT_TRUE((here ? socket.Sent() : Line("/")).ends_with("\r\n\r\nEnter Password: "));
    EXPECT_EQ(Line("Secret"), "\r\n\r\n" + kMenu);
    server.StartChat();
    EXPECT_TRUE(Line("/").ends_with(kMenu));
    const int minute = 60 * 1000;
    loop.Advance(14 * minute);
    Line("");
    loop.Advance(15 * minute - 1);
    EXPECT_TRUE(server.Connected());
    loop.Advance(1);
    EXPECT_TRUE(server.Listening());
  }
}

TEST_F(StrictSessionTest, ListensWhereItIsToldToAndWithoutAPasswordForThisComputer) {
  remote.bindAddress = "10.9.8.7";
  server.ServerOn();
  EXPECT_EQ(socket.listensOn, Ipv4{0x0A090807});
  sockets.taken = {600};
  server.Relisten();
  EXPECT_EQ(Log(), kWaiting) << "it listens there already";
  remote.bindAddress = "10.9.8.6";
  server.Relisten();
  EXPECT_EQ(Log(), "Port 600 of 10.9.8.6 cannot be used.");
  sockets.taken = {};
  remote.strict = false;
  server.Relisten();
  EXPECT_EQ(socket.listensOn, Ipv4{});
  const std::string noPassword = "No password is set: nobody is let in from other computers.";
  remote = {};
  remote.strict = true;
  server.Relisten();
  EXPECT_EQ(Log(), kWaiting + "\r\n" + noPassword);
  for (const auto& [peer, welcome] :
       {std::pair("10.1.2.3", false), {"127.0.0.1", true}, {"10.9.8.7", true}}) {
    socket.peer = peer;
    EXPECT_EQ(socket.PeerConnects(), welcome);
    if (welcome) server.Kick();
  }
  remote.password = "Secret";
  remote.passwordRequired = true;
  socket.peer = "10.1.2.3";
  Connect();
  remote.password.clear();
  EXPECT_EQ(Line(""), "") << "it has gone meanwhile";
}

// A task that lets other events in while it runs, each time `meanwhile`.
struct LongTaskTest : SessionTest {
  LongTaskTest() {
    AddMessages({"One"});
    Add("Fails", "08:05", "TaskType=1 Path=bad");
    messageBoxes.answersAll = true;
    execution.onRun = [this](const TaskRecord&) {
      if (meanwhile) std::exchange(meanwhile, {})();
    };
    Connect();
    Line("3");
  }
  // All that has waited is handled; what the client is sent.
  std::string Settle() {
    for (int i = 0; i < 1000; ++i) loop.DoEvents();
    return socket.Sent();
  }

  std::function<void()> meanwhile;
};

TEST_F(LongTaskTest, WhatItsClientSendsMeanwhileWaitsAsItArrived) {
  meanwhile = [&] {
    EXPECT_EQ(socket.Sent(), "\xFF\xFB\x06") << "nothing is kept back";
    for (const char* chunk : {"3", kCrLf, "3", kCrLf}) EXPECT_EQ(Send(chunk), "");
    for (int i = 0; i < 1000; ++i) Send("12");
  };
  Send("1");
  EXPECT_EQ(Send("\xFF\xFD\x06\r\n"), "\r\nStarted Task: One\r\n" + kMenu);
  for (int i = 0; i < 1000; ++i) loop.DoEvents();
  EXPECT_LT(socket.pieces, 300) << "not all of it is kept apart";
  const std::string rest = socket.Sent();
  EXPECT_TRUE(rest.starts_with("3\r\n\r\nTask List")) << rest;
  EXPECT_EQ(rest.size() - rest.find("?3" + kMenu + "12"), 2 + kMenu.size() + 2000) << rest;
}

TEST_F(LongTaskTest, TheNextClientIsToldNothingOfItAndKeepsHisLine) {
  for (const char* task : {"1", "2"}) {
    meanwhile = [&] {
      Send("7");
      Send(kCrLf);
      socket.PeerCloses();
      Connect();
      socket.PeerSends("3");
    };
    EXPECT_EQ(Line(task), "3");
    EXPECT_EQ(Settle(), "") << "nothing is left of what his forerunner sent";
    EXPECT_TRUE(Line("").ends_with("Which task do you want to run?"));
  }
}

TEST_F(LongTaskTest, ClientsWhoComeAndGoMakeNoLongChainOfLines) {
  int runs = 0, open = 0, most = 0;
  execution.onRun = [&](const TaskRecord&) {
    most = std::max(most, ++open);
    if (++runs < 100) {
      socket.PeerCloses();
      Connect();
      Lines("3|1");
    }
    --open;
  };
  Line("1");
  Settle();
  EXPECT_EQ(runs, 100) << "every client's turn comes";
  EXPECT_LE(most, 10);
}

TEST_F(SessionTest, ChatStartedHere) {
  server.StartChat();
  EXPECT_FALSE(chat.Visible()) << "nobody is there";
  Connect();
  server.StartChat();
  EXPECT_TRUE(Log().ends_with("Server Started Chat"));
  EXPECT_EQ(socket.Sent(), "\r\n\r\nServer Started Chat...\r\n\r\nPress '/' to Quit...\r\n\r\n");
  EXPECT_EQ(Send("h"), "\r\nClient: h");
  EXPECT_EQ(Send("i"), "i");
  EXPECT_EQ(Line(""), "\r\n");
  ASSERT_TRUE(chat.txtSend.Type("hello"));
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(chat.txtSend.PressEnter());
  EXPECT_EQ(socket.Sent(), "\r\nServer: hello\r\n\r\nServer: \r\n");
  server.StartChat();
  EXPECT_EQ(chat.txtChat.Text(), "Client: hi\r\n\r\nServer: hello\r\n\r\nServer: \r\n");
  EXPECT_EQ(Line("/x"), "\r\n");
  EXPECT_TRUE(chat.Close() && !chat.Visible());
  EXPECT_EQ(Line("/"), "\r\nChat Ended by Client\r\n\r\n" + kMenu) << "it went on for the client";
  server.StartChat();
  EXPECT_EQ(chat.txtChat.Text(), "");
  socket.Sent();
  EXPECT_TRUE(chat.cmdQuit.Press() && !chat.Visible());
  server.SendTilde();
  EXPECT_EQ(socket.Sent(), "\r\nChat Ended by Server\r\n\r\n" + kMenu + "~");
}

TEST_F(SessionTest, ChatAskedForByTheClient) {
  const std::string asking = "\r\n\r\nAsking for Chat...\r\n", ask = "Accept Chat Request?";
  const std::string starting = "\r\n\r\nStarting Chat...\r\n\r\nPress '/' ";
  Connect();
  const auto asked = [&] {
    EXPECT_EQ(socket.Sent(), asking);
    EXPECT_TRUE(Log().ends_with("Client Requesting Chat") && !chat.Visible());
  };
  messageBoxes.expected = {{ask, Answer::No, asked},
                           {ask, Answer::Yes, asked},
                           {ask, Answer::Yes, [&] { socket.PeerCloses(); }}};
  Talk(
      {{"6", kMenu}, {"6", "\r\n\r\nChat Request Accepted\r\n" + starting + "to Quit...\r\n\r\n"}});
  EXPECT_TRUE(chat.Visible());
  EXPECT_EQ(messageBoxes.buttonsShown, Buttons::NoUnlessYes);
  server.Kick();
  Connect();
  EXPECT_EQ(Line("6"), asking);
  EXPECT_FALSE(chat.Visible()) << "he has gone";
  remote.chatAutoAccept = 1;
  Connect();
  EXPECT_EQ(Line("6"), starting + "and then Enter to Quit...\r\n\r\n");
  EXPECT_TRUE(Log().ends_with("Client Started Chat"));
  EXPECT_EQ(Line("x"), "\r\n");
  server.ServerOn();
  EXPECT_EQ(area.Text(), kIdle) << "nothing of the client is left";
  EXPECT_FALSE(chat.Visible());
}

const std::string kStep = "\r\n\r\n";  // what every step begins with
const std::string kChanged = "\r\n\r\nDo you want this option changed(y/n)?";

struct WizardTest : testing::Test, RemoteDesk {
  WizardTest() {
    files.contents = {{"C:\\Orvanto\\scripts\\Night.txt", ""}, {"C:\\x.exe", ""}};
    Connect();
  }
  // What the last of the lines brings, after the step's beginning.
  std::string Talk(const std::string& lines) {
    const std::string reply = Lines(lines);
    return reply.starts_with(kStep) ? reply.substr(kStep.size()) : "no step: " + reply;
  }
};

TEST_F(WizardTest, AsksAndRejectsAndAsksAgain) {
  AddMessages({"Taken"});
  store.DateOrderMonthFirst = 1;
  EXPECT_TRUE(Talk("1|Y").ends_with("Create a new task(y/n)?"));
  EXPECT_EQ(Talk("y"), "\r\nEnter Name for New Task: ");
  EXPECT_EQ(Talk("A|00:00"),
            "\r\n\r\nOn which day(s) should this task occur?\r\n\r\n1) Once, on a certain date\r\n"
            "2) Recurring\r\n3) One day in every month\r\n>");
  Line("q");
  const char *const kInvalid = "Invalid Option", *const kNoFile = "File does not exist";
  const char* const kSelected = "Invalid Option Selected";
  // What leads to a question, a piece of it, an answer that is not taken, and what is said then.
  const std::array<const char*, 4> cases[] = {
      {"", "Name", "", "No task name given"},
      {"", "Name", "TAKEN", TaskStore::kSameSection},
      {"|A", "24-hour", "09.30", "Invalid Time"},
      {"|A", "(xx:xx)", "12:3", "Invalid Time"},
      {"|A|00:00", "3) One", "01", kSelected},
      {"|A|00:00|1", "(mm/dd/yyyy)", "12/31/26", "Invalid Date"},
      {"|A|00:00|1", "(mm/dd/yyyy)", "31/12/2026", "Invalid Month given for Date"},
      {"|A|00:00|2", "10) Every Weekend Day\r\n>", "11", kInvalid},
      {"|A|00:00|2|10", "13) December\r\n>", "14", kInvalid},
      {"|A|00:00|3", "(1-31)", "32", kInvalid},
      {"|A|00:00|1|12/31/2026", "2) Run Program/Shortcut/Open File", "8", kSelected},
      {"|A|00:00|3|1|1", "script file is not in the home directory", "none.txt", kNoFile},
      {"|A|00:00|3|1|2", "program, shortcut or file", "", kNoFile},
      {"|A|00:00|3|1|3", "print", "z", kNoFile},
      {"|A|00:00|3|1|7", "it must be preceeded by a path)", "none.wav", kNoFile},
      {"|A|00:00|3|1|2|c:\\x.exe|", "6) Hidden\r\n>", "7", kSelected}};
  for (const auto& [answers, piece, refused, message] : cases) {
    const std::string question = Talk(std::string("1|y") + answers);
    EXPECT_NE(question.find(piece), std::string::npos) << question;
    EXPECT_EQ(Talk(refused), "\r\n" + std::string(message) + "\r\n" + question) << refused;
    Line("q");
  }
  EXPECT_TRUE(Talk("1|y|A|00:00|3|1|6").starts_with("Enter the message"));
  store.DateOrderMonthFirst = 0;
  EXPECT_TRUE(Talk("q|1|y|A|00:00|1").ends_with("(dd/mm/yyyy)?"));
  EXPECT_EQ(Talk("q|1|y|A|00:00|3|1|4|maybe"), "Keep this task(y/n)?");
  for (const char* lines : {"n", "1|n"}) EXPECT_EQ(Talk(lines), kMenu);
}

TEST_F(WizardTest, AnEditShowsWhatHoldsAndLeavesNothingToTheNextTask) {
  AddMessages({"Old"});
  EXPECT_EQ(Talk("1|y|Date|23:59|1|31/12/2026|2|c:\\x.exe|-a|2|y"), kMenu);
  EXPECT_EQ(Talk("1|y|N|08:05|3|7|5|y"), kMenu);
  const std::string days = "\r\nCurrent Option for on what days this Task should occur:\r\n\r\n";
  const std::string name = "\r\nCurrent Task Name: ", keep = "Keep these changes(y/n)?";
  const std::string time = "\r\nCurrent Time for Task: 08:05" + kChanged;
  const std::string type = "\r\nCurrent Task Type: Popup Message" + kChanged;
  const std::pair<const char*, std::string> talk[] = {
      {"4|1|y", "\r\nEnter Name for New Task: "},
      {"q|4|1", name + "Old" + kChanged},
      {"maybe", name + "Old" + kChanged},
      {"n", time},
      {"n", days + "Every Day In Every Month" + kChanged},
      {"n", type},
      {"n", keep},
      {"what", kStep + keep},
      {"y", kStep + kMenu},
      {"4|3|n|n", days + "Occurs this day in every Month: 7" + kChanged},
      {"n|n|y", kStep + kMenu},
      {"4|2|n|n", days + "Occurs only on this day: 31-12-2026" + kChanged},
      {"n|n|y", kStep + kMenu},
      {"1|y|New|00:00|3|1|3|c:\\x.exe", "Keep this task(y/n)?"},
      {"y", kMenu}};
  for (const auto& [answers, reply] : talk) EXPECT_EQ(Talk(answers), reply) << answers;
  EXPECT_EQ(Told(4), "New | Print File | 00:00 on Day Number: 1, c:\\x.exe  1 General");
}

}  // namespace
}  // namespace orvanto
