#include "platform/win32/Win32Desktop.h"

#include <windows.h>

#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {

namespace {

constexpr UINT kPatience = 5000;  // milliseconds, after which the system itself speaks of hanging

HWND HandleOf(Desktop::Window window) { return reinterpret_cast<HWND>(window); }

bool Ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  return SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kPatience,
                             nullptr) != 0;
}

// Showing and moving a window waits for its thread, without a limit: this has to be asked before.
bool Responds(HWND window) { return Ask(window, WM_NULL, 0, 0); }

}  // namespace

std::vector<Desktop::Window> Win32Desktop::TopLevelWindows() {
  // Unlike a walk from window to window this is not led astray by windows that come and go.
  std::vector<Window> windows;
  EnumWindows(
      [](HWND window, LPARAM list) -> BOOL {
        try {
          reinterpret_cast<std::vector<Window>*>(list)->push_back(reinterpret_cast<Window>(window));
          return TRUE;
        } catch (...) {
          ReportException("list of windows");
          return FALSE;
        }
      },
      reinterpret_cast<LPARAM>(&windows));
  return windows;
}

std::string Win32Desktop::Title(Window window) {
  // The system's copy of the title, which is also what GetWindowText reads of another program's
  // window; this call leaves out the message to windows of our own process.
  for (std::wstring text(256, L'\0');; text.resize(text.size() * 2)) {
    const int length =
        InternalGetWindowText(HandleOf(window), text.data(), static_cast<int>(text.size()));
    if (static_cast<std::size_t>(length) + 1 < text.size()) {
      return ToUtf8({text.data(), static_cast<std::size_t>(length)});
    }
  }
}

void Win32Desktop::BringToTop(Window window) {
  const HWND handle = HandleOf(window);
  if (!Responds(handle)) {
    SetWindowPos(handle, HWND_TOP, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_ASYNCWINDOWPOS);
    return;
  }
  BringWindowToTop(handle);
  SetForegroundWindow(handle);
  if (GetForegroundWindow() == handle) return;
  // The system lets only the program that has had the last input give the foreground away. A mouse
  // that moves by nothing is such an input.
  INPUT nothing = {};
  nothing.type = INPUT_MOUSE;
  SendInput(1, &nothing, sizeof nothing);
  SetForegroundWindow(handle);
}

void Win32Desktop::Show(Window window, ShowCommand show) {
  const HWND handle = HandleOf(window);
  if (Responds(handle)) {
    ShowWindow(handle, static_cast<int>(show));
  } else {
    ShowWindowAsync(handle, static_cast<int>(show));
  }
}

void Win32Desktop::Send(Window window, std::uint32_t message, std::uintptr_t wParam,
                        std::intptr_t lParam) {
  Ask(HandleOf(window), message, wParam, lParam);
}

}  // namespace orvanto::win32
