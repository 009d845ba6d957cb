// Where the window of a form stands, and how large it is.
#include <shellscalingapi.h>

#include <algorithm>
#include <utility>

#include "platform/win32/forms/FormWindow.h"
#include "platform/win32/forms/Scale.h"

namespace orvanto::win32 {
namespace {

MONITORINFO ScreenOf(HWND window) {
  MONITORINFO screen = {};
  screen.cbSize = sizeof screen;
  GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &screen);
  return screen;
}

}  // namespace

DWORD StyleOf(const forms::Form& form) {
  return WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | (form.minimizeButton ? WS_MINIMIZEBOX : 0) |
         (form.resizable ? WS_THICKFRAME | WS_MAXIMIZEBOX : 0);
}

DWORD ExtendedStyleOf(const forms::Form& form) {
  return form.minimizeButton ? 0 : DWORD{WS_EX_DLGMODALFRAME};
}

RECT MainWorkArea() {
  RECT area = {};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
  return area;
}

UINT MainScreenDpi() {
  UINT x = USER_DEFAULT_SCREEN_DPI;
  UINT y = USER_DEFAULT_SCREEN_DPI;
  GetDpiForMonitor(MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY), MDT_EFFECTIVE_DPI, &x, &y);
  return x;
}

SIZE OuterSize(const forms::Form& form, forms::Size client, UINT dpi) {
  RECT outer = {0, 0, ToPixels(client.width, dpi), ToPixels(client.height, dpi)};
  AdjustWindowRectExForDpi(&outer, StyleOf(form), !form.MenuBar().empty(), ExtendedStyleOf(form),
                           dpi);
  return {outer.right - outer.left, outer.bottom - outer.top};
}

// What the form asks for, by the main screen's resolution: the window may be on another screen yet,
// where the program was started from.
POINT FormWindow::Corner() const {
  const RECT area = MainWorkArea();
  const UINT dpi = MainScreenDpi();
  return {area.left + ToPixels(form_->Left(), dpi), area.top + ToPixels(form_->Top(), dpi)};
}

void FormWindow::MoveToPosition() const {
  const POINT corner = Corner();
  RECT place = {};
  GetWindowRect(window_, &place);
  if (corner.x != place.left || corner.y != place.top) {
    SetWindowPos(window_, nullptr, corner.x, corner.y, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
  KeepOnScreen();
}

// Wholly, where it fits; else its upper left corner.
void FormWindow::KeepOnScreen() const {
  if (IsIconic(window_) || IsZoomed(window_)) return;
  RECT place = {};
  GetWindowRect(window_, &place);
  const MONITORINFO screen = ScreenOf(window_);
  RECT work = {};
  // The task bar may not have followed the screen yet.
  IntersectRect(&work, &screen.rcWork, &screen.rcMonitor);
  LONG width = place.right - place.left;
  LONG height = place.bottom - place.top;
  if (form_->resizable) {
    const SIZE least = OuterSize(*form_, form_->LeastSize(), dpi_);
    width = std::min(width, std::max(least.cx, work.right - work.left));
    height = std::min(height, std::max(least.cy, work.bottom - work.top));
  }
  const LONG left = std::max(work.left, std::min(place.left, work.right - width));
  const LONG top = std::max(work.top, std::min(place.top, work.bottom - height));
  const RECT wanted = {left, top, left + width, top + height};
  if (EqualRect(&place, &wanted)) return;
  SetWindowPos(window_, nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

forms::Bounds FormWindow::Place() const {
  WINDOWPLACEMENT placement = {};
  placement.length = sizeof placement;
  GetWindowPlacement(window_, &placement);
  RECT place = placement.rcNormalPosition;
  // It is told as if no task bar took room on its screen.
  const MONITORINFO screen = ScreenOf(window_);
  const RECT main = MainWorkArea();
  OffsetRect(&place, screen.rcWork.left - screen.rcMonitor.left - main.left,
             screen.rcWork.top - screen.rcMonitor.top - main.top);
  const UINT dpi = MainScreenDpi();
  const SIZE frame = OuterSize(*form_, {}, dpi_);
  return {ToTwips(place.left, dpi), ToTwips(place.top, dpi),
          ToTwips(place.right - place.left - frame.cx, dpi_),
          ToTwips(place.bottom - place.top - frame.cy, dpi_)};
}

void FormWindow::OnSize(WPARAM how) {
  if (how == SIZE_MINIMIZED) {
    minimized_ = true;
    return;
  }
  // The screen may have changed meanwhile.
  if (std::exchange(minimized_, false)) KeepOnScreen();
  RECT client = {};
  GetClientRect(window_, &client);
  const forms::Size known = form_->ClientSize();
  if (client.right == ToPixels(known.width, dpi_) &&
      client.bottom == ToPixels(known.height, dpi_)) {
    return;
  }
  form_->Resize({ToTwips(client.right, dpi_), ToTwips(client.bottom, dpi_)});
}

}  // namespace orvanto::win32
