#include "platform/win32/Win32Socket.h"

#include "tests/platform/socket_contract.h"

namespace orvanto::win32 {
namespace {

std::size_t OpenHandles() {
  DWORD count = 0;
  GetProcessHandleCount(GetCurrentProcess(), &count);
  return count;
}

SocketsUnderTest MakeSockets() {
  auto loop = std::make_unique<Win32Loop>();
  auto host = std::make_unique<Win32SocketHost>(*loop);
  return {std::move(loop), std::move(host), OpenHandles};
}

INSTANTIATE_TEST_SUITE_P(Win32, SocketContract, testing::Values(MakeSockets));

}  // namespace
}  // namespace orvanto::win32
