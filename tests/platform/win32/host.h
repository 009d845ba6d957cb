// What the contracts' suites run on.
#pragma once

#include <windows.h>

#include "platform/win32/Win32Files.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/Win32Registry.h"
#include "platform/win32/Win32Socket.h"

namespace orvanto {

using HostFiles = win32::Win32Files;
using HostLoop = win32::Win32Loop;
using HostSockets = win32::Win32SocketHost;

class HostRegistry : public win32::Win32Registry {
 public:
  HostRegistry() { Clear(); }
  ~HostRegistry() override { Clear(); }

 private:
  static void Clear() { RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\OrvantoTest"); }
};

// A path of the system's own, as Files shows it.
inline std::string ShownPath(const std::string& path) { return path; }

// Handles what the system has for this thread, as its own loops do, in a message box say.
inline void RunSystemLoop() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

}  // namespace orvanto
