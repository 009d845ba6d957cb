// The menu bar of a form, and the menus of its controls: items in items. The items are members of
// the form.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvanto::forms {

class Control;
class Form;

class MenuItem {
 public:
  // At the end of the form's menu bar, or of another item's sub-menu. The caption "-" makes a
  // separator. A caption may carry '&' before its mnemonic.
  MenuItem(Form& form, std::string caption);
  MenuItem(MenuItem& parent, std::string caption);
  // The root of the menu that the right mouse button opens on the control.
  explicit MenuItem(Control& control);
  MenuItem(const MenuItem&) = delete;
  MenuItem& operator=(const MenuItem&) = delete;

  const std::string& Caption() const { return caption_; }
  bool IsSeparator() const { return caption_ == "-"; }
  const std::vector<MenuItem*>& Items() const { return items_; }
  bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled);
  bool Checked() const { return checked_; }
  void SetChecked(bool checked);

  std::function<void()> onClick;

  // user: false where the item or one above it is disabled, it only opens a sub-menu, or its form
  // is not shown
  bool Choose();

 private:
  Form& form_;
  MenuItem* parent_ = nullptr;
  std::string caption_;
  std::vector<MenuItem*> items_;
  bool enabled_ = true;
  bool checked_ = false;
};

}  // namespace orvanto::forms
