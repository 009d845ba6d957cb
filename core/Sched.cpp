#include "core/Sched.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "core/Convert.h"
#include "core/TaskFacts.h"
#include "core/modTaskOperations.h"

namespace orvanto {
namespace {

constexpr std::array<const char*, kEveryCodesThatFire> kEvery{
    "Every Day",      "Every Sunday", "Every Monday",   "Every Tuesday", "Every Wednesday",
    "Every Thursday", "Every Friday", "Every Saturday", "Every Weekday", "Every Weekend Day"};
constexpr std::array<const char*, 4> kOrdinals{"1st", "2nd", "3rd", "4th"};
constexpr std::array<const char*, 7> kWeekdays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                               "Thursday", "Friday", "Saturday"};
constexpr std::array<const char*, kInCodes> kIn{
    "Every Month", "January", "February",  "March",   "April",    "May",     "June",
    "July",        "August",  "September", "October", "November", "December"};

template <typename Table>
std::string TextAt(const Table& table, int code) {
  if (code < 1 || code > static_cast<int>(table.size())) return "";
  return table[static_cast<std::size_t>(code - 1)];
}

// A stored number against the clock; one that does not convert equals nothing.
bool Equals(const std::string& text, int number) { return ToInt16Or(text, -1) == number; }

// Every rule that comes at all comes within a year, or in the one after it.
constexpr int kLongestBetween = 366 + 366;

// -1 for what is no time of day.
int MinuteOfDay(int hour, int minute) {
  return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 ? hour * 60 + minute : -1;
}

// Long ago for what is no date.
std::chrono::sys_days DayOf(int year, int month, int day) {
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  return month > 0 && day > 0 && date.ok() ? std::chrono::sys_days(date)
                                           : std::chrono::sys_days::min();
}

bool EveryMatches(int every, int weekday) {
  switch (every) {
    case 1:
      return true;
    case 9:
      return weekday > 1 && weekday < 7;
    case 10:
      return weekday == 1 || weekday == 7;
    default:
      return every >= 2 && every <= 8 && weekday == every - 1;
  }
}

}  // namespace

std::string EveryName(int code) {
  if (code <= kEveryCodesThatFire || code > kEveryCodes) return TextAt(kEvery, code);
  const int beyond = code - kEveryCodesThatFire - 1;
  return std::string("The ") + kOrdinals[static_cast<std::size_t>(beyond / 7)] + " " +
         kWeekdays[static_cast<std::size_t>(beyond % 7)];
}

std::string InName(int code) { return TextAt(kIn, code); }

std::string WeekdayName(int weekday) { return TextAt(kWeekdays, weekday); }

std::string TaskTypeName(int code) {
  const TaskTypeFacts* facts = FactsOfTaskType(code);
  return facts != nullptr ? facts->name : "";
}

std::string TaskTypeSeparator(int code) {
  const TaskTypeFacts* facts = FactsOfTaskType(code);
  return facts != nullptr ? facts->separator : " | Unknown Type | ";
}

std::string FormatTaskDate(const TaskRecord& task, int dateOrderMonthFirst, const Clock& clock) {
  const std::string day = TwoDigits(task.dateDay);
  const std::string month = TwoDigits(task.dateMonth);
  const std::string year =
      task.dateYear.size() == 4 ? task.dateYear : std::to_string(clock.Now().year);
  return (dateOrderMonthFirst == 0 ? day + "-" + month : month + "-" + day) + "-" + year;
}

std::string DescribeWhen(const TaskRecord& task, int dateOrderMonthFirst, const Clock& clock) {
  switch (task.timeType) {
    case kTimeOnce:
      return FormatTaskDate(task, dateOrderMonthFirst, clock);
    case kTimeRecurring:
      return EveryName(task.every) + " In " + InName(task.in);
    case kTimeDayNumber:
      return "Day Number: " + std::to_string(task.dayNo);
    default:
      return "";
  }
}

std::string DescribeDue(const DateTime& due, const Clock& clock) {
  return WeekdayName(due.weekday) + " " + std::to_string(due.day) + " " + InName(due.month + 1) +
         " " + (due.year == clock.Now().year ? "" : std::to_string(due.year) + " ") +
         TwoDigits(due.hour) + ":" + TwoDigits(due.minute);
}

std::string DetectDateOrder(const Clock& clock) {
  std::vector<int> fields;
  constexpr int kNoField = -1;
  int field = kNoField;
  for (const char c : clock.ShortDate(1958, 8, 25) + "/") {
    if (c >= '0' && c <= '9') {
      field = std::max(field, 0) % 10000 * 10 + (c - '0');
    } else if (field != kNoField) {
      fields.push_back(field);
      field = kNoField;
    }
  }
  std::string pattern;
  for (const int number : fields) {
    const char* label = number == 25                     ? "dd"
                        : number == 8                    ? "mm"
                        : number == 58 || number == 1958 ? "yyyy"
                                                         : nullptr;
    if (label == nullptr) continue;
    if (!pattern.empty()) pattern += '/';
    pattern += label;
  }
  return pattern;
}

std::size_t Sched::Slot(std::int16_t index) {
  if (index < 1 || index > kMaxTasks) {
    throw Error(kSubscriptOutOfRange, "Subscript out of range");
  }
  return static_cast<std::size_t>(index - 1);
}

std::string Sched::DescribeTask(std::int16_t index) {
  const std::size_t slot = Slot(index);
  store_.LoadTask(index);
  const TaskRecord& task = store_.CurrentTask;
  described_[slot] = {task.timeHour, task.timeMinute};
  return FactsOfTaskType(task.taskType) != nullptr ? LineOf(task) : "";
}

std::string Sched::TreeLine(std::int16_t index) {
  DescribeTask(index);
  return LineOf(store_.CurrentTask);
}

std::string Sched::LineOf(const TaskRecord& task) const {
  return task.name + TaskTypeSeparator(task.taskType) + task.timeHour + ":" + task.timeMinute +
         " on " + DescribeWhen(task, store_.DateOrderMonthFirst, clock_);
}

void Sched::MatchRecurrence(int every, int in, const DateTime& now) {
  if (in < 1 || in > kInCodes) return;
  const bool monthMatches = in == 1 || now.month == in - 1;
  // A weekend-day rule of one month holds on every Sunday of the year: kept as it is.
  const bool anySunday = every == 10 && now.weekday == 1;
  if (EveryMatches(every, now.weekday) && (monthMatches || anySunday)) RecurrenceMatched = 1;
}

bool Sched::IsDue(const TaskRecord& task) {
  if (!Equals(task.timeHour, clock_.Now().hour)) return false;
  if (!Equals(task.timeMinute, clock_.Now().minute)) return false;
  return FallsOn(task, [this] { return clock_.Now(); });
}

bool Sched::FallsOn(const TaskRecord& task, const std::function<DateTime()>& day) {
  switch (task.timeType) {
    case kTimeOnce:
      return Equals(task.dateYear, day().year) && Equals(task.dateMonth, day().month) &&
             Equals(task.dateDay, day().day);
    case kTimeRecurring: {
      MatchRecurrence(task.every, task.in, day());
      const bool matched = RecurrenceMatched == 1;
      RecurrenceMatched = 0;
      return matched;
    }
    case kTimeDayNumber:
      return day().day == task.dayNo;
    default:
      return false;
  }
}

std::optional<DateTime> Sched::NextDue(const TaskRecord& task) {
  const DateTime now = clock_.Now();
  const int minute = MinuteOfDay(ToInt16Or(task.timeHour, -1), ToInt16Or(task.timeMinute, -1));
  if (minute < 0) return std::nullopt;
  std::chrono::sys_days first = DayOf(now.year, now.month, now.day);
  if (minute <= MinuteOfDay(now.hour, now.minute)) first += std::chrono::days(1);
  std::chrono::sys_days last = first + std::chrono::days(kLongestBetween);
  if (task.timeType == kTimeOnce) {
    const auto date = DayOf(ToInt16Or(task.dateYear, 0), ToInt16Or(task.dateMonth, 0),
                            ToInt16Or(task.dateDay, 0));
    if (date < first) return std::nullopt;
    first = last = date;
  }
  for (auto day = first; day <= last; day += std::chrono::days(1)) {
    const std::chrono::year_month_day date(day);
    const DateTime due{.year = static_cast<int>(date.year()),
                       .month = static_cast<int>(static_cast<unsigned>(date.month())),
                       .day = static_cast<int>(static_cast<unsigned>(date.day())),
                       .hour = minute / 60,
                       .minute = minute % 60,
                       .second = 0,
                       .weekday = static_cast<int>(std::chrono::weekday(day).c_encoding()) + 1};
    if (FallsOn(task, [&due] { return due; })) return due;
  }
  return std::nullopt;
}

}  // namespace orvanto
