#include "platform/text/PrintableLine.h"

#include "platform/text/Utf8.h"

namespace orvanto {

std::string PrintableLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    char32_t character = 0;
    const std::size_t length = DecodeUtf8(text, 0, character);
    const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
    if (length == 0 || control) {
      line += '?';
    } else {
      line += text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return line;
}

}  // namespace orvanto
