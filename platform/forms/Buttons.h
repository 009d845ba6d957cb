// What is pressed.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/forms/Control.h"
#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

class Button : public Control {
 public:
  Button(Form& form, const Control* container, std::string caption, Bounds bounds)
      : Control(form, container, std::move(caption), bounds) {}
  void Accept(ControlVisitor& visitor) override { visitor.Visit(*this); }

  std::function<void()> onClick;

  // user
  bool Press();
};

// Option buttons in one container exclude each other.
class OptionButton : public Control {
 public:
  OptionButton(Form& form, const Control* container, std::string caption, Bounds bounds)
      : Control(form, container, std::move(caption), bounds) {}
  void Accept(ControlVisitor& visitor) override { visitor.Visit(*this); }
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
