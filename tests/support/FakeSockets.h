// Sockets over a system that does exactly what a test says.
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/net/BufferedSocket.h"

namespace orvanto {

class FakeSocketHost : public SocketHost {
 public:
  static constexpr std::size_t kAny = std::string::npos;

  // The system and the other end of a connection.
  class Socket : public BufferedSocket {
   public:
    Socket(FakeSocketHost& host, Use use);
    ~Socket() override;
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
    bool Accept(RequestId) override;
    std::string RemoteAddress() const override;
    std::string LocalAddress() const override { return "10.9.8.7"; }

    bool PeerConnects();  // false where nothing listens
    void PeerSends(const std::string& chunk);
    void PeerCloses();
    std::string Sent() {
      pieces = 0;
      return std::exchange(sent, {});
    }
    std::string sent;  // what the system has taken
    int pieces = 0;    // in which it did

    std::size_t room = kAny;    // what the system still takes
    std::size_t atOnce = kAny;  // and of one send
    int sendError = 0;
    std::string waiting;  // to be received
    bool ended = false;   // behind that
    int receiveError = 0;
    std::string wants;  // what it waited for, one after the other; sending has ended: "."
    std::vector<std::pair<Ipv4, std::uint16_t>> tried;  // to connect to
    std::string peer = "10.1.2.3";                      // where the other end is
    Ipv4 listensOn{};

   protected:
    int SystemListen(Ipv4 address, std::uint16_t port) override;
    void SystemLookUp(const std::string& host) override;
    int SystemConnect(Ipv4 address, std::uint16_t port) override;
    Moved SystemSend(const char* bytes, std::size_t size) override;
    Moved SystemReceive(char* bytes, std::size_t size) override;
    void SystemEndSending() override { wants += '.'; }
    void SystemClose() override { wants.clear(); }
    void WantsChanged() override;

   private:
    FakeSocketHost& host_;
    std::uint16_t port_ = 0;
  };

  explicit FakeSocketHost(EventLoop& loop) : loop_(loop) {}
  std::unique_ptr<TcpSocket> NewSocket(Use use) override;

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
