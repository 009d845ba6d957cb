#include <windows.h>

#include <uxtheme.h>
#include <vsstyle.h>

#include "platform/win32/Text.h"
#include "platform/win32/forms/ControlKinds.h"
#include "platform/win32/forms/Painting.h"
#include "platform/win32/forms/Scale.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

// What the page of a tab is coloured in, beside which the colour of a form looks like a patch.
COLORREF PageColour(HWND tabs) {
  const Handle<HTHEME, CloseThemeData> theme(OpenThemeData(tabs, L"TAB"));
  if (!theme) return GetSysColor(COLOR_BTNFACE);
  constexpr int kSide = 16;
  const RECT all = {0, 0, kSide, kSide};
  const HDC screen = GetDC(tabs);
  const Canvas canvas(screen, kSide, kSide);
  ReleaseDC(tabs, screen);
  FillRect(canvas.Get(), &all, GetSysColorBrush(COLOR_BTNFACE));
  DrawThemeBackground(theme.Get(), canvas.Get(), TABP_BODY, 0, &all, nullptr);
  return GetPixel(canvas.Get(), kSide / 2, kSide / 2);
}

// The tabs and the border of the page. What stands on the page are windows beside this one, so its
// region has a hole there, in which the form paints the ground.
class TabWindow : public ControlWindow {
 public:
  TabWindow(forms::TabStrip& tabs, HWND parent, int id)
      : ControlWindow(tabs, {WC_TABCONTROLW, WS_TABSTOP | WS_CLIPSIBLINGS}, parent, id),
        tabs_(tabs) {
    int index = 0;
    for (const forms::TabPage* page : tabs.Pages()) {
      std::wstring caption = ToWide(page->Text());
      TCITEMW item = {};
      item.mask = TCIF_TEXT;
      item.pszText = caption.data();
      SendMessageW(window_, TCM_INSERTITEMW, static_cast<WPARAM>(index++),
                   reinterpret_cast<LPARAM>(&item));
    }
    Mirror(Property::Selection);
  }

  void Mirror(Property property) override {
    if (property == Property::Selection) TabCtrl_SetCurSel(window_, tabs_.Selected());
  }

  void Place(const RECT& place) override {
    ControlWindow::Place(place);
    CutHole();
  }

  void Rescale(UINT dpi) override {
    TabCtrl_SetPadding(window_, ToPixels(90, dpi), ToPixels(45, dpi));
    // Only a font makes it lay its tabs out anew.
    SendMessageW(window_, WM_SETFONT, static_cast<WPARAM>(SendMessageW(window_, WM_GETFONT, 0, 0)),
                 0);
    brush_.Reset(CreateSolidBrush(PageColour(window_)));
    CutHole();
  }

  LRESULT OnNotify(const NMHDR& header, bool person) override {
    if (header.code == static_cast<UINT>(TCN_SELCHANGE) && person) {
      tabs_.Choose(TabCtrl_GetCurSel(window_));
    }
    return 0;
  }

  Ground GetGround() const override { return {hole_, brush_.Get()}; }

 private:
  void CutHole() {
    RECT all = {};
    GetClientRect(window_, &all);
    hole_ = all;
    TabCtrl_AdjustRect(window_, FALSE, &hole_);
    const HRGN rest = CreateRectRgnIndirect(&all);
    const Handle<HRGN, DeleteObject> hole(CreateRectRgnIndirect(&hole_));
    CombineRgn(rest, rest, hole.Get(), RGN_DIFF);
    SetWindowRgn(window_, rest, TRUE);  // the system's from here on
    MapWindowPoints(window_, GetParent(window_), reinterpret_cast<POINT*>(&hole_), 2);
  }

  forms::TabStrip& tabs_;
  RECT hole_ = {};
  Handle<HBRUSH, DeleteObject> brush_;
};

// A page has nothing to show of its own: a window of no size.
class PageWindow : public ControlWindow {
 public:
  PageWindow(forms::TabPage& page, HWND parent, int id)
      : ControlWindow(page, {WC_STATICW, 0}, parent, id) {
    SetWindowTextW(window_, L"");  // or a screen reader takes it for the name of what comes next
  }
  void Mirror(Property) override {}
  void Place(const RECT&) override {}
};

}  // namespace

NewControlWindow MakeWindow(forms::TabStrip& tabs, HWND parent, int id) {
  return std::make_unique<TabWindow>(tabs, parent, id);
}

NewControlWindow MakeWindow(forms::TabPage& page, HWND parent, int id) {
  return std::make_unique<PageWindow>(page, parent, id);
}

}  // namespace orvanto::win32
