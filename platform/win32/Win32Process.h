// Starting programs by their command lines.
#pragma once

#include <windows.h>

#include <string>

#include "platform/Shell.h"
#include "platform/win32/Handle.h"

namespace orvanto::win32 {

using ProcessHandle = Handle<HANDLE, CloseHandle>;

// Not through file associations. No handle when nothing was started.
ProcessHandle StartProcess(const std::string& commandLine, ShowCommand show);

}  // namespace orvanto::win32
