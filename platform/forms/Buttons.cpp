#include "platform/forms/Buttons.h"

#include "platform/forms/Form.h"

namespace orvanto::forms {

bool Button::Press() {
  if (!Usable()) return false;
  Raise(onClick);
  return true;
}

void OptionButton::SetValue(bool value) {
  if (value == value_) return;
  value_ = value;
  Changed(Property::Value);
  if (!value) return;
  for (Control* control : Owner().Controls()) {
    OptionButton* option = control->AsOption();
    if (option == nullptr || option == this || option->Container() != Container()) continue;
    option->SetValue(false);
  }
}

bool OptionButton::Choose() {
  if (!Usable()) return false;
  SetValue(true);
  Raise(onClick);
  return true;
}

}  // namespace orvanto::forms
