#include "download/Figures.h"

#include <algorithm>
#include <cmath>

#include "core/Convert.h"

namespace orvanto {
namespace {

constexpr float kKilobyte = 1024;
constexpr float kMegabyte = 1048576;
constexpr float kSecondsOfDay = 86400;

std::string Joined(int hours, int minutes, int seconds) {
  return FormatTime(std::to_string(hours) + ":" + std::to_string(minutes) + ":" +
                    std::to_string(seconds));
}

}  // namespace

std::string ConvertTime(std::int32_t seconds) {
  const std::int32_t hours = seconds / 3600;
  return Joined(hours, seconds / 60 - hours * 60, seconds % 60);
}

std::string FormatSize(float bytes) {
  std::string text;
  if (bytes < kKilobyte) text = SingleText(bytes) + " Bytes";
  if (bytes > kKilobyte) text = FormatNumber(bytes / kKilobyte, "0.00") + " KB";
  if (bytes > kMegabyte) text = FormatNumber(bytes / kMegabyte, "###,###,##0.00") + " MB";
  return text;
}

std::int16_t PercentOf(float done, float total) {
  const float percent = total > 0 ? done / total * 100 : 0;
  return ToInt16(FormatNumber(std::clamp(percent, 0.0F, 100.0F), "00"));
}

float SpeedKbps(float bytes, float begin, float now, float before) {
  float elapsed = now - begin;
  if (elapsed < 0) elapsed += kSecondsOfDay;
  if (elapsed <= 0) return before;
  const double kilobytes = std::trunc(static_cast<double>(bytes) / elapsed) / 1000;
  return LeadingSingle(FormatNumber(kilobytes, "####.00"));
}

void ElapsedTime::Tick() {
  if (++seconds_ >= 60) {
    seconds_ = 0;
    ++minutes_;
  } else if (minutes_ >= 60) {
    minutes_ = 0;
    ++hours_;
  }
}

std::string ElapsedTime::Text() const { return Joined(hours_, minutes_, seconds_); }

}  // namespace orvanto
