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

// The number that a text begins with, blanks before it; 0 for none.
float LeadingSingle(std::string_view text);

// As a person reads it: at most seven digits that count, and an exponent from 10,000,000 up
// ("1.234568E+07").
std::string SingleText(float number);

// By a pattern of '0' (a digit in any case), '#' (a digit that counts) and '.'; a ',' among those
// before the point separates thousands. Halves are rounded away from zero.
std::string FormatNumber(double number, std::string_view pattern);

// "7:5:9" as "07:05:09"; what is no time of day stays as it is.
std::string FormatTime(const std::string& text);

// Without the blanks (not tabs) at both ends.
std::string_view TrimBlanks(std::string_view text);

// At least two digits: "7" becomes "07", longer text stays.
std::string TwoDigits(std::string_view text);
std::string TwoDigits(int number);

// "14:07:09".
std::string TimeOfDay(const DateTime& time);

}  // namespace orvanto
