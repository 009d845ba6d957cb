#include "core/TaskRecord.h"

#include "core/Convert.h"

namespace orvanto {

TaskEntry EntryOf(const TaskRecord& task, int dateOrderMonthFirst) {
  const auto twoDigits = [](const std::string& text) { return TwoDigits(ToInt16Or(text, 0)); };
  TaskEntry entry;
  entry.name = task.name;
  entry.index = task.index;
  entry.group = task.group;
  entry.timeType = task.timeType;
  entry.hour = twoDigits(task.timeHour);
  entry.minute = twoDigits(task.timeMinute);
  entry.datePart1 = twoDigits(dateOrderMonthFirst != 0 ? task.dateMonth : task.dateDay);
  entry.datePart2 = twoDigits(dateOrderMonthFirst != 0 ? task.dateDay : task.dateMonth);
  entry.year = std::to_string(ToInt16Or(task.dateYear, 0));
  entry.every = task.every;
  entry.in = task.in;
  entry.dayNo = task.dayNo;
  entry.taskType = task.taskType;
  entry.winStyle = task.winStyle;
  entry.path = task.path;
  entry.cmdLine = task.cmdLine;
  return entry;
}

}  // namespace orvanto
