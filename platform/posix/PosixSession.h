// Ending the system by its shutdown program.
#pragma once

#include <set>
#include <string>

#include "platform/Session.h"

namespace orvanto::posix {

// True once `shutdown` (found on PATH) has been started; whether it may act is its own affair. What
// this system cannot do is said on the error output, once.
class PosixSession : public Session {
 public:
  bool End(std::uint32_t flags) override;
  void ChangeResolution(int width, int height) override;
  void HangUp() override;

 private:
  void Say(const char* what);

  std::set<std::string> said_;
};

}  // namespace orvanto::posix
