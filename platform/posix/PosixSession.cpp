#include "platform/posix/PosixSession.h"

#include <cstdio>
#include <utility>

#include "platform/posix/Process.h"

namespace orvanto::posix {

bool PosixSession::End(std::uint32_t flags) {
  const bool known = flags == kShutdown || flags == kReboot;
  const std::string program = known ? FindProgram("shutdown") : "";
  if (!program.empty()) {
    return StartDetached(program, {flags == kReboot ? "-r" : "-h", "now"}, "", Output::Inherit);
  }
  if (!std::exchange(said_, true)) {
    std::fputs(known ? "orvanto: the program shutdown is not on PATH; the system is not ended\n"
                     : "orvanto: this system can only be shut down or restarted\n",
               stderr);
  }
  return false;
}

}  // namespace orvanto::posix
