// Upper and lower case, for comparing.
#pragma once

#include <string>
#include <string_view>

namespace orvanto {

// Lower case as the registry and file names compare. Knows ASCII and the simple pairs of Latin,
// Greek and Cyrillic up to U+052F; everything else, broken UTF-8 included, stands for itself.
std::string FoldCase(std::string_view text);
void AppendFoldedCase(std::string_view text, std::string& out);

// ASCII letters only, for words of our own (commands, roots, settings): everything else stays.
std::string LowerCase(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);

}  // namespace orvanto
