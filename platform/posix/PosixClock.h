// The system's clock, in local time.
#pragma once

#include <locale.h>

#include <chrono>

#include "platform/Clock.h"

namespace orvanto::posix {

// A change of the system's time zone is noticed within a minute.
class PosixClock : public Clock {
 public:
  // The locale for dates: empty for the user's own, as the environment tells it. One that is not
  // installed gives the C locale's dates.
  explicit PosixClock(const char* locale = "");
  ~PosixClock() override;
  PosixClock(const PosixClock&) = delete;
  PosixClock& operator=(const PosixClock&) = delete;

  DateTime Now() const override;
  std::int64_t UnixMilliseconds() const override;
  std::string ShortDate(int year, int month, int day) const override;

 private:
  locale_t locale_;
  mutable std::chrono::steady_clock::time_point zoneRead_;
};

}  // namespace orvanto::posix
