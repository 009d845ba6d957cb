#include "platform/forms/Menu.h"

#include <utility>

#include "platform/forms/Control.h"
#include "platform/forms/Form.h"

namespace orvanto::forms {

MenuItem::MenuItem(Form& form, std::string caption) : form_(form), caption_(std::move(caption)) {
  form.menuBar_.push_back(this);
}

MenuItem::MenuItem(MenuItem& parent, std::string caption)
    : form_(parent.form_), parent_(&parent), caption_(std::move(caption)) {
  parent.items_.push_back(this);
}

MenuItem::MenuItem(Control& control) : form_(control.Owner()) { control.contextMenu = this; }

void MenuItem::SetEnabled(bool enabled) {
  if (enabled == enabled_) return;
  enabled_ = enabled;
  if (form_.peer_) form_.peer_->MenuChanged(*this);
}

void MenuItem::SetChecked(bool checked) {
  if (checked == checked_) return;
  checked_ = checked;
  if (form_.peer_) form_.peer_->MenuChanged(*this);
}

bool MenuItem::Choose() {
  if (!form_.Visible() || !items_.empty() || IsSeparator()) return false;
  for (const MenuItem* item = this; item != nullptr; item = item->parent_) {
    if (!item->enabled_) return false;
  }
  if (auto handler = onClick) handler();
  return true;
}

}  // namespace orvanto::forms
