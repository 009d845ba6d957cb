// Numbers of which nothing but their digits is taken.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace orvanto {

// Nothing when the text has anything else in it (a blank, a '+'), or the type cannot hold it. A '-'
// is taken where the type has one.
template <typename Number>
std::optional<Number> WholeNumber(std::string_view text, int base = 10) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, number, base);
  return error == std::errc() && next == end ? std::optional(number) : std::nullopt;
}

}  // namespace orvanto
