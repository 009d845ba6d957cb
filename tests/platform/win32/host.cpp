#include <windows.h>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Files.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/Win32Registry.h"
#include "platform/win32/Win32Socket.h"
#include "tests/platform/contracts.h"

namespace orvanto {
namespace {

void DeleteScratch() { RegDeleteTreeW(HKEY_CURRENT_USER, win32::ToWide(kScratchKey).c_str()); }

class ScratchRegistry : public win32::Win32Registry {
 public:
  ScratchRegistry() { DeleteScratch(); }
  ~ScratchRegistry() override { DeleteScratch(); }
};

}  // namespace

std::unique_ptr<Registry> NewHostRegistry() { return std::make_unique<ScratchRegistry>(); }

std::unique_ptr<Files> NewHostFiles() { return std::make_unique<win32::Win32Files>(); }

std::string ShownPath(const std::string& path) { return path; }

std::unique_ptr<EventLoop> NewHostLoop() { return std::make_unique<win32::Win32Loop>(); }

std::unique_ptr<SocketHost> NewHostSockets(EventLoop& loop) {
  return std::make_unique<win32::Win32SocketHost>(static_cast<win32::Win32Loop&>(loop));
}

void RunSystemLoop() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

}  // namespace orvanto
