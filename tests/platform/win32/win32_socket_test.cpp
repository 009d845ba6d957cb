#include "platform/win32/Win32Socket.h"

#include "tests/platform/socket_contract.h"

namespace orvanto::win32 {
namespace {

// GetProcessHandleCount tells nothing under Wine. Numbers are given out from the lowest.
std::size_t OpenHandles() {
  constexpr std::intptr_t kHighest = 0x8000;
  std::size_t count = 0;
  for (std::intptr_t number = 4; number < kHighest; number += 4) {
    DWORD flags = 0;
    if (GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags)) ++count;
  }
  return count;
}

void HandleMessages() {
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

SocketsUnderTest MakeSockets() {
  auto loop = std::make_unique<Win32Loop>();
  auto host = std::make_unique<Win32SocketHost>(*loop);
  return {std::move(loop), std::move(host), OpenHandles, HandleMessages};
}

INSTANTIATE_TEST_SUITE_P(Win32, SocketContract, testing::Values(MakeSockets));

}  // namespace
}  // namespace orvanto::win32
