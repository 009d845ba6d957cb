// A text that grows at its end: a log, or what is said in a chat. Windows show it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Event.h"

namespace orvanto {

class TextLog {
 public:
  // The most that is kept; the oldest lines go first.
  static constexpr std::size_t kMost = 64 << 10;

  const std::string& Text() const { return text_; }

  // Puts the text at the end. The log never begins with an empty line.
  void Append(std::string_view text);
  // Forgets what there was before.
  void Begin(std::string_view text);

  // The text is another one.
  Event<> changed;

 private:
  std::string text_;
};

}  // namespace orvanto
