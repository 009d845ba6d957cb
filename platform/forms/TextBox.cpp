#include "platform/forms/TextBox.h"

#include "platform/forms/ControlVisitor.h"
#include "platform/text/Utf8.h"

namespace orvanto::forms {

TextBox::TextBox(Form& form, const Control* container, Style style, Bounds bounds)
    : Control(form, container, {}, bounds), style_(style) {}

void TextBox::Accept(ControlVisitor& visitor) { visitor.Visit(*this); }

bool TextBox::Type(const std::string& text) {
  if (!Usable() || style_.readOnly) return false;
  SetText(text);
  Raise(onChange);
  return true;
}

bool TextBox::Press(const std::string& keys) {
  std::string text = Text();
  char32_t character = 0;
  for (std::size_t at = 0; at < keys.size(); at += DecodeUtf8(keys, at, character)) {
    const std::size_t length = DecodeUtf8(keys, at, character);
    if (!takesKey || takesKey(character)) text += keys.substr(at, length);
  }
  return text != Text() && Type(text);
}

bool TextBox::PressEnter() {
  if (!Usable() || !onEnter) return false;
  Raise(onEnter);
  return true;
}

bool TextBox::Drop(const std::string& text) {
  if (!Usable() || !onDrop) return false;
  const auto handler = onDrop;  // which may assign it anew
  handler(text);
  return true;
}

}  // namespace orvanto::forms
