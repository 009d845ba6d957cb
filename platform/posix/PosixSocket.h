// TCP sockets of a POSIX host, driven by the loop.
#pragma once

#include "platform/net/BufferedSocket.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/PosixLoop.h"

namespace orvanto::posix {

class PosixSocketHost : public SocketHost {
 public:
  explicit PosixSocketHost(PosixLoop& loop) : loop_(loop) {}
  std::unique_ptr<TcpSocket> NewSocket() override;

 private:
  PosixLoop& loop_;
  ConnectionRequests<Descriptor> requests_;
};

}  // namespace orvanto::posix
