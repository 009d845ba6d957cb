#include "platform/posix/PosixSound.h"

#include <unistd.h>

#include <cstdio>

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
  notices_.Say("no sound: neither paplay, pw-play nor aplay is on PATH");
  return false;
}

void PosixSound::Beep() {
  if (::isatty(STDOUT_FILENO) == 0) return notices_.Say("there is no terminal to beep on");
  std::fputc('\a', stdout);
  std::fflush(stdout);
}

}  // namespace orvanto::posix
