#include "platform/posix/PosixSession.h"

#include <cstdio>

#include "platform/posix/Process.h"

namespace orvanto::posix {

bool PosixSession::End(std::uint32_t flags) {
  const bool known = flags == kShutdown || flags == kReboot;
  const std::string program = known ? FindProgram("shutdown") : "";
  if (!program.empty()) {
    return StartDetached(program, {flags == kReboot ? "-r" : "-h", "now"}, "", Output::Inherit);
  }
  Say(known ? "the program shutdown is not on PATH; the system is not ended"
            : "this system can only be shut down or restarted");
  return false;
}

void PosixSession::ChangeResolution(int, int) { Say("there is no screen to change"); }

void PosixSession::HangUp() { Say("there is no dial-up connection to end"); }

void PosixSession::Say(const char* what) {
  if (said_.insert(what).second) std::fprintf(stderr, "orvanto: %s\n", what);
}

}  // namespace orvanto::posix
