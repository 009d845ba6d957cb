// The icon in the notification area, owned by a hidden window of its own.
#pragma once

#include <windows.h>

#include <chrono>
#include <memory>
#include <string>

#include "platform/EventLoop.h"
#include "platform/TrayIcon.h"
#include "platform/win32/HiddenWindow.h"

namespace orvanto::win32 {

// At log-on the shell may not be ready to take the icon; the icon is then offered again, at growing
// intervals, until the shell has taken it. What the mouse does during an EventLoop::Hold is
// reported after it.
class Win32TrayIcon : public TrayIcon {
 public:
  static constexpr const wchar_t* kWindowClass = L"OrvantoTray";
  static constexpr UINT kCallback = WM_APP + 1;

  explicit Win32TrayIcon(EventLoop& loop);
  ~Win32TrayIcon() override;

  void Add(const std::string& tip) override;
  void Remove() override;

 private:
  std::optional<LRESULT> OnMessage(UINT message, WPARAM wParam, LPARAM lParam);
  void OpenMenu(POINT place);
  void Offer();
  bool Notify(DWORD action);

  EventLoop& loop_;
  UINT taskbarCreated_;
  bool wanted_ = false;
  bool menuOpen_ = false;
  std::wstring tip_;
  std::chrono::milliseconds delay_{};
  HiddenWindow window_;
  std::unique_ptr<Timer> retry_;
};

}  // namespace orvanto::win32
