// Sockets without a network.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "platform/net/TcpSocket.h"

namespace orvanto {

// A test is the other end: it connects, sends chunks and reads what
// came.
class FakeSocketHost : public SocketHost {
 public:
  class Socket : public TcpSocket {
   public:
    explicit Socket(FakeSocketHost& host) : host_(host) {}
    ~Socket() override { host_.sockets.remove(this); }
    State GetState() const override { return state_; }
    bool Listen(std::uint16_t port) override;
    std::uint16_t LocalPort() const override { return port_; }
    bool Accept(RequestId) override;
    void Connect(const std::string&, std::uint16_t) override { state_ = State::Connecting; }
    void Send(std::string_view bytes) override {
      if (state_ != State::Connected || bytes.empty()) return;
      sent += bytes;
      ++pieces;
    }
    std::string GetData() override { return std::exchange(arrived_, {}); }
    void Close() override { state_ = State::Closed; }
    std::string RemoteAddress() const override {
      return state_ == State::Connected ? "10.1.2.3" : "";
    }
    std::string LocalAddress() const override { return "10.9.8.7"; }

    // The other end.
    bool PeerConnects();  // false where nothing listens
    void PeerSends(const std::string& chunk);
    void PeerCloses();
    std::string Sent() {
      pieces = 0;
      return std::exchange(sent, {});
    }
    std::string sent;
    int pieces = 0;  // in which that was sent

   private:
    FakeSocketHost& host_;
    State state_ = State::Closed;
    std::uint16_t port_ = 0;
    std::string arrived_;
  };

  std::unique_ptr<TcpSocket> NewSocket() override;
  std::list<Socket*> sockets;     // in the order of their making
  std::set<std::uint16_t> taken;  // ports on which nobody can listen
  bool clientsGo = false;         // before they are accepted
};

}  // namespace orvanto
