// What an HTTP server sends to a download: a byte of each piece tells what else happens.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "download/CompatDownloadPolicy.h"
#include "download/HttpDownload.h"
#include "tests/support/FakeFiles.h"

namespace orvanto {
namespace {

void Check(bool right) {
  if (!right) std::abort();
}

// The one connection.
struct Wire : TcpSocket {
  State GetState() const override { return state; }
  bool Listen(std::uint16_t, const std::string&) override { return false; }
  int LastError() const override { return 0; }
  std::uint16_t LocalPort() const override { return 0; }
  std::string BoundAddress() const override { return {}; }
  bool Accept(RequestId) override { return false; }
  void Connect(const std::string&, std::uint16_t) override { state = State::Connecting; }
  // No response gets more into a request than its place in it.
  void Send(std::string_view bytes) override {
    std::string request(bytes);
    std::size_t lines = 0;
    for (std::size_t at = 0; (at = request.find("\r\n", at)) != std::string::npos; ++lines) {
      request.erase(at, 2);
    }
    Check(lines == 6 || lines == 7);
    Check(std::none_of(request.begin(), request.end(),
                       [](unsigned char c) { return c < ' ' || c == 0x7F; }));
  }
  std::string_view GetData() override { return std::exchange(arrived, {}); }
  void Close() override { state = State::Closed; }
  void CloseGently() override { Close(); }
  std::string RemoteAddress() const override { return {}; }
  std::string LocalAddress() const override { return {}; }

  State state = State::Closed;
  std::string_view arrived;
};

struct Wires : SocketHost {
  std::unique_ptr<TcpSocket> NewSocket(Use) override {
    auto socket = std::make_unique<Wire>();
    wire = socket.get();
    return socket;
  }
  Wire* wire = nullptr;
};

struct OneFile : FakeFiles {
  struct Handle : File {
    explicit Handle(std::string& bytes) : contents(bytes) {}
    ReadResult ReadAt(std::uint64_t, char*, std::size_t) override { return {0, kNoError}; }
    ErrorNumber WriteAt(std::uint64_t offset, std::string_view bytes) override {
      if (contents.size() < offset + bytes.size()) contents.resize(offset + bytes.size());
      contents.replace(offset, bytes.size(), bytes);
      return kNoError;
    }
    std::uint64_t Size() const override { return contents.size(); }
    ErrorNumber Flush() override { return kNoError; }
    std::string& contents;
  };
  Opened Open(const std::string&, Access) override {
    return {std::make_unique<Handle>(file), kNoError};
  }
  std::string file;
};

struct Desk {
  Wires sockets;
  OneFile files;
  DownloadState state;
  bool over = false;
  HttpDownload http{{.sockets = sockets,
                     .files = files,
                     .requested = [] {},
                     .header = [](const std::string&) {},
                     .received = [] {},
                     .trouble = [this](DownloadTrouble, const std::string&) { over = true; },
                     .ended = [this] { over = true; },
                     .stalled = [](int) {}},
                    state};
};

void Begin(Desk& desk, unsigned what) {
  static const DownloadPolicy kDefault;
  static const CompatDownloadPolicy kCompat;
  desk.state = {};
  desk.state.policy = what & 16 ? &kCompat : &kDefault;
  desk.state.Url = desk.state.Location = "http://h/file";
  desk.state.ConnectHost = "h";
  desk.state.Resuming = what % 2 == 1;
  desk.state.SetResumeOffset(desk.state.Resuming ? what % 16 : 0);
  desk.state.SetPosition(0);
  desk.files.file.assign(desk.state.resumeOffset, 'o');
  desk.over = false;
  desk.http.Connect();
}

void Talk(Desk& desk, std::string_view stream) {
  Wire& wire = *desk.sockets.wire;
  while (!stream.empty() && !desk.over) {
    const auto what = static_cast<unsigned char>(stream[0]);
    const std::string_view piece = stream.substr(1, what / 8);
    stream.remove_prefix(1 + piece.size());
    if (wire.state == TcpSocket::State::Connecting) {
      wire.state = TcpSocket::State::Connected;
      wire.onConnected();
    }
    if (what % 8 == 1) {
      wire.state = TcpSocket::State::Closed;
      wire.onClosed();
    } else if (what % 8 == 2) {
      desk.state.Resuming = true;
      desk.state.SetResumeOffset(desk.files.file.size());
      desk.http.Connect();
    } else if (what % 8 == 4) {
      desk.http.CloseWhenWhole();
    } else if (wire.state == TcpSocket::State::Connected) {
      wire.arrived = piece;
      wire.onDataArrival();
    }
  }
}

}  // namespace
}  // namespace orvanto

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static orvanto::Desk desk;
  if (size == 0) return 0;
  orvanto::Begin(desk, data[0]);
  const std::string before = desk.files.file;
  orvanto::Talk(desk, {reinterpret_cast<const char*>(data) + 1, size - 1});
  desk.http.Close();
  orvanto::Check(desk.files.file.starts_with(before));  // What was there stays.
  return 0;
}
