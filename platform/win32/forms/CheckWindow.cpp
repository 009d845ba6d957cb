#include "platform/win32/forms/ControlKinds.h"

namespace orvanto::win32 {

using forms::Property;

namespace {

class CheckWindow : public ControlWindow {
 public:
  CheckWindow(forms::CheckBox& check, HWND parent, int id)
      : ControlWindow(check, {WC_BUTTONW, WS_TABSTOP | BS_CHECKBOX}, parent, id), check_(check) {
    Mirror(Property::Value);
  }

  void Mirror(Property property) override {
    if (property != Property::Value) return ControlWindow::Mirror(property);
    SendMessageW(window_, BM_SETCHECK, check_.Value() ? BST_CHECKED : BST_UNCHECKED, 0);
  }

  void OnCommand(WORD code) override {
    if (code == BN_CLICKED) check_.Press();
  }

 private:
  forms::CheckBox& check_;
};

}  // namespace

NewControlWindow MakeWindow(forms::CheckBox& check, HWND parent, int id) {
  return std::make_unique<CheckWindow>(check, parent, id);
}

}  // namespace orvanto::win32
