#include "platform/win32/forms/ControlWindow.h"

#include <algorithm>
#include <string>

#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Text.h"
#include "platform/win32/forms/ListWindows.h"
#include "platform/win32/forms/TreeWindow.h"

namespace orvanto::win32 {

using forms::Property;

std::string WindowText(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(
      static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return ToUtf8(text);
}

ControlWindow::ControlWindow(forms::Control& control, const Look& look, HWND parent, int id)
    : window_(CreateWindowExW(look.extendedStyle, look.windowClass, ToWide(control.Text()).c_str(),
                              WS_CHILD | look.style, 0, 0, 0, 0, parent,
                              reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ThisModule(),
                              nullptr)),
      control_(control) {}

void ControlWindow::Mirror(Property property) {
  if (property == Property::Text) SetWindowTextIfOther(control_.Text());
}

void ControlWindow::Place(const RECT& place) {
  SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
               place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void ControlWindow::SetWindowTextIfOther(const std::string& text) const {
  if (WindowText(window_) == text) return;
  std::wstring shown = ToWide(text);
  std::replace(shown.begin(), shown.end(), L'\0', L' ');  // or it would end there
  SetWindowTextW(window_, shown.c_str());
  // A frame paints its caption into a gap of its line, whose width belongs to the text before.
  if (control_.GetKind() == forms::Kind::Frame) {
    RECT place;
    GetWindowRect(window_, &place);
    MapWindowPoints(nullptr, GetParent(window_), reinterpret_cast<POINT*>(&place), 2);
    RedrawWindow(GetParent(window_), &place, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
  }
}

namespace {

class ButtonWindow : public ControlWindow {
 public:
  ButtonWindow(forms::Button& button, HWND parent, int id)
      : ControlWindow(button, {WC_BUTTONW, WS_TABSTOP | DWORD{Style(button)}}, parent, id),
        button_(button) {}

  void OnCommand(WORD code) override {
    if (code == BN_CLICKED) button_.Press();
  }

 private:
  static DWORD Style(const forms::Button& button) {
    return button.Owner().defaultButton == &button ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
  }

  forms::Button& button_;
};

class OptionWindow : public ControlWindow {
 public:
  OptionWindow(forms::OptionButton& option, HWND parent, int id)
      : ControlWindow(option, {WC_BUTTONW, BS_AUTORADIOBUTTON}, parent, id), option_(option) {
    Mirror(Property::Value);
  }

  void Mirror(Property property) override {
    if (property != Property::Value) return ControlWindow::Mirror(property);
    const WPARAM state = option_.Value() ? BST_CHECKED : BST_UNCHECKED;
    if (SendMessageW(window_, BM_GETCHECK, 0, 0) == static_cast<LRESULT>(state)) return;
    SendMessageW(window_, BM_SETCHECK, state, 0);
  }

  // Also sent when the focus merely comes to the one that is chosen.
  void OnCommand(WORD code) override {
    if (code == BN_CLICKED && !option_.Value()) option_.Choose();
  }

 private:
  forms::OptionButton& option_;
};

// A multi-line edit window wants every key for itself, and takes Esc for the end of a dialog: here
// Tab, Enter and Esc stay with the form when nothing can be typed.
LRESULT CALLBACK ReadOnlyTextProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                       UINT_PTR id, DWORD_PTR) {
  if (message == WM_GETDLGCODE) return DLGC_WANTARROWS;
  if (message == WM_NCDESTROY) RemoveWindowSubclass(window, ReadOnlyTextProcedure, id);
  return DefSubclassProc(window, message, wParam, lParam);
}

class TextWindow : public ControlWindow {
 public:
  TextWindow(forms::TextBox& box, HWND parent, int id)
      : ControlWindow(box, {WC_EDITW, WS_TABSTOP | Style(box), WS_EX_CLIENTEDGE}, parent, id),
        box_(box) {
    SendMessageW(window_, EM_SETLIMITTEXT, static_cast<WPARAM>(box.GetStyle().maxLength), 0);
    if (box.GetStyle().multiLine && box.GetStyle().readOnly) {
      SetWindowSubclass(window_, ReadOnlyTextProcedure, 0, 0);
    }
    ScrollToEnd();
  }

  void Mirror(Property property) override {
    ControlWindow::Mirror(property);
    if (property == Property::Text) ScrollToEnd();
  }

  void Rescale(UINT) override { ScrollToEnd(); }

  void OnCommand(WORD code) override {
    if (code == EN_CHANGE) box_.Type(WindowText(window_));
    if (code == BN_CLICKED) box_.PressEnter();
  }

  bool TakesEnter() const override { return box_.onEnter != nullptr; }

 private:
  static DWORD Style(const forms::TextBox& box) {
    DWORD style = box.GetStyle().multiLine ? ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL
                                           : DWORD{ES_AUTOHSCROLL};
    if (box.GetStyle().readOnly) style |= ES_READONLY;
    return style;
  }

  void ScrollToEnd() const {
    if (!box_.GetStyle().multiLine || box_.GetStyle().fromTop) return;
    const auto end = static_cast<WPARAM>(GetWindowTextLengthW(window_));
    SendMessageW(window_, EM_SETSEL, end, static_cast<LPARAM>(end));
    SendMessageW(window_, EM_SCROLLCARET, 0, 0);
  }

  forms::TextBox& box_;
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
    const Handle<HDC, DeleteDC> memory(CreateCompatibleDC(draw.hDC));
    const Handle<HBITMAP, DeleteObject> bitmap(
        CreateCompatibleBitmap(draw.hDC, all.right, all.bottom));
    const Handle<HBRUSH, DeleteObject> fill(CreateSolidBrush(SystemColour()));
    const Handle<HPEN, DeleteObject> edge(CreatePen(PS_INSIDEFRAME, kLarger, EdgeColour()));
    const HGDIOBJ oldBitmap = SelectObject(memory.Get(), bitmap.Get());
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
    SelectObject(memory.Get(), oldBitmap);
  }

 private:
  static bool HighContrast() {
    HIGHCONTRASTW contrast = {};
    contrast.cbSize = sizeof contrast;
    return SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof contrast, &contrast, 0) &&
           (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
  }

  static COLORREF EdgeColour() {
    return GetSysColor(HighContrast() ? COLOR_BTNTEXT : COLOR_BTNSHADOW);
  }

  // The system spells a colour with red in the low byte.
  COLORREF SystemColour() const {
    if (HighContrast()) {
      return GetSysColor(lamp_.Colour() == forms::Lamp::kLit ? COLOR_HIGHLIGHT : COLOR_BTNFACE);
    }
    const std::uint32_t colour = lamp_.Colour();
    return RGB((colour >> 16) & 0xFF, (colour >> 8) & 0xFF, colour & 0xFF);
  }

  forms::Lamp& lamp_;
};

}  // namespace

std::unique_ptr<ControlWindow> MakeControlWindow(forms::Control& control, HWND parent, int id) {
  using forms::Kind;
  switch (control.GetKind()) {
    case Kind::Label: {
      const bool breaksWords = static_cast<forms::Label&>(control).breaksWords;
      const DWORD style = SS_LEFT | SS_NOPREFIX | (breaksWords ? DWORD{SS_EDITCONTROL} : 0);
      return std::make_unique<ControlWindow>(control, ControlWindow::Look{WC_STATICW, style},
                                             parent, id);
    }
    case Kind::Frame:
      return std::make_unique<ControlWindow>(
          control, ControlWindow::Look{WC_BUTTONW, BS_GROUPBOX, WS_EX_TRANSPARENT}, parent, id);
    case Kind::Button:
      return std::make_unique<ButtonWindow>(static_cast<forms::Button&>(control), parent, id);
    case Kind::OptionButton:
      return std::make_unique<OptionWindow>(static_cast<forms::OptionButton&>(control), parent, id);
    case Kind::TextBox:
      return std::make_unique<TextWindow>(static_cast<forms::TextBox&>(control), parent, id);
    case Kind::ComboBox:
      return std::make_unique<ComboWindow>(static_cast<forms::ComboBox&>(control), parent, id);
    case Kind::UpDown:
      return std::make_unique<UpDownWindow>(static_cast<forms::UpDown&>(control), parent, id);
    case Kind::Lamp:
      return std::make_unique<LampWindow>(static_cast<forms::Lamp&>(control), parent, id);
    case Kind::TreeView:
      return std::make_unique<TreeWindow>(static_cast<forms::TreeView&>(control), parent, id);
  }
  return nullptr;
}

}  // namespace orvanto::win32
