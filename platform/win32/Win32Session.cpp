#include "platform/win32/Win32Session.h"

#include <windows.h>

#include "platform/win32/Handle.h"

namespace orvanto::win32 {

bool Win32Session::End(std::uint32_t flags) { return ExitWindowsEx(flags, 0) != 0; }

void Win32Session::ChangeResolution(int width, int height) {
  DEVMODEW mode = {};
  mode.dmSize = sizeof mode;
  if (!EnumDisplaySettingsW(nullptr, 0, &mode)) return;
  if (width != 0 || height != 0) {
    mode.dmPelsWidth = static_cast<DWORD>(width);
    mode.dmPelsHeight = static_cast<DWORD>(height);
  }
  mode.dmFields = DM_PELSWIDTH | DM_PELSHEIGHT;  // the rest stays as the screen has it
  // Tried on the screen itself, not only looked up.
  if (ChangeDisplaySettingsW(&mode, CDS_FULLSCREEN) != DISP_CHANGE_SUCCESSFUL) return;
  ChangeDisplaySettingsW(&mode, CDS_UPDATEREGISTRY);
  // To all, whoever of them hangs: this does not wait for an answer.
  constexpr WPARAM kColourDepth = 42;
  SendNotifyMessageW(HWND_BROADCAST, WM_DISPLAYCHANGE, kColourDepth, 0);
}

void Win32Session::HangUp() {
  // Only who has dialled needs this library.
  const Handle<HMODULE, FreeLibrary> library(
      LoadLibraryExW(L"wininet.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (!library) return;
  using Function = BOOL(WINAPI*)(DWORD);
  // By way of void*, because no function type fits all that GetProcAddress may answer.
  const auto hangUp = reinterpret_cast<Function>(
      reinterpret_cast<void*>(GetProcAddress(library.Get(), "InternetAutodialHangup")));
  if (hangUp != nullptr) hangUp(0);
}

}  // namespace orvanto::win32
