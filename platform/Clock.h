// The wall clock and the system's way of writing a date.
#pragma once

#include <cstdint>
#include <string>

namespace orvanto {

// A moment of local time.
struct DateTime {
  int year = 0;     // four digits
  int month = 0;    // 1-12
  int day = 0;      // 1-31
  int hour = 0;     // 0-23
  int minute = 0;   // 0-59
  int second = 0;   // 0-59
  int weekday = 0;  // 1 Sunday to 7 Saturday
};

class Clock {
 public:
  virtual ~Clock() = default;

  // The present local date and time; follows changes of the clock and of the time zone.
  virtual DateTime Now() const = 0;

  // The present wall-clock time in milliseconds since 1970-01-01 00:00 UTC. Whole seconds of this
  // count and of Now() begin together. It jumps when somebody sets the clock.
  virtual std::int64_t UnixMilliseconds() const = 0;

  // A date in the system's "Short Date" format, e.g. "25.08.1958" or "8/25/58".
  virtual std::string ShortDate(int year, int month, int day) const = 0;
};

}  // namespace orvanto
