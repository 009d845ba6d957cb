#include "platform/win32/Text.h"

#include <windows.h>

namespace orvanto::win32 {

std::wstring ToWide(std::string_view text) {
  if (text.empty()) return {};
  const int size = static_cast<int>(text.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), length);
  return wide;
}

std::string ToUtf8(std::wstring_view text) {
  if (text.empty()) return {};
  const int size = static_cast<int>(text.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
  return utf8;
}

std::string TextIn(void* globalMemory) {
  const auto* text = static_cast<const wchar_t*>(GlobalLock(globalMemory));
  if (text == nullptr) return {};
  std::wstring_view whole(text, GlobalSize(globalMemory) / sizeof(wchar_t));
  whole = whole.substr(0, whole.find(L'\0'));
  std::string utf8 = ToUtf8(whole);
  GlobalUnlock(globalMemory);
  return utf8;
}

}  // namespace orvanto::win32
