#include "platform/forms/ListBox.h"

#include <utility>

#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

ListBox::ListBox(Form& form, const Control* container, Bounds bounds)
    : Control(form, container, {}, bounds) {}

void ListBox::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

void ListBox::SetItems(std::vector<std::string> items) {
  items_ = std::move(items);
  selected_ = kNone;
  Changed(Property::Items);
}

void ListBox::Add(std::string item) {
  items_.push_back(std::move(item));
  Changed(Property::LastItem);
}

void ListBox::Select(int index) {
  selected_ = IsItem(index) ? index : kNone;
  Changed(Property::Selection);
}

bool ListBox::Choose(int index) {
  if (!Usable() || !IsItem(index)) return false;
  Select(index);
  Raise(onChange);
  return true;
}

bool ListBox::PressEnter() {
  if (!Usable() || !onEnter || selected_ == kNone) return false;
  Raise(onEnter);
  return true;
}

}  // namespace orvanto::forms
