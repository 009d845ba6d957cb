#include "app/console/Commands.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "app/Program.h"
#include "app/console/ConsoleChat.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "remote/frmChat.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using testing::HasSubstr;
using Words = Texts;

class CommandsTest : public testing::Test {
 protected:
  CommandsTest() {
    fake.files.contents["C:\\Home\\scripts\\backup.txt"] = "";
    fake.files.contents["C:\\tool.exe"] = "";
    program.Prepare();
  }
  int Run(const Words& words) {
    out.str("");
    err.str("");
    return RunCommand(words, {program, out, err, [](const std::string& path, std::int16_t) {
                                return path == "tool" ? "C:\\tool.exe" : path;
                              }});
  }

  // A blank parts words, and "_" is a blank in one.
  static Words Split(const std::string& line) {
    std::istringstream in(line);
    Words words(std::istream_iterator<std::string>(in), {});
    for (std::string& word : words) std::replace(word.begin(), word.end(), '_', ' ');
    return words;
  }

  FakePlatform fake;
  Program program{fake.platform, {"", "C:\\Home"}};
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(CommandsTest, AddsATaskOfEveryKind) {
  const std::pair<const char*, const char*> cases[] = {
      {"--at 23:30 --every every_weekday --script backup.txt --group Night",
       "Run Script | 23:30 on Every Weekday In Every Month"},
      {"--program tool --params -x_y --window 6 --at 7:05 --every EVERY_WEEKEND_DAY --in march",
       "Run | 07:05 on Every Weekend Day In March"},
      {"--print C:\\TOOL.exe --params x --at 00:00 --day 31",
       "Print File | 00:00 on Day Number: 31"},
      {"--reset --at 12:00 --once 2026-12-25", "Reset Computer | 12:00 on 25-12-2026"},
      {"--shutdown --at 12:00 --once 1.2.2026", "Shutdown Computer | 12:00 on 01-02-2026"},
      {"--message --reset --at 12:00 --every Every_Day",
       "Popup Message | 12:00 on Every Day In Every Month"},
      {"--sound C:\\tool.exe --at 12:00 --every The_2nd_Tuesday",
       "Play Sound | 12:00 on The 2nd Tuesday In Every Month"}};
  std::string list;
  int number = 0;
  for (const auto& [options, description] : cases) {
    const std::string name = "Task " + std::to_string(++number);
    Words words = Split(options);
    words.insert(words.begin(), {"add", name});
    EXPECT_EQ(Run(words), 0) << err.str();
    EXPECT_EQ(out.str(), std::to_string(number) + ") " + name + " | " + description + "\n");
    EXPECT_EQ(err.str().empty(), number != 7) << "only the rule that never fires is remarked upon";
    list += out.str();
  }
  EXPECT_EQ(Run({"list"}), 0);
  EXPECT_EQ(out.str(), list);
  program.Store().LoadTask(1);
  EXPECT_EQ(program.Store().CurrentTask.group, "Night");
  program.Store().LoadTask(2);
  EXPECT_EQ(program.Store().CurrentTask.cmdLine, "-x y");
  EXPECT_EQ(program.Store().CurrentTask.winStyle, 6);
  // Where the month comes first.
  fake.clock.shortDateOrder = "m/d/y";
  program.Prepare();
  for (const char* date : {"12/25/2026", "2026-12-25"}) {
    EXPECT_EQ(Run({"add", date, "--reset", "--at", "12:00", "--once", date}), 0) << err.str();
    program.Store().LoadTask(program.Store().NoTasks());
    const TaskRecord& task = program.Store().CurrentTask;
    EXPECT_EQ(task.dateDay + "." + task.dateMonth + "." + task.dateYear, "25.12.2026") << date;
  }
}

TEST_F(CommandsTest, RefusesWhatIsInvalidAndStoresNothing) {
  const std::pair<const char*, const char*> cases[] = {
      {"add internet --reset --at 10:00 --day 1",
       "That Task Name is already in use. Please use a different one."},
      {"add T --reset --at 1e1:30 --day 1", "Invlaid Hour given for Time"},
      {"add T --reset --at 1:xx --day 1", "Invalid Minute given for Time"},
      {"add T --reset --at 10:00 --once 31-4-2026", "Invalid Day given for Date"},
      {"add T --reset --at 10:00 --once x-4-2026", "Invalid Date"},
      {"add T --reset --at 10:00 --day 1.5", "Invlaid Day of Month Given"},
      {"add T --script missing.txt --at 10:00 --day 1", "File does not exist"},
      {"delete 0", "There is no task 0."},
      {"run 1", "There is no task 1."},
      {"run 99999", "There is no task 99999."}};
  const int writes = fake.registry.Writes();
  for (const auto& [line, message] : cases) {
    EXPECT_EQ(Run(Split(line)), kExitRefused) << line;
    EXPECT_EQ(err.str() + out.str(), message + std::string("\n"));
  }
  EXPECT_EQ(fake.registry.Writes(), writes);
}

TEST_F(CommandsTest, WhatItDoesNotUnderstandIsAUsageError) {
  Texts lines = {"frobnicate",
                 "get General",
                 "get General a b",
                 "set General OnTop",
                 "list all",
                 "delete",
                 "delete -1",
                 "run first",
                 "add",
                 "add T",
                 "add --at 10:00 --day 1 --reset",
                 "add T --at 10 --day 1 --reset",
                 "add T --at 10:00 --every Some_Day --reset",
                 "add T --at 10:00 --once tomorrow --reset"};
  for (const char* wrong :
       {"", "U --reset", "--every Every_Day --reset", "--in May --reset", "--reset --shutdown",
        "--day 2 --reset", "--message m --params x", "--program tool --window 7", "--message"}) {
    lines.push_back(std::string("add T --at 10:00 --day 1 ") + wrong);
  }
  for (const std::string& line : lines) {
    EXPECT_EQ(Run(Split(line)), kExitUsage) << line;
    EXPECT_NE(err.str(), "");
    EXPECT_EQ(out.str(), "");
  }
  EXPECT_EQ(program.Store().NoTasks(), 0);
}

TEST_F(CommandsTest, SettingsAreReadAndWritten) {
  EXPECT_EQ(Run({"get", "General", "OnTop"}), kExitRefused);
  EXPECT_EQ(Run({"set", "General", "OnTop", "1"}), 0);
  EXPECT_EQ(Run({"get", "general", "ontop"}), 0);
  EXPECT_EQ(out.str(), "1\n");
  EXPECT_EQ(Run({"set", "General", "Empty", ""}), 0);
  EXPECT_EQ(Run({"get", "General", "Empty"}), 0);
  EXPECT_EQ(out.str(), "\n");
  EXPECT_EQ(Run({"set", "General", "Users_Share", "1"}), 0);
  program.Prepare();
  EXPECT_EQ(Run({"get", "General", "OnTop"}), kExitRefused) << "now that of the machine";
  EXPECT_EQ(Run({"get", "General", "Users_Share"}), 0);
  EXPECT_EQ(out.str(), "1\n");
  EXPECT_EQ(Run({"set", "General", "Users_Share", "2"}), 0);
  program.Prepare();
  const int writes = fake.registry.Writes();
  EXPECT_EQ(Run({"set", "General", "OnTop", "1"}), kExitRefused);
  EXPECT_EQ(Run({"get", "General", "OnTop"}), kExitRefused);
  EXPECT_EQ(fake.registry.Writes(), writes);
  EXPECT_EQ(Run({"set", "General", "Users_Share", "0"}), 0);
}

TEST_F(CommandsTest, RunsAndDeletesByNumber) {
  Run(Split("add One --at 10:00 --day 1 --message Hello"));
  Run(Split("add Two --at 10:00 --day 1 --shutdown"));
  fake.messageBoxes.expected = {{"Hello"}};
  EXPECT_EQ(Run({"run", "1"}), 0);
  EXPECT_EQ(Run({"delete", "1"}), 0);
  EXPECT_EQ(Run({"run", "1"}), 0);
  EXPECT_EQ(fake.done, (Texts{"end 1"}));
}

TEST_F(CommandsTest, AScriptThatFailsIsARefusalThatNamesTheLine) {
  Run(Split("add One --at 10:00 --day 1 --script backup.txt"));
  fake.files.contents["C:\\Home\\scripts\\backup.txt"] = "msgbox('x',nostop)\nbeeb()";
  Texts popups;
  program.onPopup = [&](const std::string& text) { popups.push_back(text); };
  EXPECT_EQ(Run({"run", "1"}), kExitRefused);
  EXPECT_EQ(err.str(), "backup.txt, line 2: Not a command\n");
  EXPECT_EQ(popups, Texts{"x"});
}

class ProgramTest : public testing::Test {
 protected:
  FakePlatform fake;
  Program program{fake.platform, {"", "C:\\Home"}};
};

TEST_F(ProgramTest, OneWindowStandsForAnother) {
  program.Start();
  frmScriptcfg& window = program.MainWindow();
  frmEdit& editor = program.Editor();
  Texts told;
  program.onTaskRun = [&](const TaskRecord& task) { told.push_back(task.name); };
  for (const bool onTop : {false, true}) {
    EXPECT_EQ(editor.TopMost(), onTop);
    EXPECT_EQ(program.ChatWindow().TopMost(), onTop);
    if (!onTop) window.mnuOnTop.Choose();
  }
  ASSERT_TRUE(window.cmdNew.Press());
  EXPECT_FALSE(window.Visible());
  EXPECT_TRUE(editor.Visible());
  program.BringToFront();
  EXPECT_FALSE(window.Visible());
  editor.txtTaskName.Type("Made here");
  editor.optTaskType[3].Choose();
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_TRUE(window.Visible());
  ASSERT_EQ(window.treTasks.Nodes().size(), 2U) << "the group and the task";
  EXPECT_EQ(window.treTasks.Selected(), 1U);

  window.cmdSystemTray.Press();
  program.BringToFront();
  EXPECT_TRUE(window.Visible());
  EXPECT_EQ(fake.trayIcon.shownTip, "");

  ASSERT_TRUE(window.mnuEdit.Choose());
  EXPECT_EQ(editor.Caption(), "Edit Task - Made here");
  EXPECT_TRUE(editor.Visible());
  fake.loop.Advance(60000);
  EXPECT_EQ(told, (Texts{"Made here"}));
  program.Quit();
  EXPECT_FALSE(editor.Visible());
  EXPECT_FALSE(window.Visible()) << "it does not come back for the closing editor";
  EXPECT_TRUE(fake.loop.QuitRequested());
}

TEST_F(ProgramTest, TheServersAreaAndTheTerminalActOnTheClient) {
  program.GetSettings().WriteSetting(kGeneral, "Inet_ServerOn", "1");
  std::ostringstream said;
  ConsoleChat terminal(program, said);
  FakeSocketHost::Socket& socket = *fake.sockets.sockets.front();
  program.Start();
  frmScriptcfg& window = program.MainWindow();
  const auto lamps = [&] {
    return std::pair(window.shpServeryes.Colour(), window.shpServerno.Colour());
  };
  EXPECT_EQ(lamps(), std::pair(forms::Lamp::kDark, forms::Lamp::kLit));
  ASSERT_TRUE(socket.PeerConnects());
  EXPECT_EQ(lamps(), std::pair(forms::Lamp::kLit, forms::Lamp::kDark));
  EXPECT_EQ(window.treTasks.GetBounds().height, 1425);
  window.fraServer.SetText("");
  fake.loop.Advance(1000);
  EXPECT_EQ(window.fraServer.Text(), "10.9.8.7");
  terminal.Line("chat");
  EXPECT_THAT(socket.Sent(), HasSubstr("Server Started Chat"));
  terminal.Line("Good\x1B evening");
  EXPECT_THAT(socket.Sent(), HasSubstr("Server: Good"));
  terminal.Line("/");
  EXPECT_THAT(socket.Sent(), HasSubstr("Chat Ended by Server"));
  EXPECT_THAT(said.str(), HasSubstr("Server: Good? evening\n"));
  ASSERT_TRUE(window.cmdChat.Press());
  EXPECT_TRUE(program.ChatWindow().Visible());
  EXPECT_EQ(program.ChatWindow().formBehind, &window);
  ASSERT_TRUE(window.mnuInetchat.Choose());
  EXPECT_TRUE(socket.Sent().ends_with("~"));
  ASSERT_TRUE(window.cmdKick.Press());
  EXPECT_EQ(socket.GetState(), TcpSocket::State::Listening);
  ASSERT_TRUE(window.optInetoff.Choose());
  terminal.Line("kick");
  EXPECT_EQ(socket.GetState(), TcpSocket::State::Closed) << "there is nobody";
  ASSERT_TRUE(window.optIneton.Choose());
  program.Quit();
  EXPECT_EQ(socket.GetState(), TcpSocket::State::Closed);
}

TEST_F(ProgramTest, AFullListOpensNoEditor) {
  program.GetSettings().WriteSetting(kGeneral, "NoTasks", "100");
  program.Start();
  fake.messageBoxes.expected = {{TaskStore::kListFull}};
  EXPECT_TRUE(program.MainWindow().cmdNew.Press());
  EXPECT_FALSE(program.Editor().Visible());
  EXPECT_TRUE(program.MainWindow().Visible());
}

}  // namespace
}  // namespace orvanto
