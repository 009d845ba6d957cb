#include "platform/win32/forms/Subclass.h"

#include <utility>

#include "platform/win32/HiddenWindow.h"

namespace orvanto::win32 {

Subclass::Subclass(HWND window, Handler handler)
    : hook_(std::make_shared<Hook>(
          Hook{reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC)),
               std::move(handler)})) {
  SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(new SharedHook(hook_)));
  SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure));
}

Subclass::~Subclass() { hook_->over = true; }

LRESULT CALLBACK Subclass::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* const share = reinterpret_cast<SharedHook*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  const SharedHook hook = *share;
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(hook->its));
    delete share;
  } else if (!hook->over) {
    try {
      if (const auto answer = hook->handler(message, wParam, lParam)) return *answer;
    } catch (...) {
      ReportException("control");
      return 0;
    }
  }
  return CallWindowProcW(hook->its, window, message, wParam, lParam);
}

}  // namespace orvanto::win32
