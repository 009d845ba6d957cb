#include "platform/forms/Lists.h"

#include <algorithm>
#include <utility>

#include "platform/forms/ControlVisitor.h"
#include "platform/text/WholeNumber.h"

namespace orvanto::forms {

ComboBox::ComboBox(Form& form, const Control* container, Style style, Bounds bounds)
    : Control(form, container, {}, bounds), style_(style) {}

void ComboBox::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

UpDown::UpDown(Form& form, const Control* container, TextBox& buddy, int least, int most,
               Bounds bounds)
    : Control(form, container, {}, bounds), buddy_(buddy), least_(least), most_(most) {}

void UpDown::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

void ComboBox::SetItems(std::vector<std::string> items) {
  items_ = std::move(items);
  selected_ = kNone;
  text_.clear();
  Changed(Property::Items);
}

int ComboBox::SelectedIndex() const {
  if (!style_.editable) return selected_;
  const auto item = std::find(items_.begin(), items_.end(), text_);
  return item == items_.end() ? kNone : static_cast<int>(item - items_.begin());
}

void ComboBox::Select(int index) {
  const bool inside = index >= 0 && index < static_cast<int>(items_.size());
  selected_ = inside ? index : kNone;
  text_ = inside ? items_[static_cast<std::size_t>(index)] : "";
  Changed(Property::Selection);
}

bool ComboBox::Choose(int index) {
  if (!Usable() || index < 0 || index >= static_cast<int>(items_.size())) return false;
  Select(index);
  Raise(onChange);
  return true;
}

bool ComboBox::Type(const std::string& text) {
  if (!Usable() || !style_.editable) return false;
  SetText(text);
  Raise(onChange);
  return true;
}

bool UpDown::Step(int by) {
  if (!Usable()) return false;
  const int number = WholeNumber<int>(buddy_.Text()).value_or(least_ - by);
  return buddy_.Type(std::to_string(std::clamp(number + by, least_, most_)));
}

}  // namespace orvanto::forms
