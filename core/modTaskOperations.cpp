#include "core/modTaskOperations.h"

#include <algorithm>

#include "core/Convert.h"
#include "core/Sched.h"
#include "platform/text/Case.h"
#include "platform/text/PrintableLine.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

constexpr const char* kCount = "NoTasks";
constexpr const char* kNameEnd = " | ";

std::string SlotName(int index) { return "Task" + std::to_string(index); }

// The sections of the program's own settings. Backslashes at the ends do not count: the registry
// takes "General\" for "General".
bool IsOwnSection(const std::string& name) {
  const auto first = name.find_first_not_of('\\');
  if (first == std::string::npos) return true;
  const std::string bare = name.substr(first, name.find_last_not_of('\\') - first + 1);
  return EqualIgnoringCase(bare, kGeneral) || EqualIgnoringCase(bare, kInternet);
}

// Whether the registry can hold a section of that name, and under that name only: bytes that are no
// UTF-8, as an old telnet client sends them, would all become the same character there.
bool IsSectionName(const std::string& name) {
  constexpr std::size_t kLongest = 255;
  return IsUtf8(name) && Utf16Length(name) <= kLongest && name.front() != '\\' &&
         name.back() != '\\' && name.find("\\\\") == std::string::npos &&
         name.find('\0') == std::string::npos;
}

// A number as it may be typed, " 7" or "+7", without what is not its own.
std::string Bare(const std::string& typed) {
  std::string_view text = TrimBlanks(typed);
  if (text.starts_with('+')) text.remove_prefix(1);
  return std::string(text);
}

// Of a time; -1 for anything but digits, so that "7." and ".5" are refused.
std::int16_t Digits(const std::string& text) {
  const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
  return digits ? ToInt16Or(text, -1) : std::int16_t{-1};
}

bool IsControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// Throws what ToInt16 throws.
bool DayFitsMonth(std::int16_t day, std::int16_t month, std::int16_t year) {
  switch (month) {
    case 2:
      return day < (year % 4 == 0 ? 30 : 29);
    case 4:
    case 6:
    case 8:  // August counts as a short month and September as a long one: kept as it is.
    case 11:
      return day <= 30;
    default:
      return true;
  }
}

}  // namespace

void TaskStore::ReadDateOrder() {
  DateOrderMonthFirst = DetectDateOrder(clock_).substr(0, 2) == "mm" ? 1 : 0;
}

void TaskStore::SetProgramFolder(const std::string& folder) {
  // A drive's root ends with its backslash already.
  AppDir = folder.size() == 3 ? folder : folder + "\\";
}

std::int16_t TaskStore::NoTasks() {
  const std::int16_t count = ToInt16Or(settings_.ReadSetting(kGeneral, kCount, "0"), -1);
  return count >= 0 ? count : NamesThere();
}

std::int16_t TaskStore::NamesThere() {
  std::int16_t found = 0;
  while (found < kMaxTasks && !TaskName(static_cast<std::int16_t>(found + 1)).empty()) ++found;
  return found;
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
  // Where no count can be read, a new task must not take the place of the first one.
  const bool counted = !settings_.ReadSetting(kGeneral, kCount, "").empty();
  // No slot lies beyond a full list, however much a damaged count says.
  return static_cast<std::int16_t>(std::min(counted ? NoTasks() : NamesThere(), kMaxTasks) + 1);
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
  SaveTask(entry);
  // A storage mode that stores nothing reports no failure.
  if (change.Commit() == kSuccess && TaskName(entry.index) == entry.name) return entry.index;
  TaskValidationMessage = kNotWritten;
  return 0;
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
    settings_.WriteSetting(kGeneral, kCount, std::to_string(entry.index));
  } else if (const std::string count = settings_.ReadSetting(kGeneral, kCount, "0");
             entry.name != count) {
    // A section named like the count goes, a renamed task's old section stays: kept as it is.
    DeleteSection(count, entry.index);
  }
  settings_.WriteSetting(kGeneral, SlotName(entry.index), entry.name);
}

void TaskStore::WriteWhat(const TaskEntry& entry) {
  const auto write = [&](const char* value, const std::string& text) {
    settings_.WriteSetting(entry.name, value, text);
  };
  switch (entry.taskType) {
    case kRunScript:
    case kPopupMessage:
    case kPlaySound:
      write("Path", entry.path);
      break;
    case kRunProgram:
    case kPrintFile:
      write("WinStyle", std::to_string(entry.winStyle));
      write("Path", entry.path);
      write("CmdLine", entry.cmdLine);
      break;
    case kResetComputer:
      write("Path", "Reset Computer");
      break;
    case kShutdownComputer:
      write("Path", "Shutdown Computer");
      break;
    default:
      break;
  }
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
      settings_.WriteSetting(kGeneral, SlotName(j - 1), TaskName(static_cast<std::int16_t>(j)));
      settings_.DeleteUserSetting(kGeneral, SlotName(j));
    }
    settings_.WriteSetting(kGeneral, kCount, std::to_string(count - 1));
  }
  if (onListChanged) onListChanged();
}

void TaskStore::FindTaskIndex(const std::string& nodeText, std::int16_t& index) {
  const auto end = nodeText.find(kNameEnd);
  if (end == std::string::npos) return;
  const std::string name = nodeText.substr(0, end);
  const std::int16_t type = ToInt16Or(settings_.ReadSetting(name, "TaskType", "2"), 0);
  if (!nodeText.starts_with(name + TaskTypeSeparator(type))) return;
  if (const std::int16_t slot = SlotOfName(name); slot != 0) index = slot;
}

std::int16_t TaskStore::SlotOfName(const std::string& name) {
  const std::int16_t count = NoTasks();
  for (int j = 1; j <= count; ++j) {
    const auto slot = static_cast<std::int16_t>(j);
    if (TaskName(slot) == name) return slot;
  }
  return 0;
}

void TaskStore::ValidateTask(const TaskEntry& entry) {
  TaskValidationMessage.clear();
  ValidateTaskName(entry.name, entry.index);
  ValidateWhen(entry);
  CheckTaskFile(entry.taskType, LowerCase(entry.path));
}

void TaskStore::ValidateWhen(const TaskEntry& entry) {
  if (entry.timeType == kTimeOnce) {
    const bool monthFirst = DateOrderMonthFirst != 0;
    ValidateDate(monthFirst ? entry.datePart2 : entry.datePart1,
                 monthFirst ? entry.datePart1 : entry.datePart2, entry.year);
  }
  if (entry.timeType == kTimeDayNumber && (entry.dayNo < 1 || entry.dayNo > 31)) {
    TaskValidationMessage = "Invlaid Day of Month Given";
  }
  const std::int16_t hour = Digits(entry.hour);
  const std::int16_t minute = Digits(entry.minute);
  if (hour < 0 || hour > 23) TaskValidationMessage = "Invlaid Hour given for Time";
  if (minute < 0 || minute > 59) TaskValidationMessage = "Invalid Minute given for Time";
}

void TaskStore::ValidateTaskName(const std::string& name, std::int16_t ownIndex) {
  constexpr const char* kInUse = "That Task Name is already in use. Please use a different one.";
  if (name.empty()) {
    TaskValidationMessage = "No task name given";
    return;
  }
  // A task of that name would share the section of the settings, and deleting it delete them.
  if (IsOwnSection(name)) {
    TaskValidationMessage = kInUse;
    return;
  }
  if (!IsSectionName(name) || !MayBeGiven(name, ownIndex)) {
    TaskValidationMessage = "That Task Name cannot be used. Please use a different one.";
    return;
  }
  const std::int16_t count = NoTasks();
  for (int j = 1; j <= count; ++j) {
    if (j == ownIndex || TaskName(static_cast<std::int16_t>(j)) != name) continue;
    TaskValidationMessage = kInUse;
    return;
  }
}

// A task could not be found again by a line of the tree that holds a separator in its name, and a
// terminal would obey a control character. A task that has such a name already may keep it.
bool TaskStore::MayBeGiven(const std::string& name, std::int16_t ownIndex) {
  const bool separates = (name + kNameEnd).find(kNameEnd) < name.size();
  return (!separates && PrintableLine(name) == name) || TaskName(ownIndex) == name;
}

void TaskStore::ValidateDate(const std::string& dayText, const std::string& monthText,
                             const std::string& yearText) {
  constexpr const char* kInvalidDay = "Invalid Day given for Date";
  try {
    const std::int16_t day = ToInt16(dayText);
    const std::int16_t month = ToInt16(monthText);
    const std::int16_t year = ToInt16(yearText);
    const char* message = !DayFitsMonth(day, month, year) ? kInvalidDay
                          : month < 1 || month > 12       ? "Invalid Month given for Date"
                          : yearText.size() < 4           ? "Invalid Year given for Date"
                          : day < 1 || day > 31           ? kInvalidDay
                                                          : nullptr;
    if (message != nullptr) TaskValidationMessage = message;
  } catch (const Error&) {
    TaskValidationMessage = "Invalid Date";
  }
}

void TaskStore::ValidateTime(const std::string& hourText, const std::string& minuteText) {
  try {
    const std::int16_t hour = ToInt16(hourText);
    if (hour < 0 || hour > 23) TaskValidationMessage = "Invalid Hour selected for execution time";
    const std::int16_t minute = ToInt16(minuteText);
    if (minute < 0 || minute > 59) {
      TaskValidationMessage = "Invalid Minute selected for execution time";
    }
  } catch (const Error&) {
    TaskValidationMessage = "Invalid Time";
  }
}

void TaskStore::CheckTaskFile(std::int16_t taskType, const std::string& path) {
  if (taskType != kRunScript && taskType != kRunProgram && taskType != kPrintFile &&
      taskType != kPlaySound) {
    return;
  }
  // A NUL would end the path for the system, and another file be looked at.
  const bool named = std::none_of(path.begin(), path.end(), IsControl);
  if (!named || !finder_.FindFile(LowerCase(TaskFile(path)))) {
    TaskValidationMessage = "File does not exist";
  }
}

std::string TaskStore::TaskFile(const std::string& path) const {
  const bool absolute = path.size() >= 3 && path.compare(1, 2, ":\\") == 0;
  return absolute ? path : AppDir + "scripts\\" + path;
}

}  // namespace orvanto
