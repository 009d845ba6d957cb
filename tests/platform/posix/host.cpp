#include "platform/posix/FileRegistry.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixSocket.h"
#include "tests/platform/contracts.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto {
namespace {

class ScratchRegistry : private TemporaryDirectory, public posix::FileRegistry {
 public:
  ScratchRegistry() : FileRegistry(*this / "registry", nullptr) {}
};

}  // namespace

std::unique_ptr<Registry> NewHostRegistry() { return std::make_unique<ScratchRegistry>(); }

std::unique_ptr<Files> NewHostFiles() { return std::make_unique<posix::PosixFiles>(); }

std::string ShownPath(const std::string& path) { return posix::FromNative(path); }

std::unique_ptr<EventLoop> NewHostLoop() { return std::make_unique<posix::PosixLoop>(); }

std::unique_ptr<SocketHost> NewHostSockets(EventLoop& loop) {
  return std::make_unique<posix::PosixSocketHost>(static_cast<posix::PosixLoop&>(loop));
}

void RunSystemLoop() {}

}  // namespace orvanto
