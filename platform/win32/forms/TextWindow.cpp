#include <optional>

#include "platform/win32/forms/ControlKinds.h"
#include "platform/win32/forms/Subclass.h"
#include "platform/win32/forms/TextDrop.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

class TextWindow : public ControlWindow {
 public:
  TextWindow(forms::TextBox& box, HWND parent, int id)
      : ControlWindow(box, {WC_EDITW, WS_TABSTOP | Style(box), WS_EX_CLIENTEDGE}, parent, id),
        box_(box) {
    SendMessageW(window_, EM_SETLIMITTEXT, static_cast<WPARAM>(box.GetStyle().maxLength), 0);
    if (IsReading() || box.takesKey) {
      subclass_.emplace(window_, [this](UINT message, WPARAM wParam, LPARAM) {
        return OnMessage(message, wParam);
      });
    }
    if (box.onDrop) drop_ = std::make_unique<TextDrop>(window_);
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
    if (code == TextDrop::kDropped) box_.Drop(drop_->Take());
  }

  bool TakesEnter() const override { return box_.onEnter != nullptr; }
  bool IsField() const override { return true; }
  // It would cover what is being read.
  bool WantsTip() const override { return !box_.GetStyle().multiLine; }

 private:
  static DWORD Style(const forms::TextBox& box) {
    DWORD style = box.GetStyle().multiLine ? ES_MULTILINE | ES_AUTOVSCROLL | WS_VSCROLL
                                           : DWORD{ES_AUTOHSCROLL};
    if (box.GetStyle().readOnly) style |= ES_READONLY;
    if (box.GetStyle().password) style |= ES_PASSWORD;
    return style;
  }

  bool IsReading() const { return box_.GetStyle().multiLine && box_.GetStyle().readOnly; }

  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam) const {
    // A multi-line edit window wants every key for itself, and takes Esc for the end of a dialog:
    // Tab, Enter and Esc stay with the form when nothing can be typed.
    if (message == WM_GETDLGCODE && IsReading()) return DLGC_WANTARROWS;
    const bool typed = message == WM_CHAR && box_.takesKey;
    if (typed && !box_.takesKey(static_cast<char32_t>(wParam))) return 0;
    return std::nullopt;
  }

  void ScrollToEnd() const {
    if (!box_.GetStyle().multiLine || box_.GetStyle().fromTop) return;
    const auto end = static_cast<WPARAM>(GetWindowTextLengthW(window_));
    SendMessageW(window_, EM_SETSEL, end, static_cast<LPARAM>(end));
    SendMessageW(window_, EM_SCROLLCARET, 0, 0);
  }

  forms::TextBox& box_;
  std::optional<Subclass> subclass_;
  std::unique_ptr<TextDrop> drop_;
};

}  // namespace

NewControlWindow MakeWindow(forms::TextBox& box, HWND parent, int id) {
  return std::make_unique<TextWindow>(box, parent, id);
}

}  // namespace orvanto::win32
