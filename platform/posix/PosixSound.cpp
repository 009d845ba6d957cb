#include "platform/posix/PosixSound.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include "platform/posix/Paths.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/Process.h"

namespace orvanto::posix {

bool PosixSound::Play(const std::string& name) {
  if (!PosixFiles().Exists(name)) return false;
  for (const char* player : {"paplay", "pw-play", "aplay"}) {
    const std::string program = FindProgram(player);
    if (program.empty()) continue;
    std::string file = ToNative(name);
    if (!file.starts_with('/')) file.insert(0, "./");  // never an option of the player's
    return StartDetached(program, {file}, "", Output::Discard);
  }
  if (!std::exchange(said_, true)) {
    std::fputs("orvanto: no sound: neither paplay, pw-play nor aplay is on PATH\n", stderr);
  }
  return false;
}

void PosixSound::Beep() {
  if (::isatty(STDOUT_FILENO) == 0) return;
  std::fputc('\a', stdout);
  std::fflush(stdout);
}

}  // namespace orvanto::posix
