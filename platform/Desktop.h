// The top-level windows of all programs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Shell.h"

namespace orvanto {

class Desktop {
 public:
  using Window = std::uintptr_t;  // may be gone at any time; every call is then harmless

  virtual ~Desktop() = default;

  // All top-level windows, hidden ones included, from the top of the Z order down.
  virtual std::vector<Window> TopLevelWindows() = 0;
  // Empty for a window without a title, or one that is gone.
  virtual std::string Title(Window window) = 0;
  virtual void BringToTop(Window window) = 0;
  virtual void Show(Window window, ShowCommand show) = 0;
  // Sends a message by its number and waits for the answer, but not for a window that hangs.
  virtual void Send(Window window, std::uint32_t message, std::uintptr_t wParam,
                    std::intptr_t lParam) = 0;
};

}  // namespace orvanto
