// What is pressed.
#pragma once

#include <functional>
#include <string_view>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class Button : public Control {
 public:
  Button(Form& form, const Control* container, std::string_view caption, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  std::function<void()> onClick;

  // user
  bool Press();
};

// Option buttons in one container exclude each other.
class OptionButton : public Control {
 public:
  OptionButton(Form& form, const Control* container, std::string_view caption, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;
  OptionButton* AsOption() override { return this; }

  bool Value() const { return value_; }
  void SetValue(bool value);  // true clears the others of the container

  std::function<void()> onClick;

  // user
  bool Choose();

 private:
  bool value_ = false;
};

}  // namespace orvanto::forms
