// The edge between the program's UTF-8 and the system's UTF-16. Nothing fails: what is malformed
// becomes the replacement character. Embedded NULs are kept.
#pragma once

#include <string>
#include <string_view>

namespace orvanto::win32 {

std::wstring ToWide(std::string_view text);
std::string ToUtf8(std::wstring_view text);

// What programs hand each other: as far as the first NUL, or the end of the block of memory.
std::string TextIn(void* globalMemory);

}  // namespace orvanto::win32
