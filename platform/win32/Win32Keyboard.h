// Typing by the system's own input injection, so that any program takes it for the user's hands.
#pragma once

#include "platform/Keyboard.h"

namespace orvanto::win32 {

// The keys go to the window in the foreground. Two things end the typing early: a window that
// hangs, and a system that refuses the input (a locked desktop). A window of a program with higher
// rights swallows the keys without telling. A CR, an LF and a CR LF are one Enter each.
class Win32Keyboard : public Keyboard {
 public:
  void Type(const std::vector<KeyEvent>& events) override;
};

}  // namespace orvanto::win32
