// Line ends.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>

namespace orvanto {

// What our own lines end in, in files and on the network.
inline constexpr const char* kCrLf = "\r\n";

// Cuts a text into lines that end in CR LF, LF, CR or with the text; the text must stay.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : rest_(text) {}

  // Without its end; nothing where no line is left.
  std::optional<std::string_view> Next() {
    if (rest_.empty()) return std::nullopt;
    const auto end = std::ranges::find_if(rest_, [](char c) { return c == '\r' || c == '\n'; });
    const std::string_view line(rest_.begin(), end);
    rest_.remove_prefix(line.size());
    rest_.remove_prefix(rest_.starts_with(kCrLf) ? 2 : rest_.empty() ? 0 : 1);
    return line;
  }

 private:
  std::string_view rest_;
};

}  // namespace orvanto
