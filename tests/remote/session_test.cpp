// Conversations byte for byte: connection, login, menu, lists, chat.
#include <gtest/gtest.h>

#include "platform/text/Lines.h"
#include "tests/remote/RemoteDesk.h"

namespace orvanto {
namespace {

class SessionTest : public testing::Test, public RemoteDesk {};

TEST_F(SessionTest, SwitchedOnItWaitsAndSwitchedOffItDoesNot) {
  std::string switched;
  server.onSwitched = [&](bool on) { switched += on ? "1" : "0"; };
  server.ServerOn();
  EXPECT_TRUE(server.Listening());
  EXPECT_EQ(server.Port(), 600);
  EXPECT_EQ(area.caption, "10.9.8.7");
  EXPECT_EQ(area.Text(), "shown -N 0.0.0.0");
  EXPECT_EQ(area.log, "Waiting for Connection...");
  server.ServerOff();
  EXPECT_FALSE(server.Listening());
  EXPECT_EQ(area.Text(), "hidden -- 0.0.0.0");
  EXPECT_EQ(switched, "10");

  sockets.taken = {2301};
  for (const char* port : {"2300", "0", "-1", "65536", "2301"}) {
    settings.WriteSetting(kGeneral, "Inet_ServerPort", port);
    server.ServerOn();
    const bool good = std::string(port) == "2300";
    EXPECT_EQ(server.Listening(), good) << port;
    EXPECT_EQ(server.Port(), 2300);
    EXPECT_EQ(area.log, good ? "Waiting for Connection..."
                             : "Port " + std::string(port) + " cannot be used.");
  }
}

TEST_F(SessionTest, AClientWithoutPasswordGetsTheMenu) {
  EXPECT_EQ(Connect(), kMenu);
  EXPECT_EQ(server.State(), SessionState::MainMenu);
  EXPECT_EQ(area.Text(), "shown Y- 10.1.2.3 commands");
  EXPECT_EQ(area.log,
            "Waiting for Connection...\r\n10.1.2.3: Connection from(hostname): 10.1.2.3"
            "\r\n10.1.2.3: Connection from(IP): 10.1.2.3\r\n10.1.2.3: Main Menu");
  EXPECT_FALSE(socket.PeerConnects()) << "nothing listens while a client is there";
  socket.PeerCloses();
  EXPECT_TRUE(server.Listening());
  EXPECT_EQ(area.Text(), "shown -N 0.0.0.0");
  EXPECT_EQ(area.log, "Waiting for Connection...");
  EXPECT_EQ(Connect(), kMenu);
  server.Kick();
  EXPECT_TRUE(server.Listening());
}

TEST_F(SessionTest, ThreeWrongPasswordsOverTheLifeOfTheProgram) {
  remote.password = "Secret";
  remote.passwordRequired = 1;
  EXPECT_EQ(Connect(), "Enter Password: ");
  socket.PeerSends("S");
  socket.PeerSends("ecr");
  EXPECT_EQ(socket.Sent(), "**") << "one star for each chunk";
  EXPECT_EQ(Line("et"), "\r\n\r\n" + kMenu);
  socket.PeerCloses();
  Connect();
  for (const char* wrong : {"secret", "", "Secret "}) {
    EXPECT_EQ(Line(wrong), "\r\n\r\nEnter Password: ");
  }
  EXPECT_NE(area.log.find("Incorrect Password: Attempt 3"), std::string::npos);
  EXPECT_EQ(Line("Secret"), "\r\n\r\n" + kMenu) << "right is right";
  socket.PeerCloses();
  // The fourth ends the connection, and so does every one from then on.
  for (int i = 0; i < 2; ++i) {
    Connect();
    EXPECT_EQ(Line("wrong"), "");
    EXPECT_TRUE(server.Listening());
  }
  // A chat lets in without one.
  Connect();
  server.StartChat();
  EXPECT_TRUE(Line("/").ends_with(kMenu));
}

TEST_F(SessionTest, ALineEndMustBeAChunkOfItsOwn) {
  Connect();
  socket.PeerSends("3\r\n");
  EXPECT_EQ(socket.Sent(), "3\r\n") << "echoed and not processed";
  EXPECT_EQ(server.State(), SessionState::MainMenu);
  // What is left in the line survives the connection.
  socket.PeerCloses();
  Connect();
  socket.PeerSends("x");
  EXPECT_EQ(socket.Sent(), "x");
  socket.PeerSends(kCrLf);
  EXPECT_EQ(socket.Sent(), "") << "no number: skipped";
  for (const char* line : {"8", "99", "0", "-5", "32767", " 8 "}) {
    EXPECT_EQ(Line(line), kMenu) << line;
  }
  for (const char* line : {"", "q", "1x", "help"}) EXPECT_EQ(Line(line), "") << line;
  EXPECT_EQ(server.State(), SessionState::MainMenu);
  // A number that is too large ends the handling of its chunk, and the line stays until it is none.
  for (const char* line : {"99999", "8", "x"}) EXPECT_EQ(Line(line), "") << line;
  EXPECT_EQ(Line("8"), kMenu);
}

TEST_F(SessionTest, ListsAndQuestions) {
  Connect();
  const std::string back = "\r\nPress 'q' for Main Menu\r\n";
  EXPECT_EQ(Line("3"), back + "Which task do you want to run?");
  EXPECT_EQ(Line("q"), kMenu);
  AddMessages({"One", "Two"});
  const std::string list = "\r\n\r\nTask List\r\n---------\r\n\r\n1) One\r\n2) Two\r\n";
  const std::pair<const char*, std::string> questions[] = {
      {"1", list + "\r\nCreate a new task(y/n)?"},
      {"2", list + back + "Which task do you want to delete?"},
      {"3", list + back + "Which task do you want to run?"},
      {"4", list + back + "Which task do you want to edit?"}};
  for (const auto& [choice, text] : questions) {
    EXPECT_EQ(Line(choice), text) << choice;
    if (*choice != '1') {
      EXPECT_EQ(Line("Q"), kMenu) << "no number: nothing is done";
      Line(choice);
    }
    EXPECT_EQ(Line("q"), kMenu);
  }
  EXPECT_EQ(store.NoTasks(), 2);

  // Every second script is listed.
  const std::string head = "\r\n\r\nScripts Folder\r\n--------------\r\n\r\n";
  const std::pair<Texts, std::string> listings[] = {
      {{}, ""},
      {{"a"}, "a"},
      {{"a", "b"}, "a\r\n"},
      {{"a", "dir\\", "b", "c"}, "a\r\nc"},
      {{"hidden*", "b", "A", "_", "c"}, "A\r\nc\r\n"}};
  for (const auto& [names, text] : listings) {
    files.listings["C:\\Orvanto\\scripts\\"] = names;
    EXPECT_EQ(Line("5"), head + text + back);
    EXPECT_EQ(server.State(), SessionState::ListScripts);
    EXPECT_EQ(Line("x"), "");
    EXPECT_EQ(Line("q"), kMenu);
  }
  EXPECT_EQ(Line("7"), "");
  EXPECT_TRUE(server.Listening());
}

TEST_F(SessionTest, TasksAreDeletedAndRun) {
  AddMessages({"One", "Two", "Three"});
  Connect();
  const std::pair<const char*, std::string> deletions[] = {
      {"2", "\r\nDeleted Task: Two\r\n"}, {"3", ""}, {"0", "\r\nDeleted Task: \r\n"}};
  for (const auto& [number, text] : deletions) {
    Line("2");
    EXPECT_EQ(Line(number), text + kMenu);
  }
  EXPECT_EQ(Names(), (Texts{"One", "Three"}));
  messageBoxes.expected = {{"Three"}};
  Line("3");
  EXPECT_EQ(Line("2"), "\r\nStarted Task: Three\r\n" + kMenu);
  Line("3");
  EXPECT_EQ(Line("-1"), "\r\nStarted Task: \r\n" + kMenu);
  EXPECT_TRUE(done.empty()) << "there is nothing to start";
}

// A task that lets other events in while it runs, each time the next of `meanwhile`.
class LongTaskTest : public SessionTest {
 protected:
  LongTaskTest() {
    AddMessages({"One"});
    Add("Fails", "08:05", [](TaskEntry& entry) {
      entry.taskType = kRunScript;
      entry.path = "bad";
    });
    AddMessages({"Two"});
    messageBoxes.answersAll = true;
    execution.onRun = [this](const TaskRecord& task) {
      ran += task.name + " ";
      if (meanwhile) std::exchange(meanwhile, {})();
    };
    Connect();
    Line("3");
  }
  void Send(const Texts& chunks) {
    for (const std::string& chunk : chunks) socket.PeerSends(chunk);
  }
  // Has all handled that has waited.
  void Settle() {
    for (int i = 0; i < 1000; ++i) loop.DoEvents();
  }

  std::function<void()> meanwhile;
  std::string ran;
};

TEST_F(LongTaskTest, WhatItsClientSendsMeanwhileWaitsAsItArrived) {
  meanwhile = [&] {
    Send({"3", kCrLf, "3", kCrLf, "12"});
    EXPECT_EQ(socket.Sent(), "1\xFF\xFB\x06") << "and nothing is kept back";
  };
  Send({"1", "\xFF\xFD\x06\r\n"});
  EXPECT_EQ(socket.Sent(), "\r\nStarted Task: One\r\n" + kMenu);
  Settle();
  const std::string rest = socket.Sent();
  EXPECT_TRUE(rest.starts_with("3\r\n\r\nTask List")) << rest;
  EXPECT_TRUE(rest.ends_with("?3\r\nStarted Task: Two\r\n" + kMenu + "12")) << rest;
  EXPECT_EQ(ran, "One Two ");

  // However much that is, nothing of it is lost; but not all of it is kept apart.
  Lines({"", "3"});
  meanwhile = [&] { Send(Texts(1000, "xyz")); };
  Line("1");
  Settle();
  EXPECT_LT(socket.pieces, 300);
  EXPECT_EQ(socket.Sent().size(), 3000U);
}

TEST_F(LongTaskTest, TheNextClientIsToldNothingOfItAndKeepsHisLine) {
  for (const char* task : {"1", "2"}) {
    meanwhile = [&] {
      Send({"7", kCrLf});
      socket.PeerCloses();
      Connect();
      Send({"3"});
    };
    EXPECT_EQ(Line(task), "3");
    EXPECT_TRUE(Line("").ends_with("Which task do you want to run?"));
  }
  // Nobody is there any more.
  meanwhile = [&] { server.ServerOn(); };
  EXPECT_EQ(Line("1"), "");
  EXPECT_EQ(area.log, "Waiting for Connection...");
}

TEST_F(LongTaskTest, BehindAScriptThatFailsNothingIsSentAndTheLineStays) {
  EXPECT_EQ(Lines({"2", ""}), "");
  EXPECT_EQ(ran, "Fails Fails ") << "Enter alone is the same line again";
  EXPECT_EQ(Line("q"), kMenu) << "2q is no task";
}

TEST_F(LongTaskTest, ClientsWhoComeAndGoMakeNoLongChainOfLines) {
  int runs = 0;
  int open = 0;
  int most = 0;
  execution.onRun = [&](const TaskRecord&) {
    most = std::max(most, ++open);
    if (++runs < 100) {
      socket.PeerCloses();
      Connect();
      Lines({"3", "1"});
    }
    --open;
  };
  Line("1");
  Settle();
  EXPECT_EQ(runs, 100) << "every client's turn comes";
  EXPECT_LE(most, 10);
}

TEST_F(SessionTest, ChatStartedHere) {
  Connect();
  server.StartChat();
  EXPECT_EQ(socket.Sent(), "\r\n\r\nServer Started Chat...\r\n\r\nPress '/' to Quit...\r\n\r\n");
  EXPECT_TRUE(chat.Visible());
  socket.PeerSends("h");
  socket.PeerSends("i");
  EXPECT_EQ(socket.Sent(), "\r\nClient: hi");
  socket.PeerSends(kCrLf);
  EXPECT_EQ(socket.Sent(), "\r\n");
  EXPECT_EQ(chat.txtChat.Text(), "Client: hi\r\n");
  ASSERT_TRUE(chat.txtSend.Type("hello"));
  ASSERT_TRUE(chat.txtSend.PressEnter());
  ASSERT_TRUE(chat.txtSend.PressEnter());
  EXPECT_EQ(socket.Sent(), "\r\nServer: hello\r\n\r\nServer: \r\n");
  EXPECT_EQ(chat.txtChat.Text(), "Client: hi\r\n\r\nServer: hello\r\n\r\nServer: \r\n");
  EXPECT_EQ(chat.txtSend.Text(), "");
  server.StartChat();
  EXPECT_EQ(chat.txtChat.Text(), "Client: hi\r\n\r\nServer: hello\r\n\r\nServer: \r\n");
  EXPECT_EQ(Line("/x"), "\r\n");
  ASSERT_TRUE(chat.Close());
  EXPECT_FALSE(chat.Visible());
  EXPECT_EQ(server.State(), SessionState::Chat) << "the client is not told";
  EXPECT_EQ(Line("/"), "\r\nChat Ended by Client\r\n\r\n" + kMenu);
  EXPECT_FALSE(chat.Loaded());
  EXPECT_NE(area.log.find("Server Started Chat"), std::string::npos);
  server.SendTilde();
  EXPECT_EQ(socket.Sent(), "~");
}

TEST_F(SessionTest, ChatAskedForByTheClient) {
  Connect();
  const std::string asking = "\r\n\r\nAsking for Chat...\r\n";
  messageBoxes.expected = {
      {"Accept Chat Request?", Answer::No, [&] { EXPECT_EQ(socket.Sent(), asking); }}};
  EXPECT_EQ(Line("6"), kMenu);
  EXPECT_EQ(messageBoxes.buttonsShown, Buttons::NoUnlessYes);
  EXPECT_FALSE(chat.Visible());
  messageBoxes.expected = {{"Accept Chat Request?", Answer::Yes, [&] { socket.Sent(); }}};
  EXPECT_EQ(Line("6"),
            "\r\n\r\nChat Request Accepted\r\n\r\n\r\nStarting Chat..."
            "\r\n\r\nPress '/' to Quit...\r\n\r\n");
  EXPECT_TRUE(chat.Visible());
  ASSERT_TRUE(chat.cmdQuit.Press());
  EXPECT_EQ(socket.Sent(), "\r\nChat Ended by Server\r\n\r\n" + kMenu);
  messageBoxes.expected = {{"Accept Chat Request?", Answer::Yes, [&] { socket.PeerCloses(); }}};
  EXPECT_EQ(Line("6"), asking);
  EXPECT_FALSE(chat.Visible()) << "he has gone";

  remote.chatAutoAccept = 1;
  Connect();
  EXPECT_EQ(Line("6"),
            "\r\n\r\nStarting Chat...\r\n\r\nPress '/' and then Enter to Quit...\r\n\r\n");
  EXPECT_EQ(server.State(), SessionState::Chat);
  server.Kick();
  EXPECT_FALSE(chat.Visible());
  // Nor does a switch that is turned leave anything of the client there.
  for (const bool on : {true, false}) {
    Connect();
    server.StartChat();
    on ? server.ServerOn() : server.ServerOff();
    EXPECT_EQ(area.Text(), on ? "shown -N 0.0.0.0" : "hidden -- 0.0.0.0");
    EXPECT_FALSE(chat.Visible());
  }
}

TEST_F(SessionTest, WhatAClientSendsIsBoundedAndTelnetsByteDoubled) {
  AddMessages(
      {"a\xFF"
       "b"});
  Connect();
  const std::string chunk(16384, 'x');
  for (int i = 0; i < 100; ++i) {
    socket.PeerSends(chunk);
    EXPECT_EQ(socket.Sent().size(), chunk.size());
  }
  EXPECT_EQ(Line(""), "");
  for (int i = 0; i < 10000; ++i) EXPECT_EQ(Line("8"), kMenu);
  EXPECT_LE(area.log.size(), 64U << 10);
  EXPECT_NE(Line("3").find("1) a\xFF\xFF"
                           "b\r\n"),
            std::string::npos);
  socket.PeerSends("\xFF\xFD\x01");
  EXPECT_EQ(socket.Sent(), "\xFF\xFB\x01");
}

}  // namespace
}  // namespace orvanto
