// Ending the system by its shutdown program.
#pragma once

#include "platform/Session.h"
#include "platform/posix/Notices.h"

namespace orvanto::posix {

// True once `shutdown` (found on PATH) has been started; whether it may act is its own affair. What
// this system cannot do is a notice.
class PosixSession : public Session {
 public:
  explicit PosixSession(Notices& notices) : notices_(notices) {}
  bool End(std::uint32_t flags) override;
  void ChangeResolution(int width, int height) override;
  void HangUp() override;

 private:
  Notices& notices_;
};

}  // namespace orvanto::posix
