#include "platform/forms/PictureBox.h"

#include <utility>

#include "platform/forms/ControlVisitor.h"

namespace orvanto::forms {

PictureBox::PictureBox(Form& form, const Control* container, Bounds bounds)
    : Control(form, container, {}, bounds) {}

void PictureBox::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

void PictureBox::Clear() {
  drawings_.clear();
  Changed(Property::Drawing);
}

void PictureBox::AddBar(Bounds place, std::uint32_t colour) {
  AddText({}, place, colour, Align::Left);
}

void PictureBox::AddInvertingBar(Bounds place, std::uint32_t colour) {
  drawings_.push_back({place, colour, {}, Align::Left, true});
  Changed(Property::Drawing);
}

void PictureBox::AddText(std::string text, Bounds place, std::uint32_t colour, Align align) {
  drawings_.push_back({place, colour, std::move(text), align});
  Changed(Property::Drawing);
}

}  // namespace orvanto::forms
