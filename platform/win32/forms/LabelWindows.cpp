#include <algorithm>

#include "platform/win32/forms/ControlKinds.h"
#include "platform/win32/forms/Painting.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

class FrameWindow : public ControlWindow {
 public:
  FrameWindow(forms::Frame& frame, HWND parent, int id)
      : ControlWindow(frame, {WC_BUTTONW, BS_GROUPBOX, WS_EX_TRANSPARENT}, parent, id) {
    MirrorText();
  }

  void Mirror(Property property) override {
    if (property != Property::Text) return;
    MirrorText();
    // It paints its caption into a gap of its line, whose width belongs to the text before.
    RECT place;
    GetWindowRect(window_, &place);
    MapWindowPoints(nullptr, GetParent(window_), reinterpret_cast<POINT*>(&place), 2);
    RedrawWindow(GetParent(window_), &place, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
  }

 private:
  // A theme may measure the gap for another font than the caption's, and cut what is beyond it.
  void MirrorText() const {
    const std::string& caption = GetControl().Text();
    SetWindowTextIfOther(caption.empty() ? caption : caption + "  ");
  }
};

class LampWindow : public ControlWindow {
 public:
  LampWindow(forms::Lamp& lamp, HWND parent, int id)
      : ControlWindow(lamp, {WC_STATICW, SS_OWNERDRAW}, parent, id), lamp_(lamp) {
    Mirror(Property::Value);
  }

  void Mirror(Property property) override {
    if (property != Property::Value) return;
    // Never drawn: this is what a screen reader says.
    SetWindowTextW(window_, lamp_.Colour() == forms::Lamp::kLit ? L"on" : L"off");
    InvalidateRect(window_, nullptr, FALSE);
  }

  // GDI draws no smooth circles: drawn large, then shrunk.
  void OnDraw(const DRAWITEMSTRUCT& draw) const override {
    constexpr int kLarger = 4;
    const int width = draw.rcItem.right - draw.rcItem.left;
    const int height = draw.rcItem.bottom - draw.rcItem.top;
    const int side = std::min(width, height) * kLarger;
    const RECT all = {0, 0, width * kLarger, height * kLarger};
    const Canvas memory(draw.hDC, all.right, all.bottom);
    const Handle<HBRUSH, DeleteObject> fill(CreateSolidBrush(SystemColour()));
    const Handle<HPEN, DeleteObject> edge(CreatePen(PS_INSIDEFRAME, kLarger, EdgeColour()));
    const HGDIOBJ oldBrush = SelectObject(memory.Get(), fill.Get());
    const HGDIOBJ oldPen = SelectObject(memory.Get(), edge.Get());
    FillRect(memory.Get(), &all, GetSysColorBrush(COLOR_BTNFACE));
    const int left = (all.right - side) / 2;
    const int top = (all.bottom - side) / 2;
    Ellipse(memory.Get(), left, top, left + side, top + side);
    SetStretchBltMode(draw.hDC, HALFTONE);
    SetBrushOrgEx(draw.hDC, 0, 0, nullptr);
    StretchBlt(draw.hDC, draw.rcItem.left, draw.rcItem.top, width, height, memory.Get(), 0, 0,
               all.right, all.bottom, SRCCOPY);
    SelectObject(memory.Get(), oldPen);
    SelectObject(memory.Get(), oldBrush);
  }

 private:
  COLORREF SystemColour() const {
    if (HighContrast()) {
      return GetSysColor(lamp_.Colour() == forms::Lamp::kLit ? COLOR_HIGHLIGHT : COLOR_BTNFACE);
    }
    return ToColour(lamp_.Colour());
  }

  forms::Lamp& lamp_;
};

}  // namespace

NewControlWindow MakeWindow(forms::Label& label, HWND parent, int id) {
  const DWORD style = SS_LEFT | SS_NOPREFIX | (label.breaksWords ? DWORD{SS_EDITCONTROL} : 0);
  return std::make_unique<ControlWindow>(label, ControlWindow::Look{WC_STATICW, style}, parent, id);
}

NewControlWindow MakeWindow(forms::Frame& frame, HWND parent, int id) {
  return std::make_unique<FrameWindow>(frame, parent, id);
}

NewControlWindow MakeWindow(forms::Lamp& lamp, HWND parent, int id) {
  return std::make_unique<LampWindow>(lamp, parent, id);
}

}  // namespace orvanto::win32
