// Other programs' windows. None of this waits for a window that hangs.
#pragma once

#include "platform/Desktop.h"

namespace orvanto::win32 {

class Win32Desktop : public Desktop {
 public:
  std::vector<Window> TopLevelWindows() override;
  std::string Title(Window window) override;
  void BringToTop(Window window) override;
  void Show(Window window, ShowCommand show) override;
  void Send(Window window, std::uint32_t message, std::uintptr_t wParam,
            std::intptr_t lParam) override;
};

}  // namespace orvanto::win32
