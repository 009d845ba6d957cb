// A box to be ticked.
#pragma once

#include <functional>
#include <string_view>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class CheckBox : public Control {
 public:
  CheckBox(Form& form, const Control* container, std::string_view caption, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  bool Value() const { return value_; }
  void SetValue(bool value);

  std::function<void()> onClick;

  // user: ticks it, or takes the tick away
  bool Press();

 private:
  bool value_ = false;
};

}  // namespace orvanto::forms
