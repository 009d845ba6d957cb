// Acting on the windows of other programs, found by a text in their titles.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace orvanto {

class Clipboard;
class Desktop;
class EventLoop;
class Keyboard;

enum class WindowCode {
  SendKeys,     // "SK"
  SendKeysDos,  // "SD": pastes into a console window
  Close,        // "CW"
  CloseFile,    // "CC"
  Exit,         // "CE"
  SetFocus,     // "SF"
  Hide,         // "HI"
  Minimize,     // "MI"
  Maximize,     // "MA"
};

class WindowActions {
 public:
  WindowActions(EventLoop& loop, Desktop& desktop, Keyboard& keyboard, Clipboard& clipboard)
      : loop_(loop), desktop_(desktop), keyboard_(keyboard), clipboard_(clipboard) {}

  // Acts on every top-level window, hidden ones too, whose title holds `title`, without regard to
  // case, once for each place where it does. Stars at both ends of `title` are taken off. Other
  // events run between the windows. Throws Error 5 for keys that do not parse, at the first window
  // that matches and before anything is done to it.
  // A window for which the clipboard does not take the text is passed over.
  void WindowAction(std::string title, WindowCode code, const std::string& text);

  // Told in words why a window was passed over.
  std::function<void(const std::string& message)> onTrouble;

 private:
  struct Step;
  void Act(std::uintptr_t window, const Step& step);

  EventLoop& loop_;
  Desktop& desktop_;
  Keyboard& keyboard_;
  Clipboard& clipboard_;
};

}  // namespace orvanto
