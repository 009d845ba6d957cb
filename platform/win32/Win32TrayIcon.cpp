#include "platform/win32/Win32TrayIcon.h"

#include <shellapi.h>

#include <algorithm>
#include <utility>

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
      window_(kWindowClass, [this](UINT message, WPARAM wParam,
                                   LPARAM lParam) { return OnMessage(message, wParam, lParam); }),
      retry_(loop.NewTimer([this] { Offer(); })) {}

Win32TrayIcon::~Win32TrayIcon() { Remove(); }

void Win32TrayIcon::Add(const std::string& tip) {
  if (wanted_) return;
  wanted_ = true;
  // The task bar has fewer rights than a program that was started as administrator.
  ChangeWindowMessageFilterEx(window_.Get(), taskbarCreated_, MSGFLT_ALLOW, nullptr);
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

bool Win32TrayIcon::Notify(DWORD action) {
  const UINT dpi = GetDpiForSystem();
  const Handle<HICON, DestroyIcon> icon(static_cast<HICON>(LoadImageW(
      ThisModule(), MAKEINTRESOURCEW(1), IMAGE_ICON, GetSystemMetricsForDpi(SM_CXSMICON, dpi),
      GetSystemMetricsForDpi(SM_CYSMICON, dpi), LR_DEFAULTCOLOR)));
  NOTIFYICONDATAW data = {};
  data.cbSize = sizeof data;
  data.hWnd = window_.Get();
  data.uID = 1;
  data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP | NIF_SHOWTIP;
  data.uCallbackMessage = kCallback;
  data.hIcon = icon.Get();  // the shell makes a copy
  tip_.copy(data.szTip, 63);
  const auto notify = Late<decltype(Shell_NotifyIconW)>(L"shell32.dll", "Shell_NotifyIconW");
  if (!notify(action, &data)) return false;
  // So that the keyboard is reported, too.
  data.uVersion = NOTIFYICON_VERSION_4;
  if (action == NIM_ADD) notify(NIM_SETVERSION, &data);
  return true;
}

void Win32TrayIcon::OpenMenu(POINT place) {
  if (!wanted_ || menu.empty() || std::exchange(menuOpen_, true)) return;
  const std::vector<Item> items = menu;
  const Handle<HMENU, DestroyMenu> shown(CreatePopupMenu());
  for (const Item& item : items) {
    AppendMenuW(shown.Get(), MF_STRING, static_cast<UINT>(&item - items.data()) + 1,
                ToWide(item.caption).c_str());
  }
  SetMenuDefaultItem(shown.Get(), 0, TRUE);
  SetForegroundWindow(window_.Get());  // or it would stay when the person turns to something else
  const int chosen = TrackPopupMenuEx(shown.Get(), TPM_RETURNCMD | TPM_RIGHTBUTTON, place.x,
                                      place.y, window_.Get(), nullptr);
  menuOpen_ = false;
  if (chosen > 0) items[static_cast<std::size_t>(chosen - 1)].onChosen();
}

std::optional<LRESULT> Win32TrayIcon::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kCallback && LOWORD(lParam) == WM_CONTEXTMENU) {
    if (loop_.Held()) return 0;
    loop_.Post([this, place = POINT{static_cast<short>(LOWORD(wParam)),
                                    static_cast<short>(HIWORD(wParam))}] { OpenMenu(place); });
    return 0;
  }
  if (message == kCallback) {
    const int mouse = LOWORD(lParam) == NIN_KEYSELECT ? kLeftDoubleClick : LOWORD(lParam);
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
