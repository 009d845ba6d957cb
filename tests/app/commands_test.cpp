#include "app/console/Commands.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "app/Program.h"
#include "app/console/ConsoleChat.h"
#include "core/ProgramSettings.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "core/ui/frmSettings.h"
#include "download/Downloads.h"
#include "remote/frmChat.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class CommandsTest : public testing::Test {
 protected:
  CommandsTest() {
    fake.files.contents = {{"C:\\Home\\scripts\\backup.txt", ""}, {"C:\\tool.exe", ""}};
    program.Prepare();
  }
  int Run(const Texts& words) {
    out.str("");
    err.str("");
    return RunCommand(
        words, {program, out, err, fake.clock, false, [](const std::string& path, std::int16_t) {
                  return path == "tool" ? "C:\\tool.exe" : path;
                }});
  }
  // A blank parts words, and "~" is a blank in one.
  int Run(const std::string& line) {
    std::istringstream in(line);
    Texts words(std::istream_iterator<std::string>(in), {});
    for (std::string& word : words) std::replace(word.begin(), word.end(), '~', ' ');
    return Run(words);
  }
  const TaskRecord& Task(std::int16_t slot) {
    program.Store().LoadTask(slot);
    return program.Store().CurrentTask;
  }

  FakePlatform fake;
  Program program{fake.platform, {"", "C:\\Home"}};
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(CommandsTest, AddsATaskOfEveryKind) {
  const std::pair<const char*, const char*> cases[] = {
      {"--at 23:30 --every every~weekday --script backup.txt --group Night",
       "Run Script | 23:30 on Every Weekday In Every Month"},
      {"--program tool --params -x~y --window 6 --at 7:05 --every EVERY~WEEKEND~DAY --in march",
       "Run | 07:05 on Every Weekend Day In March"},
      {"--print C:\\TOOL.exe --params x --at 00:00 --day 31",
       "Print File | 00:00 on Day Number: 31"},
      {"--reset --at 12:00 --once 2026-12-25", "Reset Computer | 12:00 on 25-12-2026"},
      {"--shutdown --at 12:00 --once 1.2.2026", "Shutdown Computer | 12:00 on 01-02-2026"},
      {"--message --reset --at 12:00 --every Every~Day",
       "Popup Message | 12:00 on Every Day In Every Month"},
      {"--sound C:\\tool.exe --at 12:00 --every The~2nd~Tuesday",
       "Play Sound | 12:00 on The 2nd Tuesday In Every Month"}};
  std::string list;
  for (const auto& [options, description] : cases) {
    const std::string number = std::to_string(program.Store().NoTasks() + 1);
    EXPECT_EQ(Run("add Task~" + number + ' ' + options), 0) << err.str();
    EXPECT_EQ(out.str(), number + ") Task " + number + " | " + description + "\n");
    EXPECT_EQ(err.str().empty(), number != "7") << "the rule that never fires is remarked upon";
    list += out.str();
  }
  EXPECT_EQ(Run("list"), 0);
  EXPECT_EQ(out.str(), list);
  EXPECT_EQ(Task(1).group, "Night");
  EXPECT_EQ(Task(2).cmdLine, "-x y");
  EXPECT_EQ(Task(2).winStyle * 10 + Task(3).winStyle, 61);
  Run("set Task~1 TaskType 9");
  EXPECT_EQ(Run("list"), 0);
  EXPECT_THAT(out.str(), StartsWith("1) Task 1\n2) ")) << "what cannot be described";
  EXPECT_EQ(Run("next 3"), 0);
  EXPECT_EQ(out.str(),
            "2026-11-22 07:05 Sun  2) Task 2 | Run | 07:05 on Every Weekend Day In March\n"
            "2026-11-22 12:00 Sun  6) Task 6 | Popup Message | 12:00 on Every Day In Every Month\n"
            "2026-11-23 23:30 Mon  1) Task 1\n");
  EXPECT_EQ(Run("edit 4 Task~\"4 --group Night --every every~day --in may"), 0) << err.str();
  EXPECT_EQ(Run("edit 3 --message y\xFF\x01 --at 0:30"), 0) << err.str();
  EXPECT_EQ(Run("edit 2 --in april --params z"), 0) << err.str();
  Run("list --json");
  EXPECT_THAT(out.str(),
              HasSubstr("\n  {\"number\": 2, \"name\": \"Task 2\", \"group\": \"General\", "
                        "\"does\": \"program\", "
                        "\"path\": \"C:\\\\tool.exe\", \"params\": \"z\", \"window\": 6, \"at\": "
                        "\"07:05\", \"every\": "
                        "\"Every Weekend Day\", \"in\": \"April\", \"next\": \"2026-11-22T07:05\", "
                        "\"line\": \"Task 2 | "
                        "Run | 07:05 on Every Weekend Day In April\"},\n  {\"number\": 3, "));
  EXPECT_THAT(out.str(),
              AllOf(StartsWith("[\n  {\"number\": 1, \"name\": \"Task 1\""),
                    HasSubstr("\"does\": null"), HasSubstr("\"path\": \"y\u00ff\\u0001\""),
                    HasSubstr("\"window\": 1, \"at\": \"00:30\", \"day\": 31"),
                    HasSubstr("\"name\": \"Task \\\"4\""), HasSubstr("\"next\": null"),
                    EndsWith("\"}\n]\n")));
  fake.clock.shortDateOrder = "m/d/y";
  program.Prepare();
  for (const std::string date : {"12/25/2026", "2026-12-25"}) {
    EXPECT_EQ(Run("add " + date + " --reset --at 12:00 --once " + date), 0) << err.str();
    const TaskRecord& task = Task(program.Store().NoTasks());
    EXPECT_EQ(task.dateDay + "." + task.dateMonth + "." + task.dateYear, "25.12.2026") << date;
  }
}

TEST_F(CommandsTest, RefusesWhatIsInvalidAndStoresNothing) {
  const std::pair<std::string, std::string> cases[] = {
      {"add internet --reset --at 10:00 --day 1",
       "That Task Name is already in use. Please use a different one."},
      {"add T --reset --at +1:30 --day 1", "Invlaid Hour given for Time"},
      {"add T --reset --at 10:00 --once 31-4-2026", "Invalid Day given for Date"},
      {"add T --reset --at 10:00 --day 1.5", "Invlaid Day of Month Given"},
      {"add T --script missing.txt --at 10:00 --day 1", "File does not exist"},
      {"delete 0", "There is no task 0."},
      {"run 1", "There is no task 1."},
      {"run 99999", "There is no task 99999."}};
  const int writes = fake.registry.Writes();
  for (const auto& [line, message] : cases) {
    EXPECT_EQ(Run(line), kExitRefused) << line;
    EXPECT_EQ(err.str() + out.str(), message + "\n");
  }
  EXPECT_EQ(fake.registry.Writes(), writes);
  fake.registry.FailWrite(1, kDiskFull);
  EXPECT_EQ(Run("add T --reset --at 10:00 --day 1"), kExitRefused);
}

TEST_F(CommandsTest, WhatItDoesNotUnderstandIsAUsageError) {
  const auto refuses = [&](const std::string& words, std::initializer_list<const char*> lines) {
    for (const char* line : lines) {
      EXPECT_EQ(Run(words + line), kExitUsage) << line;
      EXPECT_THAT(err.str(), HasSubstr("\nUsage: orvanto "));
      EXPECT_EQ(out.str(), "");
    }
  };
  refuses("", {"frobnicate", "get General", "get General a b", "set General OnTop", "list all",
               "delete", "delete -1", "next -1", "list --xml", "edit 1", "run first", "add",
               "add T", "add --at 10:00 --day 1 --reset", "add --what --at 10:00 --day 1 --reset"});
  refuses("add T ", {"--at 10 --day 1 --reset", "--at 1:0:0 --day 1 --reset",
                     "--at 10:00 --every Some~Day --reset", "--at 10:00 --once tomorrow --reset",
                     "--at 10:00 --once 1-2-26-3 --reset"});
  refuses("add T --at 10:00 --day 1 ",
          {"", "U --reset", "--every Every~Day --reset", "--in May --reset", "--reset --shutdown",
           "--day 2 --reset", "--message m --params x", "--program tool --window 7", "--message"});
  EXPECT_EQ(program.Store().NoTasks(), 0);
}

TEST_F(CommandsTest, SettingsAreReadAndWritten) {
  const auto get = [&](const std::string& words) {
    return Run("get " + words) == kExitRefused ? "refused" : out.str();
  };
  EXPECT_EQ(Run("set General OnTop 1"), 0);
  EXPECT_EQ(get("general ontop"), "1\n");
  EXPECT_EQ(Run({"set", "General", "Empty", ""}), 0);
  EXPECT_EQ(get("General Empty"), "\n");
  Run("set General Users_Share 1");
  program.Prepare();
  EXPECT_EQ(get("General OnTop"), "refused") << "now that of the machine";
  EXPECT_EQ(get("General Users_Share"), "1\n");
  Run("set General Inet_ServerPort 601");
  EXPECT_THAT(err.str(), HasSubstr("Note: settings are shared."));
  Run("set General Inet_Strict 1");
  EXPECT_EQ(err.str(), "");
  EXPECT_EQ(program.GetSettings().ReadUserSetting(kGeneral, "Inet_Strict", ""), "1");
  std::ifstream manual(ORVANTO_SOURCE_DIR "/docs/manual.md");
  const std::string text(std::istreambuf_iterator<char>(manual), {});
  for (const Setting& setting : kSettings) {
    const std::string otherwise = setting.defaultValue;
    EXPECT_THAT(text, HasSubstr(std::string("| ") + setting.section + " | `" + setting.name +
                                (otherwise.empty() ? "` |" : "` | ") + otherwise + " | " +
                                setting.meaning + " |"));
  }
  Run("settings");
  EXPECT_THAT(out.str(),
              HasSubstr("\nGeneral   Inet_Strict           \"1\"       default \"0\"     1: "));
  EXPECT_THAT(out.str(), HasSubstr("General   OnTop                 \"0\" "));
  EXPECT_EQ(Run("set General OnTop 0"), 0);
  EXPECT_EQ(Run("set General Users_Share 2"), 0);
  program.Prepare();
  const int writes = fake.registry.Writes();
  EXPECT_EQ(Run("set Other Users_Share 1"), kExitRefused);
  EXPECT_EQ(get("General OnTop"), "refused");
  EXPECT_EQ(fake.registry.Writes(), writes);
  EXPECT_EQ(Run("set General Users_Share 0"), 0);
}

TEST_F(CommandsTest, RunsAndDeletesByNumber) {
  Run("add One --at 10:00 --day 1 --message Hello");
  Run("add Two --at 10:00 --day 1 --shutdown");
  Run("add Three --at 10:00 --day 1 --script backup.txt");
  fake.files.contents["C:\\Home\\scripts\\backup.txt"] = "msgbox('x',nostop)\nbeeb()";
  EXPECT_EQ(Run("check backup.txt"), kExitRefused);
  EXPECT_EQ(out.str(), "backup.txt:2: Not a command\n");
  Texts popups;
  program.onPopup = [&](const std::string& text) { popups.push_back(text); };
  fake.messageBoxes.expected = {{"Hello"}};
  for (const char* line : {"run 1", "delete 1", "run 1"}) EXPECT_EQ(Run(line), 0);
  EXPECT_EQ(fake.done, Texts{"end 1"});
  EXPECT_EQ(Run("run 2"), kExitRefused);
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
  for (const bool onTop : {false, true, false}) {
    EXPECT_EQ(editor.TopMost(), onTop);
    EXPECT_EQ(program.ChatWindow().TopMost(), onTop);
    window.mnuOnTop.Choose();
  }
  const std::string page = "C:\\Home\\manual\\the-main-window.html";
  fake.messageBoxes.expected = {{"The manual could not be opened:\r\n" + page}};
  EXPECT_TRUE(window.Help());
  fake.files.contents[page] = "";
  EXPECT_TRUE(window.Help());
  EXPECT_EQ(fake.done.back(), "open " + page + " in '' 1");
  program.GetSettings().WriteSetting(kGeneral, "NoTasks", "100");
  fake.messageBoxes.expected = {{TaskStore::kListFull}};
  EXPECT_TRUE(window.cmdNew.Press());
  EXPECT_TRUE(window.Visible() && !editor.Visible());
  program.GetSettings().WriteSetting(kGeneral, "NoTasks", "0");
  EXPECT_TRUE(window.mnuNew.Choose());
  program.BringToFront();
  EXPECT_TRUE(!window.Visible() && editor.Visible());
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
  fake.loop.Advance(60000);
  EXPECT_EQ(told, (Texts{"Made here"}));
  editor.cmdCancel.Press();
  ASSERT_TRUE(window.mnuServersetup.Choose());
  EXPECT_FALSE(window.Visible());
  program.SettingsWindow().cmdCheckNow.Press();
  fake.loop.DoEvents();
  EXPECT_TRUE(program.GetDownloads().window.txtURL.Text().ends_with("/orvanto_update.txt"));
  program.SettingsWindow().cmdClose.Press();
  EXPECT_TRUE(window.Visible());
  window.mnuExit.Choose();
  EXPECT_FALSE(editor.Visible() || window.Visible()) << "nor does it come back";
  EXPECT_TRUE(fake.loop.QuitRequested());
}

TEST_F(ProgramTest, TheServersAreaAndTheTerminalActOnTheClient) {
  program.GetSettings().WriteSetting(kGeneral, "Inet_ServerOn", "1");
  std::ostringstream said;
  ConsoleChat terminal(program, said);
  program.Start();
  FakeSocketHost::Socket& socket = **std::find_if(
      fake.sockets.sockets.begin(), fake.sockets.sockets.end(),
      [](const auto* each) { return each->GetState() == TcpSocket::State::Listening; });
  frmScriptcfg& window = program.MainWindow();
  EXPECT_EQ(window.shpServerno.Colour(), forms::Lamp::kLit);
  ASSERT_TRUE(socket.PeerConnects());
  EXPECT_EQ(window.shpServeryes.Colour(), forms::Lamp::kLit);
  EXPECT_THAT(window.txtServer.Text(), HasSubstr("Connection from(IP)"));
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

}  // namespace
}  // namespace orvanto
