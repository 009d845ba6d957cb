// The key-sending notation: plain characters; `+ ^ %` for Shift, Ctrl and Alt on the unit or the
// parenthesised group after them; `~` for Enter; `{NAME}`, `{NAME 10}` for named keys and for
// single characters that would otherwise mean something, with a repeat count.
#pragma once

#include <string>
#include <vector>

#include "platform/Keyboard.h"

namespace orvanto {

// The most that one count repeats.
inline constexpr std::uint32_t kMostRepeats = 10000;

// The whole text as events, in which every held modifier is released again. Throws Error 5 for a
// text that does not follow the notation; then nothing is to be typed. The text is UTF-8; a byte
// that is none stands for the character of its value.
std::vector<KeyEvent> ParseKeySequence(const std::string& text);

}  // namespace orvanto
