// What the contracts' suites run on.
#pragma once

#include "platform/posix/FileRegistry.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixSocket.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto {

using HostFiles = posix::PosixFiles;
using HostLoop = posix::PosixLoop;
using HostSockets = posix::PosixSocketHost;

class HostRegistry : private TemporaryDirectory, public posix::FileRegistry {
 public:
  HostRegistry() : FileRegistry(*this / "registry", nullptr) {}
};

// A path of the system's own, as Files shows it.
inline std::string ShownPath(const std::string& path) { return posix::FromNative(path); }

// Handles what the system has for this thread, as its own loops do, in a message box say.
inline void RunSystemLoop() {}

}  // namespace orvanto
