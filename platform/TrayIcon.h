// The icon in the notification area.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace orvanto {

// Mouse messages that the icon reports, with their system numbers.
inline constexpr int kMouseMove = 512;
inline constexpr int kLeftDown = 513;
inline constexpr int kLeftUp = 514;
inline constexpr int kLeftDoubleClick = 515;
inline constexpr int kRightUp = 517;

class TrayIcon {
 public:
  virtual ~TrayIcon() = default;

  // Shows the main window's icon with a tip of at most 63 characters; once shown it stays until
  // Remove, also when the shell restarts. Adding twice or removing what is not there does nothing.
  virtual void Add(const std::string& tip) = 0;
  virtual void Remove() = 0;

  // Called from the loop with the mouse message number; choosing the icon by the keyboard is a
  // double click. May call Add and Remove.
  std::function<void(int mouseMessage)> onMouse;

  // What the right mouse button or the menu key offers, called from the loop; the first is what a
  // double click does. Empty: nothing opens.
  struct Item {
    std::string caption;  // with '&' before the mnemonic
    std::function<void()> onChosen;
  };
  std::vector<Item> menu;
};

}  // namespace orvanto
