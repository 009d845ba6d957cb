#include "core/modTaskOperations.h"

#include <algorithm>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/TaskFacts.h"

namespace orvanto {
namespace {

constexpr const char* kCount = "NoTasks";

std::string SlotName(int index) { return "Task" + std::to_string(index); }

// A number as it may be typed, " 7" or "+7", without what is not its own.
std::string Bare(const std::string& typed) {
  std::string_view text = TrimBlanks(typed);
  if (text.starts_with('+')) text.remove_prefix(1);
  return std::string(text);
}

}  // namespace

void TaskStore::ReadDateOrder() {
  DateOrderMonthFirst = DetectDateOrder(clock_).substr(0, 2) == "mm" ? 1 : 0;
}

std::int16_t TaskStore::NoTasks() {
  const std::int16_t count = ToInt16Or(settings_.ReadSetting(kGeneral, kCount, "0"), -1);
  return count >= 0 ? count : NamesThere();
}

// Where settings are shared, the names of deleted tasks are among them: then none is counted.
std::int16_t TaskStore::NamesThere() {
  std::int16_t last = settings_.StorageMode() == 0 ? kMaxTasks : std::int16_t{0};
  while (last > 0 && TaskName(last).empty()) --last;
  return last;
}

// There are shared tasks, and nothing tells how many of them have been deleted.
bool TaskStore::CountIsLost() {
  return settings_.StorageMode() == 1 && !TaskName(1).empty() &&
         ToInt16Or(settings_.ReadSetting(kGeneral, kCount, ""), -1) < 0;
}

std::int16_t TaskStore::LastSlot() {
  const bool counted = !settings_.ReadSetting(kGeneral, kCount, "").empty();
  return counted ? NoTasks() : NamesThere();
}

std::string TaskStore::TaskName(std::int16_t index) {
  return settings_.ReadSetting(kGeneral, SlotName(index), "");
}

void TaskStore::LoadTask(std::int16_t index) {
  TaskRecord task;
  task.dateDay = task.dateMonth = task.dateYear = "0";
  task.index = index;
  task.name = TaskName(index);
  const Settings::Section section(settings_, task.name);
  const auto number = [&](const char* value, const char* defaultValue) {
    return ToInt16Or(section.Read(value, defaultValue), 0);
  };

  section.Read("Group", "", task.group);
  if (task.group.empty()) task.group = kGeneral;
  task.timeType = number("TimeType", "0");
  ReadWhen(section, task);
  task.taskType = number("TaskType", "2");
  section.Read("Path", "", task.path);
  section.Read("CmdLine", "", task.cmdLine);
  task.winStyle = number("WinStyle", "1");
  CurrentTask = std::move(task);
}

void TaskStore::ReadWhen(const Settings::Section& section, TaskRecord& task) {
  const DateTime now = clock_.Now();
  const auto twoDigits = [&](const char* value, int defaultValue, std::string& field) {
    section.Read(value, TwoDigits(defaultValue), field);
    field = TwoDigits(field);
  };
  twoDigits("TimeHour", now.hour, task.timeHour);
  // The month, not the minute, stands in for a missing minute: stored tasks rely on it.
  twoDigits("TimeMinute", now.month, task.timeMinute);
  switch (task.timeType) {
    case kTimeOnce:
      twoDigits("DateDay", now.day, task.dateDay);
      twoDigits("DateMonth", now.month, task.dateMonth);
      section.Read("DateYear", std::to_string(now.year), task.dateYear);
      break;
    case kTimeRecurring:
      task.every = ToInt16Or(section.Read("Every", "0"), 0);
      task.in = ToInt16Or(section.Read("In", "0"), 0);
      break;
    case kTimeDayNumber:
      task.dayNo = ToInt16Or(section.Read("DayNo", "1"), 0);
      break;
    default:
      break;
  }
}

void TaskStore::SaveTask(const TaskEntry& entry) {
  Write(entry);
  listChanged.Raise();
}

void TaskStore::Write(const TaskEntry& entry) {
  RegistryChange change(settings_.Store());
  if (constexpr std::int16_t kNone = 0; !BelongsToAnother(entry.name, kNone)) {
    ForgetOldTexts(entry.name);
  }
  settings_.WriteSetting(entry.name, "Group", entry.group);
  WriteWhen(entry);
  ClaimSlot(entry);
  WriteWhat(entry);
}

// A renamed task has left its section there, which the next one of that name takes over.
void TaskStore::ForgetOldTexts(const std::string& section) {
  for (const auto& [value, text] : {std::pair{"CmdLine", ""}, {"WinStyle", "1"}}) {
    if (settings_.ReadSetting(section, value, text) == text) continue;
    settings_.WriteSetting(section, value, text);
  }
}

std::int16_t TaskStore::SlotToSave(const std::string& loadedName, std::int16_t loadedSlot) {
  if (!loadedName.empty()) {
    if (TaskName(loadedSlot) == loadedName) return loadedSlot;
    if (const std::int16_t slot = SlotOfName(loadedName); slot != 0) return slot;
  }
  // No slot lies beyond a full list, however much a damaged count says.
  return static_cast<std::int16_t>(std::min(LastSlot(), kMaxTasks) + 1);
}

std::int16_t TaskStore::StoreEntry(TaskEntry entry, const std::string& loadedName, Check check) {
  RegistryChange change(settings_.Store());
  entry.index = SlotToSave(loadedName, entry.index);
  for (std::string* number :
       {&entry.hour, &entry.minute, &entry.datePart1, &entry.datePart2, &entry.year}) {
    *number = Bare(*number);
  }
  TaskValidationMessage.clear();
  if (entry.index > kMaxTasks) {
    TaskValidationMessage = kListFull;
  } else if (CountIsLost()) {
    TaskValidationMessage = kCountLost;
  } else if (check == Check::All) {
    ValidateTask(entry);
  } else {
    ValidateTaskName(entry.name, entry.index);
  }
  if (TaskValidationMessage.empty() && BelongsToAnother(entry.name, entry.index)) {
    TaskValidationMessage = kSameSection;
  }
  if (!TaskValidationMessage.empty()) return 0;
  for (std::string* number : {&entry.hour, &entry.minute, &entry.datePart1, &entry.datePart2}) {
    *number = TwoDigits(ToInt16Or(*number, 0));
  }
  if (entry.year.size() > 4) entry.year = std::to_string(ToInt16Or(entry.year, 0));
  Write(entry);
  // A storage mode that stores nothing reports no failure.
  if (change.Commit() != kSuccess || TaskName(entry.index) != entry.name) {
    TaskValidationMessage = kNotWritten;
    return 0;
  }
  listChanged.Raise();
  return entry.index;
}

void TaskStore::WriteWhen(const TaskEntry& entry) {
  const auto write = [&](const char* value, const std::string& text) {
    settings_.WriteSetting(entry.name, value, text);
  };
  switch (entry.timeType) {
    case kTimeOnce:
      write(DateOrderMonthFirst == 0 ? "DateDay" : "DateMonth", entry.datePart1);
      write(DateOrderMonthFirst == 0 ? "DateMonth" : "DateDay", entry.datePart2);
      write("DateYear", entry.year);
      break;
    case kTimeRecurring:
      write("Every", std::to_string(entry.every));
      write("In", std::to_string(entry.in));
      break;
    case kTimeDayNumber:
      write("DayNo", std::to_string(entry.dayNo));
      break;
    default:
      break;
  }
  write("TimeHour", entry.hour);
  write("TimeMinute", entry.minute);
  write("TimeType", std::to_string(entry.timeType));
  write("TaskType", std::to_string(entry.taskType));
}

void TaskStore::ClaimSlot(const TaskEntry& entry) {
  if (entry.index > NoTasks()) {
    const std::int16_t last = std::max(entry.index, LastSlot());
    settings_.WriteSetting(kGeneral, kCount, std::to_string(last));
  } else if (const std::string count = settings_.ReadSetting(kGeneral, kCount, "0");
             entry.name != count) {
    // A section named like the count goes, a renamed task's old section stays: kept as it is.
    DeleteSection(count, entry.index);
  }
  settings_.WriteSetting(kGeneral, SlotName(entry.index), entry.name);
}

void TaskStore::WriteWhat(const TaskEntry& entry) {
  const TaskTypeFacts* facts = FactsOfTaskType(entry.taskType);
  if (facts == nullptr) return;
  const auto write = [&](const char* value, const std::string& text) {
    settings_.WriteSetting(entry.name, value, text);
  };
  if (facts->startsProgram) write("WinStyle", std::to_string(entry.winStyle));
  write("Path", facts->path != nullptr ? facts->path : entry.path);
  if (facts->startsProgram) write("CmdLine", entry.cmdLine);
}

void TaskStore::DeleteSection(const std::string& name, std::int16_t ownSlot) {
  if (!IsOwnSection(name) && !BelongsToAnother(name, ownSlot)) settings_.DeleteUserKey(name);
}

bool TaskStore::BelongsToAnother(const std::string& section, std::int16_t ownSlot) {
  const int last = std::max<int>(NoTasks(), ownSlot - 1);
  for (int j = 1; j <= last; ++j) {
    if (j == ownSlot) continue;
    if (settings_.Store().IsSameKey(TaskName(static_cast<std::int16_t>(j)), section)) return true;
  }
  return false;
}

void TaskStore::DeleteTask(std::int16_t index) {
  {
    RegistryChange change(settings_.Store());
    const int count = NoTasks();
    if (index < 1 || index > count) return;
    DeleteSection(TaskName(index), index);
    settings_.DeleteUserSetting(kGeneral, SlotName(index));
    for (int j = index + 1; j <= count; ++j) {
      const std::string name = TaskName(static_cast<std::int16_t>(j));
      // A damaged count may be far beyond the last name.
      if (name.empty() && TaskName(static_cast<std::int16_t>(j - 1)).empty()) continue;
      settings_.WriteSetting(kGeneral, SlotName(j - 1), name);
      settings_.DeleteUserSetting(kGeneral, SlotName(j));
    }
    settings_.WriteSetting(kGeneral, kCount, std::to_string(count - 1));
  }
  listChanged.Raise();
}

void TaskStore::FindTaskIndex(const std::string& nodeText, std::int16_t& index) {
  const auto end = nodeText.find(kNameEnd);
  if (end == std::string::npos) return;
  const std::string name = nodeText.substr(0, end);
  const std::int16_t type = ToInt16Or(settings_.ReadSetting(name, "TaskType", "2"), 0);
  const std::string head = name + TaskTypeSeparator(type);
  // What follows holds no separator, unless it is still the name.
  if (!nodeText.starts_with(head) || nodeText.find(kNameEnd, head.size()) != std::string::npos)
    return;
  if (const std::int16_t slot = SlotOfName(name); slot != 0) index = slot;
}

std::int16_t TaskStore::SlotOfName(const std::string& name) {
  for (const std::int16_t slot : Slots()) {
    if (TaskName(slot) == name) return slot;
  }
  return 0;
}

}  // namespace orvanto
