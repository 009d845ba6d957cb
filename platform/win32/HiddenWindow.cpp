#include "platform/win32/HiddenWindow.h"

#include <cstdio>
#include <exception>
#include <string>
#include <system_error>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace orvanto::win32 {

void ReportException(const char* where) noexcept {
  const char* what = "unknown exception";
  std::exception_ptr current = std::current_exception();
  try {
    if (current) std::rethrow_exception(current);
  } catch (const std::exception& exception) {
    what = exception.what();
  } catch (...) {
  }
  std::fprintf(stderr, "orvanto: %s: %s\n", where, what);
  std::fflush(stderr);
  OutputDebugStringA(what);
}

HINSTANCE ThisModule() { return reinterpret_cast<HINSTANCE>(&__ImageBase); }

HWND HiddenWindow::Get() {
  if (window_) return window_.Get();
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = Procedure;
  windowClass.hInstance = ThisModule();
  windowClass.lpszClassName = className_;
  RegisterClassExW(&windowClass);  // fails harmlessly when it is registered already
  window_.Reset(CreateWindowExW(WS_EX_TOOLWINDOW, className_, L"", WS_POPUP, 0, 0, 0, 0, nullptr,
                                nullptr, ThisModule(), nullptr));
  if (!window_) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                            "CreateWindowEx");
  }
  SetWindowLongPtrW(window_.Get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  return window_.Get();
}

LRESULT CALLBACK HiddenWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<HiddenWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  try {
    if (self != nullptr) {
      if (const auto answer = self->handler_(message, wParam, lParam)) return *answer;
    }
  } catch (...) {
    ReportException("window procedure");
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace orvanto::win32
