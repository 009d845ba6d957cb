// The screen as a person and other programs use it: windows by their captions, and keys.
#pragma once

#include <windows.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32/Win32Keyboard.h"
#include "platform/win32/Win32Process.h"
#include "script/KeySequence.h"

namespace orvanto::desktop {

// Asks again and again until it holds; false when it never did.
inline bool WaitFor(const std::function<bool()>& condition,
                    std::chrono::milliseconds patience = std::chrono::seconds(20)) {
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

// The full name of a program that lies beside the test program.
inline std::wstring Beside(const std::wstring& name) {
  wchar_t path[1024];
  GetModuleFileNameW(nullptr, path, 1024);
  const std::wstring program = path;
  return program.substr(0, program.find_last_of(L'\\') + 1) + name;
}

// Types where the keyboard is, in the notation of the scripts.
inline void Type(const std::string& keys) { win32::Win32Keyboard().Type(ParseKeySequence(keys)); }

// The windows of one class on a form, in the order of the controls; the top-level ones on none.
inline std::vector<HWND> Children(HWND form, const std::wstring& windowClass) {
  std::vector<HWND> found;
  HWND child = nullptr;
  while ((child = FindWindowExW(form, child, windowClass.c_str(), nullptr)) != nullptr) {
    found.push_back(child);
  }
  return found;
}

// A program that was started; it ends with this, the hard way if it still runs.
class Program {
 public:
  explicit Program(const std::string& commandLine)
      : process_(win32::StartProcess(commandLine, ShowCommand::Normal)) {}
  ~Program() {
    TerminateProcess(process_.Get(), 99);
    WaitForSingleObject(process_.Get(), 5000);
  }
  // Waits for the end; STILL_ACTIVE when it does not come.
  int ExitCode() const {
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(process_.Get(), 20000);
    GetExitCodeProcess(process_.Get(), &code);
    return static_cast<int>(code);
  }
  // Its top-level windows of this class, visible or not.
  std::vector<HWND> Windows(const std::wstring& windowClass) const {
    std::vector<HWND> found = Children(nullptr, windowClass);
    std::erase_if(found, [this](HWND window) {
      DWORD owner = 0;
      GetWindowThreadProcessId(window, &owner);
      return owner != GetProcessId(process_.Get());
    });
    return found;
  }

 private:
  win32::ProcessHandle process_;
};

inline std::wstring TextOf(HWND window) {
  wchar_t text[1024] = L"";
  SendMessageW(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
  return text;
}

inline bool HasStyle(HWND window, LONG_PTR extendedStyle) {
  return (GetWindowLongPtrW(window, GWL_EXSTYLE) & extendedStyle) != 0;
}

// The same, until it has held for some looks: where the window manager is late, the window before
// comes up again for a moment, or the keyboard comes later than the window.
inline bool WaitForGood(const std::function<bool()>& condition, int looksEnough = 6) {
  int looks = 0;
  return WaitFor([&] {
    looks = condition() ? looks + 1 : 0;
    return looks == looksEnough;
  });
}

// The window with this caption, once it is in front. Null when that never happens.
inline HWND InFront(const std::wstring& caption, int looksEnough = 6) {
  const bool came =
      WaitForGood([&] { return TextOf(GetForegroundWindow()) == caption; }, looksEnough);
  return came ? GetForegroundWindow() : nullptr;
}

// The text of the message box with this caption, once it is in front.
inline std::wstring BoxInFront(const std::wstring& caption = L"Orvanto") {
  return TextOf(GetDlgItem(InFront(caption), 0xFFFF));
}

// The window that has the keyboard, of the thread that this one belongs to.
inline HWND FocusBeside(HWND window) {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
  return info.hwndFocus;
}

}  // namespace orvanto::desktop
