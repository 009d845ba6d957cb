// What a user may enter for a task; the store itself is in modTaskOperations.cpp.
#include <algorithm>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/TaskFacts.h"
#include "core/modTaskOperations.h"
#include "platform/text/Case.h"
#include "platform/text/PrintableLine.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

constexpr const char* kInvalidYear = "Invalid Year given for Date";

// Whether the registry can hold a section of that name, and under that name only: bytes that are no
// UTF-8, as an old telnet client sends them, would all become the same character there.
bool IsSectionName(const std::string& name) {
  constexpr std::size_t kLongest = 255;
  return IsUtf8(name) && Utf16Length(name) <= kLongest && name.front() != '\\' &&
         name.back() != '\\' && name.find("\\\\") == std::string::npos &&
         name.find('\0') == std::string::npos;
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

// The sections of the program's own settings. Backslashes at the ends do not count: the registry
// takes "General\" for "General".
bool TaskStore::IsOwnSection(const std::string& name) {
  const auto first = name.find_first_not_of('\\');
  if (first == std::string::npos) return true;
  const std::string bare = name.substr(first, name.find_last_not_of('\\') - first + 1);
  return EqualIgnoringCase(bare, kGeneral) || EqualIgnoringCase(bare, kInternet);
}

void TaskStore::ValidateTask(const TaskEntry& entry) {
  TaskValidationMessage.clear();
  ValidateTaskName(entry.name, entry.index);
  ValidateWhen(entry);
  CheckTaskFile(entry.taskType, entry.path);
}

void TaskStore::ValidateWhen(const TaskEntry& entry) {
  if (entry.timeType == kTimeOnce) {
    const bool monthFirst = DateOrderMonthFirst != 0;
    ValidateDate(monthFirst ? entry.datePart2 : entry.datePart1,
                 monthFirst ? entry.datePart1 : entry.datePart2, entry.year);
    if (TaskValidationMessage.empty() && Digits(entry.year) < 0) {
      TaskValidationMessage = kInvalidYear;
    }
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
  for (const std::int16_t slot : Slots()) {
    if (slot == ownIndex || TaskName(slot) != name) continue;
    TaskValidationMessage = kInUse;
    return;
  }
}

// A task could not be found again by a line of the tree that holds a separator in its name, and a
// terminal would obey a control character. A task that has such a name already may keep it.
bool TaskStore::MayBeGiven(const std::string& name, std::int16_t ownIndex) {
  const bool separates = (name + kNameEnd).find(kNameEnd) < name.size();
  if (!separates && PrintableLine(name) == name) return true;
  return ownIndex <= NoTasks() && TaskName(ownIndex) == name;
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
                          : yearText.size() < 4           ? kInvalidYear
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
  const TaskTypeFacts* facts = FactsOfTaskType(taskType);
  if (facts == nullptr || !facts->namesFile) return;
  // A NUL would end the path for the system, and another file be looked at.
  const bool named = std::none_of(path.begin(), path.end(), IsControl);
  if (!named || !finder_.FindFile(folder_.TaskFile(path))) {
    TaskValidationMessage = "File does not exist";
  }
}

}  // namespace orvanto
