#include "platform/forms/Buttons.h"

#include "platform/forms/ControlVisitor.h"
#include "platform/forms/Form.h"

namespace orvanto::forms {

Button::Button(Form& form, const Control* container, std::string_view caption, Bounds bounds)
    : Control(form, container, caption, bounds) {}

void Button::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

OptionButton::OptionButton(Form& form, const Control* container, std::string_view caption,
                           Bounds bounds)
    : Control(form, container, caption, bounds) {}

void OptionButton::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

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
