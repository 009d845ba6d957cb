// A started orvanto.exe, as another program sees it: a process with windows.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "platform/win32/Win32Process.h"

namespace orvanto::desktop {

// Asks again and again until it holds; false when it never did.
bool WaitFor(const std::function<bool()>& condition,
             std::chrono::milliseconds patience = std::chrono::seconds(20));

// The full name of a program that lies beside the test program.
std::wstring Beside(const std::wstring& name);

// Types where the keyboard is, in the notation of the scripts.
void Type(const std::string& keys);
// The same as a person does: key by key, waiting for nobody. Letters, digits, blanks and some keys.
void PressKeys(const std::string& keys);

// All top-level windows, visible or not, of a process (0: of any) with this class.
std::vector<HWND> TopLevel(DWORD process, const std::wstring& windowClass);

std::wstring TextOf(HWND window);
bool IsTopMost(HWND window);
// The window with this caption, once it is in front; null when that never happens.
HWND InFront(const std::wstring& caption);
// The window that has the keyboard, of the thread that this one belongs to.
HWND FocusBeside(HWND window);

class RunningProgram {
 public:
  // Starts the program that lies beside the test program.
  explicit RunningProgram(const std::wstring& arguments = L"");
  ~RunningProgram();  // ends it, the hard way if it still runs

  DWORD Id() const { return GetProcessId(process_.Get()); }
  // Waits for the end; -1 when it does not come.
  int ExitCode() const;
  // The main window, or null as long as there is none. Waits for its timer to have written the
  // caption, so it is started completely then.
  HWND MainWindow() const;
  // Waits until it is.
  bool MainIsInFront() const;
  // The text of the message box, once one is in front.
  std::wstring BoxInFront() const;
  HWND Box() const;  // the one that is open, or null
  HWND TreeWindow() const;

  HWND Button(const std::wstring& caption) const { return Button(MainWindow(), caption); }
  static HWND Button(HWND form, const std::wstring& caption);
  // The windows of one class on a form, in the order of the controls.
  static std::vector<HWND> Children(HWND form, const wchar_t* windowClass);

  // What a person does.
  void Press(const std::wstring& caption) const { Press(MainWindow(), caption); }
  static void Press(HWND form, const std::wstring& caption);

 private:
  win32::ProcessHandle process_;
};

}  // namespace orvanto::desktop
