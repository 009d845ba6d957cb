// The entry point of the Windows program.
#include <windows.h>

#include <cstdlib>
#include <exception>
#include <string>

#include "app/Program.h"
#include "platform/Platform.h"
#include "platform/win32/Services.h"
#include "platform/win32/SingleInstance.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/Win32Desktop.h"
#include "platform/win32/Win32Files.h"
#include "platform/win32/Win32Keyboard.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/Win32Registry.h"
#include "platform/win32/Win32Session.h"
#include "platform/win32/Win32Socket.h"
#include "platform/win32/Win32TrayIcon.h"
#include "platform/win32/forms/Dialogs.h"
#include "platform/win32/forms/Win32FormHost.h"

// Stands in for the library's own handler of what nobody catches. That one writes the type's name
// to an error output, which a desktop program has not, and brings a reader of mangled names along.
void __gnu_cxx::__verbose_terminate_handler() { std::abort(); }

namespace {

namespace win32 = orvanto::win32;

// Services of this system, in the order in which they need each other.
struct Win32Platform {
  win32::Win32Loop loop;
  win32::Win32Clock clock;
  win32::Win32Registry registry;
  win32::Win32Files files;
  win32::Win32FormHost forms{loop};
  win32::Win32Shell shell{loop, [this] { return forms.MainWindow(); }};
  win32::Win32Session session;
  win32::Win32Desktop desktop;
  win32::Win32Keyboard keyboard;
  win32::Win32Clipboard clipboard;
  win32::Win32Sound sound;
  win32::Win32MessageBoxes messageBoxes{loop, forms};
  win32::Win32FileDialogs fileDialogs{loop, forms};
  win32::Win32TrayIcon trayIcon{loop};
  win32::Win32SocketHost sockets{loop};
  orvanto::Platform platform{loop,         clock,       registry, files,     shell,
                             session,      desktop,     keyboard, clipboard, sound,
                             messageBoxes, fileDialogs, trayIcon, sockets,   forms};
};

std::wstring ProgramFolder() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const auto room = static_cast<DWORD>(path.size());
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), room);
    if (length < room) {
      path.resize(length);
      break;
    }
    path.resize(path.size() * 2);
  }
  const std::size_t end = path.find_last_of(L'\\');
  if (end == path.npos) return path;
  // The backslash belongs to the name of a drive's root.
  path.resize(end > 0 && path[end - 1] == L':' ? end + 1 : end);
  return path;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR commandLine, int) {
  // Libraries come from the system only, never from the folder that a file was opened in.
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
  try {
    win32::SingleInstance instance;
    if (!instance.IsFirst()) {
      if (lstrcmpiW(commandLine, L"invisible") != 0) instance.ShowFirst();
      return 0;
    }
    Win32Platform host;
    orvanto::Program program(host.platform, {.commandLine = win32::ToUtf8(commandLine),
                                             .programFolder = win32::ToUtf8(ProgramFolder())});
    host.loop.onSessionEnd = [&program] { program.Quit(); };
    host.loop.onTimerHeld = [&program] { program.ShowTime(); };
    // Posted, so that it waits for the end of a message box.
    instance.onShow = [&] { host.loop.Post([&program] { program.BringToFront(); }); };
    program.Start();
    host.loop.Run();
    return 0;
  } catch (...) {
    win32::ReportException("program");
    return 1;
  }
}
