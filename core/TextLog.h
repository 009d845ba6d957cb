// Texts that only ever grow at their end.
#pragma once

#include <string>

namespace orvanto {

// The most that is kept; the oldest lines go first.
inline constexpr std::size_t kMostLogged = 64 << 10;

// The log with the text behind it: without an empty first line, and not longer than kMostLogged.
std::string AppendToLog(const std::string& log, const std::string& text);

}  // namespace orvanto
