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

  // Changes the resolution of the main screen and keeps it for the user, if the screen can show it;
  // tells all windows. {0, 0} stands for the size of the screen's first mode.
  virtual void ChangeResolution(int width, int height) = 0;

  // Ends the dial-up connection that was dialled automatically.
  virtual void HangUp() = 0;
};

}  // namespace orvanto
