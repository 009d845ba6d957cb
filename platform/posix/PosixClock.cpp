#include "platform/posix/PosixClock.h"

#include <time.h>

#include "platform/posix/LocalTime.h"

namespace orvanto::posix {
namespace {

constexpr std::chrono::minutes kZoneGoodFor(1);

// Not time(): its second begins some milliseconds after that of the precise clock.
timespec PreciseTime() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  return now;
}

}  // namespace

PosixClock::PosixClock(const char* locale)
    : locale_(::newlocale(LC_TIME_MASK, locale, nullptr)),
      zoneRead_(std::chrono::steady_clock::now()) {
  if (locale_ == nullptr) locale_ = ::newlocale(LC_TIME_MASK, "C", nullptr);
  ::tzset();
}

PosixClock::~PosixClock() { ::freelocale(locale_); }

DateTime PosixClock::Now() const {
  const auto now = std::chrono::steady_clock::now();
  if (now - zoneRead_ >= kZoneGoodFor) {
    zoneRead_ = now;
    ::tzset();  // localtime_r does not look at the zone again by itself
  }
  return LocalTime(PreciseTime().tv_sec);
}

std::int64_t PosixClock::UnixMilliseconds() const {
  const timespec now = PreciseTime();
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

std::string PosixClock::ShortDate(int year, int month, int day) const {
  tm date{};
  date.tm_year = year - 1900;
  date.tm_mon = month - 1;
  date.tm_mday = day;
  tm withWeekday = date;  // some locales' short date names the day of the week
  ::timegm(&withWeekday);
  date.tm_wday = withWeekday.tm_wday;
  date.tm_yday = withWeekday.tm_yday;
  char text[128];
  return std::string(text, ::strftime_l(text, sizeof text, "%x", &date, locale_));
}

}  // namespace orvanto::posix
