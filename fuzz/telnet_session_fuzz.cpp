// Any bytes as a client of the remote control, cut into chunks by the bytes themselves: nothing is
// thrown, and nothing grows without end.
#include <cstdint>
#include <cstdlib>

#include "platform/text/Lines.h"
#include "tests/remote/RemoteDesk.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvanto;
  static std::unique_ptr<RemoteDesk> desk;
  static int runs = 0;
  // What is left in the input line outlives connections; a fresh program now and then, and before
  // its list of tasks has grown so long that sending it takes all the time.
  if (runs++ % 100 == 0 || desk->store.NoTasks() > 3) {
    desk = std::make_unique<RemoteDesk>();
    desk->messageBoxes.answersAll = true;
    desk->AddMessages({"One"});
    desk->server.ServerOn();
  }
  desk->remote.passwordRequired = size > 0 && data[0] % 8 == 0 ? 1 : 0;
  desk->remote.password = "p";
  desk->socket.PeerConnects();
  for (std::size_t at = 0; at < size && desk->server.Connected();) {
    // The byte before a chunk is its length; 0 is an Enter key.
    const std::size_t length = data[at++] % 16;
    if (length == 0) {
      desk->socket.PeerSends(kCrLf);
      continue;
    }
    const std::size_t taken = std::min(length, size - at);
    desk->socket.PeerSends({reinterpret_cast<const char*>(data + at), taken});
    at += taken;
  }
  if (desk->Log().size() > (64U << 10) || desk->socket.Sent().size() > (1U << 24)) std::abort();
  if (desk->server.Connected()) desk->socket.PeerCloses();
  return 0;
}
