// A started orvanto.exe, as another program sees it: a process with windows.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <string>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Process.h"
#include "tests/desktop/Screen.h"

namespace orvanto::desktop {

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
    return WaitFor(
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
    const bool came = WaitFor([&] { return Box() != nullptr && GetForegroundWindow() == Box(); });
    return came ? TextOf(GetDlgItem(Box(), 0xFFFF)) : L"no box";
  }
  HWND TreeWindow() const { return Children(MainWindow(), WC_TREEVIEWW).at(0); }
  HWND Button(const std::wstring& caption) const {
    return FindWindowExW(MainWindow(), nullptr, WC_BUTTONW, caption.c_str());
  }

  // What a person does.
  void Press(const std::wstring& caption) const { Press(MainWindow(), caption); }
  static void Press(HWND form, const std::wstring& caption) {
    PostMessageW(FindWindowExW(form, nullptr, WC_BUTTONW, caption.c_str()), BM_CLICK, 0, 0);
  }

 private:
  win32::ProcessHandle process_;
};

}  // namespace orvanto::desktop
