// What an HTTP server sends to a download: a byte of each piece tells what else happens.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/ProgramFolder.h"
#include "core/modRegistry.h"
#include "download/Downloads.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using State = TcpSocket::State;

constexpr const char* kPath = "C:\\O\\file";

struct Desk {
  Desk() {
    folder.Set("C:\\O");
    platform.messageBoxes.answersAll = true;
  }

  FakePlatform platform;
  ProgramFolder folder;
  Settings settings{platform.registry};
  Downloads downloads{platform.forms,
                      {.loop = platform.loop,
                       .sockets = platform.sockets,
                       .files = platform.files,
                       .clock = platform.clock,
                       .clipboard = platform.clipboard,
                       .shell = platform.shell,
                       .messageBoxes = platform.messageBoxes,
                       .registry = platform.registry,
                       .settings = settings,
                       .folder = folder,
                       .mayWait = [] { return true; }}};
};

void Talk(Desk& desk, std::string stream) {
  auto& socket = *desk.platform.sockets.sockets.front();
  frmDownload& window = desk.downloads.window;
  while (!stream.empty() && window.Running()) {
    const auto what = static_cast<unsigned char>(stream[0]);
    const std::string piece = stream.substr(1, what / 8);
    stream.erase(0, 1 + piece.size());
    if (socket.GetState() == State::Connecting) socket.Connected();
    switch (what % 8) {
      case 1:
        if (socket.GetState() == State::Connected) socket.PeerCloses();
        break;
      case 2:
        window.cmdPause.Press();
        break;
      case 3:
        window.cmdStop.Press();
        break;
      case 4:
        desk.platform.loop.Advance(1000);
        break;
      default:
        if (socket.GetState() == State::Connected) socket.PeerSends(piece);
    }
  }
}

// Making everything anew costs more than what is tried.
void Run(const std::string& stream) {
  static Desk desk;
  if (stream.empty()) return;
  const auto what = static_cast<unsigned char>(stream[0]);
  const std::string before(what % 16, 'o');
  desk.platform.files.contents = {};
  if (what % 2 == 1) desk.platform.files.contents[kPath] = before;
  desk.platform.sockets.names = {{"h", {1}}};
  desk.downloads.BeginDownload("http://h/file");
  desk.platform.loop.DoEvents();
  Talk(desk, stream.substr(1));
  desk.downloads.Unload();
  // What was there stays.
  if (what % 2 == 1 && !desk.platform.files.contents[kPath].starts_with(before)) std::abort();
  if (desk.downloads.Busy() || desk.platform.files.open != 0) std::abort();
  auto& socket = *desk.platform.sockets.sockets.front();
  if (socket.GetState() != State::Closed) std::abort();
  socket.sent.clear();
  socket.tried.clear();
  socket.waiting.clear();
}

}  // namespace
}  // namespace orvanto

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvanto::Run(std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
