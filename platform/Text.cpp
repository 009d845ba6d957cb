#include "platform/Text.h"

namespace orvanto {

std::size_t Utf8SequenceLength(std::string_view text) {
  const auto at = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
  };
  const unsigned lead = at(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
  }
  // Overlong forms, surrogates and what lies beyond U+10FFFF.
  if ((lead == 0xE0 && at(1) < 0xA0) || (lead == 0xED && at(1) > 0x9F) ||
      (lead == 0xF0 && at(1) < 0x90) || (lead == 0xF4 && at(1) > 0x8F)) {
    return 0;
  }
  return length;
}

std::string PrintableLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    const std::size_t length = Utf8SequenceLength(text);
    const std::string_view character = text.substr(0, length);
    const bool control = (length == 1 && (character < " " || character == "\x7F")) ||
                         (length == 2 && character < "\xC2\xA0");
    if (length == 0 || control) {
      line += '?';
    } else {
      line += character;
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return line;
}

}  // namespace orvanto
