#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

constexpr const char* kInUse = "That Task Name is already in use. Please use a different one.";
constexpr const char* kUnusable = "That Task Name cannot be used. Please use a different one.";

class TaskStoreTest : public testing::Test, public CoreDesk {
 protected:
  void Fill(const Texts& names) {
    for (const std::string& name : names) Add(name, "08:05");
  }
  std::string Validate(const TaskEntry& entry) {
    store.ValidateTask(entry);
    return store.TaskValidationMessage;
  }
  std::string Stored(const std::string& section, const std::string& value) {
    return settings.ReadSetting(section, value, "(missing)");
  }
  bool HasSection(const std::string& name, RootKey root = RootKey::CurrentUser) {
    return registry.HasKey(root, std::string(kProductKey) + "\\" + name);
  }
};

TEST_F(TaskStoreTest, WhatIsMissingLoadsAsTheDefaults) {
  Fill({"Bare", "Odd"});
  settings.DeleteUserKey("Bare");
  settings.WriteSetting("Bare", "TimeType", "1");
  settings.WriteSetting("Odd", "TimeHour", "7");
  for (const char* value : {"TimeType", "TaskType", "WinStyle", "Every", "In", "DayNo"}) {
    settings.WriteSetting("Odd", value, "soon");
  }
  const TaskRecord& task = store.CurrentTask;
  store.LoadTask(1);
  EXPECT_EQ(task.group, "General");
  EXPECT_EQ(task.timeHour, "14");
  EXPECT_EQ(task.timeMinute, "11") << "the month stands in for the minute";
  EXPECT_EQ(task.dateDay + task.dateMonth + task.dateYear, "21112026");
  EXPECT_EQ(task.taskType, kRunProgram);
  EXPECT_EQ(task.winStyle, 1);

  store.LoadTask(2);
  EXPECT_EQ(task.timeType, 0);
  EXPECT_EQ(task.taskType, 0);
  EXPECT_EQ(task.timeHour, "07");
  store.LoadTask(3);
  EXPECT_EQ(task.name, "");
  EXPECT_EQ(task.timeType, 0);
}

TEST_F(TaskStoreTest, DeletingClosesTheGap) {
  int changes = 0;
  const Subscription listens = store.listChanged.Subscribe([&] { ++changes; });
  Fill({"One", "Two", "Three", "Four"});
  EXPECT_EQ(changes, 4);
  store.DeleteTask(2);
  EXPECT_EQ(Names(), (Texts{"One", "Three", "Four"}));
  EXPECT_FALSE(HasSection("Two"));
  EXPECT_EQ(Stored(kGeneral, "Task4"), "(missing)");
  store.DeleteTask(3);
  EXPECT_EQ(changes, 6);
  for (const std::int16_t nothing : std::initializer_list<std::int16_t>{0, -1, 3, 100})
    store.DeleteTask(nothing);
  EXPECT_EQ(Names(), (Texts{"One", "Three"}));
  store.DeleteTask(1);
  store.DeleteTask(1);
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "0");

  settings.SetStorageMode(1);
  Fill({"One", "Two"});
  store.DeleteTask(1);
  EXPECT_EQ(Names(), (Texts{"Two"}));
  EXPECT_TRUE(HasSection("One", RootKey::LocalMachine)) << "what is shared is only hidden";
  EXPECT_EQ(Stored(kGeneral, "Task2"), "Two");
  settings.WriteSetting(kGeneral, "NoTasks", "x");
  EXPECT_EQ(store.NoTasks(), 0) << "the deleted one does not come back";
  EXPECT_EQ(store.StoreEntry(Entry("Three", "08:05"), ""), 0);
  EXPECT_EQ(store.TaskValidationMessage, TaskStore::kCountLost);
}

TEST_F(TaskStoreTest, SavingAnExistingSlotKeepsTheCountAndTheOldNamesSection) {
  Fill({"2", "Two"});
  store.SaveTask(Entry("Renamed", "08:05", [](TaskEntry& entry) { entry.index = 2; }));
  EXPECT_EQ(Names(), (Texts{"2", "Renamed"}));
  EXPECT_TRUE(HasSection("Two"));
  EXPECT_TRUE(HasSection("2")) << "it is a task's";
  store.SaveTask(Entry("One", "08:05", [](TaskEntry& entry) { entry.index = 1; }));
  EXPECT_FALSE(HasSection("2")) << "the section named like the count goes";
}

TEST_F(TaskStoreTest, TheProgramsOwnSectionsAreNeverDeleted) {
  settings.WriteSetting(kInternet, "Proxy FTP", "1");
  Fill({"", "general", "Internet\\"});
  for (int i = 0; i < 3; ++i) store.DeleteTask(1);
  EXPECT_EQ(Stored(kInternet, "Proxy FTP"), "1");
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "0");
  settings.WriteSetting(kGeneral, "NoTasks", "Internet");
  store.SaveTask(Entry("One", "08:05", [](TaskEntry& entry) { entry.index = 0; }));
  EXPECT_EQ(Stored(kInternet, "Proxy FTP"), "1");
}

TEST_F(TaskStoreTest, NamesThatShareASectionAreNotMixedUp) {
  Fill({"Größe", "Backup"});
  const TaskEntry folded = Entry("gRÖßE", "08:05");
  EXPECT_EQ(store.StoreEntry(folded, ""), 0);
  EXPECT_EQ(store.TaskValidationMessage, TaskStore::kSameSection);
  EXPECT_EQ(store.StoreEntry(folded, "Backup"), 0);
  EXPECT_EQ(store.StoreEntry(folded, "Größe"), 1) << "its own slot";
  EXPECT_EQ(Names(), (Texts{"gRÖßE", "Backup"}));
  Fill({"GRÖßE"});  // before they were refused
  store.DeleteTask(3);
  store.LoadTask(1);
  EXPECT_EQ(store.CurrentTask.timeHour, "08");
}

TEST_F(TaskStoreTest, ANewTaskTakesNothingOverFromOneThatHadItsName) {
  for (const std::int16_t mode : std::initializer_list<std::int16_t>{0, 1}) {
    settings.SetStorageMode(mode);
    Add("Old", "08:05", [](TaskEntry& entry) {
      entry.taskType = kRunProgram;
      entry.cmdLine = "/x";
      entry.winStyle = 6;
    });
    TaskEntry other = Entry("Renamed", "08:05");
    ASSERT_EQ(store.StoreEntry(other, "Old"), 1);
    ASSERT_EQ(store.StoreEntry(Entry("Old", "08:05"), ""), 2);
    store.LoadTask(2);
    EXPECT_EQ(store.CurrentTask.cmdLine, "");
    EXPECT_EQ(store.CurrentTask.winStyle, 1);
    EXPECT_EQ(Stored("Renamed", "CmdLine"), "(missing)") << "nothing that was not there";
  }
}

TEST_F(TaskStoreTest, TimesAreStoredAsDigitsHoweverTyped) {
  const std::array<const char*, 3> cases[] = {{" 7", "+5", "07:05"}, {"7 ", "5", "07:05"},
                                              {"7.", "5", ""},       {"7", ".5", ""},
                                              {"-0", "5", ""},       {"1e", "5", ""}};
  for (const auto& [hour, minute, expected] : cases) {
    TaskEntry entry = Entry(std::string("At ") + hour + minute, "08:05");
    entry.hour = hour;
    entry.minute = minute;
    entry.timeType = kTimeOnce;
    entry.datePart1 = " 5";
    entry.datePart2 = "+1";
    entry.year = "20e2";
    EXPECT_EQ(store.StoreEntry(entry, ""), 0);
    entry.year = "02027";
    const std::int16_t slot = store.StoreEntry(entry, "");
    EXPECT_EQ(slot != 0, *expected != '\0') << hour << ":" << minute;
    if (slot == 0) continue;
    EXPECT_EQ(Stored(entry.name, "TimeHour") + ":" + Stored(entry.name, "TimeMinute"), expected);
    EXPECT_EQ(Stored(entry.name, "DateDay") + Stored(entry.name, "DateMonth") +
                  Stored(entry.name, "DateYear"),
              "05012027");
  }
}

TEST_F(TaskStoreTest, WhatCannotBeWrittenIsSaid) {
  registry.FailWrite(3, kDiskFull);
  EXPECT_EQ(store.StoreEntry(Entry("One", "08:05"), ""), 0);
  EXPECT_EQ(store.TaskValidationMessage, TaskStore::kNotWritten);
  settings.SetStorageMode(2);
  EXPECT_EQ(store.StoreEntry(Entry("One", "08:05"), ""), 0);
  EXPECT_EQ(store.TaskValidationMessage, TaskStore::kNotWritten);
}

TEST_F(TaskStoreTest, ADamagedCountCostsNoTask) {
  Fill({"One", "Two"});
  const std::string general = std::string(kProductKey) + "\\General";
  for (const bool mistyped : {false, true}) {
    settings.DeleteUserSetting(kGeneral, "NoTasks");
    RegistryAccess access(registry);
    if (mistyped) access.RegWrite("HKCU", general, "NoTasks", "D", std::int32_t{2});
    EXPECT_EQ(store.NoTasks(), 0);
    EXPECT_EQ(store.StoreEntry(Entry("two", "08:05"), ""), 0) << "the name is there";
    const std::int16_t slot = mistyped ? 4 : 3;
    EXPECT_EQ(store.StoreEntry(Entry("New " + std::to_string(slot), "08:05"), ""), slot);
  }
  EXPECT_EQ(Names(), (Texts{"One", "Two", "New 3", "New 4"}));
  // Also behind a gap, and while one of them is being edited.
  settings.WriteSetting(kGeneral, "NoTasks", "");
  settings.DeleteUserSetting(kGeneral, "Task2");
  settings.DeleteUserSetting(kGeneral, "NoTasks");
  EXPECT_EQ(store.StoreEntry(Entry("One", "09:05"), "One"), 1);
  EXPECT_EQ(store.NoTasks(), 4);
  settings.WriteSetting(kGeneral, "Task2", "Two");
  store.DeleteTask(4);
  store.DeleteTask(3);
  for (const char* damaged : {"two", "-1", "99999", ""}) {
    settings.WriteSetting(kGeneral, "NoTasks", damaged);
    EXPECT_EQ(Names(), (Texts{"One", "Two"})) << damaged;
  }
  Fill({"Three"});
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "3");
  EXPECT_EQ(Names(), (Texts{"One", "Two", "Three"}));
}

TEST_F(TaskStoreTest, AFailedWriteLeavesTheOtherTasksAlone) {
  for (int failing = 1; failing <= 30; ++failing) {
    CoreDesk fresh;
    fresh.Add("One", "08:05");
    fresh.registry.FailWrite(failing, kAccessDenied);
    fresh.Add("Two", "08:05");
    fresh.store.LoadTask(1);
    EXPECT_EQ(fresh.store.CurrentTask.name, "One") << failing;
    EXPECT_EQ(fresh.store.CurrentTask.path, "One") << failing;
    EXPECT_GE(fresh.store.NoTasks(), 1) << failing;
  }
}

TEST_F(TaskStoreTest, FindsTheTaskOfATreeLine) {
  Fill({"Backup", "backup", "Odd | Name"});
  const std::pair<const char*, std::int16_t> lines[] = {
      {"backup | Popup Message | 08:05 on Every Day In Every Month", 2},
      {"Backup | Popup Message | ", 1},
      {"Backup", 77},
      {"Backup |", 77},
      {"BACKUP | Run", 77},
      {"Odd | Name | Run", 77},
      {"Backup | 2 | Popup Message | 08:05", 77},  // a task of another name
      {"Backup | Popup Message | 2 | Popup Message | 08:05", 77},
      {"", 77}};
  for (const auto& [line, expected] : lines) {
    std::int16_t index = 77;
    store.FindTaskIndex(line, index);
    EXPECT_EQ(index, expected) << line;
  }
}

TEST_F(TaskStoreTest, RefusesNames) {
  Fill({"One", "Two", "Three", "Odd | Name"});
  std::string clefs;  // of two units of UTF-16 and four bytes each
  for (int i = 0; i < 100; ++i) clefs += "\U0001D11E";
  struct Case {
    std::int16_t slot;
    const char* message;
    Texts names;
  };
  for (const Case& c :
       {Case{3, "No task name given", {""}},
        {3, kInUse, {"One", "gEnErAl", "INTERNET", "General\\", "\\Internet", "\\"}},
        {1, kInUse, {"Two"}},
        {3, kUnusable, {"One\\", "\\One", "a\\\\b", {"a\0b", 3}, "Caf\xE9", std::string(256, 'x')}},
        {3, kUnusable, {"a | b", "a |", "a\tb", "a\x7F", "a\xC2\x85", clefs + clefs}},
        {3, "", {"one", "a\\b", "Generals", std::string(255, 'x'), clefs, "a|b", "| a"}},
        {1, "", {"One"}},
        {4, "", {"Odd | Name"}}}) {
    for (const std::string& name : c.names) {
      EXPECT_EQ(Validate(Entry(name, "08:05", [&](TaskEntry& entry) { entry.index = c.slot; })),
                c.message)
          << name;
    }
  }
}

TEST_F(TaskStoreTest, JudgesDates) {
  const std::pair<const char*, Texts> cases[] = {
      {"", {"29-2-2004", "29-2-1900", "31-9-2026"}},
      {"Invalid Day given for Date",
       {"29-2-2001", "30-02-2004", "31-4-2026", "31-6-2026", "31-8-2026", "31-11-2026", "32-1-2026",
        "0-1-2026"}},
      {"Invalid Month given for Date", {"1-13-2026", "1-0-2026", "0-13-99"}},
      {"Invalid Year given for Date", {"1-1-99", "1-1-999"}},
      {"Invalid Date", {"x-1-2026", "1--2026", "1-1-20266666"}}};
  for (const auto& [message, dates] : cases) {
    for (const std::string& date : dates) {
      for (const int monthFirst : {0, 1}) {
        store.DateOrderMonthFirst = monthFirst;
        TaskEntry entry = Entry("Dated", "08:05");
        entry.timeType = kTimeOnce;
        std::istringstream parts(date);
        std::getline(parts, monthFirst == 0 ? entry.datePart1 : entry.datePart2, '-');
        std::getline(parts, monthFirst == 0 ? entry.datePart2 : entry.datePart1, '-');
        std::getline(parts, entry.year);
        EXPECT_EQ(Validate(entry), message) << date;
      }
    }
  }
}

TEST_F(TaskStoreTest, JudgesTimesAndDayNumbersAndTheLastFailureSpeaks) {
  constexpr const char* kHour = "Invlaid Hour given for Time";
  constexpr const char* kMinute = "Invalid Minute given for Time";
  constexpr const char* kDay = "Invlaid Day of Month Given";
  constexpr const char* kEditorsHour = "Invalid Hour selected for execution time";
  constexpr const char* kEditorsMinute = "Invalid Minute selected for execution time";
  struct Case {
    const char* hour;
    const char* minute;
    std::int16_t dayNo;
    const char* message;
    const char* editorsMessage;
  };
  for (const Case& c : {Case{"0", "0", 1, "", ""},
                        {"23", "59", 31, "", ""},
                        {"24", "0", 1, kHour, kEditorsHour},
                        {"-1", "0", 1, kHour, kEditorsHour},
                        {"0", "60", 1, kMinute, kEditorsMinute},
                        {"24", "60", 0, kMinute, kEditorsMinute},
                        {"x", "0", 1, kHour, "Invalid Time"},
                        {"0", "0", 0, kDay, ""},
                        {"0", "0", 32, kDay, ""}}) {
    TaskEntry entry = Entry("Timed", "08:05");
    entry.timeType = kTimeDayNumber;
    entry.hour = c.hour;
    entry.minute = c.minute;
    entry.dayNo = c.dayNo;
    EXPECT_EQ(Validate(entry), c.message) << c.hour << ":" << c.minute << " day " << c.dayNo;
    store.TaskValidationMessage.clear();
    store.ValidateTime(c.hour, c.minute);
    EXPECT_EQ(store.TaskValidationMessage, c.editorsMessage) << c.hour << ":" << c.minute;
  }
  TaskEntry wrong = Entry("", "25:00");
  wrong.taskType = kRunScript;
  EXPECT_EQ(Validate(wrong), "File does not exist");
}

TEST_F(TaskStoreTest, LooksForFilesInTheScriptsFolderUnlessThePathIsWhole) {
  files.contents = {{"C:\\Orvanto\\scripts\\Backup.txt", ""}, {"D:\\x.txt", ""}};
  constexpr const char* kNone = "File does not exist";
  struct Case {
    std::int16_t taskType;
    const char* path;
    const char* asked;
    const char* message;
  };
  for (const Case& c : {Case{kRunScript, "BACKUP.txt", "C:\\Orvanto\\scripts\\BACKUP.txt", ""},
                        {kRunProgram, "D:\\X.txt", "D:\\X.txt", ""},
                        {kPrintFile, "D:\\y.txt", "D:\\y.txt", kNone},
                        {kPlaySound, "", "C:\\Orvanto\\scripts\\", kNone},
                        {kRunProgram, "D:x.txt", "C:\\Orvanto\\scripts\\D:x.txt", kNone},
                        {kRunProgram, "D:\\x.txt\n", "", kNone},
                        {kPopupMessage, "D:\\y.txt", "", ""},
                        {kResetComputer, "", "", ""}}) {
    finder.asked.clear();
    TaskEntry entry = Entry("Filed", "08:05");
    entry.taskType = c.taskType;
    entry.path = c.path;
    EXPECT_EQ(Validate(entry), c.message) << c.path;
    EXPECT_EQ(finder.asked, c.asked);
  }
  folder.Set("C:\\");
  EXPECT_EQ(folder.AppDir, "C:\\");
}

}  // namespace
}  // namespace orvanto
