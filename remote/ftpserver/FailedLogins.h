// Who has given wrong passwords, over all connections: by address, so that a new connection is no
// new beginning.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

#include "platform/Clock.h"

namespace orvanto {

class FailedLogins {
 public:
  explicit FailedLogins(const Clock& clock) : clock_(clock) {}

  // Until a password from there is looked at again, and until the last wrong one is refused.
  std::chrono::milliseconds WaitOf(const std::string& address) const;
  void Add(const std::string& address);
  void Forget(const std::string& address) { all_.erase(address); }

 private:
  // A second for the first one, twice as long for each that follows.
  static constexpr int kMostDoublings = 5;
  static constexpr std::chrono::minutes kMemory{15};  // after the last one
  static constexpr std::size_t kMostAddresses = 1000;

  struct Entry {
    std::int64_t last = 0;  // when
    int count = 0;
  };
  const Clock& clock_;
  std::map<std::string, Entry> all_;
};

}  // namespace orvanto
