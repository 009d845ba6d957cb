// The connections of a host that are being announced.
#pragma once

#include <map>
#include <utility>

#include "platform/net/TcpSocket.h"

namespace orvanto {

template <typename Owner>
class ConnectionRequests {
 public:
  // Calls announce(id), then drops the connection unless it was taken.
  template <typename Announce>
  void Offer(Owner connection, const Announce& announce) {
    const TcpSocket::RequestId id = ++last_;
    struct Forget {
      ~Forget() { all.erase(id); }
      std::map<TcpSocket::RequestId, Owner>& all;
      TcpSocket::RequestId id;
    } const forget{waiting_, id};
    waiting_.emplace(id, std::move(connection));
    announce(id);
  }

  // No connection when there is none of that number.
  Owner Take(TcpSocket::RequestId id) {
    const auto found = waiting_.find(id);
    return found == waiting_.end() ? Owner() : std::exchange(found->second, Owner());
  }

 private:
  std::map<TcpSocket::RequestId, Owner> waiting_;
  TcpSocket::RequestId last_ = 0;
};

}  // namespace orvanto
