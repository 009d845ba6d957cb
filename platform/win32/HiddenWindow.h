// A window that nobody sees, for messages: a top-level one, because message-only windows are told
// neither of a new task bar nor of the end of the session. Made when it is first asked for, since
// every top-level window takes its time at the start.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <utility>

#include "platform/win32/Handle.h"

namespace orvanto::win32 {

// Writes the exception in flight to the error output and to the debugger. For the catch (...) of
// every window procedure: none lets an exception out.
void ReportException(const char* where) noexcept;

// The module that holds this code and its resources.
HINSTANCE ThisModule();

class HiddenWindow {
 public:
  // Answers a message, or nothing to leave it to the system.
  using Handler = std::function<std::optional<LRESULT>(UINT, WPARAM, LPARAM)>;

  // The name is to live as long as the window.
  HiddenWindow(const wchar_t* className, Handler handler)
      : className_(className), handler_(std::move(handler)) {}
  HiddenWindow(const HiddenWindow&) = delete;
  HiddenWindow& operator=(const HiddenWindow&) = delete;

  // Throws std::system_error when the system refuses the window.
  HWND Get();

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  const wchar_t* className_;
  Handler handler_;
  Handle<HWND, DestroyWindow> window_;
};

}  // namespace orvanto::win32
