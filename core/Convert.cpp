#include "core/Convert.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
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

constexpr int kSingleDigits = 7;
constexpr int kDoubleDigits = 15;

// digits[0].digits[1]... times ten to the exponent.
struct Decimal {
  std::string digits;
  int exponent;
};

// By snprintf: the tables of to_chars would be an eighth of the Windows program.
Decimal ToDecimal(double number, int digits) {
  std::array<char, 64> text{};
  const int length = std::snprintf(text.data(), text.size(), "%.*e", digits - 1, std::abs(number));
  const char* const end = text.data() + length;
  const char* const e = std::find(static_cast<const char*>(text.data()), end, 'e');
  Decimal decimal{{static_cast<const char*>(text.data()), e}, 0};
  decimal.digits.erase(1, 1);  // the point
  std::from_chars(e + (e[1] == '+' ? 2 : 1), end, decimal.exponent);
  return decimal;
}

// Its whole and decimal digits, without the point: so many that its decimal places are there.
std::string RoundedTo(std::size_t places, Decimal decimal) {
  std::string& digits = decimal.digits;
  const int kept = decimal.exponent + 1 + static_cast<int>(places);
  if (kept < 0) return std::string(places, '0');
  const auto size = static_cast<std::size_t>(kept);
  const bool up = size < digits.size() && digits[size] >= '5';
  digits.resize(size, '0');
  std::size_t at = size;
  while (up && at > 0 && digits[at - 1] == '9') digits[--at] = '0';
  if (up && at > 0) ++digits[at - 1];
  if (up && at == 0) digits.insert(0, "1");
  return std::string(places - std::min(places, digits.size()), '0') + digits;
}

std::size_t Count(std::string_view text, char c) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
}

}  // namespace

std::int16_t ToInt16(std::string_view text) { return ConvertOrThrow<std::int16_t>(text); }
std::int32_t ToInt32(std::string_view text) { return ConvertOrThrow<std::int32_t>(text); }

std::int16_t ToInt16Or(std::string_view text, std::int16_t fallback) {
  std::int16_t result = 0;
  return Convert(text, result) == 0 ? result : fallback;
}

float LeadingSingle(std::string_view text) {
  text = Trim(text, " ");
  double number = 0;
  if (!text.empty() && text[0] != '-') {
    std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  }
  return static_cast<float>(number);
}

std::string SingleText(float number) {
  if (number < 0) return "-" + SingleText(-number);
  auto [digits, exponent] = ToDecimal(number, kSingleDigits);
  digits.resize(std::max<std::size_t>(digits.find_last_not_of('0') + 1, 1));
  if (exponent >= kSingleDigits || exponent < -kSingleDigits) {
    if (digits.size() > 1) digits.insert(1, ".");
    return digits + (exponent < 0 ? "E-" : "E+") + TwoDigits(std::abs(exponent));
  }
  if (exponent < 0)
    return "0." + std::string(static_cast<std::size_t>(-exponent - 1), '0') + digits;
  const auto whole = static_cast<std::size_t>(exponent) + 1;
  if (digits.size() > whole) return digits.insert(whole, ".");
  digits.resize(whole, '0');
  return digits;
}

std::string FormatNumber(double number, std::string_view pattern) {
  const std::size_t dot = std::min(pattern.find('.'), pattern.size());
  const std::string_view left = pattern.substr(0, dot);
  const std::string_view right = pattern.substr(std::min(dot + 1, pattern.size()));
  const std::string digits =
      RoundedTo(right.size(), ToDecimal(std::isfinite(number) ? number : 0, kDoubleDigits));
  std::string whole = digits.substr(0, digits.size() - right.size());
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size()));
  whole.insert(0, Count(left, '0') - std::min(Count(left, '0'), whole.size()), '0');
  if (left.find(',') != std::string_view::npos) {
    for (std::size_t at = whole.size(); at > 3; at -= 3) whole.insert(at - 3, ",");
  }
  std::string places = digits.substr(digits.size() - right.size());
  const std::size_t needed = right.rfind('0') + 1;  // 0 where there is none
  places.resize(std::max(places.find_last_not_of('0') + 1, needed));
  const bool negative = number < 0 && digits.find_first_not_of('0') != std::string::npos;
  return (negative ? "-" : "") + whole + (dot < pattern.size() ? "." : "") + places;
}

std::string FormatTime(const std::string& text) {
  constexpr std::array<int, 3> kMost{23, 59, 59};
  const char* at = text.data();
  const char* const end = at + text.size();
  std::string time;
  for (std::size_t i = 0; i < kMost.size(); ++i) {
    if (i > 0 && (at == end || *at++ != ':')) return text;
    int number = 0;
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc() || number < 0 || number > kMost[i] || next - at > 2) return text;
    time += (i > 0 ? ":" : "") + TwoDigits(number);
    at = next;
  }
  return at == end ? time : text;
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
