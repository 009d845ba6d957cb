// Texts on their way to a person's terminal.
#pragma once

#include <string>
#include <string_view>

namespace orvanto {

// The text as one line that a terminal shows and does not obey: each control character, U+0080 to
// U+009F and line ends among them, and each byte that is not UTF-8 becomes a '?'.
std::string PrintableLine(std::string_view text);

}  // namespace orvanto
