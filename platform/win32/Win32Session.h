// The user's session.
#pragma once

#include "platform/Session.h"

namespace orvanto::win32 {

class Win32Session : public Session {
 public:
  bool End(std::uint32_t flags) override;
  void ChangeResolution(int width, int height) override;
  void HangUp() override;
};

}  // namespace orvanto::win32
