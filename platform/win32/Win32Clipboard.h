// The clipboard. Programs that look at it talk to its owner, so the owner is a window of the
// program's thread.
#pragma once

#include "platform/Clipboard.h"
#include "platform/win32/HiddenWindow.h"

namespace orvanto::win32 {

// Text ends at its first NUL, as everywhere on the clipboard; line ends stay as they are. Waits a
// second at most for another program to let go of the clipboard.
class Win32Clipboard : public Clipboard {
 public:
  Win32Clipboard();
  bool SetText(const std::string& text) override;
  std::string Text() override;

 private:
  HiddenWindow owner_;
};

}  // namespace orvanto::win32
