#include "platform/win32/forms/ControlKinds.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

class ButtonWindow : public ControlWindow {
 public:
  ButtonWindow(forms::Button& button, HWND parent, int id)
      : ControlWindow(button, {WC_BUTTONW, WS_TABSTOP | DWORD{Style(button)}}, parent, id),
        button_(button) {}

  void ShowAsDefault(bool isDefault) override {
    SendMessageW(window_, BM_SETSTYLE, isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON, TRUE);
  }

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

}  // namespace

NewControlWindow MakeWindow(forms::Button& button, HWND parent, int id) {
  return std::make_unique<ButtonWindow>(button, parent, id);
}

NewControlWindow MakeWindow(forms::OptionButton& option, HWND parent, int id) {
  return std::make_unique<OptionWindow>(option, parent, id);
}

}  // namespace orvanto::win32
