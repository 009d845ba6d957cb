#include "platform/win32/Win32Socket.h"

#include <ws2tcpip.h>
// After it, being windows.h's.
#include <iphlpapi.h>
#include <mstcpip.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/win32/Library.h"
#include "platform/win32/NameLookUp.h"

namespace orvanto::win32 {
namespace {

// The system takes a large piece as a whole, whatever its buffer holds: in parts the buffer's limit
// counts.
constexpr std::size_t kMostPerSend = 256 << 10;
// For less than this a report is waited for.
constexpr u_long kWorthwhile = 64 << 10;
constexpr long kConnectionEvents = FD_READ | FD_WRITE | FD_CLOSE;

SOCKET Number(const SocketHandle& handle) { return reinterpret_cast<SOCKET>(handle.Get()); }

SocketHandle Wrap(SOCKET socket) { return SocketHandle(reinterpret_cast<HANDLE>(socket)); }

SocketHandle MakeSocket() {
  return Wrap(WSASocketW(AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr, 0,
                         WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
}

void SwitchOn(const SocketHandle& handle, int level, int option) {
  const BOOL on = TRUE;
  setsockopt(Number(handle), level, option, reinterpret_cast<const char*>(&on), sizeof on);
}

// A peer that has gone without a word is noticed; the system asks ten times.
void KeepAlive(const SocketHandle& handle) {
  using std::chrono::milliseconds;
  tcp_keepalive values{
      .onoff = 1,
      .keepalivetime = static_cast<ULONG>(milliseconds(TcpSocket::kSilence).count()),
      .keepaliveinterval = static_cast<ULONG>(milliseconds(TcpSocket::kBetweenQuestions).count())};
  DWORD size = 0;
  WSAIoctl(Number(handle), SIO_KEEPALIVE_VALS, &values, sizeof values, nullptr, 0, &size, nullptr,
           nullptr);
}

std::string AddressText(const sockaddr_in& address) {
  std::array<char, INET_ADDRSTRLEN> text{};
  inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size());
  return text.data();
}

using AddressOf = decltype(getsockname);

// Nothing when there is no such end.
std::optional<sockaddr_in> EndOf(const SocketHandle& handle, AddressOf* which) {
  sockaddr_in address{};
  int size = sizeof address;
  if (!handle || which(Number(handle), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return {};
  }
  return address;
}

sockaddr_in SystemAddress(Ipv4 address, std::uint16_t port) {
  sockaddr_in made{};
  made.sin_family = AF_INET;
  made.sin_addr.s_addr = htonl(address);
  made.sin_port = htons(port);
  return made;
}

// The first address of this machine that is not its own loop.
std::string OwnAddress() {
  constexpr ULONG kFlags =
      GAA_FLAG_SKIP_ANYCAST | GAA_FLAG_SKIP_MULTICAST | GAA_FLAG_SKIP_DNS_SERVER;
  std::vector<std::max_align_t> memory;
  ULONG size = 16 << 10;
  ULONG result = ERROR_BUFFER_OVERFLOW;
  const auto first = [&memory] { return reinterpret_cast<IP_ADAPTER_ADDRESSES*>(memory.data()); };
  // What is needed may grow between two calls.
  for (int i = 0; i < 4 && result == ERROR_BUFFER_OVERFLOW; ++i) {
    memory.resize(size / sizeof memory[0] + 1);
    result = Late<decltype(GetAdaptersAddresses)>(L"iphlpapi.dll", "GetAdaptersAddresses")(
        AF_INET, kFlags, nullptr, first(), &size);
  }
  if (result != NO_ERROR) return "127.0.0.1";
  for (const auto* adapter = first(); adapter != nullptr; adapter = adapter->Next) {
    if (adapter->OperStatus != IfOperStatusUp || adapter->IfType == IF_TYPE_SOFTWARE_LOOPBACK ||
        adapter->FirstUnicastAddress == nullptr) {
      continue;
    }
    return AddressText(
        *reinterpret_cast<const sockaddr_in*>(adapter->FirstUnicastAddress->Address.lpSockaddr));
  }
  return "127.0.0.1";
}

class Win32Socket : public BufferedSocket {
 public:
  Win32Socket(Win32Loop& loop, SharedArrivals& arrivals, SocketHost::Use use,
              ConnectionRequests<SocketHandle>& requests)
      : BufferedSocket({loop, arrivals}, use), loop_(loop), requests_(requests) {}
  ~Win32Socket() override { Close(); }

  bool Accept(RequestId request) override;

  std::uint16_t LocalPort() const override {
    const auto end = EndOf(handle_, getsockname);
    return end ? ntohs(end->sin_port) : std::uint16_t{0};
  }
  std::string BoundAddress() const override {
    const auto end = EndOf(handle_, getsockname);
    return end ? AddressText(*end) : "";
  }
  std::string RemoteAddress() const override {
    const auto end = EndOf(handle_, getpeername);
    return end ? AddressText(*end) : "";
  }
  std::string LocalAddress() const override { return OwnAddress(); }

 protected:
  int SystemListen(Ipv4 address, std::uint16_t port) override;
  void SystemLookUp(const std::string& host) override;
  int SystemConnect(Ipv4 address, std::uint16_t port) override;

  Moved SystemSend(const char* bytes, std::size_t size) override {
    return Outcome(send(Number(handle_), bytes, static_cast<int>(std::min(size, kMostPerSend)), 0));
  }

  Moved SystemReceive(char* bytes, std::size_t size) override {
    const int count = recv(Number(handle_), bytes, static_cast<int>(size), 0);
    if (count <= 0) return count == 0 ? Moved{.end = true} : Outcome(count);
    std::size_t received = static_cast<std::size_t>(count);
    // The system may hand out less than there is, and each report costs more than another call.
    u_long waiting = 0;
    while (received < size && ioctlsocket(Number(handle_), FIONREAD, &waiting) == 0 &&
           waiting > kWorthwhile) {
      const int more =
          recv(Number(handle_), bytes + received, static_cast<int>(size - received), 0);
      if (more <= 0) break;
      received += static_cast<std::size_t>(more);
    }
    return {.count = received};
  }

  void SystemEndSending() override { shutdown(Number(handle_), SD_SEND); }

  void SystemClose() override {
    lookUp_.reset();
    if (message_ != 0) loop_.EndSocketMessages(std::exchange(message_, 0));
    handle_.Reset();
  }

 private:
  static Moved Outcome(int count) {
    if (count >= 0) return {.count = static_cast<std::size_t>(count)};
    const int error = WSAGetLastError();
    return {.error = error == WSAEWOULDBLOCK ? 0 : error};
  }

  bool Open(SocketHandle handle, State state, long events);
  void OnMessage(WPARAM socket, LPARAM event);
  void AcceptOne();

  Win32Loop& loop_;
  ConnectionRequests<SocketHandle>& requests_;
  SocketHandle handle_;
  UINT message_ = 0;  // of what is open; each opening has another
  std::unique_ptr<NameLookUp> lookUp_;
};

// Also makes the calls return instead of waiting. What is there already is reported anew.
bool Win32Socket::Open(SocketHandle handle, State state, long events) {
  if (!IsForData()) SwitchOn(handle, IPPROTO_TCP, TCP_NODELAY);
  // Urgent bytes stay where they are in the stream.
  SwitchOn(handle, SOL_SOCKET, SO_OOBINLINE);
  KeepAlive(handle);
  const UINT message =
      loop_.BeginSocketMessages([this](WPARAM socket, LPARAM event) { OnMessage(socket, event); });
  if (WSAAsyncSelect(Number(handle), loop_.Window(), message, events) != 0) {
    const int error = WSAGetLastError();
    loop_.EndSocketMessages(message);
    WSASetLastError(error);
    return false;
  }
  message_ = message;
  handle_ = std::move(handle);
  SetState(state);
  return true;
}

void Win32Socket::OnMessage(WPARAM socket, LPARAM event) {
  // A listener's number stays with its clients until they are taken.
  if (socket != Number(handle_)) return;
  const int error = WSAGETSELECTERROR(event);
  switch (WSAGETSELECTEVENT(event)) {
    case FD_ACCEPT:
      if (GetState() == State::Listening) AcceptOne();
      return;
    case FD_CONNECT:
      if (GetState() != State::Connecting) return;
      return error != 0 ? ConnectFailed(error) : Connected();
    case FD_READ:
      return Receive();
    case FD_WRITE:
      return SendMore();
    case FD_CLOSE:
      return error != 0 ? FailSending(error) : ReceiveRest();
    default:
      return;
  }
}

int Win32Socket::SystemListen(Ipv4 address, std::uint16_t port) {
  SocketHandle handle = MakeSocket();
  // Without SO_EXCLUSIVEADDRUSE: with it the port is not free again before the last client that was
  // accepted on it has gone altogether. No other user can take a port that is bound.
  const sockaddr_in place = SystemAddress(address, port);
  if (handle &&
      bind(Number(handle), reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0 &&
      listen(Number(handle), SOMAXCONN) == 0 &&
      Open(std::move(handle), State::Listening, FD_ACCEPT)) {
    return 0;
  }
  return WSAGetLastError();
}

// One for each message: accepting has the next one reported.
void Win32Socket::AcceptOne() {
  SocketHandle client = Wrap(accept(Number(handle_), nullptr, nullptr));
  if (!client) return;
  SetHandleInformation(client.Get(), HANDLE_FLAG_INHERIT, 0);
  // It has inherited the listener's messages.
  WSAAsyncSelect(Number(client), loop_.Window(), 0, 0);
  requests_.Offer(std::move(client),
                  [this](RequestId request) { Raise(onConnectionRequest, request); });
}

bool Win32Socket::Accept(RequestId request) {
  Close();
  SocketHandle handle = requests_.Take(request);
  return EndOf(handle, getpeername) && Open(std::move(handle), State::Connected, kConnectionEvents);
}

void Win32Socket::SystemLookUp(const std::string& host) {
  lookUp_ = std::make_unique<NameLookUp>(loop_, host, [this](const std::vector<Ipv4>& found) {
    lookUp_.reset();
    Found(found, WSAHOST_NOT_FOUND);
  });
}

int Win32Socket::SystemConnect(Ipv4 address, std::uint16_t port) {
  SocketHandle handle = MakeSocket();
  if (!handle || !Open(std::move(handle), State::Connecting, FD_CONNECT | kConnectionEvents)) {
    return WSAGetLastError();
  }
  const sockaddr_in place = SystemAddress(address, port);
  if (connect(Number(handle_), reinterpret_cast<const sockaddr*>(&place), sizeof place) == 0) {
    return 0;
  }
  const int error = WSAGetLastError();
  if (error == WSAEWOULDBLOCK) return 0;
  SystemClose();
  return error;
}

}  // namespace

Win32SocketHost::Win32SocketHost(Win32Loop& loop) : loop_(loop) {
  WSADATA data;
  if (const int error = WSAStartup(MAKEWORD(2, 2), &data); error != 0) {
    throw std::system_error(error, std::system_category(), "WSAStartup");
  }
}

Win32SocketHost::~Win32SocketHost() { WSACleanup(); }

std::unique_ptr<TcpSocket> Win32SocketHost::NewSocket(Use use) {
  return std::make_unique<Win32Socket>(loop_, arrivals_, use, requests_);
}

}  // namespace orvanto::win32
