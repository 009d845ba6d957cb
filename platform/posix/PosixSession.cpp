#include "platform/posix/PosixSession.h"

#include "platform/posix/Process.h"

namespace orvanto::posix {

bool PosixSession::End(std::uint32_t flags) {
  const bool known = flags == kShutdown || flags == kReboot;
  const std::string program = known ? FindProgram("shutdown") : "";
  if (!program.empty()) {
    return StartDetached(program, {flags == kReboot ? "-r" : "-h", "now"}, "", Output::Inherit);
  }
  notices_.Say(known ? "the program shutdown is not on PATH; the system is not ended"
                     : "this system can only be shut down or restarted");
  return false;
}

void PosixSession::ChangeResolution(int, int) { notices_.Say("there is no screen to change"); }

void PosixSession::HangUp() { notices_.Say("there is no dial-up connection to end"); }

}  // namespace orvanto::posix
