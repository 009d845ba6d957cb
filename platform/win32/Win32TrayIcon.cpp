#include "platform/win32/Win32TrayIcon.h"

#include <shellapi.h>

#include <algorithm>

#include "platform/win32/Handle.h"
#include "platform/win32/Library.h"
#include "platform/win32/Text.h"

namespace orvanto::win32 {

namespace {

constexpr std::chrono::milliseconds kFirstDelay{250};
constexpr std::chrono::milliseconds kLongestDelay{30000};

}  // namespace

Win32TrayIcon::Win32TrayIcon(EventLoop& loop)
    : loop_(loop),
      taskbarCreated_(RegisterWindowMessageW(L"TaskbarCreated")),
      window_(kWindowClass,
              [this](UINT message, WPARAM, LPARAM lParam) { return OnMessage(message, lParam); }),
      retry_(loop.NewTimer([this] { Offer(); })) {
  // The task bar has fewer rights than a program that was started as administrator.
  ChangeWindowMessageFilterEx(window_.Get(), taskbarCreated_, MSGFLT_ALLOW, nullptr);
}

Win32TrayIcon::~Win32TrayIcon() { Remove(); }

void Win32TrayIcon::Add(const std::string& tip) {
  if (wanted_) return;
  wanted_ = true;
  tip_ = ToWide(tip);
  delay_ = kFirstDelay;
  Offer();
}

void Win32TrayIcon::Remove() {
  if (!wanted_) return;
  wanted_ = false;
  retry_->Stop();
  Notify(NIM_DELETE);
}

void Win32TrayIcon::Offer() {
  retry_->Stop();
  // A time-out may hide that the icon was taken after all; then adding fails and changing works.
  if (!wanted_ || Notify(NIM_ADD) || Notify(NIM_MODIFY)) return;
  retry_->Start(delay_);
  delay_ = std::min(delay_ * 2, kLongestDelay);
}

bool Win32TrayIcon::Notify(DWORD action) const {
  const UINT dpi = GetDpiForSystem();
  const Handle<HICON, DestroyIcon> icon(static_cast<HICON>(LoadImageW(
      ThisModule(), MAKEINTRESOURCEW(1), IMAGE_ICON, GetSystemMetricsForDpi(SM_CXSMICON, dpi),
      GetSystemMetricsForDpi(SM_CYSMICON, dpi), LR_DEFAULTCOLOR)));
  NOTIFYICONDATAW data = {};
  data.cbSize = sizeof data;
  data.hWnd = window_.Get();
  data.uID = 1;
  data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
  data.uCallbackMessage = kCallback;
  data.hIcon = icon.Get();  // the shell makes a copy
  tip_.copy(data.szTip, 63);
  return Late<decltype(Shell_NotifyIconW)>(L"shell32.dll", "Shell_NotifyIconW")(action, &data) != 0;
}

std::optional<LRESULT> Win32TrayIcon::OnMessage(UINT message, LPARAM lParam) {
  if (message == kCallback) {
    const int mouse = LOWORD(lParam);
    loop_.Post([this, mouse] {
      if (const auto handler = onMouse) handler(mouse);
    });
    return 0;
  }
  if (message == taskbarCreated_ && wanted_) {
    delay_ = kFirstDelay;
    Offer();
    return 0;
  }
  return std::nullopt;
}

}  // namespace orvanto::win32
