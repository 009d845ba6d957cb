// What the download window shows of sizes and times.
#pragma once

#include <cstdint>
#include <string>

namespace orvanto {

// Seconds as "HH:MM:SS".
std::string ConvertTime(std::int32_t seconds);

// A number of bytes, in the largest unit that it exceeds; exactly 1024 has no text.
std::string FormatSize(float bytes);

// The part of `total` that `done` is, in percent from 0 to 100.
std::int16_t PercentOf(float done, float total);

// Thousands of bytes a second between two times of day, in seconds since midnight, which may lie
// between them; `before` where no time has passed.
float SpeedKbps(float bytes, float begin, float now, float before);

// Counts the seconds that a download takes. A count of 60 minutes stands for one second.
class ElapsedTime {
 public:
  void Restart() { *this = {}; }
  void Tick();
  std::string Text() const;

 private:
  std::int16_t seconds_ = 0;
  std::int16_t minutes_ = 0;
  std::int16_t hours_ = 0;
};

}  // namespace orvanto
