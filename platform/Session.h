// The user's session with the system.
#pragma once

#include <cstdint>

namespace orvanto {

inline constexpr std::uint32_t kShutdown = 1;
inline constexpr std::uint32_t kReboot = 2;

class Session {
 public:
  virtual ~Session() = default;

  // Asks the system to end the session: kShutdown or kReboot (other flags are handed on as they
  // are, a host that does not know them does nothing). Requests no privilege. False when refused.
  virtual bool End(std::uint32_t flags) = 0;
};

}  // namespace orvanto
