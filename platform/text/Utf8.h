// UTF-8, byte by byte.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanto {

// Whether the byte goes on with a character that began before it.
constexpr bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The length of the character that begins at `at`, 1 to 4, and the character itself; 0 where no
// whole and well-formed one begins there.
std::size_t DecodeUtf8(std::string_view text, std::size_t at, char32_t& character);

void AppendUtf8(char32_t character, std::string& text);

// UTF-16 bytes, the low one of each two first unless `highFirst`, as UTF-8. What is no whole
// character becomes U+FFFD.
std::string FromUtf16(std::string_view bytes, bool highFirst);

bool IsUtf8(std::string_view text);

// How many units of UTF-16 the text takes, which is how Windows counts characters.
std::size_t Utf16Length(std::string_view text);

}  // namespace orvanto
