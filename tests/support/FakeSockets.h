// Sockets over a system that does exactly what a test says.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "platform/net/BufferedSocket.h"
#include "platform/net/SocketError.h"

namespace orvanto {

class FakeSocketHost : public SocketHost {
 public:
  static constexpr std::size_t kAny = std::string::npos;

  // The system and the other end of a connection.
  class Socket : public BufferedSocket {
   public:
    Socket(FakeSocketHost& host, Use use)
        : BufferedSocket({host.loop_, host.arrivals_}, use), host_(host) {
      host_.sockets.push_back(this);
    }
    ~Socket() override {
      Close();
      host_.sockets.remove(this);
    }
    using BufferedSocket::Connected;
    using BufferedSocket::ConnectFailed;
    using BufferedSocket::FailSending;
    using BufferedSocket::Found;
    using BufferedSocket::Receive;
    using BufferedSocket::ReceiveRest;
    using BufferedSocket::SendMore;

    std::uint16_t LocalPort() const override { return port_; }
    std::string BoundAddress() const override {
      const bool all = GetState() == State::Listening && listensOn == Ipv4{};
      return all ? kAllAddresses : "10.9.8.7";
    }
    bool Accept(RequestId) override {
      Close();
      if (!host_.clientsGo) SetState(State::Connected);
      return !host_.clientsGo;
    }
    std::string RemoteAddress() const override { return IsConnected() ? peer : ""; }
    std::string LocalAddress() const override { return "10.9.8.7"; }

    bool PeerConnects() {  // false where nothing listens
      if (GetState() != State::Listening) return false;
      Raise(onConnectionRequest, 1);
      return IsConnected();
    }
    void PeerSends(const std::string& chunk) {
      ASSERT_TRUE(IsConnected());
      waiting += chunk;
      for (std::size_t left = 0; left != waiting.size() && !waiting.empty();) {
        left = waiting.size();
        Receive();
      }
    }
    void PeerCloses() {
      ended = true;
      Receive();
      ended = false;
    }
    std::string Sent() {
      pieces = 0;
      return std::exchange(sent, {});
    }
    std::string sent;           // what the system has taken
    int pieces = 0;             // in which it did
    std::size_t room = kAny;    // what the system still takes
    std::size_t atOnce = kAny;  // and of one send
    int sendError = 0, receiveError = 0;
    std::string waiting;  // to be received
    bool ended = false;   // behind that
    std::string wants;    // what it waited for, one after the other; sending has ended: "."
    std::vector<std::pair<Ipv4, std::uint16_t>> tried;  // to connect to
    std::string peer = "10.1.2.3";                      // where the other end is
    Ipv4 listensOn{};

   protected:
    int SystemListen(Ipv4 address, std::uint16_t port) override {
      if (host_.taken.contains(port)) return kAddressInUse;
      listensOn = address;
      port_ = port != 0 ? port : 5000;
      SetState(State::Listening);
      return 0;
    }
    void SystemLookUp(const std::string& host) override {
      const auto found = host_.names.find(host);
      if (found == host_.names.end()) return Found({}, kHostNotFound);
      if (!found->second.empty()) Found(found->second, 0);
    }
    int SystemConnect(Ipv4 address, std::uint16_t port) override {
      tried.emplace_back(address, port);
      return host_.unreachable.contains(address) ? host_.unreachable[address] : 0;
    }
    Moved SystemSend(const char* bytes, std::size_t size) override {
      if (sendError != 0) return {.error = sendError};
      size = std::min({size, room, atOnce});
      if (room != kAny) room -= size;
      sent.append(bytes, size);
      ++pieces;
      return {.count = size};
    }
    Moved SystemReceive(char* bytes, std::size_t size) override {
      size = waiting.copy(bytes, size);
      waiting.erase(0, size);
      if (size == 0) return {.error = receiveError, .end = ended};
      return {.count = size};
    }
    void SystemEndSending() override { wants += '.'; }
    void SystemClose() override { wants.clear(); }
    void WantsChanged() override {
      wants += std::string(WantsToReceive() ? "r" : "") + (WantsToSend() ? "w " : " ");
    }

   private:
    bool IsConnected() const { return GetState() == State::Connected; }

    FakeSocketHost& host_;
    std::uint16_t port_ = 0;
  };

  explicit FakeSocketHost(EventLoop& loop) : loop_(loop) {}
  std::unique_ptr<TcpSocket> NewSocket(Use use) override {
    return std::make_unique<Socket>(*this, use);
  }

  std::list<Socket*> sockets;     // in the order of their making
  std::set<std::uint16_t> taken;  // ports on which nobody can listen
  bool clientsGo = false;         // before they are accepted
  // Of names; without addresses there is no answer. Others are not known.
  std::map<std::string, std::vector<Ipv4>> names;
  std::map<Ipv4, int> unreachable;  // refused at once, with that error

 private:
  EventLoop& loop_;
  SharedArrivals arrivals_;
};

}  // namespace orvanto
