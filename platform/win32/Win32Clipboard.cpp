#include "platform/win32/Win32Clipboard.h"

#include <cstring>

#include "platform/win32/Handle.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {

namespace {

// In milliseconds.
constexpr ULONGLONG kPatience = 1000;
constexpr DWORD kPause = 10;

class OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND owner) {
    const ULONGLONG deadline = GetTickCount64() + kPatience;
    while (!(open_ = OpenClipboard(owner) != 0) && GetTickCount64() < deadline) Sleep(kPause);
  }
  ~OpenedClipboard() {
    if (open_) CloseClipboard();
  }
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  explicit operator bool() const { return open_; }

 private:
  bool open_ = false;
};

}  // namespace

Win32Clipboard::Win32Clipboard()
    : owner_(L"OrvantoClipboard", [](UINT, WPARAM, LPARAM) { return std::nullopt; }) {}

bool Win32Clipboard::SetText(const std::string& text) {
  const std::wstring wide = ToWide(text);
  const std::size_t size = (wide.size() + 1) * sizeof(wchar_t);
  Handle<HGLOBAL, GlobalFree> memory(GlobalAlloc(GMEM_MOVEABLE, size));
  void* place = memory ? GlobalLock(memory.Get()) : nullptr;
  if (place == nullptr) return false;
  std::memcpy(place, wide.c_str(), size);
  GlobalUnlock(memory.Get());

  const OpenedClipboard clipboard(owner_.Get());
  if (!clipboard || !EmptyClipboard()) return false;
  if (SetClipboardData(CF_UNICODETEXT, memory.Get()) == nullptr) return false;
  memory.Release();  // the system's from here on
  return true;
}

std::string Win32Clipboard::Text() {
  const OpenedClipboard clipboard(owner_.Get());
  const HANDLE memory = clipboard ? GetClipboardData(CF_UNICODETEXT) : nullptr;
  return memory != nullptr ? TextIn(memory) : "";
}

}  // namespace orvanto::win32
