// From the forms' twips to pixels.
#pragma once

#include <windows.h>

#include "platform/forms/forms.h"
#include "platform/win32/Handle.h"

namespace orvanto::win32 {

inline constexpr int kTwipsPerInch = 1440;

inline int ToPixels(int twips, UINT dpi) {
  return MulDiv(twips, static_cast<int>(dpi), kTwipsPerInch);
}

inline int ToTwips(int pixels, UINT dpi) {
  return MulDiv(pixels, kTwipsPerInch, static_cast<int>(dpi));
}

// Of the main screen, which the forms' positions are meant for.
UINT MainScreenDpi();

// Of the main screen, without the task bar.
RECT MainWorkArea();

// The font of the system's message boxes.
Handle<HFONT, DeleteObject> MessageFont(UINT dpi);

// Of a form's window.
DWORD StyleOf(const forms::Form& form);
DWORD ExtendedStyleOf(const forms::Form& form);

// The outer size in pixels of a form's window with a client area of that size.
SIZE OuterSize(const forms::Form& form, forms::Size client, UINT dpi);

}  // namespace orvanto::win32
