// What the desktop tests share. They use the user's own settings, so they are for a machine, or a
// Wine prefix, that nobody works on.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <stdexcept>

#include "platform/win32/Text.h"
#include "tests/desktop/Screen.h"

namespace orvanto::desktop {

// A started orvanto.exe, as another program sees it: a process with windows.
class RunningProgram : public Program {
 public:
  // Starts the program that lies beside the test program.
  explicit RunningProgram(const std::wstring& arguments = L"")
      : Program(win32::ToUtf8(L"\"" + Beside(L"orvanto.exe") + L"\" " + arguments)) {}

  // The main window, or null as long as there is none. Waits for its timer to have written the
  // caption, so it is started completely then.
  HWND MainWindow() const {
    HWND main = nullptr;
    WaitFor([&] {
      for (const HWND window : Windows(L"OrvantoForm")) {
        if (TextOf(window).starts_with(L"Orvanto - ")) main = window;
      }
      return main != nullptr;
    });
    return main;
  }
  // Waits until it is.
  bool MainIsInFront() const {
    return WaitForGood(
        [main = MainWindow()] { return IsWindowVisible(main) && GetForegroundWindow() == main; });
  }
};

// Presses a button, as a person does.
inline void Press(HWND form, const wchar_t* caption) {
  PostMessageW(FindWindowExW(form, nullptr, WC_BUTTONW, caption), BM_CLICK, 0, 0);
}

// Begins and ends without any settings.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest() {
    const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    if (!isWine && !Stored(L"General", {L"NoTasks"}).empty()) {
      throw std::runtime_error("somebody's own tasks are on this machine");
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  }
  ~DesktopTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

  // Each of the values is "Name=text". The section may be a task's name.
  static void Store(const std::wstring& section, std::initializer_list<std::wstring> values) {
    for (const std::wstring& value : values) {
      const std::size_t equals = value.find(L'=');
      RegSetKeyValueW(HKEY_CURRENT_USER, (kKey + (L"\\" + section)).c_str(),
                      value.substr(0, equals).c_str(), REG_SZ, &value[equals + 1],
                      static_cast<DWORD>((value.size() - equals) * sizeof(wchar_t)));
    }
  }
  // Stored texts with '|' between them.
  static std::wstring Stored(const std::wstring& section,
                             std::initializer_list<const wchar_t*> names) {
    std::wstring all;
    for (const wchar_t* name : names) {
      wchar_t text[1024] = L"";
      DWORD size = sizeof text;
      RegGetValueW(HKEY_CURRENT_USER, (kKey + (L"\\" + section)).c_str(), name, RRF_RT_REG_SZ,
                   nullptr, text, &size);
      all += (all.empty() ? L"" : L"|") + std::wstring(text);
    }
    return all;
  }

 private:
  static constexpr const wchar_t* kKey = L"Software\\Quellmark\\Orvanto";
};

}  // namespace orvanto::desktop
