#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

constexpr const char* kInUse = "That Task Name is already in use. Please use a different one.";
constexpr const char* kUnusable = "That Task Name cannot be used. Please use a different one.";

struct TaskStoreTest : testing::Test, CoreDesk {
  void Fill(const Texts& names) {
    for (const std::string& name : names) Add(name, "08:05");
  }
  // The slot in which the entry is stored, or why it is not.
  std::string Save(const TaskEntry& entry, const std::string& loadedName = "") {
    const std::int16_t slot = store.StoreEntry(entry, loadedName);
    return slot != 0 ? std::to_string(slot) : store.TaskValidationMessage;
  }
  std::string Save(const std::string& name, const std::string& loadedName = "") {
    return Save(Entry(name, "09:05"), loadedName);
  }
  // The count, the names, and the sections that there are.
  std::string List() {
    std::string told = settings.ReadSetting(kGeneral, "NoTasks", "none") + ":";
    for (const std::string& name : Names()) told += " " + name;
    told += " |";
    for (const auto& [id, node] : registry.Tree().Keys()) {
      const std::string own = std::string(kProductKey) + "\\";
      if (node.path.starts_with(own)) told += " " + node.path.substr(own.size());
    }
    return told;
  }
};

TEST_F(TaskStoreTest, TheListThroughItsLife) {
  int changes = 0;
  const Subscription listens = store.listChanged.Subscribe([&] { ++changes; });
  Fill({"One", "Two", "Three"});
  for (const int slot : {2, 0, 3}) store.DeleteTask(static_cast<std::int16_t>(slot));
  EXPECT_EQ(List() + std::to_string(changes), "2: One Three | General One Three4");
  EXPECT_EQ(Save("Two"), "3");
  EXPECT_EQ(Save("New", "One"), "1");
  EXPECT_EQ(List(), "3: New Three Two | General New One Three Two") << "its old section stays";

  settings.SetStorageMode(1);
  Fill({"One", "Two"});
  store.DeleteTask(1);
  Put(kGeneral, "NoTasks=x");
  EXPECT_EQ(store.NoTasks(), 0) << "the deleted one does not come back";
  EXPECT_EQ(Save("Three"), TaskStore::kCountLost);
}

TEST_F(TaskStoreTest, SectionsOfOthersAreNotTouched) {
  Put(kInternet, "x=1");
  Fill({"", "general", "Internet\\"});
  for (int i = 0; i < 3; ++i) store.DeleteTask(1);
  Fill({"Größe", "Backup"});
  EXPECT_EQ(Save("gRÖßE", "Backup"), TaskStore::kSameSection);
  Put(kGeneral, "NoTasks=Internet");  // a section named like the count goes, but for this
  EXPECT_EQ(Save("gRÖßE", "Größe"), "1") << "its own slot";
  Put(kGeneral, "NoTasks=2");
  Fill({"GRÖßE"});  // before they were refused
  store.DeleteTask(3);
  EXPECT_EQ(List(), "2: gRÖßE Backup | Backup General Größe Internet");
}

TEST_F(TaskStoreTest, WhatIsEnteredIsJudgedAndStoredAsDigits) {
  TaskEntry entry = Entry("Timed", "08:05");
  entry.timeType = kTimeOnce;
  // Day, month, year, hour, minute; what is said, or stored.
  const std::array<std::string, 6> cases[] = {
      {" 5", "+1", "02027", "7 ", " +5", "07:05 on 05-01-2027"},
      {"31", "8", "2026", "7", "5", "Invalid Day given for Date"},
      {"1", "0", "99", "7", "5", "Invalid Month given for Date"},
      {"1", "1", "20e2", "7", "5", "Invalid Year given for Date"},
      {"1", "", "2026", "7", "5", "Invalid Date"},
      {"1", "1", "2026", "-0", ".5", "Invalid Minute given for Time"}};
  for (const auto& [day, month, year, hour, minute, expected] : cases) {
    entry.datePart1 = day;
    entry.datePart2 = month;
    entry.year = year;
    entry.hour = hour;
    entry.minute = minute;
    const std::string told = Save(entry, entry.name);
    EXPECT_EQ(told == "1" ? sched.TreeLine(1) : told,
              (told == "1" ? "Timed | Popup Message | " : "") + expected);
  }
}

TEST_F(TaskStoreTest, WhatCannotBeStoredIsSaidAndDamageCostsNoTask) {
  registry.FailWrite(3, kDiskFull);
  EXPECT_EQ(Save("One"), TaskStore::kNotWritten);
  store.DeleteTask(1);
  settings.SetStorageMode(2);
  EXPECT_EQ(Save("One"), TaskStore::kNotWritten);
  settings.SetStorageMode(0);
  Fill({"One", "Two"});
  settings.DeleteUserSetting(kGeneral, "NoTasks");
  EXPECT_EQ(store.NoTasks(), 0);
  EXPECT_EQ(Save("two"), TaskStore::kSameSection) << "the name is there";
  EXPECT_EQ(Save("New"), "3");
  for (const char* damaged : {"two", "-1", "99999", ""}) {
    Put(kGeneral, std::string("NoTasks=") + damaged);
    EXPECT_EQ(Names(), (Texts{"One", "Two", "New"})) << damaged;
  }
  // Also after a gap, and while one of them is being edited.
  for (const char* gone : {"Task2", "NoTasks"}) settings.DeleteUserSetting(kGeneral, gone);
  EXPECT_EQ(Save("One", "One"), "1");
  EXPECT_EQ(store.NoTasks(), 3);
  for (const std::string count : {"99", "100", "32767"}) {
    Put(kGeneral, "NoTasks=" + count);
    EXPECT_EQ(Save("Last"), count == "99" ? "100" : TaskStore::kListFull) << count;
  }
}

TEST_F(TaskStoreTest, FindsTheTaskOfATreeLine) {
  Fill({"Backup", "backup", "Odd | Name"});
  const std::pair<const char*, int> lines[] = {
      {"backup | Popup Message | 08:05 on Every Day In Every Month", 2},
      {"Backup | Popup Message | ", 1},
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
      {4, "", {"Odd | Name"}}};
  for (const auto& [slot, message, names] : cases) {
    for (const std::string& name : names) {
      store.TaskValidationMessage.clear();
      store.ValidateTaskName(name, slot);
      EXPECT_EQ(store.TaskValidationMessage, message) << name;
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
      {kRunProgram, "D:x.txt", "C:\\Orvanto\\scripts\\D:x.txt", kNone},
      {kRunProgram, "D:\\x.txt\n", "", kNone},
      {kPopupMessage, "D:\\y.txt", "", ""}};
  for (const auto& [type, path, asked, said] : cases) {
    finder.asked = store.TaskValidationMessage = "";
    store.CheckTaskFile(type, path);
    EXPECT_EQ(finder.asked + store.TaskValidationMessage, std::string(asked) + said) << path;
  }
  folder.Set("C:\\");
  EXPECT_EQ(folder.AppDir, "C:\\");
}

constexpr const char* kKey = "Software\\Quellmark\\Orvanto\\General";
const RegistryData kDefault = std::string("d");

TEST(RegistryAccess, EachTypeHasItsWidthAndWhatIsMissingIsTheDefault) {
  FakePlatform fake;
  RegistryAccess access(fake.registry);
  // The status of each: reading, writing, deleting a value and a key. What was read is in `got`.
  RegistryData got;
  const auto statuses = [&](const char* root, const std::string& key) {
    return std::array{
        access.RegRead(root, key, "V", "S", kDefault, got), access.RegDeleteValueAt(root, key, "V"),
        access.RegDeleteKeyAt(root, key, "K"), access.RegWrite(root, key, "Other", "S", kDefault)};
  };
  using Statuses = std::array<Status, 4>;
  EXPECT_EQ(ResolveRoot("HkDd"), RootKey::DynData);
  constexpr Status k99 = kUnresolvedRoot;
  EXPECT_EQ(statuses("HKXX", kKey), (Statuses{k99, k99, k99, k99}));
  EXPECT_EQ(statuses("HKCU", kKey), (Statuses{kFileNotFound, 0, 0, 0}));
  EXPECT_EQ(statuses("hkcu", kKey), Statuses{});
  EXPECT_EQ(got, kDefault);
  EXPECT_EQ(access.RegDeleteKeyAt("HKCU", "Software", "Quellmark"), kAccessDenied);

  std::string id;
  EXPECT_EQ(RegistryTree::IdOf(RootKey::CurrentUser, kKey, id), kSuccess);
  // What is written, its bytes, and what is read as a text, a flag (of two bytes) and a number.
  const std::string brief(255, 'x'), endless(70000, 'x');
  const std::tuple<const char*, RegistryData, std::string, std::array<RegistryData, 3>> cases[] = {
      {"B", true, "\xFF\xFF", {kDefault, true, 0xFFFF}},
      {"D", -2, "\xFE\xFF\xFF\xFF", {kDefault, kDefault, -2}},
      {"d", 0x12345, {"\x45\x23\0\0", 4}, {kDefault, kDefault, 0x2345}},
      {"s", brief, brief + '\0', {brief, kDefault, kDefault}},
      {"S", endless, endless + '\0', {endless, kDefault, kDefault}}};
  for (const auto& [type, data, bytes, read] : cases) {
    EXPECT_EQ(access.RegWrite("HKCU", kKey, "V", type, data), kSuccess);
    EXPECT_TRUE(fake.registry.Tree().FindValue(id, "V")->data == bytes) << type;
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(access.RegRead("HKCU", kKey, "V", std::string(1, "sBD"[i]), kDefault, got), 0);
      EXPECT_TRUE(got == read[i]) << type << " as " << i;
    }
  }
  for (const char* type : {"S", "Q"}) {
    EXPECT_EQ(access.RegWrite("HKCU", kKey, "V", type, true), kInvalidParameter);
  }
  for (const int write : {1, 2}) {
    fake.registry.FailWrite(write, kDiskFull);
    EXPECT_EQ(access.RegWrite("HKCU", kKey, "Failed", "S", kDefault), kDiskFull);
  }
}

}  // namespace
}  // namespace orvanto
