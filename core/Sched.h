// The vocabulary of schedules: code tables with their texts, the one-line description of a task,
// the system's date order, and the rule that decides whether a task is due.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "core/TaskRecord.h"
#include "platform/Clock.h"

namespace orvanto {

class TaskStore;

inline constexpr int kEveryCodes = 38;  // all that can be stored
inline constexpr int kEveryCodesThatFire = 10;
inline constexpr int kInCodes = 13;

// The text of a code, counted from 1; empty for a code outside the table.
std::string EveryName(int code);
std::string InName(int code);
std::string WeekdayName(int weekday);  // 1: Sunday
std::string TaskTypeName(int code);

// "Tuesday 24 November 09:30"; with the year where it is another one than at present.
std::string DescribeDue(const DateTime& due, const Clock& clock);

// What stands between the name of a task and its time in its line; a task of an unknown type has
// one of its own.
std::string TaskTypeSeparator(int code);

// The date of a once-task, as "25-12-2001" or, with the month first, "12-25-2001". A year that is
// not four characters long is shown as the present one.
std::string FormatTaskDate(const TaskRecord& task, int dateOrderMonthFirst, const Clock& clock);

// When a task runs, without its time of day: "Every Monday In January", "Day Number: 15", a date.
std::string DescribeWhen(const TaskRecord& task, int dateOrderMonthFirst, const Clock& clock);

// Whether the short-date format begins with the day or the month or the year: the pattern of "dd",
// "mm" and "yyyy" joined by "/", e.g. "mm/dd/yyyy".
std::string DetectDateOrder(const Clock& clock);

class Sched {
 public:
  Sched(TaskStore& store, const Clock& clock) : store_(store), clock_(clock) {}

  // Loads a slot and returns its line for the tree and the listings, e.g.
  // "Backup | Run Script | 23:30 on Every Weekday In Every Month"; empty for an unknown task type.
  // Throws Error 9 for a slot outside 1 to 100.
  std::string DescribeTask(std::int16_t index);
  // The same for the tree, where a task of an unknown type must be seen, too.
  std::string TreeLine(std::int16_t index);

  // The hour and minute of a slot as DescribeTask last saw them.
  struct DescribedTime {
    std::string hour;
    std::string minute;
  };
  const DescribedTime& TimeOfSlot(std::int16_t index) const { return described_.at(Slot(index)); }

  // Set to 1 by MatchRecurrence when the rule holds; never cleared by it.
  int RecurrenceMatched = 0;
  void MatchRecurrence(int every, int in, const DateTime& now);

  // Whether a loaded task is due. Reads the clock afresh for every comparison.
  bool IsDue(const TaskRecord& task);

  // The minute at which it is due next, after the present one; nothing for what never comes again.
  // Clocks that are put back or forward meanwhile are not foreseen.
  std::optional<DateTime> NextDue(const TaskRecord& task);

 private:
  std::string LineOf(const TaskRecord& task) const;
  bool FallsOn(const TaskRecord& task, const std::function<DateTime()>& day);
  static std::size_t Slot(std::int16_t index);

  TaskStore& store_;
  const Clock& clock_;
  std::array<DescribedTime, kMaxTasks> described_;
};

}  // namespace orvanto
