// Controls with a choice: a drop-down list, and the arrows beside a number.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/forms/Control.h"
#include "platform/forms/TextBox.h"

namespace orvanto::forms {

// A drop-down list. A plain one holds one of its items, or none; an editable one any text, with the
// items as suggestions. Text() is what is shown.
class ComboBox : public Control {
 public:
  struct Style {
    bool editable = false;
  };
  static constexpr int kNone = -1;

  ComboBox(Form& form, const Control* container, Style style, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  const Style& GetStyle() const { return style_; }
  const std::vector<std::string>& Items() const { return items_; }
  void SetItems(std::vector<std::string> items);  // clears the selection and the text
  // Position in Items(), from 0, or kNone; in an editable list, that of the text.
  int SelectedIndex() const;
  void Select(int index);  // out of range: kNone

  // Raised by the user's calls only.
  std::function<void()> onChange;

  // user
  bool Choose(int index);
  bool Type(const std::string& text);  // editable lists only

 private:
  Style style_;
  std::vector<std::string> items_;
  int selected_ = kNone;
};

// Two arrows that count the number in a text box up and down between two bounds.
class UpDown : public Control {
 public:
  UpDown(Form& form, const Control* container, TextBox& buddy, int least, int most, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  TextBox& Buddy() const { return buddy_; }

  // user: by +1 or -1; a text that is no number counts as the lower bound
  bool Step(int by);

 private:
  TextBox& buddy_;
  int least_;
  int most_;
};

}  // namespace orvanto::forms
