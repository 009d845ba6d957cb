// Conversions between text and numbers, in one place, with the classic error numbers.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvanto {

enum ErrorNumber : int {
  kIllegalCall = 5,
  kOverflow = 6,
  kSubscriptOutOfRange = 9,
  kTypeMismatch = 13,
  kInternalError = 51,
  kFileNotFoundError = 53,
  kFileAlreadyOpen = 55,
};

// A failure that is passed to the caller. Where a number reaches a log or a remote text, it is
// this.
class Error : public std::runtime_error {
 public:
  Error(int number, const std::string& text, std::string source = {})
      : std::runtime_error(text), number_(number), source_(std::move(source)) {}
  int Number() const { return number_; }
  const std::string& Source() const { return source_; }

 private:
  int number_;
  std::string source_;
};

// Decimal text to an integer: blanks around it, a sign, a fraction (halves are rounded to the even
// neighbour) and an exponent are understood. Throws Error 13 for what is no number, 6 for one that
// does not fit.
std::int16_t ToInt16(std::string_view text);
std::int32_t ToInt32(std::string_view text);

// The same for stored values that must not stop anything: `fallback` instead of an error.
std::int16_t ToInt16Or(std::string_view text, std::int16_t fallback);

// Without the blanks (not tabs) at both ends.
std::string_view TrimBlanks(std::string_view text);

// At least two digits: "7" becomes "07", longer text stays.
std::string TwoDigits(std::string_view text);
std::string TwoDigits(int number);

// The lower-cased text, ASCII letters only; everything else stays.
std::string LowerCase(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);

inline constexpr const char* kCrLf = "\r\n";

}  // namespace orvanto
