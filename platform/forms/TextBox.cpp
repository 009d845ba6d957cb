#include "platform/forms/TextBox.h"

namespace orvanto::forms {

bool TextBox::Type(const std::string& text) {
  if (!Usable() || style_.readOnly) return false;
  SetText(text);
  Raise(onChange);
  return true;
}

bool TextBox::PressEnter() {
  if (!Usable() || !onEnter) return false;
  Raise(onEnter);
  return true;
}

}  // namespace orvanto::forms
