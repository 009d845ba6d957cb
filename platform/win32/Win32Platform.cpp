#include "platform/win32/Win32Platform.h"

#include <objbase.h>

namespace orvanto::win32 {

Win32Platform::Win32Platform() = default;

Platform Win32Platform::Services() {
  return {loop,      clock, registry,     files,       shell,    session, desktop, keyboard,
          clipboard, sound, messageBoxes, fileDialogs, trayIcon, sockets, forms};
}

Win32Platform::Com::Com()
    : begun_(
          SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}

Win32Platform::Com::~Com() {
  if (begun_) CoUninitialize();
}

}  // namespace orvanto::win32
