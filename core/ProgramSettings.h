// Settings that are read once at start-up and then live in memory, where the dialogs change them.
#pragma once

#include <cstdint>
#include <string>

namespace orvanto {

struct RemoteSettings {
  std::string password;
  std::int16_t passwordRequired = 0;  // 1: a login needs the password
  std::int16_t chatAutoAccept = 0;    // 1: a chat request is not asked about
  std::string serverPort;             // as read at start, mostly empty
  bool serverOn = false;              // switch the server on at start
};

struct ProxySettings {
  std::string host;  // empty: no proxy
  std::int16_t port = 0;
  std::int16_t ftpThroughProxy = 0;
};

struct ProgramSettings {
  RemoteSettings remote;
  ProxySettings proxy;
  std::int16_t checkAutoUpdate = 0;
};

}  // namespace orvanto
