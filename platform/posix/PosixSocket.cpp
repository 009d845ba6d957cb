#include "platform/posix/PosixSocket.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

namespace orvanto::posix {
namespace {

// New connections that one wake-up takes.
constexpr int kAcceptsAtOnce = 16;
constexpr std::chrono::milliseconds kPauseWithoutDescriptors(100);
constexpr int kQuestions = 4;  // that a silent peer leaves unanswered

void SetOption(const Descriptor& fd, int level, int name, int value) {
  ::setsockopt(fd.Get(), level, name, &value, sizeof value);
}

// A peer that has gone without a word is noticed after the silence and as many questions.
void KeepAlive(const Descriptor& fd) {
  SetOption(fd, IPPROTO_TCP, TCP_KEEPIDLE, static_cast<int>(TcpSocket::kSilence.count()));
  SetOption(fd, IPPROTO_TCP, TCP_KEEPINTVL, static_cast<int>(TcpSocket::kBetweenQuestions.count()));
  SetOption(fd, IPPROTO_TCP, TCP_KEEPCNT, kQuestions);
  SetOption(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
}

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

class PosixSocket : public BufferedSocket {
 public:
  PosixSocket(PosixLoop& loop, ConnectionRequests<Descriptor>& requests)
      : BufferedSocket(loop, ENOBUFS), loop_(loop), requests_(requests) {}
  ~PosixSocket() override { Close(); }

  bool Listen(std::uint16_t port) override;
  std::uint16_t LocalPort() const override;
  bool Accept(RequestId request) override;
  void Connect(const std::string& host, std::uint16_t port) override;
  std::string RemoteAddress() const override;
  std::string LocalAddress() const override { return OwnAddress(); }

 protected:
  Moved SystemSend(const char* bytes, std::size_t size) override {
    return Outcome(::send(fd_.Get(), bytes, size, MSG_NOSIGNAL));
  }

  Moved SystemReceive(char* bytes, std::size_t size) override {
    const ssize_t count = ::recv(fd_.Get(), bytes, size, 0);
    return count == 0 ? Moved{.end = true} : Outcome(count);
  }

  void SystemClose() override {
    pause_->Stop();
    watch_.reset();
    fd_.Close();
  }

  void WantsChanged() override {
    watch_->SetEvents(
        static_cast<short>((WantsToReceive() ? POLLIN : 0) | (WantsToSend() ? POLLOUT : 0)));
  }

 private:
  static Moved Outcome(ssize_t count) {
    if (count >= 0) return {.count = static_cast<std::size_t>(count)};
    return {.error = errno == EAGAIN || errno == EINTR ? 0 : errno};
  }

  void Open(Descriptor fd, State state);
  void OnReady(short ready);
  void AcceptWaiting();
  void FinishConnecting();

  PosixLoop& loop_;
  ConnectionRequests<Descriptor>& requests_;
  Descriptor fd_;
  std::unique_ptr<PosixLoop::Watch> watch_;
  // Of a listener that has no descriptor for a new connection.
  const std::unique_ptr<Timer> pause_ = loop_.NewTimer([this] {
    pause_->Stop();
    watch_->SetEvents(POLLIN);
  });
};

void PosixSocket::Open(Descriptor fd, State state) {
  fd_ = std::move(fd);
  SetState(state);
  SetOption(fd_, IPPROTO_TCP, TCP_NODELAY, 1);
  // Urgent bytes stay where they are in the stream.
  SetOption(fd_, SOL_SOCKET, SO_OOBINLINE, 1);
  KeepAlive(fd_);
  const short events = state == State::Connecting ? POLLOUT : POLLIN;
  watch_ = loop_.WatchFd(fd_.Get(), events, [this](short ready) { OnReady(ready); });
}

void PosixSocket::OnReady(short ready) {
  if (GetState() == State::Listening) return AcceptWaiting();
  if (GetState() == State::Connecting) return FinishConnecting();
  const std::uint64_t generation = Generation();
  // Reading first: what the peer sent before it went is not lost to a send that fails.
  if ((ready & (POLLIN | POLLHUP | POLLERR)) != 0) Receive();
  if ((ready & POLLOUT) != 0 && generation == Generation()) SendMore();
}

bool PosixSocket::Listen(std::uint16_t port) {
  Close();
  Descriptor fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) return false;
  SetOption(fd, SOL_SOCKET, SO_REUSEADDR, 1);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  if (::bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(fd.Get(), SOMAXCONN) != 0) {
    return false;
  }
  Open(std::move(fd), State::Listening);
  return true;
}

void PosixSocket::AcceptWaiting() {
  for (int i = 0; i < kAcceptsAtOnce; ++i) {
    Descriptor client(::accept4(fd_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!client) {
      if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        // It stays ready, and would keep the thread busy for nothing.
        watch_->SetEvents(0);
        pause_->Start(kPauseWithoutDescriptors);
      }
      return;
    }
    bool same = true;
    requests_.Offer(std::move(client),
                    [&](RequestId request) { same = Raise(onConnectionRequest, request); });
    if (!same) return;
  }
}

bool PosixSocket::Accept(RequestId request) {
  Close();
  Descriptor fd = requests_.Take(request);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (!fd || ::getpeername(fd.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return false;
  }
  Open(std::move(fd), State::Connected);
  return true;
}

// A name that no file of this machine knows is asked for over the network, and that blocks.
void PosixSocket::Connect(const std::string& host, std::uint16_t port) {
  Close();
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(host.c_str(), nullptr, &hints, &found) != 0) return FailLater(EHOSTUNREACH);
  sockaddr_in address{};
  std::memcpy(&address, found->ai_addr, sizeof address);
  ::freeaddrinfo(found);
  address.sin_port = htons(port);
  Descriptor fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) return FailLater(errno);
  if (::connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
      errno != EINPROGRESS) {
    return FailLater(errno);
  }
  Open(std::move(fd), State::Connecting);
}

void PosixSocket::FinishConnecting() {
  int error = 0;
  socklen_t size = sizeof error;
  ::getsockopt(fd_.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) return Fail(error);
  Connected();
}

std::uint16_t PosixSocket::LocalPort() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (!fd_ || ::getsockname(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return 0;
  }
  return ntohs(address.sin_port);
}

std::string PosixSocket::RemoteAddress() const {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (GetState() != State::Connected ||
      ::getpeername(fd_.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return "";
  }
  return AddressText(address);
}

}  // namespace

std::unique_ptr<TcpSocket> PosixSocketHost::NewSocket() {
  return std::make_unique<PosixSocket>(loop_, requests_);
}

}  // namespace orvanto::posix
