// Transfers through the loop and the sockets, and the plain loops that are their limit. Each prints
// megabytes a second. Sent are files in chunks of 1,024 bytes, each after the one before is
// complete; received is what arrives, written at once.
//   transfer_bench send-plain PORT FILE [CHUNK]
//   transfer_bench send PORT FILE IDLE-CONNECTIONS TRANSFERS-AT-ONCE
//   transfer_bench receive-plain PORT FILE    port 0: the connection is the standard input
//   transfer_bench receive PORT FILE       opens, writes and closes for each arrival
// bench/transfer_peer is the other end.
#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#endif
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#ifdef _WIN32
#include "platform/win32/Win32Files.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/Win32Socket.h"
using HostLoop = orvanto::win32::Win32Loop;
using HostSockets = orvanto::win32::Win32SocketHost;
using HostFiles = orvanto::win32::Win32Files;
constexpr int kBinary = O_BINARY;
#else
#include "platform/posix/Paths.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixLoop.h"
#include "platform/posix/PosixSocket.h"
using HostLoop = orvanto::posix::PosixLoop;
using HostSockets = orvanto::posix::PosixSocketHost;
using HostFiles = orvanto::posix::PosixFiles;
constexpr int kBinary = 0;
#endif

namespace {

using orvanto::File;
using orvanto::Files;
using orvanto::SocketHost;
using orvanto::TcpSocket;
using Clock = std::chrono::steady_clock;

constexpr const char* kHost = "127.0.0.1";
constexpr std::size_t kChunk = 1024;

[[noreturn]] void Fail(const char* what) {
  std::cerr << what << " failed\n";
  std::exit(1);
}

void Report(std::uint64_t bytes, Clock::time_point begin) {
  std::cout << static_cast<double>(bytes) / 1e6 /
                   std::chrono::duration<double>(Clock::now() - begin).count()
            << std::endl;
}

auto ConnectPlain(std::uint16_t port) {
  const auto fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    Fail("connecting");
  }
  return fd;
}

void SendPlain(std::uint16_t port, const char* path, std::size_t chunkSize) {
  const auto fd = ConnectPlain(port);
  const int file = open(path, O_RDONLY | kBinary);
  const auto begin = Clock::now();
  std::uint64_t sent = 0;
  std::vector<char> chunk(chunkSize);
  for (;;) {
    const auto count = read(file, chunk.data(), static_cast<unsigned>(chunk.size()));
    if (count <= 0) break;
    if (send(fd, chunk.data(), static_cast<unsigned>(count), 0) != count) Fail("sending");
    sent += static_cast<std::uint64_t>(count);
  }
  Report(sent, begin);
}

void ReceivePlain(std::uint16_t port, const char* path) {
  const auto fd = port == 0 ? decltype(ConnectPlain(port)){} : ConnectPlain(port);
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | kBinary, 0666);
  std::vector<char> buffer(256 << 10);
  const auto begin = Clock::now();
  std::uint64_t received = 0;
  for (;;) {
    const auto count = recv(fd, buffer.data(), 256 << 10, 0);
    if (count <= 0) break;
    if (write(file, buffer.data(), static_cast<unsigned>(count)) != count) Fail("writing");
    received += static_cast<std::uint64_t>(count);
  }
  Report(received, begin);
}

class Ground {
 public:
  std::unique_ptr<TcpSocket> Connect(std::uint16_t port, SocketHost::Use use) {
    auto made = sockets.NewSocket(use);
    made->onError = [](int) { Fail("connecting"); };
    bool connected = false;
    made->onConnected = [&] { connected = true; };
    made->Connect(kHost, port);
    loop.WaitFor(
        owner_, [&] { return connected; }, std::chrono::seconds(10));
    if (!connected) Fail("connecting");
    made->onConnected = nullptr;
    return made;
  }

  HostLoop loop;
  HostSockets sockets{loop};
  HostFiles files;

 private:
  const std::shared_ptr<int> owner_ = std::make_shared<int>();
};

// One file on its way.
class Sending {
 public:
  Sending(Ground& ground, std::uint16_t port, const std::string& path, std::size_t& open)
      : file_(ground.files.Open(path, Files::Access::Read).file),
        socket_(ground.Connect(port, SocketHost::Use::Data)),
        ground_(ground),
        open_(open) {
    if (!file_) Fail("opening");
    size_ = file_->Size();
    ++open_;
    socket_->onSendComplete = [this] { Next(); };
  }
  void Next() {
    const File::ReadResult read = file_->ReadAt(sent_, chunk_, sizeof chunk_);
    if (read.count == 0) {
      if (sent_ != size_) Fail("reading");
      socket_->Close();
      if (--open_ == 0) ground_.loop.Quit();
      return;
    }
    sent_ += read.count;
    socket_->Send({chunk_, read.count});
  }
  std::uint64_t Sent() const { return sent_; }

 private:
  const std::unique_ptr<File> file_;
  const std::unique_ptr<TcpSocket> socket_;
  Ground& ground_;
  std::size_t& open_;
  std::uint64_t size_ = 0;
  std::uint64_t sent_ = 0;
  char chunk_[kChunk];
};

void Send(std::uint16_t port, const std::string& path, int idle, int atOnce) {
  Ground ground;
  std::vector<std::unique_ptr<TcpSocket>> connections;
  for (int i = 0; i < idle; ++i) {
    connections.push_back(ground.Connect(port, SocketHost::Use::Conversation));
  }
  std::size_t open = 0;
  std::vector<std::unique_ptr<Sending>> sendings;
  for (int i = 0; i < atOnce; ++i) {
    sendings.push_back(std::make_unique<Sending>(ground, port, path, open));
  }
  const auto begin = Clock::now();
  for (const auto& sending : sendings) sending->Next();
  ground.loop.Run();
  std::uint64_t sent = 0;
  for (const auto& sending : sendings) sent += sending->Sent();
  Report(sent, begin);
}

void Receive(std::uint16_t port, const std::string& path) {
  Ground ground;
  const auto socket = ground.Connect(port, SocketHost::Use::Data);
  std::uint64_t received = 0;
  long arrivals = 0;
  socket->onDataArrival = [&] {
    const std::string_view bytes = socket->GetData();
    const Files::Opened opened = ground.files.Open(path, Files::Access::Write);
    if (!opened.file || opened.file->WriteAt(received, bytes) != orvanto::kNoError) Fail("writing");
    received += bytes.size();
    ++arrivals;
  };
  socket->onClosed = [&] { ground.loop.Quit(); };
  const auto begin = Clock::now();
  socket->onDataArrival();  // what came before there was a handler
  ground.loop.Run();
  Report(received, begin);
  std::cerr << arrivals << " arrivals\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  const std::string what = argv[1];
  const auto port = static_cast<std::uint16_t>(std::atoi(argv[2]));
#ifdef _WIN32
  WSADATA data;
  WSAStartup(MAKEWORD(2, 2), &data);
  const std::string path = argv[3];
#else
  const std::string path = orvanto::posix::FromNative(argv[3]);
#endif
  if (what == "send-plain") {
    SendPlain(port, argv[3], argc > 4 ? static_cast<std::size_t>(std::atoi(argv[4])) : kChunk);
  }
  if (what == "send" && argc == 6) Send(port, path, std::atoi(argv[4]), std::atoi(argv[5]));
  if (what == "receive-plain") ReceivePlain(port, argv[3]);
  if (what == "receive") Receive(port, path);
  return 0;
}
