#include "tests/support/FakeSockets.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platform/net/SocketError.h"

namespace orvanto {

FakeSocketHost::Socket::Socket(FakeSocketHost& host, Use use)
    : BufferedSocket({host.loop_, host.arrivals_}, use), host_(host) {
  host_.sockets.push_back(this);
}

FakeSocketHost::Socket::~Socket() {
  Close();
  host_.sockets.remove(this);
}

int FakeSocketHost::Socket::SystemListen(Ipv4 address, std::uint16_t port) {
  if (host_.taken.contains(port)) return kAddressInUse;
  listensOn = address;
  port_ = port != 0 ? port : 5000;
  SetState(State::Listening);
  return 0;
}

bool FakeSocketHost::Socket::Accept(RequestId) {
  Close();
  if (host_.clientsGo) return false;
  SetState(State::Connected);
  return true;
}

std::string FakeSocketHost::Socket::RemoteAddress() const {
  return GetState() == State::Connected ? peer : "";
}

bool FakeSocketHost::Socket::PeerConnects() {
  if (GetState() != State::Listening) return false;
  Raise(onConnectionRequest, 1);
  return GetState() == State::Connected;
}

void FakeSocketHost::Socket::PeerSends(const std::string& chunk) {
  ASSERT_EQ(GetState(), State::Connected);
  waiting += chunk;
  for (std::size_t left = 0; left != waiting.size() && !waiting.empty();) {
    left = waiting.size();
    Receive();
  }
}

void FakeSocketHost::Socket::PeerCloses() {
  ended = true;
  Receive();
  ended = false;
}

void FakeSocketHost::Socket::SystemLookUp(const std::string& host) {
  const auto found = host_.names.find(host);
  if (found == host_.names.end()) return Found({}, kHostNotFound);
  if (!found->second.empty()) Found(found->second, 0);
}

int FakeSocketHost::Socket::SystemConnect(Ipv4 address, std::uint16_t port) {
  tried.emplace_back(address, port);
  const auto refused = host_.unreachable.find(address);
  return refused == host_.unreachable.end() ? 0 : refused->second;
}

BufferedSocket::Moved FakeSocketHost::Socket::SystemSend(const char* bytes, std::size_t size) {
  if (sendError != 0) return {.error = sendError};
  size = std::min({size, room, atOnce});
  if (room != kAny) room -= size;
  sent.append(bytes, size);
  ++pieces;
  return {.count = size};
}

BufferedSocket::Moved FakeSocketHost::Socket::SystemReceive(char* bytes, std::size_t size) {
  size = waiting.copy(bytes, size);
  waiting.erase(0, size);
  if (size == 0) return {.error = receiveError, .end = ended};
  return {.count = size};
}

void FakeSocketHost::Socket::WantsChanged() {
  wants += std::string(WantsToReceive() ? "r" : "") + (WantsToSend() ? "w " : " ");
}

std::unique_ptr<TcpSocket> FakeSocketHost::NewSocket(Use use) {
  return std::make_unique<Socket>(*this, use);
}

}  // namespace orvanto
