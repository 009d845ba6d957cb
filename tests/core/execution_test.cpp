#include <gtest/gtest.h>

#include "tests/core/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Execution, EachTypeDoesItsOneThing) {
  CoreDesk desk;
  const std::vector<std::pair<std::int16_t, const char*>> tasks{{kRunScript, "night.txt"},
                                                                {kRunProgram, "notepad.exe"},
                                                                {kPrintFile, "c:\\a.txt"},
                                                                {kResetComputer, ""},
                                                                {kShutdownComputer, ""},
                                                                {kPopupMessage, "Time for tea"},
                                                                {kPlaySound, "ding.wav"},
                                                                {0, "nothing"},
                                                                {8, "nothing"}};
  for (const auto& [type, path] : tasks) {
    desk.Add("Task " + std::to_string(type), "10:00", [type = type, path = path](TaskEntry& entry) {
      entry.taskType = type;
      entry.path = path;
      entry.winStyle = 4;
    });
  }
  std::vector<std::int16_t> told;
  desk.execution.onRun = [&](const TaskRecord& task) { told.push_back(task.taskType); };
  desk.messageBoxes.expected = {{"Time for tea"}};
  for (std::int16_t slot = 1; slot <= 9; ++slot) desk.execution.RunTask(slot);

  EXPECT_EQ(told, (std::vector<std::int16_t>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(desk.scripts.ran, (std::vector<std::string>{"night.txt"}));
  ASSERT_EQ(desk.shell.requests.size(), 2U);
  EXPECT_EQ(desk.shell.requests[0].operation, "open");
  EXPECT_EQ(desk.shell.requests[0].file, "notepad.exe");
  EXPECT_EQ(desk.shell.requests[1].operation, "print");
  EXPECT_EQ(desk.shell.requests[1].show, ShowCommand::NoActivate);
  EXPECT_EQ(desk.session.ends, (std::vector<std::uint32_t>{2, 1}));
  EXPECT_TRUE(desk.messageBoxes.expected.empty());
  EXPECT_EQ(desk.sound.played, (std::vector<std::string>{"ding.wav"}));
}

TEST(Execution, TheCommandLineTravelsInTheFile) {
  CoreDesk desk;
  desk.Add("Editor", "10:00", [](TaskEntry& entry) {
    entry.taskType = kRunProgram;
    entry.path = "notepad.exe";
    entry.cmdLine = "c:\\a.txt";
    entry.winStyle = 3;
  });
  desk.execution.RunTask(1);
  ASSERT_EQ(desk.shell.requests.size(), 1U);
  EXPECT_EQ(desk.shell.requests[0].file, "notepad.exe c:\\a.txt");
  EXPECT_EQ(desk.shell.requests[0].parameters, "");
  EXPECT_EQ(desk.shell.requests[0].directory, "");
  EXPECT_EQ(desk.shell.requests[0].show, ShowCommand::Minimized);
}

TEST(Execution, WindowStylesMapToShowCommands) {
  const int commands[] = {0, 1, 2, 2, 4, 7, 0, 0};
  for (int style = 0; style <= 7; ++style) {
    EXPECT_EQ(static_cast<int>(ShowCommandOfWinStyle(style)), commands[style]) << style;
  }
}

}  // namespace
}  // namespace orvanto
