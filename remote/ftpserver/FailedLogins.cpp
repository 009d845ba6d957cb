#include "remote/ftpserver/FailedLogins.h"

#include <algorithm>

namespace orvanto {

std::chrono::milliseconds FailedLogins::WaitOf(const std::string& address) const {
  const auto found = all_.find(address);
  if (found == all_.end()) return {};
  const std::int64_t whole = std::int64_t{1000}
                             << std::min(found->second.count - 1, kMostDoublings);
  const std::int64_t gone = clock_.UnixMilliseconds() - found->second.last;
  // Somebody has set the clock back.
  if (gone < 0) return {};
  return std::chrono::milliseconds(std::max<std::int64_t>(whole - gone, 0));
}

void FailedLogins::Add(const std::string& address) {
  const std::int64_t now = clock_.UnixMilliseconds();
  const std::chrono::milliseconds memory = kMemory;
  std::erase_if(all_, [&](const auto& entry) { return now - entry.second.last > memory.count(); });
  if (all_.size() >= kMostAddresses && !all_.contains(address)) {
    all_.erase(std::min_element(all_.begin(), all_.end(), [](const auto& a, const auto& b) {
      return a.second.last < b.second.last;
    }));
  }
  Entry& entry = all_[address];
  entry.last = now;
  ++entry.count;
}

}  // namespace orvanto
