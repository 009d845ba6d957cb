#include "script/ScriptLine.h"

#include "platform/text/Case.h"

namespace orvanto {

void ReadCommandWord(std::string_view line, std::string& word) {
  const std::size_t parenthesis = line.find('(');
  if (parenthesis == std::string_view::npos) return;
  word.assign(line.substr(0, parenthesis));
  for (char& c : word) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
}

void SplitArguments(std::string_view word, std::string_view line, std::string& arg1,
                    std::string& arg2) {
  const std::size_t open = word.size();
  if (line.size() <= open || line[open] != '(' || line.back() != ')' ||
      !EqualIgnoringCase(line.substr(0, open), word)) {
    return;
  }
  const std::size_t quote = open + 1;
  if (quote >= line.size() || line[quote] != '\'') {
    // word(arg1)
    arg1.assign(line.substr(open + 1, line.size() - open - 2));
    arg2.clear();
    return;
  }
  const std::size_t begin = quote + 1;
  if (line[line.size() - 2] == '\'') {
    // word('arg1')
    const std::size_t end = line.size() - 2;
    arg1.assign(begin <= end ? line.substr(begin, end - begin) : std::string_view());
    arg2.clear();
    return;
  }
  // word('arg1',arg2)
  const std::size_t end = line.find("',", quote);
  if (end == std::string_view::npos) return;
  arg1.assign(begin <= end ? line.substr(begin, end - begin) : std::string_view());
  const std::size_t second = end + 2;
  arg2.assign(line.substr(second, line.size() - 1 - second));
}

}  // namespace orvanto
