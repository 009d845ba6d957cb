// A box that the form draws bars and text into.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class PictureBox : public Control {
 public:
  enum class Align { Left, Centre, Right };

  // A filled rectangle, or where there is a text that one line, in the middle of its height. The
  // place is in twips from the box's own corner. Red, green, blue from the high byte down; a host
  // whose user wants few colours takes those, and keeps text readable on bars.
  struct Drawing {
    Bounds place;
    std::uint32_t colour;
    std::string text;
    Align align;
    // A bar that inverts what lies under it (not-xor-pen): on the ground it shows its colour, and
    // of a black text the opposite of that. The ground of such a box is white.
    bool inverts = false;
  };

  PictureBox(Form& form, const Control* container, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  // In the order of drawing: later ones lie on the earlier.
  const std::vector<Drawing>& Drawings() const { return drawings_; }
  void Clear();
  void AddBar(Bounds place, std::uint32_t colour);
  void AddInvertingBar(Bounds place, std::uint32_t colour);
  void AddText(std::string text, Bounds place, std::uint32_t colour, Align align);

 private:
  std::vector<Drawing> drawings_;
};

}  // namespace orvanto::forms
