// Conversations byte for byte: connection, login, menu, lists, chat.
#include <gtest/gtest.h>

#include "tests/remote/RemoteDesk.h"

namespace orvanto {
namespace {

TEST(Session, SwitchedOnItWaitsAndSwitchedOffItDoesNot) {
  RemoteDesk desk;
  std::string switched;
  desk.server.onSwitched = [&](bool on) { switched += on ? "1" : "0"; };
  desk.server.ServerOn();
  EXPECT_TRUE(desk.server.Listening());
  EXPECT_EQ(desk.server.Port(), 600);
  EXPECT_EQ(desk.area.caption, "10.9.8.7");
  EXPECT_EQ(desk.area.lamps, "-N");
  EXPECT_EQ(desk.area.log, "Waiting for Connection...");
  EXPECT_TRUE(desk.area.shown);
  desk.server.ServerOff();
  EXPECT_FALSE(desk.server.Listening());
  EXPECT_EQ(desk.area.lamps, "--");
  EXPECT_FALSE(desk.area.shown);
  EXPECT_EQ(switched, "10");

  desk.settings.WriteSetting(kGeneral, "Inet_ServerPort", "2300");
  desk.server.ServerOn();
  EXPECT_EQ(desk.server.Port(), 2300);
  for (const char* port : {"0", "-1", "65536", "2301"}) {
    desk.sockets.taken = {2301};
    desk.settings.WriteSetting(kGeneral, "Inet_ServerPort", port);
    desk.server.ServerOn();
    EXPECT_FALSE(desk.server.Listening()) << port;
    EXPECT_EQ(desk.area.log, std::string("Port ") + port + " cannot be used.");
  }
}

TEST(Session, AClientWithoutPasswordGetsTheMenu) {
  RemoteDesk desk;
  EXPECT_EQ(desk.Connect(), kMenu);
  EXPECT_EQ(desk.server.State(), SessionState::MainMenu);
  EXPECT_EQ(desk.area.lamps, "Y-");
  EXPECT_EQ(desk.area.client, "10.1.2.3");
  EXPECT_TRUE(desk.area.commands);
  EXPECT_EQ(desk.area.log,
            "Waiting for Connection...\r\n10.1.2.3: Connection from(hostname): 10.1.2.3"
            "\r\n10.1.2.3: Connection from(IP): 10.1.2.3\r\n10.1.2.3: Main Menu");
  EXPECT_FALSE(desk.socket.PeerConnects()) << "nothing listens while a client is there";
  desk.socket.PeerCloses();
  EXPECT_TRUE(desk.server.Listening());
  EXPECT_EQ(desk.area.lamps, "-N");
  EXPECT_EQ(desk.area.client, "0.0.0.0");
  EXPECT_FALSE(desk.area.commands);
  EXPECT_EQ(desk.area.log, "Waiting for Connection...");
  EXPECT_EQ(desk.Connect(), kMenu);
  desk.server.Kick();
  EXPECT_TRUE(desk.server.Listening());
}

TEST(Session, ThreeWrongPasswordsOverTheLifeOfTheProgram) {
  RemoteDesk desk;
  desk.remote.password = "Secret";
  desk.remote.passwordRequired = 1;
  EXPECT_EQ(desk.Connect(), "Enter Password: ");
  desk.socket.PeerSends("S");
  desk.socket.PeerSends("ecr");
  EXPECT_EQ(desk.socket.Sent(), "**") << "one star for each chunk";
  EXPECT_EQ(desk.Line("et"), "\r\n\r\n" + kMenu);
  desk.socket.PeerCloses();
  desk.Connect();
  const std::string again = "\r\n\r\nEnter Password: ";
  EXPECT_EQ(desk.Line("secret"), again);
  EXPECT_EQ(desk.Line(""), again);
  EXPECT_EQ(desk.Line("Secret "), again);
  EXPECT_NE(desk.area.log.find("Incorrect Password: Attempt 3"), std::string::npos);
  EXPECT_EQ(desk.Line("Secret"), "\r\n\r\n" + kMenu) << "right is right";
  desk.socket.PeerCloses();
  desk.Connect();
  EXPECT_EQ(desk.Line("wrong"), "");
  EXPECT_TRUE(desk.server.Listening()) << "the fourth ends the connection";
  desk.Connect();
  EXPECT_EQ(desk.Line("wrong"), "");
  EXPECT_TRUE(desk.server.Listening()) << "and so does every one from then on";
}

TEST(Session, ALineEndMustBeAChunkOfItsOwn) {
  RemoteDesk desk;
  desk.Connect();
  desk.socket.PeerSends("3\r\n");
  EXPECT_EQ(desk.socket.Sent(), "3\r\n") << "echoed and not processed";
  EXPECT_EQ(desk.server.State(), SessionState::MainMenu);
  // What is left in the line survives the connection.
  desk.socket.PeerCloses();
  desk.Connect();
  desk.socket.PeerSends("x");
  EXPECT_EQ(desk.socket.Sent(), "x");
  desk.socket.PeerSends(kCrLf);
  EXPECT_EQ(desk.socket.Sent(), "") << "no number: skipped";
  EXPECT_EQ(desk.Line("8"), kMenu);
}

TEST(Session, TheMainMenuTakesNumbers) {
  RemoteDesk desk;
  desk.Connect();
  for (const char* line : {"8", "99", "0", "-5", "32767", " 8 "}) {
    EXPECT_EQ(desk.Line(line), kMenu) << line;
  }
  for (const char* line : {"", "q", "1x", "help"}) EXPECT_EQ(desk.Line(line), "") << line;
  EXPECT_EQ(desk.server.State(), SessionState::MainMenu);
  // A number that is too large ends the handling of its chunk, and the line stays.
  EXPECT_EQ(desk.Line("99999"), "");
  EXPECT_EQ(desk.Line(""), "");
}

TEST(Session, ListsAndQuestions) {
  RemoteDesk desk;
  desk.Connect();
  const std::string back = "\r\nPress 'q' for Main Menu\r\n";
  EXPECT_EQ(desk.Line("3"), back + "Which task do you want to run?");
  EXPECT_EQ(desk.Line("q"), kMenu);
  desk.AddMessage("One");
  desk.AddMessage("Two");
  const std::string list = "\r\n\r\nTask List\r\n---------\r\n\r\n1) One\r\n2) Two\r\n";
  const std::pair<const char*, std::string> questions[] = {
      {"1", list + "\r\nCreate a new task(y/n)?"},
      {"2", list + back + "Which task do you want to delete?"},
      {"3", list + back + "Which task do you want to run?"},
      {"4", list + back + "Which task do you want to edit?"},
      {"5", "\r\n\r\nScripts Folder\r\n--------------\r\n\r\n" + back}};
  for (const auto& [choice, text] : questions) {
    EXPECT_EQ(desk.Line(choice), text) << choice;
    if (*choice != '1' && *choice != '5') {
      EXPECT_EQ(desk.Line("Q"), kMenu) << "no number: nothing is done";
      desk.Line(choice);
    }
    EXPECT_EQ(desk.Line("q"), kMenu);
  }
  EXPECT_EQ(desk.store.NoTasks(), 2);
  EXPECT_EQ(desk.Line("7"), "");
  EXPECT_TRUE(desk.server.Listening());
}

TEST(Session, EverySecondScriptIsListed) {
  RemoteDesk desk;
  desk.Connect();
  const std::string head = "\r\n\r\nScripts Folder\r\n--------------\r\n\r\n";
  const std::string tail = "\r\nPress 'q' for Main Menu\r\n";
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"a"}, "a"},
      {{"a", "b"}, "a\r\n"},
      {{"a", "dir\\", "b", "c"}, "a\r\nc"},
      {{".hidden", "a", "b", "c", "d"}, "a\r\nc\r\n"}};
  for (const auto& [files, text] : cases) {
    desk.files.listings["C:\\Orvanto\\scripts\\"] = files;
    EXPECT_EQ(desk.Line("5"), head + text + tail);
    EXPECT_EQ(desk.server.State(), SessionState::ListScripts);
    EXPECT_EQ(desk.Line("x"), "");
    EXPECT_EQ(desk.Line("q"), kMenu);
  }
}

TEST(Session, TasksAreDeletedAndRun) {
  RemoteDesk desk;
  for (const char* name : {"One", "Two", "Three"}) desk.AddMessage(name);
  desk.Connect();
  desk.Line("2");
  EXPECT_EQ(desk.Line("2"), "\r\nDeleted Task: Two\r\n" + kMenu);
  EXPECT_EQ(desk.store.TaskName(2), "Three");
  desk.Line("2");
  EXPECT_EQ(desk.Line("3"), kMenu);
  desk.Line("2");
  EXPECT_EQ(desk.Line("0"), "\r\nDeleted Task: \r\n" + kMenu);
  EXPECT_EQ(desk.store.NoTasks(), 2);
  desk.messageBoxes.expected = {{"Text of Three"}};
  desk.Line("3");
  EXPECT_EQ(desk.Line("2"), "\r\nStarted Task: Three\r\n" + kMenu);
  EXPECT_TRUE(desk.messageBoxes.expected.empty());
  desk.Line("3");
  EXPECT_EQ(desk.Line("-1"), "\r\nStarted Task: \r\n" + kMenu);
  EXPECT_TRUE(desk.shell.requests.empty()) << "there is nothing to start";
  // The client leaves while the box is open.
  desk.messageBoxes.expected = {{"Text of One", Answer::Ok, [&] { desk.socket.PeerCloses(); }}};
  desk.Line("3");
  EXPECT_EQ(desk.Line("1"), "");
  EXPECT_TRUE(desk.server.Listening());
}

TEST(Session, ChatStartedHere) {
  RemoteDesk desk;
  desk.Connect();
  desk.server.StartChat();
  EXPECT_EQ(desk.socket.Sent(),
            "\r\n\r\nServer Started Chat...\r\n\r\nPress '/' to Quit...\r\n\r\n");
  EXPECT_TRUE(desk.chat.Visible());
  desk.socket.PeerSends("h");
  desk.socket.PeerSends("i");
  EXPECT_EQ(desk.socket.Sent(), "\r\nClient: hi");
  desk.socket.PeerSends(kCrLf);
  EXPECT_EQ(desk.socket.Sent(), "\r\n");
  EXPECT_EQ(desk.chat.txtChat.Text(), "Client: hi\r\n");
  ASSERT_TRUE(desk.chat.txtSend.Type("hello"));
  ASSERT_TRUE(desk.chat.txtSend.PressEnter());
  ASSERT_TRUE(desk.chat.txtSend.PressEnter());
  EXPECT_EQ(desk.socket.Sent(), "\r\nServer: hello\r\n\r\nServer: \r\n");
  EXPECT_EQ(desk.chat.txtChat.Text(), "Client: hi\r\n\r\nServer: hello\r\n\r\nServer: \r\n");
  EXPECT_EQ(desk.chat.txtSend.Text(), "");
  EXPECT_EQ(desk.Line("/x"), "\r\n");
  ASSERT_TRUE(desk.chat.Close());
  EXPECT_FALSE(desk.chat.Visible());
  EXPECT_EQ(desk.server.State(), SessionState::Chat) << "the client is not told";
  EXPECT_EQ(desk.Line("/"), "\r\nChat Ended by Client\r\n\r\n" + kMenu);
  EXPECT_FALSE(desk.chat.Loaded());
  EXPECT_NE(desk.area.log.find("Server Started Chat"), std::string::npos);
  desk.server.SendTilde();
  EXPECT_EQ(desk.socket.Sent(), "~");
}

TEST(Session, ChatAskedForByTheClient) {
  RemoteDesk desk;
  desk.Connect();
  const std::string asking = "\r\n\r\nAsking for Chat...\r\n";
  desk.messageBoxes.expected = {{"Accept Chat Request?", Answer::No}};
  EXPECT_EQ(desk.Line("6"), asking + kMenu);
  EXPECT_FALSE(desk.chat.Visible());
  desk.messageBoxes.expected = {{"Accept Chat Request?", Answer::Yes}};
  EXPECT_EQ(desk.Line("6"), asking +
                                "\r\n\r\nChat Request Accepted\r\n\r\n\r\nStarting Chat..."
                                "\r\n\r\nPress '/' to Quit...\r\n\r\n");
  EXPECT_TRUE(desk.chat.Visible());
  ASSERT_TRUE(desk.chat.cmdQuit.Press());
  EXPECT_EQ(desk.socket.Sent(), "\r\nChat Ended by Server\r\n\r\n" + kMenu);
  desk.messageBoxes.expected = {
      {"Accept Chat Request?", Answer::Yes, [&] { desk.socket.PeerCloses(); }}};
  EXPECT_EQ(desk.Line("6"), asking);
  EXPECT_FALSE(desk.chat.Visible()) << "he has gone";

  desk.remote.chatAutoAccept = 1;
  desk.Connect();
  EXPECT_EQ(desk.Line("6"),
            "\r\n\r\nStarting Chat...\r\n\r\nPress '/' and then Enter to Quit..."
            "\r\n\r\n");
  EXPECT_EQ(desk.server.State(), SessionState::Chat);
  desk.server.Kick();
  EXPECT_FALSE(desk.chat.Visible());
}

TEST(Session, WhatAClientSendsWithoutEndIsBounded) {
  RemoteDesk desk;
  desk.Connect();
  const std::string chunk(16384, 'x');
  for (int i = 0; i < 100; ++i) {
    desk.socket.PeerSends(chunk);
    EXPECT_EQ(desk.socket.Sent().size(), chunk.size());
  }
  EXPECT_EQ(desk.Line(""), "");
  EXPECT_EQ(desk.Line("8"), kMenu);
  for (int i = 0; i < 10000; ++i) desk.Line("8");
  EXPECT_LE(desk.area.log.size(), 64U << 10);
}

TEST(Session, ADamagedByteIsDoubledOnItsWayOut) {
  RemoteDesk desk;
  desk.AddMessage(
      "a\xFF"
      "b");
  desk.Connect();
  EXPECT_NE(desk.Line("3").find("1) a\xFF\xFF"
                                "b\r\n"),
            std::string::npos);
  desk.socket.PeerSends("\xFF\xFD\x01");
  EXPECT_EQ(desk.socket.Sent(), "\xFF\xFB\x01");
}

}  // namespace
}  // namespace orvanto
