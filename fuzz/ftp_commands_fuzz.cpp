// What a client of the FTP server sends: a byte of each piece tells what else happens.
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "core/ProgramFolder.h"
#include "core/ProgramSettings.h"
#include "remote/ftpserver/frmFtpserver.h"
#include "remote/ftpserver/server_control.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

struct Desk {
  Desk() { folder.Set("C:\\O"); }
  void Begin() {
    platform.files.contents = {{"C:\\O\\scripts\\f", std::string(3000, 'x')}};
    platform.files.listings = {{"C:\\O\\scripts\\", {"f", "sub\\"}}};
    server.Load();
  }

  FakePlatform platform;
  ProgramFolder folder;
  RemoteSettings remote;
  frmFtpserver window{platform.forms};
  FtpServer server{
      {platform.loop, platform.sockets, platform.files, platform.clock, folder, window}, remote};
};

void Talk(Desk& desk, std::string stream) {
  auto& sockets = desk.platform.sockets.sockets;
  sockets.front()->PeerConnects();
  auto& command = **std::next(sockets.begin(), 2);
  auto& data = **std::next(sockets.begin(), 3);
  auto& listener = **std::next(sockets.begin(), 4);
  while (!stream.empty()) {
    const auto what = static_cast<unsigned char>(stream[0]);
    const std::size_t size = std::min<std::size_t>(stream.size() - 1, what / 8);
    const std::string piece = stream.substr(1, size);
    stream.erase(0, 1 + size);
    using State = TcpSocket::State;
    if (command.GetState() != State::Connected) {
      if (!sockets.front()->PeerConnects()) return;
    }
    data.room = what % 8 == 7 ? 3 : FakeSocketHost::kAny;
    switch (what % 8) {
      case 1:
        if (data.GetState() == State::Connecting) data.Connected();
        break;
      case 2:
        if (data.GetState() == State::Connected) data.PeerSends(piece);
        break;
      case 3:
        if (data.GetState() == State::Connected) data.PeerCloses();
        break;
      case 4:
        data.ConnectFailed(10061);
        break;
      case 5:
        listener.PeerConnects();
        break;
      default:
        command.PeerSends(piece);
    }
    desk.platform.loop.DoEvents();
    if (desk.platform.files.open > 1) std::abort();
  }
}

// Making everything anew costs more than what is tried.
void Run(const std::string& stream) {
  static Desk desk;
  desk.Begin();
  // Of somebody who is let in.
  desk.remote.compat = stream.size() % 2 == 1;
  desk.remote.strict = stream.size() % 4 > 1;
  Talk(desk, stream);
  desk.server.Unload();
  for (auto* const socket : desk.platform.sockets.sockets) {
    socket->sent.clear();
    socket->tried.clear();
  }
  if (desk.platform.files.open != 0) std::abort();
}

}  // namespace
}  // namespace orvanto

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvanto::Run(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
