// Pages that lie on each other, one of them in sight, and the tabs that choose it.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class TabPage;

class TabStrip : public Control {
 public:
  TabStrip(Form& form, const Control* container, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  // The tabs have this much of the height, and the pages the rest.
  static constexpr int kTabHeight = 360;

  const std::vector<TabPage*>& Pages() const { return pages_; }
  int Selected() const { return selected_; }  // position in Pages(), from 0
  void Select(int page);                      // out of range: nothing changes

  // Raised by Choose where that brings another page.
  std::function<void()> onChange;

  // user
  bool Choose(int page);

 private:
  friend class TabPage;
  std::vector<TabPage*> pages_;
  int selected_ = 0;
};

// The container of what stands on it. The strip says whether it is visible. A member of the form
// after the strip; its caption is fixed once the form is loaded.
class TabPage : public Control {
 public:
  TabPage(Form& form, TabStrip& strip, std::string_view caption);
  void Accept(ControlVisitor& visitor) override;
};

}  // namespace orvanto::forms
