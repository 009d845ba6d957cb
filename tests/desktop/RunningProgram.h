// A started orvanto.exe, as another program sees it: a process with windows.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "platform/win32/Handle.h"

namespace orvanto::desktop {

// Asks again and again until it holds; false when it never did.
bool WaitFor(const std::function<bool()>& condition,
             std::chrono::milliseconds patience = std::chrono::seconds(20));

// The full name of a program that lies beside the test program.
std::wstring Beside(const std::wstring& name);

// Runs a program to its end; its exit code, or -1.
int RunToEnd(std::wstring commandLine);

// Presses and releases keys, one after the other, where the keyboard is.
void PressKeys(const std::vector<WORD>& keys);
// The same while another is held down.
void PressWith(WORD held, WORD key);
void TypeText(const std::wstring& text);

// All top-level windows, visible or not, of a process (0: of any) with this class.
std::vector<HWND> TopLevel(DWORD process, const std::wstring& windowClass);

std::wstring TextOf(HWND window);
bool IsTopMost(HWND window);
// The window that has the keyboard, of the thread that this one belongs to.
HWND FocusBeside(HWND window);

class RunningProgram {
 public:
  // Starts the program that lies beside the test program.
  explicit RunningProgram(const std::wstring& arguments = L"");
  ~RunningProgram();  // ends it, the hard way if it still runs

  DWORD Id() const { return id_; }
  // The main window, or null as long as there is none. Waits for its timer to have written the
  // caption, so it is started completely then.
  HWND MainWindow() const;
  HWND Button(const std::wstring& caption) const { return Button(MainWindow(), caption); }
  static HWND Button(HWND form, const std::wstring& caption);
  // The windows of one class on a form, in the order of the controls.
  static std::vector<HWND> Children(HWND form, const wchar_t* windowClass);
  // The form with this caption, once it is shown and in front; null when that never happens.
  HWND InFront(const std::wstring& caption) const;
  HWND Box() const;  // the message box that is open, or null
  HWND TrayOwner() const;

  // What a person does.
  void Press(const std::wstring& caption) const { Press(MainWindow(), caption); }
  static void Press(HWND form, const std::wstring& caption);
  void SelectLine(int line) const;  // of the tree, from 0; the line of a task
  void ChooseMenu(wchar_t menu, int itemsBelowFirst) const;

  HWND TreeWindow() const;
  bool WaitForEnd(DWORD& exitCode) const;

 private:
  win32::Handle<HANDLE, CloseHandle> process_;
  DWORD id_ = 0;
};

}  // namespace orvanto::desktop
