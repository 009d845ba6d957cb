#include "app/console/TaskLists.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "app/Program.h"
#include "app/console/TaskArguments.h"
#include "core/Convert.h"
#include "core/Sched.h"
#include "core/modTaskOperations.h"
#include "platform/text/PrintableLine.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

// "2026-11-24"
std::string DateText(int year, int month, int day) {
  const std::string digits = std::to_string(year);
  return std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits + "-" +
         TwoDigits(month) + "-" + TwoDigits(day);
}

std::string TimeText(int hour, int minute) { return TwoDigits(hour) + ":" + TwoDigits(minute); }

// A byte that is no UTF-8 stands for the character of its value.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  char32_t character = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = DecodeUtf8(text, at, character);
    if (length == 0) character = static_cast<unsigned char>(text[at]);
    at += std::max<std::size_t>(length, 1);
    if (character < ' ') {
      constexpr const char* kHex = "0123456789abcdef";
      quoted += std::string("\\u00") + kHex[character / 16] + kHex[character % 16];
    } else {
      if (character == '"' || character == '\\') quoted += '\\';
      AppendUtf8(character, quoted);
    }
  }
  return quoted + '"';
}

std::string TextOrNull(const std::string& text) { return text.empty() ? "null" : Quoted(text); }

// What cannot be described still has its name.
std::string LineOf(Program& program, std::int16_t slot) {
  const std::string line = slot <= kMaxTasks ? program.GetSched().DescribeTask(slot) : "";
  return line.empty() ? program.Store().TaskName(slot) : line;
}

using Fields = std::vector<std::pair<const char*, std::string>>;

// The rule for its days: the fields that the task's kind of rule has.
void AddRule(const TaskRecord& task, Fields& fields) {
  const auto number = [](const std::string& text) { return ToInt16Or(text, 0); };
  if (task.timeType == kTimeOnce) {
    fields.emplace_back("once", Quoted(DateText(number(task.dateYear), number(task.dateMonth),
                                                number(task.dateDay))));
  } else if (task.timeType == kTimeRecurring) {
    fields.emplace_back("every", TextOrNull(EveryName(task.every)));
    fields.emplace_back("in", TextOrNull(InName(task.in)));
  } else if (task.timeType == kTimeDayNumber) {
    fields.emplace_back("day", std::to_string(task.dayNo));
  }
}

Fields FieldsOf(Program& program, std::int16_t slot) {
  std::string line = LineOf(program, slot);
  program.Store().LoadTask(slot);
  const TaskRecord& task = program.Store().CurrentTask;
  const auto due = program.GetSched().NextDue(task);
  Fields fields{{"number", std::to_string(slot)},
                {"name", Quoted(task.name)},
                {"group", Quoted(task.group)},
                {"does", TextOrNull(WordOfTaskType(task.taskType))},
                {"path", Quoted(task.path)},
                {"params", Quoted(task.cmdLine)},
                {"window", std::to_string(task.winStyle)},
                {"at", Quoted(task.timeHour + ":" + task.timeMinute)}};
  AddRule(task, fields);
  fields.emplace_back("next", due ? Quoted(DateText(due->year, due->month, due->day) + "T" +
                                           TimeText(due->hour, due->minute))
                                  : "null");
  fields.emplace_back("line", Quoted(line));
  return fields;
}

}  // namespace

void PrintTasks(Program& program, std::ostream& out) {
  for (const std::int16_t slot : program.Store().Slots()) {
    out << slot << ") " << PrintableLine(LineOf(program, slot)) << "\n";
  }
}

void PrintTasksAsJson(Program& program, std::ostream& out) {
  const char* before = "\n";
  out << "[";
  for (const std::int16_t slot : program.Store().Slots()) {
    out << std::exchange(before, ",\n") << "  {";
    const char* comma = "";
    for (const auto& [name, value] : FieldsOf(program, slot)) {
      out << std::exchange(comma, ", ") << '"' << name << "\": " << value;
    }
    out << "}";
  }
  out << "\n]\n";
}

void PrintNextDue(Program& program, std::size_t most, std::ostream& out) {
  std::vector<std::tuple<std::string, std::int16_t, int>> due;  // the time in letters, which sort
  for (const std::int16_t slot : program.Store().Slots()) {
    program.Store().LoadTask(slot);
    if (const auto next = program.GetSched().NextDue(program.Store().CurrentTask)) {
      due.emplace_back(
          DateText(next->year, next->month, next->day) + " " + TimeText(next->hour, next->minute),
          slot, next->weekday);
    }
  }
  std::sort(due.begin(), due.end());
  if (due.size() > most) due.resize(most);
  for (const auto& [time, slot, weekday] : due) {
    out << time << " " << WeekdayName(weekday).substr(0, 3) << "  " << slot << ") "
        << PrintableLine(LineOf(program, slot)) << "\n";
  }
}

}  // namespace orvanto
