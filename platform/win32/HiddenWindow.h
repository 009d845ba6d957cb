// A window that nobody sees, for messages: a top-level one, because message-only windows are told
// neither of a new task bar nor of the end of the session.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>

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

  // Throws std::system_error when the system refuses the window.
  HiddenWindow(const wchar_t* className, Handler handler);
  HiddenWindow(const HiddenWindow&) = delete;
  HiddenWindow& operator=(const HiddenWindow&) = delete;

  HWND Get() const { return window_.Get(); }

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  Handler handler_;
  Handle<HWND, DestroyWindow> window_;
};

}  // namespace orvanto::win32
