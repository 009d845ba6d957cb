#include "platform/posix/PosixSocket.h"

#include <filesystem>

#include "tests/platform/socket_contract.h"

namespace orvanto::posix {
namespace {

std::size_t OpenDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

SocketsUnderTest MakeSockets() {
  auto loop = std::make_unique<PosixLoop>();
  auto host = std::make_unique<PosixSocketHost>(*loop);
  return {std::move(loop), std::move(host), OpenDescriptors, [] {}};
}

INSTANTIATE_TEST_SUITE_P(Posix, SocketContract, testing::Values(MakeSockets));

}  // namespace
}  // namespace orvanto::posix
