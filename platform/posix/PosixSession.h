// Ending the system by its shutdown program.
#pragma once

#include "platform/Session.h"

namespace orvanto::posix {

// True once `shutdown` (found on PATH) has been started; whether it may act is its own affair. What
// this system cannot do is said on the error output, once.
class PosixSession : public Session {
 public:
  bool End(std::uint32_t flags) override;

 private:
  bool said_ = false;
};

}  // namespace orvanto::posix
