#include "platform/forms/Labels.h"

#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

Label::Label(Form& form, const Control* container, std::string_view caption, Bounds bounds)
    : Control(form, container, caption, bounds) {}

void Label::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

Frame::Frame(Form& form, const Control* container, std::string_view caption, Bounds bounds)
    : Control(form, container, caption, bounds) {}

void Frame::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

Lamp::Lamp(Form& form, const Control* container, Bounds bounds)
    : Control(form, container, {}, bounds) {}

void Lamp::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

void Lamp::SetLit(bool lit) {
  const std::uint32_t colour = lit ? kLit : kDark;
  if (colour == colour_) return;
  colour_ = colour;
  Changed(Property::Value);
}

}  // namespace orvanto::forms
