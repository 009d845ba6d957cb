// The local time of a moment.
#pragma once

#include <time.h>

#include "platform/Clock.h"

namespace orvanto::posix {

inline DateTime LocalTime(time_t moment) {
  tm local{};
  ::localtime_r(&moment, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,    local.tm_hour,
          local.tm_min,         local.tm_sec,     local.tm_wday + 1};
}

}  // namespace orvanto::posix
