// What the desktop tests share. They use the user's own settings, so they are for a machine, or a
// Wine prefix, that nobody works on.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <sstream>
#include <stdexcept>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Process.h"
#include "tests/desktop/Screen.h"

namespace orvanto::desktop {

// A started orvanto.exe, as another program sees it: a process with windows.
class RunningProgram {
 public:
  // Starts the program that lies beside the test program.
  explicit RunningProgram(const std::wstring& arguments = L"")
      : process_(
            win32::StartProcess(win32::ToUtf8(L"\"" + Beside(L"orvanto.exe") + L"\" " + arguments),
                                ShowCommand::Normal)) {}
  ~RunningProgram() {  // ends it, the hard way if it still runs
    TerminateProcess(process_.Get(), 99);
    WaitForSingleObject(process_.Get(), 5000);
  }

  DWORD Id() const { return GetProcessId(process_.Get()); }
  // Waits for the end; -1 when it does not come.
  int ExitCode() const {
    DWORD code = 0;
    const bool ended = WaitForSingleObject(process_.Get(), 20000) == WAIT_OBJECT_0 &&
                       GetExitCodeProcess(process_.Get(), &code);
    return ended ? static_cast<int>(code) : -1;
  }
  // The main window, or null as long as there is none. Waits for its timer to have written the
  // caption, so it is started completely then.
  HWND MainWindow() const {
    HWND main = nullptr;
    WaitFor([&] {
      for (const HWND window : TopLevel(Id(), L"OrvantoForm")) {
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
  HWND Box() const {  // the one that is open, or null
    for (const HWND window : TopLevel(Id(), L"#32770")) {
      if (IsWindowVisible(window)) return window;
    }
    return nullptr;
  }
  // The text of the message box, once one is in front.
  std::wstring BoxInFront() const {
    const bool came =
        WaitForGood([&] { return Box() != nullptr && GetForegroundWindow() == Box(); });
    return came ? TextOf(GetDlgItem(Box(), 0xFFFF)) : L"no box";
  }
  // What a person does.
  void Press(const std::wstring& caption) const { Press(MainWindow(), caption); }
  static void Press(HWND form, const std::wstring& caption) {
    PostMessageW(FindWindowExW(form, nullptr, WC_BUTTONW, caption.c_str()), BM_CLICK, 0, 0);
  }

 private:
  win32::ProcessHandle process_;
};

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

  // "Name=value Other=value". The section may be a task's name.
  static void Store(const std::wstring& section, const std::wstring& values) {
    std::wistringstream words(values);
    for (std::wstring word; words >> word;) {
      const std::size_t equals = word.find(L'=');
      RegSetKeyValueW(HKEY_CURRENT_USER, (kKey + (L"\\" + section)).c_str(),
                      word.substr(0, equals).c_str(), REG_SZ, &word[equals + 1],
                      static_cast<DWORD>((word.size() - equals) * sizeof(wchar_t)));
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
