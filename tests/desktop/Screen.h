// The screen as a person and other programs use it: windows by their captions, and keys.
#pragma once

#include <windows.h>

#include <cctype>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/win32/Win32Keyboard.h"
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

// The key of the keyboard, and its Shift in the upper byte. Of characters: letters, digits, blanks.
inline SHORT KeyOf(const KeyEvent& event) {
  for (const auto& [key, code] : {std::pair<Key, SHORT>{Key::Alt, VK_MENU},
                                  {Key::Tab, VK_TAB},
                                  {Key::Enter, VK_RETURN},
                                  {Key::Escape, VK_ESCAPE},
                                  {Key::Up, VK_UP},
                                  {Key::Down, VK_DOWN},
                                  {Key::Right, VK_RIGHT}}) {
    if (event.key == key) return code;
  }
  const int character = static_cast<int>(event.character);
  return static_cast<SHORT>(std::toupper(character) | (std::isupper(character) != 0 ? 0x100 : 0));
}

// The same as a person does: key by key, waiting for nobody. Letters, digits, blanks and some keys.
inline void PressKeys(const std::string& keys) {
  const auto send = [](WORD key, DWORD flags) {
    INPUT input = {};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.dwFlags = flags;
    SendInput(1, &input, sizeof input);
  };
  for (const KeyEvent& event : ParseKeySequence(keys)) {
    const SHORT code = KeyOf(event);
    if (HIBYTE(code) & 1) send(VK_SHIFT, 0);
    for (std::uint32_t i = 0; i < event.count; ++i) {
      if (event.action != KeyEvent::Action::Release) send(LOBYTE(code), 0);
      if (event.action != KeyEvent::Action::Hold) send(LOBYTE(code), KEYEVENTF_KEYUP);
    }
    if (HIBYTE(code) & 1) send(VK_SHIFT, KEYEVENTF_KEYUP);
  }
}

// The windows of one class on a form, in the order of the controls; the top-level ones on none.
inline std::vector<HWND> Children(HWND form, const std::wstring& windowClass) {
  std::vector<HWND> found;
  HWND child = nullptr;
  while ((child = FindWindowExW(form, child, windowClass.c_str(), nullptr)) != nullptr) {
    found.push_back(child);
  }
  return found;
}

// All top-level windows, visible or not, of a process (0: of any) with this class.
inline std::vector<HWND> TopLevel(DWORD process, const std::wstring& windowClass) {
  std::vector<HWND> found = Children(nullptr, windowClass);
  std::erase_if(found, [process](HWND window) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    return process != 0 && owner != process;
  });
  return found;
}

inline std::wstring TextOf(HWND window) {
  std::wstring text(1024, L'\0');
  const LRESULT length =
      SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

inline bool IsTopMost(HWND window) {
  return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
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

// The window that has the keyboard, of the thread that this one belongs to.
inline HWND FocusBeside(HWND window) {
  GUITHREADINFO info = {};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
  return info.hwndFocus;
}

}  // namespace orvanto::desktop
