#include <gtest/gtest.h>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Execution, EachTypeDoesItsOneThing) {
  CoreDesk desk;
  const char* paths[] = {"nothing", "night.txt", "notepad.exe", "c:\\a.txt", "",
                         "",        "Tea",       "ding.wav",    "nothing"};
  for (int type = 0; type <= 8; ++type) {
    const std::string code = std::to_string(type);
    desk.Add("Task " + code, "10:00", "TaskType=" + code + " Path=" + paths[type] + " WinStyle=4");
  }
  // Of window styles the ends of the table, and the one that is not what it says.
  for (const char* style : {"0", "1", "3", "6", "7"}) {
    desk.Add(std::string("Style ") + style, "10:00",
             std::string("TaskType=2 Path=a.exe CmdLine=/x WinStyle=") + style);
  }
  desk.Add("Empty", "10:00", "TaskType=2 Path=");
  std::string told;
  desk.execution.onRun = [&](const TaskRecord& task) { told += std::to_string(task.taskType); };
  desk.messageBoxes.expected = {{"Tea"}};
  for (const std::int16_t slot : desk.store.Slots()) desk.execution.RunTask(slot);

  EXPECT_EQ(told, "1234567222222");
  EXPECT_EQ(desk.scripts.ran, (Texts{"night.txt"}));
  EXPECT_EQ(desk.done,
            (Texts{"open notepad.exe in '' 4", "print c:\\a.txt in '' 4", "end 2", "end 1",
                   "play ding.wav", "open a.exe /x in '' 0", "open a.exe /x in '' 1",
                   "open a.exe /x in '' 2", "open a.exe /x in '' 0", "open a.exe /x in '' 0"}));
}

}  // namespace
}  // namespace orvanto
