#include "platform/forms/Tabs.h"

#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

TabStrip::TabStrip(Form& form, const Control* container, Bounds bounds)
    : Control(form, container, {}, bounds) {}

void TabStrip::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

void TabStrip::Select(int page) {
  if (page < 0 || page >= static_cast<int>(pages_.size()) || page == selected_) return;
  pages_[static_cast<std::size_t>(selected_)]->SetVisible(false);
  selected_ = page;
  pages_[static_cast<std::size_t>(selected_)]->SetVisible(true);
  Changed(Property::Selection);
}

bool TabStrip::Choose(int page) {
  if (!Usable() || page < 0 || page >= static_cast<int>(pages_.size())) return false;
  if (page == selected_) return true;
  Select(page);
  Raise(onChange);
  return true;
}

TabPage::TabPage(Form& form, TabStrip& strip, std::string_view caption)
    : Control(form, &strip, caption,
              {0, TabStrip::kTabHeight, strip.GetBounds().width,
               strip.GetBounds().height - TabStrip::kTabHeight}) {
  SetVisible(strip.pages_.empty());
  strip.pages_.push_back(this);
}

void TabPage::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

}  // namespace orvanto::forms
