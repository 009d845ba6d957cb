#include "platform/win32/forms/Tips.h"

#include <commctrl.h>

namespace orvanto::win32 {

HWND NewTipWindow(HWND owner) {
  return CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                         WS_POPUP | TTS_NOPREFIX | TTS_ALWAYSTIP, 0, 0, 0, 0, owner, nullptr,
                         nullptr, nullptr);
}

void Tips::Add(HWND form, HWND control, const std::wstring& text) {
  if (!window_) window_.Reset(NewTipWindow(form));
  std::wstring shown = text;
  TTTOOLINFOW tool = {};
  tool.cbSize = sizeof tool;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
  tool.hwnd = form;
  tool.uId = reinterpret_cast<UINT_PTR>(control);
  tool.lpszText = shown.data();
  SendMessageW(window_.Get(), TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace orvanto::win32
