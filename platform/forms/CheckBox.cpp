#include "platform/forms/CheckBox.h"

#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

CheckBox::CheckBox(Form& form, const Control* container, std::string_view caption, Bounds bounds)
    : Control(form, container, caption, bounds) {}

void CheckBox::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

void CheckBox::SetValue(bool value) {
  if (value == value_) return;
  value_ = value;
  Changed(Property::Value);
}

bool CheckBox::Press() {
  if (!Usable()) return false;
  SetValue(!value_);
  Raise(onClick);
  return true;
}

}  // namespace orvanto::forms
