// What a server sends to the FTP client: a byte of each piece tells what else happens.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "download/ftp/CFtpConnection.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using State = TcpSocket::State;

struct Desk {
  Desk() {
    platform.messageBoxes.answersAll = true;
    ftp.ReplyMessage = [](const std::string& lines) {
      if (!lines.ends_with("\r\n")) std::abort();
    };
    server->Start(std::chrono::milliseconds(10));
  }

  FakeSocketHost::Socket& Control() { return *platform.sockets.sockets.front(); }
  FakeSocketHost::Socket& Data() { return *platform.sockets.sockets.back(); }

  void Serve() {
    if (stream.empty()) {
      if (Control().GetState() == State::Connecting) Control().ConnectFailed(10061);
      if (Control().GetState() == State::Connected) Control().PeerCloses();
      return;
    }
    const auto what = static_cast<unsigned char>(stream[0]);
    const std::string piece = stream.substr(1, what / 8);
    stream.erase(0, 1 + piece.size());
    if (Control().GetState() == State::Connecting) Control().Connected();
    const bool connected = Data().GetState() == State::Connected;
    Data().room = what % 8 == 7 ? 3 : FakeSocketHost::kAny;
    switch (what % 8) {
      case 1:
        if (Data().GetState() == State::Connecting) return Data().Connected();
        if (!Data().PeerConnects()) Data().ConnectFailed(10061);
        break;
      case 2:
        if (connected) Data().PeerSends(piece);
        break;
      case 3:
        if (connected) Data().PeerCloses();
        break;
      case 4:
        ftp.CancelTransfer();
        break;
      case 5:
        ftp.BreakeConnection();
        break;
      default:
        if (Control().GetState() == State::Connected) Control().PeerSends(piece);
    }
  }

  FakePlatform platform;
  CFtpConnection ftp{
      {platform.loop, platform.sockets, platform.files, platform.clock, platform.messageBoxes}};
  const std::unique_ptr<Timer> server = platform.loop.NewTimer([this] { Serve(); });
  std::string stream;
};

// Making everything anew costs more than what is tried.
void Run(std::string stream) {
  static Desk desk;
  if (stream.empty()) return;
  const auto what = static_cast<unsigned char>(stream[0]);
  desk.platform.files.contents = {{"C:\\up", std::string(9000, 'x')}};
  desk.platform.files.diskLeft = 1000;
  desk.ftp.PassiveMode = (what & 1) != 0;
  desk.ftp.FtpServer = "10.1.2.3";
  desk.stream = stream.substr(1);
  CFTPFiles files;
  if (desk.ftp.Connect()) {
    if ((what & 2) != 0) desk.ftp.EnumFiles(files);
    if ((what & 4) != 0) desk.ftp.DownloadFile("f", "C:\\f", what / 64);
    if ((what & 8) != 0) desk.ftp.UploadFile("C:\\up", "up");
    if ((what & 16) != 0) desk.ftp.GetCurrentDirectory();
    desk.ftp.CloseConnection();
  }
  desk.ftp.BreakeConnection();
  if (desk.ftp.Busy() || desk.platform.files.open != 0) std::abort();
  for (auto* const socket : desk.platform.sockets.sockets) {
    if (socket->GetState() != State::Closed) std::abort();
    socket->sent.clear();
    socket->tried.clear();
    socket->waiting.clear();
  }
}

}  // namespace
}  // namespace orvanto

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvanto::Run(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
