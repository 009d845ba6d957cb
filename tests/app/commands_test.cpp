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

struct CommandsTest : testing::Test {
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
  // What is said, after a status other than 0. In words "~" is a blank, and "''" an empty word.
  std::string Says(const std::string& line) {
    std::istringstream in(line);
    Texts words(std::istream_iterator<std::string>(in), {});
    for (std::string& word : words) std::replace(word.begin(), word.end(), '~', ' ');
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    const int status = Run(words);
    return (status == 0 ? "" : std::to_string(status) + ": ") + out.str() + err.str();
  }
  const TaskRecord& Task(std::int16_t slot) {
    program.Store().LoadTask(slot);
    return program.Store().CurrentTask;
  }

  FakePlatform fake;
  Program program{fake.platform, {"", "C:\\Home"}};
  std::ostringstream out, err;
};

TEST_F(CommandsTest, AddsATaskOfEveryKind) {
  const std::pair<const char*, const char*> cases[] = {
      {"--at 23:30 --every every~weekday --script backup.txt --group Night",
       "Run Script | 23:30 on Every Weekday In Every Month"},
      {"--program tool --params -x~y --window 6 --at 7:05 --every EVERY~WEEKEND~DAY --in march",
       "Run | 07:05 on Every Weekend Day In March"},
      {"--print C:\\TOOL.exe --params x --at 00:00 --day 31",
       "Print File | 00:00 on Day Number: 31"},
      {"--reset --at 12:00 --once 25.12.2026", "Reset Computer | 12:00 on 25-12-2026"},
      {"--message --reset --at 12:00 --once 1.2.2026", "Popup Message | 12:00 on 01-02-2026"},
      {"--sound C:\\tool.exe --at 12:00 --every The~2nd~Tuesday",
       "Play Sound | 12:00 on The 2nd Tuesday In Every Month"}};
  std::string list;
  for (const auto& [options, description] : cases) {
    const std::string number = std::to_string(program.Store().NoTasks() + 1);
    list += number + ") Task " + number + " | " + description + "\n";
    Says("add Task~" + number + ' ' + options);
    EXPECT_TRUE(list.ends_with(out.str()) && !out.str().empty()) << out.str();
    EXPECT_EQ(err.str().empty(), number != "6") << "the rule that never fires is remarked upon";
  }
  EXPECT_EQ(Says("list"), list);
  EXPECT_EQ(Task(1).group, "Night");
  EXPECT_EQ(Task(2).cmdLine + std::to_string(Task(2).winStyle), "-x y6");
  EXPECT_EQ(Says("edit 6 --day 5"), out.str()) << "and one that does fire is not";
  Says("set Task~1 TaskType 9");
  EXPECT_EQ(Says("next 3"),
            "2026-11-22 07:05 Sun  2) Task 2 | Run | 07:05 on Every Weekend Day In March\n"
            "2026-11-23 23:30 Mon  1) Task 1\n"
            "2026-12-05 12:00 Sat  6) Task 6 | Play Sound | 12:00 on Day Number: 5\n")
      << "what cannot be described";
  for (const char* line : {"edit 4 Task~\"4 --group Night --every every~day --in may",
                           "edit 3 --message y\xFF\x01 --at 0:30", "edit 2 --in april --params z"})
    EXPECT_EQ(Says(line), out.str());
  EXPECT_THAT(Says("list --json"),
              AllOf(StartsWith("[\n  {\"number\": 1, \"name\": \"Task 1\""),
                    HasSubstr("\"does\": null"), HasSubstr("\"path\": \"y\u00ff\\u0001\""),
                    HasSubstr("\"window\": 1, \"at\": \"00:30\", \"day\": 31"),
                    HasSubstr("\"name\": \"Task \\\"4\""), HasSubstr("\"next\": null"),
                    HasSubstr(R"(,
  {"number": 2, "name": "Task 2", "group": "General", "does": "program", )"
                              R"("path": "C:\\tool.exe", "params": "z", "window": 6, )"
                              R"("at": "07:05", "every": "Every Weekend Day", "in": "April", )"
                              R"("next": "2026-11-22T07:05", )"
                              R"("line": "Task 2 | Run | 07:05 on Every Weekend Day In April"},
  {"number": 3, )"),
                    EndsWith("\"}\n]\n")));
  fake.clock.shortDateOrder = "m/d/y";
  program.Prepare();
  for (const std::string date : {"12/25/2026", "2026-12-25"}) {
    EXPECT_EQ(Says("add " + date + " --reset --at 12:00 --once " + date),
              std::to_string(program.Store().NoTasks()) + ") " + date +
                  " | Reset Computer | 12:00 on 12-25-2026\n");
  }
}

TEST_F(CommandsTest, RefusesWhatIsInvalidAndStoresNothing) {
  const std::pair<std::string, std::string> cases[] = {
      {"add T --reset --at +1:30 --day 1", "Invlaid Hour given for Time"},
      {"add T --reset --at 10:00 --day 1.5", "Invlaid Day of Month Given"},
      {"add T --script missing.txt --at 10:00 --day 1", "File does not exist"},
      {"delete 0", "There is no task 0."},
      {"run 1", "There is no task 1."},
      {"run 99999", "There is no task 99999."}};
  const int writes = fake.registry.Writes();
  for (const auto& [line, message] : cases) EXPECT_EQ(Says(line), "1: " + message + "\n");
  EXPECT_EQ(fake.registry.Writes(), writes);
  fake.registry.FailWrite(1, kDiskFull);
  EXPECT_TRUE(Says("add T --reset --at 10:00 --day 1").starts_with("1: "));
}

TEST_F(CommandsTest, WhatItDoesNotUnderstandIsAUsageError) {
  const auto refuses = [&](const std::string& words, std::initializer_list<const char*> lines) {
    for (const char* line : lines) {
      EXPECT_THAT(Says(words + line), AllOf(StartsWith("2: "), HasSubstr("\nUsage: orvanto ")));
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
  Says("set General OnTop 1");
  EXPECT_EQ(Says("get general ontop"), "1\n");
  Says("set General Empty ''");
  EXPECT_EQ(Says("get General Empty"), "\n");
  Says("set General Users_Share 1");
  program.Prepare();
  EXPECT_THAT(Says("get General OnTop"), StartsWith("1: ")) << "now that of the machine";
  EXPECT_EQ(Says("get General Users_Share"), "1\n");
  EXPECT_THAT(Says("set General Inet_ServerPort 601"), StartsWith("Note: settings are shared."));
  EXPECT_EQ(Says("set General Inet_Strict 1"), "");
  EXPECT_EQ(program.GetSettings().ReadUserSetting(kGeneral, "Inet_Strict", ""), "1");
  std::ifstream manual(ORVANTO_SOURCE_DIR "/docs/manual.md");
  const std::string text(std::istreambuf_iterator<char>(manual), {});
  for (const Setting& setting : kSettings) {
    const std::string otherwise = setting.defaultValue;
    EXPECT_THAT(text, HasSubstr(std::string("| ") + setting.section + " | `" + setting.name +
                                (otherwise.empty() ? "` |" : "` | ") + otherwise + " | " +
                                setting.meaning + " |"));
  }
  EXPECT_THAT(
      Says("settings"),
      AllOf(HasSubstr("\nGeneral   Inet_Strict           \"1\"       default \"0\"     1: "),
            HasSubstr("General   OnTop                 \"0\" ")));
  for (const char* line : {"OnTop 0", "Users_Share 2"}) {
    EXPECT_EQ(Says(std::string("set General ") + line), "");
  }
  program.Prepare();
  const int writes = fake.registry.Writes();
  for (const char* line : {"set Other Users_Share 1", "get General OnTop"}) {
    EXPECT_THAT(Says(line), StartsWith("1: "));
  }
  EXPECT_EQ(fake.registry.Writes(), writes);
  EXPECT_EQ(Says("set General Users_Share 0"), "");
}

TEST_F(CommandsTest, RunsAndDeletesByNumber) {
  Says("add One --at 10:00 --day 1 --message Hello");
  Says("add Two --at 10:00 --day 1 --shutdown");
  Says("add Three --at 10:00 --day 1 --script backup.txt");
  fake.files.contents["C:\\Home\\scripts\\backup.txt"] = "msgbox('x',nostop)\nbeeb()";
  EXPECT_EQ(Says("check backup.txt"), "1: backup.txt:2: Not a command\n");
  Texts popups;
  program.onPopup = [&](const std::string& text) { popups.push_back(text); };
  fake.messageBoxes.expected = {{"Hello"}};
  for (const char* line : {"run 1", "delete 1", "run 1"}) EXPECT_EQ(Says(line), "");
  EXPECT_EQ(fake.done, Texts{"end 1"});
  EXPECT_EQ(Says("run 2"), "1: backup.txt, line 2: Not a command\n");
  EXPECT_EQ(popups, Texts{"x"});
}

struct ProgramTest : testing::Test {
  // The windows that can be seen, and the icon's tip.
  std::string Shown() {
    return std::string(window.Visible() ? "main " : "") + (editor.Visible() ? "editor " : "") +
           (program.SettingsWindow().Visible() ? "settings " : "") +
           (program.ChatWindow().Visible() ? "chat " : "") + fake.trayIcon.shownTip;
  }

  FakePlatform fake;
  Program program{fake.platform, {"", "C:\\Home"}};
  frmScriptcfg& window = program.MainWindow();
  frmEdit& editor = program.Editor();
};

TEST_F(ProgramTest, OneWindowStandsForAnother) {
  program.Start();
  Texts told;
  program.onTaskRun = [&](const TaskRecord& task) { told.push_back(task.name); };
  for (const bool onTop : {false, true, false}) {
    EXPECT_TRUE(editor.TopMost() == onTop && program.ChatWindow().TopMost() == onTop);
    window.mnuOnTop.Choose();
  }
  const std::string page = "C:\\Home\\manual\\the-main-window.html";
  fake.messageBoxes.expected = {{.text = "The manual could not be opened:\r\n" + page,
                                 .whileOpen = [&] { EXPECT_TRUE(window.Help()); }}};
  EXPECT_TRUE(window.Help());
  fake.files.contents[page] = "";
  EXPECT_TRUE(window.Help());
  EXPECT_EQ(fake.done.back(), "open " + page + " in '' 1");
  program.GetSettings().WriteSetting(kGeneral, "NoTasks", "100");
  fake.messageBoxes.expected = {{TaskStore::kListFull}};
  EXPECT_TRUE(window.cmdNew.Press());
  EXPECT_EQ(Shown(), "main ");
  program.GetSettings().WriteSetting(kGeneral, "NoTasks", "0");
  EXPECT_TRUE(window.mnuNew.Choose());
  program.BringToFront();
  EXPECT_EQ(Shown(), "editor ");
  editor.txtTaskName.Type("Made here");
  editor.optTaskType[3].Choose();
  EXPECT_TRUE(editor.cmdSave.Press());
  ASSERT_EQ(window.treTasks.Nodes().size(), 2U) << "the group and the task";
  EXPECT_EQ(window.treTasks.Selected(), 1U);
  window.cmdSystemTray.Press();
  EXPECT_EQ(Shown(), "Orvanto");
  program.BringToFront();
  EXPECT_EQ(Shown(), "main ");
  EXPECT_TRUE(window.mnuEdit.Choose());
  EXPECT_EQ(editor.Caption(), "Edit Task - Made here");
  fake.loop.Advance(60000);
  EXPECT_EQ(told, (Texts{"Made here"}));
  EXPECT_TRUE(editor.cmdCancel.Press() && window.mnuServersetup.Choose());
  EXPECT_EQ(Shown(), "settings ");
  program.SettingsWindow().cmdCheckNow.Press();
  fake.loop.DoEvents();
  EXPECT_TRUE(program.GetDownloads().window.txtURL.Text().ends_with("/orvanto_update.txt"));
  program.SettingsWindow().cmdClose.Press();
  window.mnuExit.Choose();
  EXPECT_EQ(Shown(), "") << "nor does it come back";
  EXPECT_TRUE(fake.loop.QuitRequested());
}

TEST_F(ProgramTest, TheServersAreaAndTheTerminalActOnTheClient) {
  program.GetSettings().WriteSetting(kGeneral, "Inet_ServerOn", "1");
  std::ostringstream said;
  ConsoleChat terminal(program, said);
  program.Start();
  using State = TcpSocket::State;
  FakeSocketHost::Socket& socket =
      **std::find_if(fake.sockets.sockets.begin(), fake.sockets.sockets.end(),
                     [](const auto* each) { return each->GetState() == State::Listening; });
  EXPECT_EQ(window.shpServerno.Colour(), forms::Lamp::kLit);
  ASSERT_TRUE(socket.PeerConnects());
  EXPECT_EQ(window.shpServeryes.Colour(), forms::Lamp::kLit);
  EXPECT_THAT(window.txtServer.Text(), HasSubstr("Connection from(IP)"));
  EXPECT_EQ(window.treTasks.GetBounds().height, 1425);
  window.fraServer.SetText("");
  fake.loop.Advance(1000);
  EXPECT_EQ(window.fraServer.Text(), "10.9.8.7");
  for (const auto& [line, sent] : {std::pair("chat", "Server Started Chat"),
                                   {"Good\x1B evening", "Server: Good"},
                                   {"/", "Chat Ended by Server"}}) {
    terminal.Line(line);
    EXPECT_THAT(socket.Sent(), HasSubstr(sent));
  }
  EXPECT_THAT(said.str(), HasSubstr("Server: Good? evening\n"));
  EXPECT_TRUE(window.cmdChat.Press());
  EXPECT_EQ(Shown(), "main chat ");
  EXPECT_EQ(program.ChatWindow().formBehind, &window);
  EXPECT_TRUE(window.mnuInetchat.Choose() && socket.Sent().ends_with("~"));
  EXPECT_TRUE(window.cmdKick.Press() && socket.GetState() == State::Listening);
  auto& setup = program.SettingsWindow();
  setup.Open();
  setup.tabSettings.Choose(2);
  EXPECT_TRUE(setup.txtServerPort.Type("601") && setup.cmdSave.Press());
  EXPECT_EQ(socket.LocalPort(), 601);
  EXPECT_TRUE(window.optInetoff.Choose());
  terminal.Line("kick");
  EXPECT_EQ(socket.GetState(), State::Closed) << "there is nobody";
  EXPECT_TRUE(window.optIneton.Choose());
  program.Quit();
  EXPECT_EQ(socket.GetState(), State::Closed);
}

}  // namespace
}  // namespace orvanto
