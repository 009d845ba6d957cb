// The clipboard, as far as text goes.
#pragma once

#include <string>

namespace orvanto {

class Clipboard {
 public:
  virtual ~Clipboard() = default;

  // Empties the clipboard and puts the text there. False when another program keeps it.
  virtual bool SetText(const std::string& text) = 0;

  // Empty when there is no text, or another program keeps it.
  virtual std::string Text() = 0;
};

}  // namespace orvanto
