// The comparison of passwords.
#pragma once

#include <string_view>

namespace orvanto {

// Takes as long as `given` is long, wherever the two differ first, and so tells nobody how much of
// a guess is right.
inline bool SamePassword(std::string_view given, std::string_view stored) {
  volatile unsigned char difference = given.size() == stored.size() ? 0 : 1;
  for (std::size_t i = 0; i < given.size(); ++i) {
    const char other = stored.empty() ? '\0' : stored[i % stored.size()];
    difference = static_cast<unsigned char>(difference | (given[i] ^ other));
  }
  return difference == 0;
}

}  // namespace orvanto
