// The entry point of the Windows program.
#include <windows.h>

#include <string>

#include "app/Program.h"
#include "platform/win32/SingleInstance.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Platform.h"

namespace {

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
    orvanto::win32::SingleInstance instance;
    if (!instance.IsFirst()) {
      if (lstrcmpiW(commandLine, L"invisible") != 0) instance.ShowFirst();
      return 0;
    }
    orvanto::win32::Win32Platform host;
    orvanto::Platform services = host.Services();
    orvanto::Program program(services, {.commandLine = orvanto::win32::ToUtf8(commandLine),
                                        .programFolder = orvanto::win32::ToUtf8(ProgramFolder())});
    host.loop.onSessionEnd = [&program] { program.Quit(); };
    // Posted, so that it waits for the end of a message box.
    instance.onShow = [&] { host.loop.Post([&program] { program.BringToFront(); }); };
    program.Start();
    host.loop.Run();
    return 0;
  } catch (...) {
    orvanto::win32::ReportException("program");
    return 1;
  }
}
