#include "platform/net/SocketError.h"

namespace orvanto {

std::string SocketErrorText(int error) {
  switch (error) {
    case kSocketAccessDenied:
      return "Access to the port is denied";
    case kTooManySockets:
      return "Too many connections are open";
    case kAddressInUse:
      return "The port is in use";
    case kAddressNotAvailable:
      return "The address is not one of this computer";
    case kNetworkDown:
      return "The network is down";
    case kNetworkUnreachable:
      return "The network cannot be reached";
    case kConnectionAborted:
      return "The connection was given up";
    case kConnectionReset:
      return "The other side has broken the connection";
    case kNoBufferSpace:
      return "The other side does not take what is sent";
    case kConnectTimedOut:
      return "The other side does not answer";
    case kConnectionRefused:
      return "The connection was refused";
    case kHostUnreachable:
      return "The computer cannot be reached";
    case kHostNotFound:
      return "The computer's name is not known";
    default:
      return "The connection has failed";
  }
}

std::string NumberedErrorText(int error) {
  return SocketErrorText(error) + " (" + std::to_string(error) + ")";
}

}  // namespace orvanto
