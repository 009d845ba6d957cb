#include "app/console/Commands.h"

#include <gtest/gtest.h>

#include <sstream>

#include "app/Program.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using Words = std::vector<std::string>;

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
  // The stored fields of the last task, as far as they are not empty.
  const TaskRecord& Last() {
    program.Store().LoadTask(program.Store().NoTasks());
    return program.Store().CurrentTask;
  }

  FakePlatform fake;
  Program program{fake.platform, {"", "C:\\Home"}};
  std::ostringstream out;
  std::ostringstream err;
};

TEST_F(CommandsTest, AddsATaskOfEveryKind) {
  struct Case {
    Words words;
    const char* line;
  };
  const std::vector<Case> cases{
      {{"--at", "23:30", "--every", "every weekday", "--script", "backup.txt", "--group", "Night"},
       " | Run Script | 23:30 on Every Weekday In Every Month"},
      {{"--program", "tool", "--params", "-x y", "--window", "6", "--at", "7:05", "--every",
        "EVERY DAY", "--in", "march"},
       " | Run | 07:05 on Every Day In March"},
      {{"--print", "C:\\TOOL.exe", "--at", "00:00", "--day", "31"},
       " | Print File | 00:00 on Day Number: 31"},
      {{"--reset", "--at", "12:00", "--once", "2026-12-25"},
       " | Reset Computer | 12:00 on 25-12-2026"},
      {{"--shutdown", "--at", "12:00", "--once", "1.2.2026"},
       " | Shutdown Computer | 12:00 on 01-02-2026"},
      {{"--message", "--reset", "--at", "12:00", "--every", "Every Day"},
       " | Popup Message | 12:00 on Every Day In Every Month"},
      {{"--sound", "C:\\tool.exe", "--at", "12:00", "--every", "The 2nd Tuesday"},
       " | Play Sound | 12:00 on The 2nd Tuesday In Every Month"}};
  int number = 0;
  for (const Case& c : cases) {
    const std::string name = "Task " + std::to_string(++number);
    Words words = c.words;
    words.insert(words.begin(), {"add", name});
    EXPECT_EQ(Run(words), 0) << err.str();
    EXPECT_EQ(out.str(), std::to_string(number) + ") " + name + c.line + "\n");
    EXPECT_EQ(err.str().empty(), number != 7) << "only the rule that never fires is remarked upon";
    if (number == 1) {
      EXPECT_EQ(Last().group, "Night");
    }
    if (number == 2) {
      EXPECT_EQ(Last().cmdLine, "-x y");
      EXPECT_EQ(Last().winStyle, 6);
    }
  }
  EXPECT_EQ(Run({"list"}), 0);
  EXPECT_NE(out.str().find("3) Task 3 | Print File | 00:00 on Day Number: 31\n4) Task 4"),
            std::string::npos);
}

TEST_F(CommandsTest, RefusesWhatIsInvalidAndStoresNothing) {
  struct Case {
    Words words;
    const char* message;
  };
  const std::vector<Case> cases{
      {{"", "--at", "10:00", "--every", "Every Day", "--message", "m"}, "No task name given"},
      {{"internet", "--at", "10:00", "--every", "Every Day", "--message", "m"},
       "That Task Name is already in use. Please use a different one."},
      {{"T", "--at", "24:00", "--every", "Every Day", "--message", "m"},
       "Invlaid Hour given for Time"},
      {{"T", "--at", "1:xx", "--every", "Every Day", "--message", "m"},
       "Invalid Minute given for Time"},
      {{"T", "--at", "10:00", "--once", "31-4-2026", "--message", "m"},
       "Invalid Day given for Date"},
      {{"T", "--at", "10:00", "--once", "x-4-2026", "--message", "m"}, "Invalid Date"},
      {{"T", "--at", "1e1:30", "--day", "1", "--message", "m"}, "Invlaid Hour given for Time"},
      {{"T", "--at", "10:00", "--day", "1.5", "--message", "m"}, "Invlaid Day of Month Given"},
      {{"a\\\\b", "--at", "10:00", "--day", "1", "--message", "m"},
       "That Task Name cannot be used. Please use a different one."},
      {{"T", "--at", "10:00", "--day", "32", "--message", "m"}, "Invlaid Day of Month Given"},
      {{"T", "--at", "10:00", "--day", "first", "--message", "m"}, "Invlaid Day of Month Given"},
      {{"T", "--at", "10:00", "--every", "Every Day", "--script", "missing.txt"},
       "File does not exist"}};
  const int writes = fake.registry.Writes();
  for (const Case& c : cases) {
    Words words = c.words;
    words.insert(words.begin(), "add");
    EXPECT_EQ(Run(words), kExitRefused) << c.message;
    EXPECT_EQ(err.str(), std::string(c.message) + "\n");
    EXPECT_EQ(out.str(), "");
  }
  for (const char* slot : {"0", "1", "99999"}) {
    EXPECT_EQ(Run({"delete", slot}), kExitRefused);
    EXPECT_EQ(Run({"run", slot}), kExitRefused);
  }
  EXPECT_EQ(fake.registry.Writes(), writes);
}

TEST_F(CommandsTest, AHundredTasksAreAllThereIsRoomFor) {
  for (int i = 1; i <= 100; ++i) {
    ASSERT_EQ(Run({"add", "T" + std::to_string(i), "--at", "10:00", "--day", "1", "--reset"}), 0);
  }
  EXPECT_EQ(Run({"add", "T101", "--at", "10:00", "--day", "1", "--reset"}), kExitRefused);
  EXPECT_EQ(program.Store().NoTasks(), 100);
  EXPECT_EQ(Run({"list"}), 0);
  EXPECT_NE(out.str().find("100) T100 | Reset Computer"), std::string::npos);
}

TEST_F(CommandsTest, WhatItDoesNotUnderstandIsAUsageError) {
  for (const Words& words : std::vector<Words>{
           {"frobnicate"},
           {"get", "General"},
           {"get", "General", "a", "b"},
           {"set", "General", "OnTop"},
           {"list", "all"},
           {"delete"},
           {"delete", "-1"},
           {"run", "first"},
           {"add"},
           {"add", "T"},
           {"add", "--at", "10:00", "--day", "1", "--reset"},
           {"add", "T", "U", "--at", "10:00", "--day", "1", "--reset"},
           {"add", "T", "--at", "10:00", "--day", "1"},
           {"add", "T", "--at", "10", "--day", "1", "--reset"},
           {"add", "T", "--at", "10:00", "--day", "1", "--every", "Every Day", "--reset"},
           {"add", "T", "--at", "10:00", "--day", "1", "--in", "May", "--reset"},
           {"add", "T", "--at", "10:00", "--day", "1", "--reset", "--shutdown"},
           {"add", "T", "--at", "10:00", "--day", "1", "--day", "2", "--reset"},
           {"add", "T", "--at", "10:00", "--every", "Some Day", "--reset"},
           {"add", "T", "--at", "10:00", "--once", "tomorrow", "--reset"},
           {"add", "T", "--at", "10:00", "--day", "1", "--message", "m", "--params", "x"},
           {"add", "T", "--at", "10:00", "--day", "1", "--program", "tool", "--window", "7"},
           {"add", "T", "--at", "10:00", "--day", "1", "--message"}}) {
    EXPECT_EQ(Run(words), kExitUsage) << testing::PrintToString(words);
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
  Run({"add", "One", "--at", "10:00", "--day", "1", "--message", "Hello"});
  Run({"add", "Two", "--at", "10:00", "--day", "1", "--shutdown"});
  fake.messageBoxes.expected = {{"Hello"}};
  EXPECT_EQ(Run({"run", "1"}), 0);
  EXPECT_TRUE(fake.messageBoxes.expected.empty());
  EXPECT_EQ(Run({"delete", "1"}), 0);
  EXPECT_EQ(Run({"run", "1"}), 0);
  EXPECT_EQ(fake.session.ends, (std::vector<std::uint32_t>{kShutdown}));
}

TEST(Program, StartsTheDesktopAndEndsWithItsWindow) {
  FakePlatform fake;
  Program program(fake.platform, {"invisible", "C:\\Home"});
  program.Start();
  std::vector<std::string> told;
  program.onTaskRun = [&](const TaskRecord& task) { told.push_back(task.name); };
  std::ostringstream out;
  RunCommand({"add", "Soon", "--at", "14:05", "--day", "21", "--reset"},
             {program, out, out, [](const std::string& path, std::int16_t) { return path; }});
  fake.loop.Advance(60000);
  EXPECT_EQ(told, (Words{"Soon"}));
  program.Quit();
  EXPECT_TRUE(fake.loop.QuitRequested());
}

TEST(Program, OneWindowStandsForAnother) {
  FakePlatform fake;
  Program program(fake.platform, {"", "C:\\Home"});
  program.Start();
  frmScriptcfg& window = program.MainWindow();
  frmEdit& editor = program.Editor();
  ASSERT_TRUE(window.cmdNew.Press());
  EXPECT_FALSE(window.Visible());
  EXPECT_TRUE(editor.Visible());
  program.BringToFront();
  EXPECT_FALSE(window.Visible());
  editor.txtTaskName.Type("Made here");
  editor.optTaskType[5].Choose();
  editor.txt1.Type("Hello");
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_TRUE(window.Visible());
  ASSERT_EQ(window.treTasks.Nodes().size(), 2U) << "the group and the task";

  window.cmdSystemTray.Press();
  program.BringToFront();
  EXPECT_TRUE(window.Visible());
  EXPECT_FALSE(fake.trayIcon.added);

  window.treTasks.ClickNode(1);
  ASSERT_TRUE(window.cmdEdit.Press());
  EXPECT_TRUE(editor.Visible());
  program.Quit();
  EXPECT_FALSE(editor.Visible());
  EXPECT_FALSE(window.Visible()) << "it does not come back for the closing editor";
  EXPECT_TRUE(fake.loop.QuitRequested());
}

TEST(Program, AFullListOpensNoEditor) {
  FakePlatform fake;
  Program program(fake.platform, {"", "C:\\Home"});
  program.GetSettings().WriteSetting(kGeneral, "NoTasks", "100");
  program.Start();
  fake.messageBoxes.expected = {{TaskStore::kListFull}};
  EXPECT_TRUE(program.MainWindow().cmdNew.Press());
  EXPECT_TRUE(fake.messageBoxes.expected.empty());
  EXPECT_FALSE(program.Editor().Visible());
  EXPECT_TRUE(program.MainWindow().Visible());
}

}  // namespace
}  // namespace orvanto
