#include "platform/forms/Labels.h"

namespace orvanto::forms {

void Lamp::SetLit(bool lit) {
  const std::uint32_t colour = lit ? kLit : kDark;
  if (colour == colour_) return;
  colour_ = colour;
  Changed(Property::Value);
}

}  // namespace orvanto::forms
