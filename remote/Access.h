// Who is let in: what both servers ask.
#pragma once

#include <string>
#include <string_view>

#include "core/ProgramSettings.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

inline constexpr const char* kNoPassword =
    "No password is set: nobody is let in from other computers.";

// Takes as long for a text that differs late as for one that differs at once, so that the time
// tells nobody how much of a password he has found.
bool SamePassword(std::string_view given, std::string_view password);

// One is required, and there is one.
bool HasPassword(const RemoteSettings& remote);

// Of a connection: whether both of its ends are here.
bool IsFromThisComputer(const TcpSocket& socket);

// What the servers listen on.
std::string ListeningAddress(const RemoteSettings& remote);

}  // namespace orvanto
