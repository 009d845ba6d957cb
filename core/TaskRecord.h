// One task as it is loaded: plain data, with the codes of core/Sched.h.
#pragma once

#include <cstdint>
#include <string>

namespace orvanto {

// Slots 1 to 100 can be described and shown; the list holds no more.
inline constexpr std::int16_t kMaxTasks = 100;

// The slots from 1 to the last, to walk along.
class SlotRange {
 public:
  struct Iterator {
    int slot;
    std::int16_t operator*() const { return static_cast<std::int16_t>(slot); }
    Iterator& operator++() {
      ++slot;
      return *this;
    }
    bool operator==(const Iterator&) const = default;
  };
  explicit SlotRange(std::int16_t last) : last_(last) {}
  Iterator begin() const { return {1}; }
  Iterator end() const { return {last_ > 0 ? last_ + 1 : 1}; }

 private:
  int last_;
};

enum TimeType : std::int16_t { kTimeOnce = 1, kTimeRecurring = 2, kTimeDayNumber = 3 };

enum TaskType : std::int16_t {
  kRunScript = 1,
  kRunProgram = 2,
  kPrintFile = 3,
  kResetComputer = 4,
  kShutdownComputer = 5,
  kPopupMessage = 6,
  kPlaySound = 7,
};

inline constexpr int kTaskTypes = 7;

struct TaskRecord {
  std::string name;           // unique, and the name of the task's section
  std::int16_t index = 0;     // slot, from 1
  std::string group;          // never empty once loaded
  std::int16_t timeType = 0;  // TimeType; anything else never fires
  std::string timeHour;       // two digits
  std::string timeMinute;     // two digits
  std::string dateDay;        // two digits; the date counts for kTimeOnce
  std::string dateMonth;      // two digits
  std::string dateYear;
  std::int16_t every = 0;     // day rule, 1-38, for kTimeRecurring
  std::int16_t in = 0;        // month rule, 1-13, for kTimeRecurring
  std::int16_t dayNo = 0;     // 1-31, for kTimeDayNumber
  std::int16_t taskType = 0;  // TaskType; anything else does nothing
  std::string path;           // script, program, file, sound, or the message's text
  std::string cmdLine;        // for kRunProgram and kPrintFile
  std::int16_t winStyle = 0;  // 1-6, for kRunProgram and kPrintFile
};

// What a user enters. The date comes in the order in which the system shows it.
struct TaskEntry {
  std::string name;
  std::int16_t index = 0;  // the slot to save to; the count plus one for a new task
  std::string group;
  std::int16_t timeType = 0;
  std::string hour;
  std::string minute;
  std::string datePart1;  // the day, or the month where DateOrderMonthFirst is 1
  std::string datePart2;  // the other of the two
  std::string year;
  std::int16_t every = 0;
  std::int16_t in = 0;
  std::int16_t dayNo = 0;
  std::int16_t taskType = 0;
  std::int16_t winStyle = 0;
  std::string path;
  std::string cmdLine;
};

// What a user would have to enter for a loaded task. Times and dates that are no numbers are 0.
TaskEntry EntryOf(const TaskRecord& task, int dateOrderMonthFirst);

}  // namespace orvanto
