#include "platform/win32/forms/ControlWindow.h"

#include <algorithm>

#include "platform/forms/ControlVisitor.h"
#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Text.h"
#include "platform/win32/forms/ControlKinds.h"
#include "platform/win32/forms/Scale.h"

namespace orvanto::win32 {

using forms::Property;

std::string WindowText(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  text.resize(
      static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
  return ToUtf8(text);
}

// Edges are rounded rather than sizes, so that what touches keeps touching.
RECT PlaceOf(const forms::Control& control, UINT dpi) {
  const forms::Bounds& bounds = control.GetBounds();
  int left = bounds.left;
  int top = bounds.top;
  for (auto* frame = control.Container(); frame; frame = frame->Container()) {
    left += frame->GetBounds().left;
    top += frame->GetBounds().top;
  }
  return {ToPixels(left, dpi), ToPixels(top, dpi), ToPixels(left + bounds.width, dpi),
          ToPixels(top + bounds.height, dpi)};
}

DWORD StateOf(const forms::Control& control) {
  bool visible = true;
  bool enabled = true;
  for (const forms::Control* each = &control; each; each = each->Container()) {
    visible = visible && each->Visible();
    enabled = enabled && each->Enabled();
  }
  return (visible ? WS_VISIBLE : 0) | (enabled ? 0 : DWORD{WS_DISABLED});
}

// At once where it belongs: each later change would be a message to the system of its own.
ControlWindow::ControlWindow(forms::Control& control, const Look& look, HWND parent, int id)
    : control_(control) {
  const RECT place = PlaceOf(control, GetDpiForWindow(parent));
  window_ =
      CreateWindowExW(look.extendedStyle, look.windowClass, ToWide(control.Text()).c_str(),
                      WS_CHILD | look.style | StateOf(control), place.left, place.top,
                      place.right - place.left, place.bottom - place.top, parent,
                      reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ThisModule(), nullptr);
}

void ControlWindow::Mirror(Property property) {
  if (property == Property::Text) SetWindowTextIfOther(control_.Text());
}

void ControlWindow::Place(const RECT& place) {
  RECT now = {};
  GetWindowRect(window_, &now);
  MapWindowPoints(nullptr, GetParent(window_), reinterpret_cast<POINT*>(&now), 2);
  if (EqualRect(&now, &place)) return;
  SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left,
               place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void ControlWindow::SetWindowTextIfOther(const std::string& text) const {
  if (WindowText(window_) == text) return;
  std::wstring shown = ToWide(text);
  std::replace(shown.begin(), shown.end(), L'\0', L' ');  // or it would end there
  SetWindowTextW(window_, shown.c_str());
}

namespace {

class Maker : public forms::ControlVisitor {
 public:
  Maker(HWND parent, int id) : parent_(parent), id_(id) {}

  void Visit(forms::Button& button) override { made = MakeWindow(button, parent_, id_); }
  void Visit(forms::CheckBox& check) override { made = MakeWindow(check, parent_, id_); }
  void Visit(forms::ComboBox& combo) override { made = MakeWindow(combo, parent_, id_); }
  void Visit(forms::Frame& frame) override { made = MakeWindow(frame, parent_, id_); }
  void Visit(forms::Label& label) override { made = MakeWindow(label, parent_, id_); }
  void Visit(forms::Lamp& lamp) override { made = MakeWindow(lamp, parent_, id_); }
  void Visit(forms::ListBox& list) override { made = MakeWindow(list, parent_, id_); }
  void Visit(forms::OptionButton& option) override { made = MakeWindow(option, parent_, id_); }
  void Visit(forms::PictureBox& picture) override { made = MakeWindow(picture, parent_, id_); }
  void Visit(forms::TabPage& page) override { made = MakeWindow(page, parent_, id_); }
  void Visit(forms::TabStrip& tabs) override { made = MakeWindow(tabs, parent_, id_); }
  void Visit(forms::TextBox& box) override { made = MakeWindow(box, parent_, id_); }
  void Visit(forms::TreeView& tree) override { made = MakeWindow(tree, parent_, id_); }
  void Visit(forms::UpDown& upDown) override { made = MakeWindow(upDown, parent_, id_); }

  NewControlWindow made;

 private:
  HWND parent_;
  int id_;
};

}  // namespace

std::unique_ptr<ControlWindow> MakeControlWindow(forms::Control& control, HWND parent, int id) {
  Maker maker(parent, id);
  control.Accept(maker);
  return std::move(maker.made);
}

}  // namespace orvanto::win32
