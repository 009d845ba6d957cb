// What the contracts' suites run on, beside the fakes: each host defines these functions.
#pragma once

#include <memory>
#include <string>

#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "platform/Registry.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

// The key below HKEY_CURRENT_USER that the tests write into.
inline constexpr const char* kScratchKey = "Software\\OrvantoTest";

// A registry in which kScratchKey does not exist, for the time of one test.
std::unique_ptr<Registry> NewHostRegistry();

std::unique_ptr<Files> NewHostFiles();

// A path of the system's own, as Files shows it.
std::string ShownPath(const std::string& path);

std::unique_ptr<EventLoop> NewHostLoop();

// For a loop that NewHostLoop has made.
std::unique_ptr<SocketHost> NewHostSockets(EventLoop& loop);

// Handles what the system has for this thread, as its own loops do, in a message box say.
void RunSystemLoop();

}  // namespace orvanto
