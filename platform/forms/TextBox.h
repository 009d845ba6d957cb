// A box for text, of one line or many.
#pragma once

#include <functional>
#include <string>

#include "platform/forms/Control.h"

namespace orvanto::forms {

class TextBox : public Control {
 public:
  struct Style {
    bool multiLine = false;  // lines end in CR LF; scrolls by itself to its end on SetText
    bool fromTop = false;    // no: it shows its beginning then
    bool readOnly = false;
    bool password = false;  // of one line; shows a mark for each character
    int maxLength = 0;      // in characters; 0: as long as one likes
  };
  TextBox(Form& form, const Control* container, Style style, Bounds bounds);
  void Accept(ControlVisitor& visitor) override;

  const Style& GetStyle() const { return style_; }

  // Of the keys that make a character, control characters such as backspace included: whether it
  // is taken. To be set before the form loads. What is pasted is not asked about. A character
  // beyond 0xFFFF may come in its two UTF-16 halves. One at which this fails is not taken.
  std::function<bool(char32_t character)> takesKey;

  // Raised by Type, not by SetText.
  std::function<void()> onChange;
  // The Enter key in a box of one line. Without it, Enter presses the form's default button.
  std::function<void()> onEnter;

  // Text is dropped here that was dragged from anywhere; what becomes of it is the handler's
  // affair. To be set before the form loads: without it nothing can be dropped.
  std::function<void(const std::string& text)> onDrop;

  // user: replaces the contents, or adds what the keys make of it at the end
  bool Type(const std::string& text);
  bool Press(const std::string& keys);
  bool PressEnter();
  bool Drop(const std::string& text);

 private:
  Style style_;
};

}  // namespace orvanto::forms
