#include "platform/win32/Win32Process.h"

#include "platform/win32/Text.h"

namespace orvanto::win32 {

ProcessHandle StartProcess(const std::string& commandLine, ShowCommand show) {
  std::wstring line = ToWide(commandLine);  // the system writes into it
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = static_cast<WORD>(show);
  PROCESS_INFORMATION information = {};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                      &information)) {
    return {};
  }
  CloseHandle(information.hThread);
  return ProcessHandle(information.hProcess);
}

}  // namespace orvanto::win32
