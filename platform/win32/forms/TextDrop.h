// Text that is dragged here from any program.
#pragma once

#include <windows.h>

#include <string>

namespace orvanto::win32 {

// As long as it lives, text can be dropped on the window, in so far as a person can work in it. The
// program that it comes from waits for the end of the drop, so the text is only kept here, and the
// window's parent is told by a command with this code, posted.
class TextDrop {
 public:
  static constexpr WORD kDropped = 0x7000;

  explicit TextDrop(HWND window);
  ~TextDrop();
  TextDrop(const TextDrop&) = delete;
  TextDrop& operator=(const TextDrop&) = delete;

  // What was dropped last; empty once taken.
  std::string Take();

 private:
  class Target;
  HWND window_;
  Target* target_;
  bool begun_;  // OLE on this thread
};

}  // namespace orvanto::win32
