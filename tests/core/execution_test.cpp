#include <gtest/gtest.h>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Execution, EachTypeDoesItsOneThing) {
  CoreDesk desk;
  const char* paths[] = {"nothing", "night.txt",    "notepad.exe", "c:\\a.txt", "",
                         "",        "Time for tea", "ding.wav",    "nothing"};
  for (std::int16_t type = 0; type <= 8; ++type) {
    desk.Add("Task " + std::to_string(type), "10:00", [&](TaskEntry& entry) {
      entry.taskType = type;
      entry.path = paths[type];
      entry.winStyle = 4;
    });
  }
  std::vector<std::int16_t> told;
  desk.execution.onRun = [&](const TaskRecord& task) { told.push_back(task.taskType); };
  desk.messageBoxes.expected = {{"Time for tea"}};
  for (std::int16_t slot = 1; slot <= 9; ++slot) desk.execution.RunTask(slot);

  EXPECT_EQ(told, (std::vector<std::int16_t>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(desk.scripts.ran, (Texts{"night.txt"}));
  EXPECT_EQ(desk.done, (Texts{"open notepad.exe in '' 4", "print c:\\a.txt in '' 4", "end 2",
                              "end 1", "play ding.wav"}));
}

TEST(Execution, TheCommandLineTravelsInTheFileAndTheStyleBecomesAShowCommand) {
  CoreDesk desk;
  const int commands[] = {0, 1, 2, 2, 4, 7, 0, 0};
  for (std::int16_t style = 0; style <= 7; ++style) {
    desk.Add("Editor", "10:00", [&](TaskEntry& entry) {
      entry.taskType = kRunProgram;
      entry.path = "notepad.exe";
      entry.cmdLine = "c:\\a.txt";
      entry.winStyle = style;
    });
    desk.execution.RunTask(desk.store.NoTasks());
    EXPECT_EQ(desk.done.back(),
              "open notepad.exe c:\\a.txt in '' " + std::to_string(commands[style]));
  }
}

}  // namespace
}  // namespace orvanto
