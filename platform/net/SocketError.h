// The numbers that sockets fail with: Winsock's, on every host.
#pragma once

#include <string>

namespace orvanto {

enum SocketError : int {
  kSocketAccessDenied = 10013,
  kTooManySockets = 10024,
  kAddressInUse = 10048,
  kAddressNotAvailable = 10049,
  kNetworkDown = 10050,
  kNetworkUnreachable = 10051,
  kConnectionAborted = 10053,
  kConnectionReset = 10054,
  kNoBufferSpace = 10055,
  kConnectTimedOut = 10060,
  kConnectionRefused = 10061,
  kHostUnreachable = 10065,
  kHostNotFound = 11001,
};

// What it means, without a full stop. Any number has a text.
std::string SocketErrorText(int error);
// The same with the number: "The port is in use (10048)".
std::string NumberedErrorText(int error);

}  // namespace orvanto
