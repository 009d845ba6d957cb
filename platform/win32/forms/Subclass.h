// What a control does otherwise than its class.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>

namespace orvanto::win32 {

// As long as it lives, sees the messages of a control before its class does. Takes the window's
// procedure and its user data, so there is one for a window at most: SetWindowSubclass would look
// up a property of the window for each message, under Wine three messages to its server.
class Subclass {
 public:
  // Answers a message, or nothing to leave it to the class. May destroy this.
  using Handler = std::function<std::optional<LRESULT>(UINT, WPARAM, LPARAM)>;

  Subclass(HWND window, Handler handler);
  ~Subclass();
  Subclass(const Subclass&) = delete;
  Subclass& operator=(const Subclass&) = delete;

 private:
  struct Hook {
    const WNDPROC its;
    Handler handler;
    bool over = false;
  };
  using SharedHook = std::shared_ptr<Hook>;

  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

  // The window has a share until it is destroyed: others may have taken its procedure after this,
  // and still call this one.
  SharedHook hook_;
};

}  // namespace orvanto::win32
