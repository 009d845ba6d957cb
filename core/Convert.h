// Conversions between text and numbers, in one place, with the classic error numbers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/Clock.h"
#include "platform/text/Error.h"

namespace orvanto {

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

// "14:07:09".
std::string TimeOfDay(const DateTime& time);

}  // namespace orvanto
