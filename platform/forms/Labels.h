// What is only looked at.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class Label : public Control {
 public:
  Label(Form& form, const Control* container, std::string_view caption, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  // For a text of any length: a word that is longer than a line goes on in the next one. To be set
  // before the form loads.
  bool breaksWords = false;
};

class Frame : public Control {
 public:
  Frame(Form& form, const Control* container, std::string_view caption, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;
};

// A round status lamp.
class Lamp : public Control {
 public:
  Lamp(Form& form, const Control* container, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  static constexpr std::uint32_t kLit = 0x00FF00;  // red, green, blue from the high byte down
  static constexpr std::uint32_t kDark = 0xC0C0C0;
  std::uint32_t Colour() const { return colour_; }
  void SetLit(bool lit);

 private:
  std::uint32_t colour_ = kDark;
};

}  // namespace orvanto::forms
