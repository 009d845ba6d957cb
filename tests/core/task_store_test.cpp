#include <gtest/gtest.h>

#include "core/modTaskOperations.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

constexpr const char* kInUse = "That Task Name is already in use. Please use a different one.";

constexpr const char* kUnusable = "That Task Name cannot be used. Please use a different one.";

class Finder : public FileFinder {
 public:
  explicit Finder(const FakeFiles& files) : files_(files) {}
  bool FindFile(const std::string& path) override {
    asked = path;
    return files_.Exists(path);
  }
  std::string asked;

 private:
  const FakeFiles& files_;
};

class TaskStoreTest : public testing::Test {
 protected:
  TaskStoreTest() { store.SetProgramFolder("C:\\Orvanto"); }
  ~TaskStoreTest() override {
    EXPECT_EQ(platform.registry.OpenKeys(), 0U);
    EXPECT_EQ(platform.registry.ChangeDepth(), 0);
  }

  static TaskEntry Message(const std::string& name, std::int16_t index) {
    TaskEntry entry;
    entry.name = name;
    entry.index = index;
    entry.group = "G";
    entry.timeType = kTimeRecurring;
    entry.every = 1;
    entry.in = 1;
    entry.hour = "08";
    entry.minute = "05";
    entry.taskType = kPopupMessage;
    entry.path = "Hello";
    return entry;
  }
  void Fill(std::initializer_list<const char*> names) {
    std::int16_t slot = 0;
    for (const char* name : names) store.SaveTask(Message(name, ++slot));
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (std::int16_t i = 1; i <= store.NoTasks(); ++i) names.push_back(store.TaskName(i));
    return names;
  }
  std::string Validate(const TaskEntry& entry) {
    store.ValidateTask(entry);
    return store.TaskValidationMessage;
  }
  std::string Stored(const std::string& section, const std::string& value) {
    return settings.ReadSetting(section, value, "(missing)");
  }
  bool HasSection(RootKey root, const std::string& name) {
    return platform.registry.HasKey(root, std::string(kProductKey) + "\\" + name);
  }

  FakePlatform platform;
  Settings settings{platform.registry};
  Finder finder{platform.files};
  TaskStore store{settings, platform.clock, finder};
};

using NameList = std::vector<std::string>;

TEST_F(TaskStoreTest, EveryTaskAndTimeTypeComesBackValueForValue) {
  std::int16_t slot = 0;
  for (const int monthFirst : {0, 1}) {
    store.DateOrderMonthFirst = monthFirst;
    for (std::int16_t timeType = 1; timeType <= 3; ++timeType) {
      for (std::int16_t taskType = 1; taskType <= 7; ++taskType) {
        ++slot;
        TaskEntry entry = Message("Task " + std::to_string(slot), slot);
        entry.timeType = timeType;
        entry.datePart1 = "25";
        entry.datePart2 = "12";
        entry.year = "2026";
        entry.every = 9;
        entry.in = 13;
        entry.dayNo = 31;
        entry.taskType = taskType;
        entry.winStyle = 5;
        entry.path = "C:\\Dir\\File";
        entry.cmdLine = "/x \"y z\"";
        store.SaveTask(entry);
        store.LoadTask(slot);
        const TaskRecord& task = store.CurrentTask;
        EXPECT_EQ(task.name, entry.name);
        EXPECT_EQ(task.index, slot);
        EXPECT_EQ(task.group, "G");
        EXPECT_EQ(task.timeHour + task.timeMinute, "0805");
        EXPECT_EQ(task.timeType, timeType);
        EXPECT_EQ(task.taskType, taskType);
        const bool once = timeType == kTimeOnce;
        EXPECT_EQ(task.dateDay, once ? (monthFirst == 0 ? "25" : "12") : "0");
        EXPECT_EQ(task.dateMonth, once ? (monthFirst == 0 ? "12" : "25") : "0");
        EXPECT_EQ(task.dateYear, once ? "2026" : "0");
        const bool recurring = timeType == kTimeRecurring;
        EXPECT_EQ(task.every, recurring ? 9 : 0);
        EXPECT_EQ(task.in, recurring ? 13 : 0);
        EXPECT_EQ(task.dayNo, timeType == kTimeDayNumber ? 31 : 0);
        const bool window = taskType == kRunProgram || taskType == kPrintFile;
        EXPECT_EQ(task.winStyle, window ? 5 : 1);
        EXPECT_EQ(task.cmdLine, window ? entry.cmdLine : "");
        EXPECT_EQ(task.path, taskType == kResetComputer      ? "Reset Computer"
                             : taskType == kShutdownComputer ? "Shutdown Computer"
                                                             : entry.path);
      }
    }
  }
  EXPECT_EQ(store.NoTasks(), 42);
}

TEST_F(TaskStoreTest, WhatIsMissingLoadsAsTheDefaults) {
  settings.WriteSetting(kGeneral, "NoTasks", "3");
  settings.WriteSetting(kGeneral, "Task1", "Bare");
  settings.WriteSetting("Bare", "TimeType", "1");
  settings.WriteSetting(kGeneral, "Task2", "Odd");
  for (const char* value : {"TimeType", "TaskType", "WinStyle", "Every", "In", "DayNo"}) {
    settings.WriteSetting("Odd", value, "soon");
  }
  settings.WriteSetting("Odd", "TimeHour", "7");

  store.LoadTask(1);
  EXPECT_EQ(store.CurrentTask.group, "General");
  EXPECT_EQ(store.CurrentTask.timeHour, "14");
  EXPECT_EQ(store.CurrentTask.timeMinute, "11") << "the month stands in for the minute";
  EXPECT_EQ(store.CurrentTask.dateDay, "21");
  EXPECT_EQ(store.CurrentTask.dateMonth, "11");
  EXPECT_EQ(store.CurrentTask.dateYear, "2026");
  EXPECT_EQ(store.CurrentTask.taskType, kRunProgram);
  EXPECT_EQ(store.CurrentTask.winStyle, 1);

  store.LoadTask(2);
  EXPECT_EQ(store.CurrentTask.timeType, 0);
  EXPECT_EQ(store.CurrentTask.taskType, 0);
  EXPECT_EQ(store.CurrentTask.timeHour, "07");
  store.LoadTask(3);
  EXPECT_EQ(store.CurrentTask.name, "");
  EXPECT_EQ(store.CurrentTask.timeType, 0);
}

TEST_F(TaskStoreTest, DeletingClosesTheGap) {
  int changes = 0;
  store.onListChanged = [&] { ++changes; };
  Fill({"One", "Two", "Three", "Four"});
  store.DeleteTask(2);
  EXPECT_EQ(Names(), (NameList{"One", "Three", "Four"}));
  EXPECT_FALSE(HasSection(RootKey::CurrentUser, "Two"));
  EXPECT_EQ(Stored(kGeneral, "Task4"), "(missing)");
  store.DeleteTask(3);
  EXPECT_EQ(Names(), (NameList{"One", "Three"}));
  EXPECT_EQ(changes, 2);
  for (const int nothing : {0, -1, 3, 100}) store.DeleteTask(static_cast<std::int16_t>(nothing));
  EXPECT_EQ(Names(), (NameList{"One", "Three"}));
  store.DeleteTask(1);
  store.DeleteTask(1);
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "0");
}

TEST_F(TaskStoreTest, InSharedModeADeletedTaskIsOnlyHidden) {
  settings.SetStorageMode(1);
  Fill({"One", "Two"});
  store.DeleteTask(1);
  EXPECT_EQ(Names(), (NameList{"Two"}));
  EXPECT_TRUE(HasSection(RootKey::LocalMachine, "One"));
  EXPECT_EQ(Stored(kGeneral, "Task2"), "Two");
}

TEST_F(TaskStoreTest, SavingAnExistingSlotKeepsTheCountAndTheOldNamesSection) {
  Fill({"2", "Two"});
  store.SaveTask(Message("Renamed", 2));
  EXPECT_EQ(Names(), (NameList{"2", "Renamed"}));
  EXPECT_TRUE(HasSection(RootKey::CurrentUser, "Two"));
  EXPECT_FALSE(HasSection(RootKey::CurrentUser, "2")) << "the section named like the count goes";
}

TEST_F(TaskStoreTest, TheProgramsOwnSectionsAreNeverDeleted) {
  settings.WriteSetting(kInternet, "Proxy FTP", "1");
  Fill({"One", "Two", "Three"});
  settings.WriteSetting(kGeneral, "Task2", "general");
  settings.WriteSetting(kGeneral, "Task3", "Internet\\");
  settings.WriteSetting(kGeneral, "Task1", "");
  for (int i = 0; i < 3; ++i) store.DeleteTask(1);
  EXPECT_EQ(Stored(kInternet, "Proxy FTP"), "1");
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "0");
  settings.WriteSetting(kGeneral, "NoTasks", "Internet");
  store.SaveTask(Message("One", 0));
  EXPECT_EQ(Stored(kInternet, "Proxy FTP"), "1");
}

TEST_F(TaskStoreTest, ADamagedCountCostsNoTask) {
  Fill({"One", "Two"});
  for (const char* damaged : {"two", "-1", "99999", ""}) {
    settings.WriteSetting(kGeneral, "NoTasks", damaged);
    EXPECT_EQ(Names(), (NameList{"One", "Two"})) << damaged;
  }
  store.SaveTask(Message("Three", static_cast<std::int16_t>(store.NoTasks() + 1)));
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "3");
  EXPECT_EQ(Names(), (NameList{"One", "Two", "Three"}));
}

TEST_F(TaskStoreTest, AFailedWriteLeavesTheOtherTasksAlone) {
  for (int failing = 1; failing <= 30; ++failing) {
    FakePlatform fresh;
    Settings freshSettings(fresh.registry);
    TaskStore freshStore(freshSettings, fresh.clock, finder);
    freshStore.SaveTask(Message("One", 1));
    fresh.registry.FailWrite(failing, kAccessDenied);
    freshStore.SaveTask(Message("Two", 2));
    freshStore.LoadTask(1);
    EXPECT_EQ(freshStore.CurrentTask.name, "One") << failing;
    EXPECT_EQ(freshStore.CurrentTask.path, "Hello") << failing;
    EXPECT_GE(freshStore.NoTasks(), 1) << failing;
  }
}

TEST_F(TaskStoreTest, FindsTheTaskOfATreeLine) {
  Fill({"Backup", "backup", "Odd | Name"});
  struct Case {
    const char* line;
    std::int16_t index;
  };
  for (const Case& c : {Case{"backup | Run | 08:05 on Every Day In Every Month", 2},
                        {"Backup | ", 1},
                        {"Backup", 77},
                        {"Backup |", 77},
                        {"BACKUP | Run", 77},
                        {"Odd | Name | Run", 77},
                        {"", 77}}) {
    std::int16_t index = 77;
    store.FindTaskIndex(c.line, index);
    EXPECT_EQ(index, c.index) << c.line;
  }
}

TEST_F(TaskStoreTest, RefusesNames) {
  Fill({"One", "Two"});
  struct Case {
    const char* name;
    std::int16_t slot;
    const char* message;
  };
  for (const Case& c : {Case{"", 3, "No task name given"},
                        {"One", 3, kInUse},
                        {"Two", 1, kInUse},
                        {"One", 1, ""},
                        {"one", 3, ""},
                        {"gEnErAl", 3, kInUse},
                        {"INTERNET", 3, kInUse},
                        {"General\\", 3, kInUse},
                        {"\\Internet", 3, kInUse},
                        {"\\", 3, kInUse},
                        {"One\\", 3, kUnusable},
                        {"\\One", 3, kUnusable},
                        {"a\\\\b", 3, kUnusable},
                        {"a\\b", 3, ""},
                        {"Generals", 3, ""}}) {
    EXPECT_EQ(Validate(Message(c.name, c.slot)), c.message) << c.name;
  }
}

TEST_F(TaskStoreTest, RefusesNamesThatTheRegistryCannotHold) {
  EXPECT_EQ(Validate(Message(std::string(255, 'x'), 1)), "");
  EXPECT_EQ(Validate(Message(std::string(256, 'x'), 1)), kUnusable);
  EXPECT_EQ(Validate(Message(std::string("a\0b", 3), 1)), kUnusable);
}

TEST_F(TaskStoreTest, JudgesDates) {
  struct Case {
    const char* day;
    const char* month;
    const char* year;
    const char* message;
  };
  constexpr const char* kDay = "Invalid Day given for Date";
  for (const Case& c : {Case{"29", "2", "2004", ""},
                        {"29", "2", "1900", ""},
                        {"29", "2", "2001", kDay},
                        {"30", "02", "2004", kDay},
                        {"31", "4", "2026", kDay},
                        {"31", "6", "2026", kDay},
                        {"31", "8", "2026", kDay},
                        {"31", "11", "2026", kDay},
                        {"31", "9", "2026", ""},
                        {"32", "1", "2026", kDay},
                        {"0", "1", "2026", kDay},
                        {"1", "13", "2026", "Invalid Month given for Date"},
                        {"1", "0", "2026", "Invalid Month given for Date"},
                        {"1", "1", "99", "Invalid Year given for Date"},
                        {"0", "13", "99", "Invalid Month given for Date"},
                        {"x", "1", "2026", "Invalid Date"},
                        {"1", "", "2026", "Invalid Date"},
                        {"1", "1", "20266666", "Invalid Date"}}) {
    for (const int monthFirst : {0, 1}) {
      store.DateOrderMonthFirst = monthFirst;
      TaskEntry entry = Message("Dated", 1);
      entry.timeType = kTimeOnce;
      entry.datePart1 = monthFirst == 0 ? c.day : c.month;
      entry.datePart2 = monthFirst == 0 ? c.month : c.day;
      entry.year = c.year;
      EXPECT_EQ(Validate(entry), c.message) << c.day << "-" << c.month << "-" << c.year;
    }
  }
}

TEST_F(TaskStoreTest, JudgesTimesAndDayNumbersAndTheLastFailureSpeaks) {
  struct Case {
    const char* hour;
    const char* minute;
    std::int16_t dayNo;
    const char* message;
    const char* editorMessage;
  };
  for (const Case& c :
       {Case{"0", "0", 1, "", ""},
        {"23", "59", 31, "", ""},
        {"24", "0", 1, "Invlaid Hour given for Time", "Invalid Hour selected for execution time"},
        {"-1", "0", 1, "Invlaid Hour given for Time", "Invalid Hour selected for execution time"},
        {"0", "60", 1, "Invalid Minute given for Time",
         "Invalid Minute selected for execution time"},
        {"24", "60", 0, "Invalid Minute given for Time",
         "Invalid Minute selected for execution time"},
        {"x", "0", 1, "Invlaid Hour given for Time", "Invalid Time"},
        {"0", "0", 0, "Invlaid Day of Month Given", ""},
        {"0", "0", 32, "Invlaid Day of Month Given", ""}}) {
    TaskEntry entry = Message("Timed", 1);
    entry.timeType = kTimeDayNumber;
    entry.hour = c.hour;
    entry.minute = c.minute;
    entry.dayNo = c.dayNo;
    EXPECT_EQ(Validate(entry), c.message) << c.hour << ":" << c.minute << " day " << c.dayNo;
    store.TaskValidationMessage.clear();
    store.ValidateTime(c.hour, c.minute);
    EXPECT_EQ(store.TaskValidationMessage, c.editorMessage) << c.hour << ":" << c.minute;
  }
  TaskEntry wrong = Message("", 1);
  wrong.hour = "25";
  wrong.taskType = kRunScript;
  EXPECT_EQ(Validate(wrong), "File does not exist");
}

TEST_F(TaskStoreTest, LooksForFilesInTheScriptsFolderUnlessThePathIsWhole) {
  platform.files.contents["C:\\Orvanto\\scripts\\Backup.txt"] = "";
  platform.files.contents["D:\\x.txt"] = "";
  struct Case {
    std::int16_t taskType;
    const char* path;
    const char* asked;
    const char* message;
  };
  for (const Case& c :
       {Case{kRunScript, "BACKUP.txt", "c:\\orvanto\\scripts\\backup.txt", ""},
        {kRunProgram, "D:\\X.txt", "d:\\x.txt", ""},
        {kPrintFile, "D:\\y.txt", "d:\\y.txt", "File does not exist"},
        {kPlaySound, "", "c:\\orvanto\\scripts\\", "File does not exist"},
        {kRunProgram, "D:x.txt", "c:\\orvanto\\scripts\\d:x.txt", "File does not exist"},
        {kPopupMessage, "D:\\y.txt", "", ""},
        {kResetComputer, "", "", ""}}) {
    finder.asked.clear();
    TaskEntry entry = Message("Filed", 1);
    entry.taskType = c.taskType;
    entry.path = c.path;
    EXPECT_EQ(Validate(entry), c.message) << c.path;
    EXPECT_EQ(finder.asked, c.asked);
  }
  store.SetProgramFolder("C:\\");
  EXPECT_EQ(store.AppDir, "C:\\");
}

}  // namespace
}  // namespace orvanto
