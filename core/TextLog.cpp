#include "core/TextLog.h"

#include "platform/text/Lines.h"

namespace orvanto {

void TextLog::Append(std::string_view text) {
  text_ += text;
  if (text_.size() > kMost) {
    const std::size_t line = text_.find(kCrLf, text_.size() - kMost);
    text_.erase(0, line == std::string::npos ? text_.size() - kMost : line);
  }
  if (text_.starts_with(kCrLf)) text_.erase(0, 2);
  changed.Raise();
}

void TextLog::Begin(std::string_view text) {
  text_.clear();
  Append(text);
}

}  // namespace orvanto
