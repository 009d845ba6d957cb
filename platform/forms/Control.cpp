#include "platform/forms/Control.h"

#include "platform/forms/Form.h"

namespace orvanto::forms {

Control::Control(Form& form, const Control* container, std::string_view text, Bounds bounds)
    : text_(text), form_(form), container_(container), bounds_(bounds) {
  form.controls_.push_back(this);
}

Control::~Control() = default;

void Control::Changed(Property property) {
  if (form_.peer_) form_.peer_->ControlChanged(*this, property);
}

void Control::Raise(const std::function<void()>& event) const {
  // A copy: the handler may assign the event anew.
  if (auto handler = event) handler();
}

void Control::SetText(const std::string& text) {
  if (text == text_) return;
  text_ = text;
  Changed(Property::Text);
}

void Control::SetVisible(bool visible) {
  if (visible == visible_) return;
  visible_ = visible;
  Changed(Property::Visible);
}

void Control::SetEnabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  Changed(Property::Enabled);
}

void Control::SetBounds(const Bounds& bounds) {
  if (bounds == bounds_) return;
  bounds_ = bounds;
  Changed(Property::Bounds);
}

void Control::SetFocus() {
  form_.focus_ = this;
  form_.Changed(FormProperty::Focus);
}

bool Control::ShownToUser() const {
  for (const Control* control = this; control != nullptr; control = control->container_) {
    if (!control->visible_) return false;
  }
  return form_.Visible();
}

bool Control::Usable() const {
  for (const Control* control = this; control != nullptr; control = control->container_) {
    if (!control->enabled_) return false;
  }
  return ShownToUser();
}

}  // namespace orvanto::forms
