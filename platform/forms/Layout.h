// Places in a regular order, for controls of one size.
#pragma once

#include "platform/forms/Control.h"

namespace orvanto::forms {

// Under each other, `step` twips from one upper edge to the next; the first is number 0.
struct Column {
  Bounds first;
  int step;
  constexpr Bounds operator[](int number) const {
    return {first.left, first.top + number * step, first.width, first.height};
  }
};

}  // namespace orvanto::forms
