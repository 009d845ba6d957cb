#include "core/Convert.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace orvanto {
namespace {

std::string_view Trim(std::string_view text, const char* what) {
  const auto first = text.find_first_not_of(what);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(what) - first + 1);
}

double HalfToEven(double number) {
  const double below = std::floor(number);
  const double fraction = number - below;
  if (fraction < 0.5) return below;
  if (fraction > 0.5) return below + 1;
  return std::fmod(below, 2) == 0 ? below : below + 1;
}

// 0, or the error's number.
template <typename Int>
int Convert(std::string_view text, Int& result) {
  text = Trim(text, " \t");
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  // from_chars also reads "inf" and "nan": a number starts with a digit, a sign or a point.
  const auto digit = text.find_first_not_of("-.");
  if (digit == std::string_view::npos || digit > 2) return kTypeMismatch;
  if (text[digit] < '0' || text[digit] > '9') return kTypeMismatch;
  double number = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (rest != end || error == std::errc::invalid_argument) return kTypeMismatch;
  if (error == std::errc::result_out_of_range) return kOverflow;
  number = HalfToEven(number);
  if (number < std::numeric_limits<Int>::min() || number > std::numeric_limits<Int>::max()) {
    return kOverflow;
  }
  result = static_cast<Int>(number);
  return 0;
}

template <typename Int>
Int ConvertOrThrow(std::string_view text) {
  Int result = 0;
  const int error = Convert(text, result);
  if (error != 0) throw Error(error, error == kOverflow ? "Overflow" : "Type mismatch");
  return result;
}

}  // namespace

std::int16_t ToInt16(std::string_view text) { return ConvertOrThrow<std::int16_t>(text); }
std::int32_t ToInt32(std::string_view text) { return ConvertOrThrow<std::int32_t>(text); }

std::int16_t ToInt16Or(std::string_view text, std::int16_t fallback) {
  std::int16_t result = 0;
  return Convert(text, result) == 0 ? result : fallback;
}

std::string_view TrimBlanks(std::string_view text) { return Trim(text, " "); }

std::string TwoDigits(std::string_view text) {
  return text.size() == 1 ? "0" + std::string(text) : std::string(text);
}

std::string TwoDigits(int number) { return TwoDigits(std::to_string(number)); }

std::string TimeOfDay(const DateTime& time) {
  return TwoDigits(time.hour) + ":" + TwoDigits(time.minute) + ":" + TwoDigits(time.second);
}

}  // namespace orvanto
