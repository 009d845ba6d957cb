#include <algorithm>

#include "platform/forms/HeadlessFormHost.h"
#include "platform/text/Lines.h"

namespace orvanto::forms {

Size HeadlessFormHost::TextSize(const std::string& text, int width) const {
  constexpr int kCharacter = 90;
  constexpr int kLine = 225;
  Size size;
  LineReader lines(text);
  while (const auto line = lines.Next()) {
    const int length = static_cast<int>(line->size()) * kCharacter;
    size.width = std::max(size.width, std::min(length, width));
    size.height += (std::max(length - 1, 0) / width + 1) * kLine;
  }
  return size;
}

}  // namespace orvanto::forms
