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
  TaskEntry EntryAt(std::int16_t slot, const std::string& name) {
    TaskEntry entry = Entry(name, "09:05");
    entry.index = slot;
    return entry;
  }
  // The slot in which the entry is stored, or why it is not.
  std::string Save(const TaskEntry& entry, const std::string& loadedName = "") {
    const std::int16_t slot = store.StoreEntry(entry, loadedName);
    return slot != 0 ? std::to_string(slot) : store.TaskValidationMessage;
  }
  std::string Save(const std::string& name, const std::string& loadedName = "") {
    return Save(EntryAt(0, name), loadedName);
  }
  // The message that is left by one of the validations.
  template <typename... Given>
  std::string Judge(void (TaskStore::*validate)(Given...), const auto&... given) {
    store.TaskValidationMessage.clear();
    (store.*validate)(given...);
    return store.TaskValidationMessage;
  }
  std::string Stored(const std::string& section, const std::string& value) {
    return settings.ReadSetting(section, value, "(missing)");
  }
  bool HasSection(const std::string& name, RootKey root = RootKey::CurrentUser) {
    return registry.HasKey(root, std::string(kProductKey) + "\\" + name);
  }
  void SetCount(const std::string& count) { settings.WriteSetting(kGeneral, "NoTasks", count); }
};

TEST_F(TaskStoreTest, WhatIsMissingLoadsAsTheDefaults) {
  Fill({"Once", "Day", "Odd", "Rule"});
  for (const char* bare : {"Once", "Day", "Rule"}) settings.DeleteUserKey(bare);
  Put("Once", "TimeType=1");
  Put("Day", "TimeType=3");
  Put("Rule", "TimeType=2");
  Put("Odd", "TimeType=soon TaskType=soon TimeHour=7");
  // The month stands in for the minute.
  const char* expected[] = {"Once | Run | 14:11 on 21-11-2026,   1 General",
                            "Day | Run | 14:11 on Day Number: 1,   1 General",
                            "Odd | Unknown Type | 07:05 on , Odd  1 General",
                            "Rule | Run | 14:11 on  In ,   1 General",
                            " | Run | 14:11 on ,   1 General"};
  for (std::int16_t slot = 1; slot <= 5; ++slot) EXPECT_EQ(Told(slot), expected[slot - 1]);
  store.LoadTask(1);
  EXPECT_EQ(store.CurrentTask.dateYear, "2026");
}

TEST_F(TaskStoreTest, DeletingClosesTheGap) {
  int changes = 0;
  const Subscription listens = store.listChanged.Subscribe([&] { ++changes; });
  Fill({"One", "Two", "Three"});
  store.DeleteTask(2);
  EXPECT_EQ(Names(), (Texts{"One", "Three"}));
  EXPECT_FALSE(HasSection("Two"));
  EXPECT_EQ(Stored(kGeneral, "Task3"), "(missing)");
  for (const int nothing : {0, 3}) store.DeleteTask(static_cast<std::int16_t>(nothing));
  EXPECT_EQ(changes, 4);
  for (int i = 0; i < 2; ++i) store.DeleteTask(1);
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "0");

  settings.SetStorageMode(1);
  Fill({"One", "Two"});
  store.DeleteTask(1);
  EXPECT_EQ(Names(), (Texts{"Two"}));
  EXPECT_TRUE(HasSection("One", RootKey::LocalMachine)) << "what is shared is only hidden";
  EXPECT_EQ(Stored(kGeneral, "Task2"), "Two");
  SetCount("x");
  EXPECT_EQ(store.NoTasks(), 0) << "the deleted one does not come back";
  EXPECT_EQ(Save("Three"), TaskStore::kCountLost);
}

TEST_F(TaskStoreTest, SavingAnExistingSlotKeepsTheCountAndTheOldNamesSection) {
  Fill({"Two", "2"});
  store.SaveTask(EntryAt(2, "2"));
  EXPECT_EQ(Stored("2", "TimeHour"), "09");
  store.SaveTask(EntryAt(1, "Renamed"));
  EXPECT_EQ(Names(), (Texts{"Renamed", "2"}));
  EXPECT_TRUE(HasSection("Two"));
  EXPECT_TRUE(HasSection("2")) << "it is a task's";
  store.SaveTask(EntryAt(2, "One"));
  EXPECT_FALSE(HasSection("2")) << "the section named like the count goes";
}

TEST_F(TaskStoreTest, TheProgramsOwnSectionsAreNeverDeleted) {
  settings.WriteSetting(kInternet, "Proxy FTP", "1");
  Fill({"", "general", "Internet\\"});
  for (int i = 0; i < 3; ++i) store.DeleteTask(1);
  EXPECT_EQ(Stored(kGeneral, "NoTasks"), "0");
  SetCount("Internet");
  store.SaveTask(EntryAt(0, "One"));
  EXPECT_EQ(Stored(kInternet, "Proxy FTP"), "1");
}

TEST_F(TaskStoreTest, AnEntryGoesToTheSlotOfItsTaskOrAfterTheLast) {
  Fill({"One", "Two"});
  store.DeleteTask(1);
  EXPECT_EQ(Save(EntryAt(2, "Two again"), "Two"), "1") << "it has moved up";
  EXPECT_EQ(Save(EntryAt(1, "New")), "2");
  store.DeleteTask(2);
  EXPECT_EQ(Save(EntryAt(2, "New"), "New"), "2") << "it had gone";
  for (const char* count : {"99", "100", "32767"}) {
    SetCount(count);
    EXPECT_EQ(Save("Last"), count[0] == '9' ? "100" : TaskStore::kListFull) << count;
  }
}

TEST_F(TaskStoreTest, NamesThatShareASectionAreNotMixedUp) {
  Fill({"Größe", "Backup"});
  for (const char* loaded : {"", "Backup"}) {
    EXPECT_EQ(Save("gRÖßE", loaded), TaskStore::kSameSection);
  }
  EXPECT_EQ(Save("gRÖßE", "Größe"), "1") << "its own slot";
  EXPECT_EQ(Names(), (Texts{"gRÖßE", "Backup"}));
  Fill({"GRÖßE"});  // before they were refused
  store.DeleteTask(3);
  EXPECT_TRUE(HasSection("gRÖßE"));
}

TEST_F(TaskStoreTest, ANewTaskTakesNothingOverFromOneThatHadItsName) {
  for (const int mode : {0, 1}) {
    settings.SetStorageMode(static_cast<std::int16_t>(mode));
    Add("Old", "08:05", "CmdLine=/x WinStyle=6");
    EXPECT_EQ(Save("Renamed", "Old"), "1");
    EXPECT_EQ(Save("Old"), "2");
    EXPECT_EQ(Stored("Old", "CmdLine") + Stored("Old", "WinStyle"), "1");
    EXPECT_EQ(Stored("Renamed", "CmdLine"), "(missing)") << "nothing that was not there";
  }
}

TEST_F(TaskStoreTest, TimesAreStoredAsDigitsHoweverTyped) {
  TaskEntry entry = Entry("Timed", "08:05");
  entry.timeType = kTimeOnce;
  entry.datePart1 = " 5";
  entry.datePart2 = "+1";
  entry.year = "02027";
  for (const std::string time : {"7.:5", "7:.5", "-0:5", "7 :5", " 7:+5"}) {
    entry.hour = time.substr(0, time.find(':'));
    entry.minute = time.substr(time.find(':') + 1);
    const bool taken = time.find_first_of(".-") == std::string::npos;
    EXPECT_EQ(Save(entry, entry.name) == "1", taken) << time;
  }
  EXPECT_EQ(Told(1), "Timed | Popup Message | 07:05 on 05-01-2027, Timed  1 General");
  entry.year = "20e2";
  EXPECT_EQ(Save(entry, entry.name), "Invalid Year given for Date");
  entry.timeType = kTimeDayNumber;
  entry.dayNo = 0;
  EXPECT_EQ(Save(entry, entry.name), "Invlaid Day of Month Given");
}

TEST_F(TaskStoreTest, WhatCannotBeWrittenIsSaid) {
  registry.FailWrite(3, kDiskFull);
  EXPECT_EQ(Save("One"), TaskStore::kNotWritten);
  settings.SetStorageMode(2);
  EXPECT_EQ(Save("One"), TaskStore::kNotWritten);
  std::string prior = "prior";
  settings.ReadSetting(kGeneral, "NoTasks", "0", prior);
  EXPECT_EQ(prior, "prior") << "nor is anything read";
}

TEST_F(TaskStoreTest, ADamagedCountCostsNoTask) {
  Fill({"One", "Two"});
  settings.DeleteUserSetting(kGeneral, "NoTasks");
  EXPECT_EQ(store.NoTasks(), 0);
  EXPECT_EQ(Save("two"), TaskStore::kSameSection) << "the name is there";
  EXPECT_EQ(Save("New"), "3");
  EXPECT_EQ(Names(), (Texts{"One", "Two", "New"}));
  // Also after a gap, and while one of them is being edited.
  for (const char* gone : {"Task2", "NoTasks"}) settings.DeleteUserSetting(kGeneral, gone);
  EXPECT_EQ(Save(EntryAt(1, "One"), "One"), "1");
  EXPECT_EQ(store.NoTasks(), 3);
  settings.WriteSetting(kGeneral, "Task2", "Two");
  for (const char* damaged : {"two", "-1", "99999", ""}) {
    SetCount(damaged);
    EXPECT_EQ(Names(), (Texts{"One", "Two", "New"})) << damaged;
  }
  Fill({"Last"});
  EXPECT_EQ(Names(), (Texts{"One", "Two", "New", "Last"}));
}

TEST_F(TaskStoreTest, FindsTheTaskOfATreeLine) {
  Fill({"Backup", "backup", "Odd | Name"});
  const std::pair<const char*, int> lines[] = {
      {"backup | Popup Message | 08:05 on Every Day In Every Month", 2},
      {"Backup | Popup Message | ", 1},
      {"Backup |", 77},
      {"BACKUP | Run", 77},
      {"Odd | Name | Run", 77},
      {"Backup | 2 | Popup Message | 08:05", 77},  // a task of another name
      {"Backup | Popup Message | 2 | Popup Message | 08:05", 77}};
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
  // The slot that is saved, the message, names.
  const std::tuple<std::int16_t, const char*, Texts> cases[] = {
      {3, "No task name given", {""}},
      {3, kInUse, {"One", "gEnErAl", "INTERNET", "General\\", "\\Internet", "\\"}},
      {1, kInUse, {"Two"}},
      {3, kUnusable, {"One\\", "\\One", "a\\\\b", {"a\0b", 3}, "Caf\xE9", std::string(256, 'x')}},
      {3, kUnusable, {"a | b", "a |", "a\tb", "a\x7F", "a\xC2\x85", clefs + clefs}},
      {3, "", {"one", "a\\b", "Generals", std::string(255, 'x'), clefs, "a|b", "| a"}},
      {1, "", {"One"}},
      {4, "", {"Odd | Name"}}};
  for (const auto& [slot, message, names] : cases) {
    for (const std::string& name : names) {
      EXPECT_EQ(Judge(&TaskStore::ValidateTaskName, name, slot), message) << name;
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
      {"Invalid Year given for Date", {"1-1-99", "1-1-999", "32-1-99"}},
      {"Invalid Date", {"x-1-2026", "1--2026", "1-1-20266666"}}};
  for (const auto& [message, dates] : cases) {
    for (const std::string& date : dates) {
      std::istringstream parts(date);
      std::array<std::string, 3> part;
      for (std::string& one : part) std::getline(parts, one, '-');
      EXPECT_EQ(Judge(&TaskStore::ValidateDate, part[0], part[1], part[2]), message) << date;
    }
  }
}

TEST_F(TaskStoreTest, LooksForFilesInTheScriptsFolderUnlessThePathIsWhole) {
  files.contents = {{"C:\\Orvanto\\scripts\\Backup.txt", ""}, {"D:\\x.txt", ""}};
  constexpr const char* kNone = "File does not exist";
  // A task's type, its path, the file that is looked for, what is said.
  const std::tuple<TaskType, const char*, const char*, const char*> cases[] = {
      {kRunScript, "BACKUP.txt", "C:\\Orvanto\\scripts\\BACKUP.txt", ""},
      {kRunProgram, "D:\\X.txt", "D:\\X.txt", ""},
      {kPrintFile, "D:\\y.txt", "D:\\y.txt", kNone},
      {kPlaySound, "", "C:\\Orvanto\\scripts\\", kNone},
      {kRunProgram, "D:x.txt", "C:\\Orvanto\\scripts\\D:x.txt", kNone},
      {kRunProgram, "D:\\x.txt\n", "", kNone},
      {kPopupMessage, "D:\\y.txt", "", ""},
      {kResetComputer, "", "", ""}};
  for (const auto& [type, path, asked, said] : cases) {
    finder.asked.clear();
    EXPECT_EQ(Judge(&TaskStore::CheckTaskFile, type, path), said) << path;
    EXPECT_EQ(finder.asked, asked);
  }
  folder.Set("C:\\");
  EXPECT_EQ(folder.AppDir, "C:\\");
}

}  // namespace
}  // namespace orvanto
