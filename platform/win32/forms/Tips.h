// Tips that name the controls of a form which no label names.
#pragma once

#include <windows.h>

#include <string>

#include "platform/win32/Handle.h"

namespace orvanto::win32 {

// Without a tool yet, above the other windows; destroyed with its owner.
HWND NewTipWindow(HWND owner);

class Tips {
 public:
  // Shown while the mouse rests on a control of `form`.
  void Add(HWND form, HWND control, const std::wstring& text);

 private:
  Handle<HWND, DestroyWindow> window_;  // made when it is needed
};

}  // namespace orvanto::win32
