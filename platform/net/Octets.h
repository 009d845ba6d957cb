// Addresses and ports as protocols write them: "10.1.2.3", "10,1,2,3,78,32".
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvanto {

// Exactly N numbers from 0 to 255 with one separator between each two and nothing else around them.
// No leading zeros: some systems take what follows for octal.
template <std::size_t N>
std::optional<std::array<std::uint8_t, N>> ParseOctets(std::string_view text, char separator) {
  std::array<std::uint8_t, N> octets{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::size_t i = 0; i < N; ++i) {
    if (i > 0 && (at == end || *at++ != separator)) return std::nullopt;
    const auto [next, error] = std::from_chars(at, end, octets[i]);
    if (error != std::errc() || (*at == '0' && next - at > 1)) return std::nullopt;
    at = next;
  }
  return at == end ? std::optional(octets) : std::nullopt;
}

}  // namespace orvanto
