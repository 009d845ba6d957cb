// A list of lines, one of which may be selected.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class ListBox : public Control {
 public:
  static constexpr int kNone = -1;

  ListBox(Form& form, const Control* container, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  const std::vector<std::string>& Items() const { return items_; }
  void SetItems(std::vector<std::string> items);   // clears the selection
  void Add(std::string item);                      // at the end
  int SelectedIndex() const { return selected_; }  // position in Items(), from 0, or kNone
  void Select(int index);                          // out of range: kNone

  // A log: what is added comes into sight, unless a person has scrolled back to read.
  bool followsEnd = false;

  // Raised by Choose, not by Select.
  std::function<void()> onChange;
  // The selected line was double-clicked, or the Enter key pressed on it. Without it, or without a
  // selected line, Enter presses the form's default button.
  std::function<void()> onEnter;

  // user
  bool Choose(int index);
  bool PressEnter();

 private:
  bool IsItem(int index) const { return index >= 0 && index < static_cast<int>(items_.size()); }

  std::vector<std::string> items_;
  int selected_ = kNone;
};

}  // namespace orvanto::forms
