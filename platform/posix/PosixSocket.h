// TCP sockets of a POSIX host, driven by the loop.
#pragma once

#include <utility>

#include "platform/net/BufferedSocket.h"
#include "platform/net/ConnectionRequests.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/NameLookUp.h"
#include "platform/posix/PosixLoop.h"

namespace orvanto::posix {

class PosixSocketHost : public SocketHost {
 public:
  explicit PosixSocketHost(PosixLoop& loop, AddressesOf addressesOf = SystemAddressesOf)
      : loop_(loop), addressesOf_(std::move(addressesOf)) {}
  std::unique_ptr<TcpSocket> NewSocket(Use use) override;

 private:
  PosixLoop& loop_;
  const AddressesOf addressesOf_;
  SharedArrivals arrivals_;
  ConnectionRequests<Descriptor> requests_;
};

}  // namespace orvanto::posix
