#include "platform/win32/forms/TitleBar.h"

#include <dwmapi.h>

#include "platform/win32/Library.h"

namespace orvanto::win32 {
namespace {

constexpr DWORD kDarkTitleBar = 20;  // DWMWA_USE_IMMERSIVE_DARK_MODE

bool DarkIsWanted() {
  DWORD light = 1;
  DWORD size = sizeof light;
  RegGetValueW(HKEY_CURRENT_USER,
               L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize",
               L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &light, &size);
  return light == 0;
}

}  // namespace

void ColourTitleBar(HWND window) {
  const BOOL dark = DarkIsWanted();
  static BOOL everDark = FALSE;
  everDark = everDark || dark;
  if (!everDark) return;
  Late<decltype(DwmSetWindowAttribute)>(L"dwmapi.dll", "DwmSetWindowAttribute")(
      window, kDarkTitleBar, &dark, sizeof dark);
}

}  // namespace orvanto::win32
