#include "platform/text/Utf8.h"

#include <cstdint>
#include <cstring>

namespace orvanto {

std::size_t DecodeUtf8(std::string_view text, std::size_t at, char32_t& character) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80) {
    character = lead;
    return 1;
  }
  const std::size_t length = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || text.size() - at < length) return 0;
  character = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!IsContinuation(text[at + i])) return 0;
    character = character << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
  }
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  return character < kLeast[length] || surrogate || character > 0x10FFFF ? 0 : length;
}

void AppendUtf8(char32_t character, std::string& text) {
  const auto byte = [&](char32_t value) { text += static_cast<char>(value); };
  if (character < 0x80) {
    byte(character);
  } else if (character < 0x800) {
    byte(0xC0 | character >> 6);
    byte(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    byte(0xE0 | character >> 12);
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  } else {
    byte(0xF0 | character >> 18);
    byte(0x80 | (character >> 12 & 0x3F));
    byte(0x80 | (character >> 6 & 0x3F));
    byte(0x80 | (character & 0x3F));
  }
}

std::string FromUtf16(std::string_view bytes, bool highFirst) {
  const auto isHigh = [](char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
  const auto isLow = [](char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
  const auto unitAt = [&](std::size_t at) -> char32_t {
    if (bytes.size() - at < 2) return 0xFFFD;
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    return static_cast<char32_t>(highFirst ? first << 8 | second : second << 8 | first);
  };
  std::string text;
  for (std::size_t at = 0; at < bytes.size(); at += 2) {
    char32_t character = unitAt(at);
    if (isHigh(character) && bytes.size() - at > 2 && isLow(unitAt(at + 2))) {
      at += 2;
      character = 0x10000 + ((character - 0xD800) << 10) + (unitAt(at) - 0xDC00);
    } else if (isHigh(character) || isLow(character)) {
      character = 0xFFFD;
    }
    AppendUtf8(character, text);
  }
  return text;
}

bool IsUtf8(std::string_view text) {
  char32_t character = 0;
  for (std::size_t at = 0; at < text.size();) {
    // Most text is plain: eight bytes at a time, as long as none has its high bit set.
    std::uint64_t eight = 0;
    if (text.size() - at >= sizeof eight) {
      std::memcpy(&eight, text.data() + at, sizeof eight);
      if ((eight & 0x8080808080808080U) == 0) {
        at += sizeof eight;
        continue;
      }
    }
    const std::size_t length = DecodeUtf8(text, at, character);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

std::size_t Utf16Length(std::string_view text) {
  std::size_t length = 0;
  for (const char c : text) {
    if (!IsContinuation(c)) ++length;
    if (static_cast<unsigned char>(c) >= 0xF0) ++length;  // a surrogate pair
  }
  return length;
}

}  // namespace orvanto
