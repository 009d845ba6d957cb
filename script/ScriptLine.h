// The syntax of one script line.
#pragma once

#include <string>
#include <string_view>

namespace orvanto {

// The text before the first "(", lower-cased, into `word`; a line without one leaves it as it was.
void ReadCommandWord(std::string_view line, std::string& word);

// The arguments of a line whose command word is `word`. A first argument in single quotes may be
// followed by a second one, which is never quoted. What the line does not give stays as it was.
void SplitArguments(std::string_view word, std::string_view line, std::string& arg1,
                    std::string& arg2);

}  // namespace orvanto
