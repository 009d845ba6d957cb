// Typing into the window that has the focus.
#pragma once

#include <cstdint>
#include <vector>

namespace orvanto {

enum class Key {
  Character,  // the one in `character`
  Shift,
  Control,
  Alt,
  Backspace,
  Break,
  CapsLock,
  Clear,
  Delete,
  Down,
  End,
  Enter,
  Escape,
  Help,
  Home,
  Insert,
  Left,
  NumLock,
  PageDown,
  PageUp,
  PrintScreen,
  Right,
  ScrollLock,
  Tab,
  Up,
  Add,
  Subtract,
  Multiply,
  Divide,
  F1,  // the others follow in order
  F16 = F1 + 15,
};

struct KeyEvent {
  enum class Action { Press, Hold, Release };  // Press: down and up again, `count` times
  Action action = Action::Press;
  Key key = Key::Character;
  char32_t character = 0;
  std::uint32_t count = 1;
  bool operator==(const KeyEvent&) const = default;
};

class Keyboard {
 public:
  virtual ~Keyboard() = default;

  // Types the events and waits, for a bounded time, until the window has taken them or hangs. What
  // is held when it returns was held before: every key that it pressed is released on every path,
  // and what the user held down meanwhile is let go first. A character is typed as itself, or,
  // while Shift, Control or Alt is held, as the key of the window's keyboard layout.
  virtual void Type(const std::vector<KeyEvent>& events) = 0;
};

}  // namespace orvanto
