#include "platform/posix/PosixSocket.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/net/SocketError.h"

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

sockaddr_in SystemAddress(Ipv4 address, std::uint16_t port) {
  sockaddr_in made{};
  made.sin_family = AF_INET;
  made.sin_addr.s_addr = htonl(address);
  made.sin_port = htons(port);
  return made;
}

// Of the system's error.
int Number(int error) {
  constexpr std::pair<int, SocketError> kNumbers[] = {
      {EACCES, kSocketAccessDenied},      {EPERM, kSocketAccessDenied},
      {EMFILE, kTooManySockets},          {ENFILE, kTooManySockets},
      {EADDRINUSE, kAddressInUse},        {EADDRNOTAVAIL, kAddressNotAvailable},
      {ENETDOWN, kNetworkDown},           {ENETUNREACH, kNetworkUnreachable},
      {ECONNRESET, kConnectionReset},     {EPIPE, kConnectionReset},
      {ENOBUFS, kNoBufferSpace},          {ETIMEDOUT, kConnectTimedOut},
      {ECONNREFUSED, kConnectionRefused}, {EHOSTUNREACH, kHostUnreachable}};
  for (const auto& [system, number] : kNumbers) {
    if (error == system) return number;
  }
  return kConnectionAborted;
}

using AddressOf = decltype(::getsockname);

// Nothing when there is no such end.
std::optional<sockaddr_in> EndOf(const Descriptor& fd, AddressOf* which) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (!fd || which(fd.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
  return address;
}

class PosixSocket : public BufferedSocket {
 public:
  PosixSocket(PosixLoop& loop, SharedArrivals& arrivals, SocketHost::Use use,
              const AddressesOf& addressesOf, ConnectionRequests<Descriptor>& requests)
      : BufferedSocket({loop, arrivals}, use),
        loop_(loop),
        addressesOf_(addressesOf),
        requests_(requests) {}
  ~PosixSocket() override { Close(); }

  std::uint16_t LocalPort() const override;
  std::string BoundAddress() const override;
  bool Accept(RequestId request) override;
  std::string RemoteAddress() const override;
  std::string LocalAddress() const override { return OwnAddress(); }

 protected:
  int SystemListen(Ipv4 address, std::uint16_t port) override;
  void SystemLookUp(const std::string& host) override;
  int SystemConnect(Ipv4 address, std::uint16_t port) override;

  Moved SystemSend(const char* bytes, std::size_t size) override {
    return Outcome(::send(fd_.Get(), bytes, size, MSG_NOSIGNAL));
  }

  Moved SystemReceive(char* bytes, std::size_t size) override {
    const ssize_t count = ::recv(fd_.Get(), bytes, size, 0);
    return count == 0 ? Moved{.end = true} : Outcome(count);
  }

  void SystemEndSending() override { ::shutdown(fd_.Get(), SHUT_WR); }

  void SystemClose() override {
    lookUp_.reset();
    pause_.reset();
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
    return {.error = errno == EAGAIN || errno == EINTR ? 0 : Number(errno)};
  }

  void Open(Descriptor fd, State state);
  void OnReady(short ready);
  void AcceptWaiting();
  void WaitForDescriptors();
  void FinishConnecting();

  PosixLoop& loop_;
  const AddressesOf& addressesOf_;
  ConnectionRequests<Descriptor>& requests_;
  Descriptor fd_;
  std::unique_ptr<PosixLoop::Watch> watch_;
  std::unique_ptr<Timer> pause_;  // of a listener that has no descriptor for a new connection
  std::unique_ptr<NameLookUp> lookUp_;
};

void PosixSocket::Open(Descriptor fd, State state) {
  fd_ = std::move(fd);
  SetState(state);
  if (!IsForData()) SetOption(fd_, IPPROTO_TCP, TCP_NODELAY, 1);
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

int PosixSocket::SystemListen(Ipv4 address, std::uint16_t port) {
  Descriptor fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) return Number(errno);
  SetOption(fd, SOL_SOCKET, SO_REUSEADDR, 1);
  const sockaddr_in place = SystemAddress(address, port);
  if (::bind(fd.Get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0 ||
      ::listen(fd.Get(), SOMAXCONN) != 0) {
    return Number(errno);
  }
  Open(std::move(fd), State::Listening);
  return 0;
}

void PosixSocket::AcceptWaiting() {
  for (int i = 0; i < kAcceptsAtOnce; ++i) {
    Descriptor client(::accept4(fd_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!client) {
      if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
        WaitForDescriptors();
      }
      return;
    }
    bool same = true;
    requests_.Offer(std::move(client),
                    [&](RequestId request) { same = Raise(onConnectionRequest, request); });
    if (!same) return;
  }
}

// The listener stays ready, and would keep the thread busy for nothing.
void PosixSocket::WaitForDescriptors() {
  watch_->SetEvents(0);
  pause_ = loop_.NewTimer([this] {
    pause_->Stop();
    watch_->SetEvents(POLLIN);
  });
  pause_->Start(kPauseWithoutDescriptors);
}

bool PosixSocket::Accept(RequestId request) {
  Close();
  Descriptor fd = requests_.Take(request);
  if (!EndOf(fd, ::getpeername)) return false;
  Open(std::move(fd), State::Connected);
  return true;
}

void PosixSocket::SystemLookUp(const std::string& host) {
  try {
    lookUp_ = std::make_unique<NameLookUp>(loop_, addressesOf_, host,
                                           [this](const std::vector<Ipv4>& found) {
                                             lookUp_.reset();
                                             Found(found, kHostNotFound);
                                           });
  } catch (const std::system_error& error) {
    Found({}, Number(error.code().value()));
  }
}

int PosixSocket::SystemConnect(Ipv4 address, std::uint16_t port) {
  Descriptor fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!fd) return Number(errno);
  const sockaddr_in place = SystemAddress(address, port);
  if (::connect(fd.Get(), reinterpret_cast<const sockaddr*>(&place), sizeof place) != 0 &&
      errno != EINPROGRESS) {
    return Number(errno);
  }
  Open(std::move(fd), State::Connecting);
  return 0;
}

void PosixSocket::FinishConnecting() {
  int error = 0;
  socklen_t size = sizeof error;
  ::getsockopt(fd_.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
  if (error != 0) return ConnectFailed(Number(error));
  Connected();
}

std::uint16_t PosixSocket::LocalPort() const {
  const auto end = EndOf(fd_, ::getsockname);
  return end ? ntohs(end->sin_port) : std::uint16_t{0};
}

std::string PosixSocket::BoundAddress() const {
  const auto end = EndOf(fd_, ::getsockname);
  return end ? AddressText(*end) : "";
}

std::string PosixSocket::RemoteAddress() const {
  const auto end = EndOf(fd_, ::getpeername);
  return end ? AddressText(*end) : "";
}

}  // namespace

std::unique_ptr<TcpSocket> PosixSocketHost::NewSocket(Use use) {
  return std::make_unique<PosixSocket>(loop_, arrivals_, use, addressesOf_, requests_);
}

}  // namespace orvanto::posix
