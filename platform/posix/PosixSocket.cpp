#include "platform/posix/PosixSocket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstring>

#include "platform/posix/Descriptor.h"

namespace orvanto::posix {
namespace {

constexpr int kBacklog = 128;
// New connections that one wake-up takes.
constexpr int kAcceptsAtOnce = 16;

std::string AddressText(const sockaddr_in& address) {
  std::array<char, INET_ADDRSTRLEN> text{};
  ::inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
  return text.data();
}

// The first address of this machine that is not its own loop.
std::string OwnAddress() {
  std::string found = "127.0.0.1";
  ifaddrs* all = nullptr;
  if (::getifaddrs(&all) != 0) return found;
  for (const ifaddrs* one = all; one != nullptr; one = one->ifa_next) {
    if (one->ifa_addr == nullptr || one->ifa_addr->sa_family != AF_INET) continue;
    sockaddr_in address{};
    std::memcpy(&address, one->ifa_addr, sizeof address);
    if (ntohl(address.sin_addr.s_addr) >> 24 == IN_LOOPBACKNET) continue;
    found = AddressText(address);
    break;
  }
  ::freeifaddrs(all);
  return found;
}

class PosixSocket : public TcpSocket {
 public:
  explicit PosixSocket(PosixLoop& loop) : loop_(loop) {}
  ~PosixSocket() override { Close(); }

  State GetState() const override { return state_; }

  bool Listen(std::uint16_t port) override {
    Close();
    Descriptor fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!fd) return false;
    const int on = 1;
    ::setsockopt(fd.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (::bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(fd.Get(), kBacklog) != 0) {
      return false;
    }
    Open(std::move(fd), State::Listening);
    return true;
  }

  std::uint16_t LocalPort() const override {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (!fd_ || ::getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      return 0;
    }
    return ntohs(address.sin_port);
  }

  bool Accept(RequestId request) override {
    Close();
    // The one who announced it keeps its own and closes it behind the event.
    Descriptor fd(::fcntl(static_cast<int>(request), F_DUPFD_CLOEXEC, 0));
    if (!fd) return false;
    Open(std::move(fd), State::Connected);
    SetNoDelay();
    return true;
  }

  void Connect(const std::string& host, std::uint16_t port) override;

  void Send(std::string_view bytes) override {
    if (state_ != State::Connected || bytes.empty()) return;
    sending_ = true;
    if (unsent_.empty()) {
      const ssize_t sent = ::send(fd_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (sent > 0) bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    // What fails for good is found again, and reported, by the loop.
    unsent_.append(bytes);
    watch_->SetEvents(POLLIN | POLLOUT);
  }

  std::string GetData() override { return std::exchange(arrived_, {}); }

  void Close() override {
    ++generation_;
    watch_.reset();
    fd_.Close();
    state_ = State::Closed;
    unsent_.clear();
    arrived_.clear();
    sending_ = false;
  }

  std::string RemoteAddress() const override {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (state_ != State::Connected ||
        ::getpeername(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      return "";
    }
    return AddressText(address);
  }

  std::string LocalAddress() const override { return OwnAddress(); }

 private:
  void Open(Descriptor fd, State state) {
    fd_ = std::move(fd);
    state_ = state;
    const short events = state == State::Connecting ? POLLOUT : POLLIN;
    watch_ = loop_.WatchFd(fd_.Get(), events, [this](short ready) { OnReady(ready); });
  }

  void SetNoDelay() {
    const int on = 1;
    ::setsockopt(fd_.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  }

  // An event, unless the socket has been closed or opened anew since `generation`. False then.
  template <typename Event, typename... Arguments>
  bool Raise(std::uint64_t generation, const Event& event, Arguments... arguments) {
    if (generation != generation_) return false;
    if (auto handler = event) handler(arguments...);
    return generation == generation_;
  }

  void OnReady(short ready) {
    const std::uint64_t generation = generation_;
    if (state_ == State::Listening) return AcceptWaiting(generation);
    if (state_ == State::Connecting) return FinishConnecting(generation);
    if ((ready & POLLOUT) != 0 && !SendMore(generation)) return;
    if ((ready & (POLLIN | POLLHUP | POLLERR)) != 0) Receive(generation);
  }

  void AcceptWaiting(std::uint64_t generation) {
    for (int i = 0; i < kAcceptsAtOnce; ++i) {
      const Descriptor client(::accept4(fd_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
      if (!client) return;
      if (!Raise(generation, onConnectionRequest, RequestId{client.Get()})) return;
    }
  }

  void FinishConnecting(std::uint64_t generation) {
    int error = 0;
    socklen_t size = sizeof error;
    ::getsockopt(fd_.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0) return Fail(generation, error);
    state_ = State::Connected;
    SetNoDelay();
    watch_->SetEvents(POLLIN);
    Raise(generation, onConnected);
  }

  bool SendMore(std::uint64_t generation) {
    if (!unsent_.empty()) {
      const ssize_t sent = ::send(fd_.Get(), unsent_.data(), unsent_.size(), MSG_NOSIGNAL);
      if (sent < 0 && errno != EAGAIN && errno != EINTR) {
        Fail(generation, errno);
        return false;
      }
      if (sent > 0) unsent_.erase(0, static_cast<std::size_t>(sent));
    }
    if (!unsent_.empty()) return true;
    watch_->SetEvents(POLLIN);
    if (!std::exchange(sending_, false)) return true;
    return Raise(generation, onSendComplete);
  }

  void Receive(std::uint64_t generation) {
    // A peer that writes and never reads: what waits for it has its limit.
    if (unsent_.size() > kMostUnsent) return Fail(generation, ENOBUFS);
    std::array<char, kMostPerArrival> buffer;
    const ssize_t count = ::recv(fd_.Get(), buffer.data(), buffer.size(), 0);
    if (count > 0) {
      arrived_.append(buffer.data(), static_cast<std::size_t>(count));
      Raise(generation, onDataArrival);
    } else if (count == 0) {
      End();
      Raise(generation_, onClosed);
    } else if (errno != EAGAIN && errno != EINTR) {
      Fail(generation, errno);
    }
  }

  void End() {
    // From here on nothing of the old connection is raised but the end itself.
    watch_.reset();
    Close();
  }

  void Fail(std::uint64_t generation, int error) {
    if (generation != generation_) return;
    End();
    Raise(generation_, onError, error);
  }

  PosixLoop& loop_;
  Descriptor fd_;
  State state_ = State::Closed;
  std::unique_ptr<PosixLoop::Watch> watch_;
  std::string unsent_;
  std::string arrived_;
  bool sending_ = false;                                  // onSendComplete is due
  std::uint64_t generation_ = 0;                          // of what is open
  std::shared_ptr<int> alive_ = std::make_shared<int>();  // for what is posted
};

void PosixSocket::Connect(const std::string& host, std::uint16_t port) {
  Close();
  const std::uint64_t generation = generation_;
  // Failures come from the loop, like those of the network.
  const auto failLater = [this, generation](int error) {
    state_ = State::Connecting;
    loop_.Post([this, generation, error, alive = std::weak_ptr<int>(alive_)] {
      if (!alive.expired()) Fail(generation, error);
    });
  };
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return failLater(EHOSTUNREACH);
  sockaddr_in address{};
  std::memcpy(&address, found->ai_addr, sizeof address);
  ::freeaddrinfo(found);
  address.sin_port = htons(port);
  Descriptor fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) return failLater(errno);
  if (::connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
      errno != EINPROGRESS) {
    return failLater(errno);
  }
  Open(std::move(fd), State::Connecting);
}

}  // namespace

std::unique_ptr<TcpSocket> PosixSocketHost::NewSocket() {
  return std::make_unique<PosixSocket>(loop_);
}

}  // namespace orvanto::posix
