// What the TCP sockets of every host keep to. A test program links socket_contract.cpp and
// instantiates SocketContract with its loop and its host.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "platform/EventLoop.h"
#include "platform/TcpSocket.h"

namespace orvanto {

struct SocketsUnderTest {
  std::unique_ptr<EventLoop> loop;
  std::unique_ptr<SocketHost> host;
  std::function<std::size_t()> openHandles;  // of this process
  // Handles what the system has for this thread, as its own loops do, in a message box say.
  std::function<void()> systemLoop;
};

class SocketContract : public testing::TestWithParam<std::function<SocketsUnderTest()>> {
 protected:
  SocketContract() : made_(GetParam()()), loop_(*made_.loop) {}

  std::unique_ptr<TcpSocket> NewSocket() const { return made_.host->NewSocket(); }
  // Runs the loop until `reached`; false when that takes too long.
  bool Until(const std::function<bool()>& reached) const;
  // Handles what happens on this machine anyway within a moment.
  void Settle() const;
  // Listens, and takes its first client itself. Both ends are connected then.
  void ConnectEnds(TcpSocket& server, TcpSocket& client) const;

  SocketsUnderTest made_;
  EventLoop& loop_;
};

}  // namespace orvanto
