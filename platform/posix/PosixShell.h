// Starting programs and handing documents to the desktop's programs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Shell.h"
#include "platform/posix/Notices.h"
#include "platform/posix/PosixLoop.h"

namespace orvanto::posix {

// What the file of a request names.
struct ShellTarget {
  std::string path;                    // of this system, absolute
  std::vector<std::string> arguments;  // the rest of the text, parted at blanks outside quotes
  bool operator==(const ShellTarget&) const = default;
};

// A text that is an existing file as a whole is that file. Otherwise the shortest beginning before
// a blank that is an existing file or a program on PATH is taken, and the rest are its arguments; a
// beginning in double quotes is taken as it stands. Arguments that begin with "Z:\" become paths of
// this system. Nothing when no beginning exists.
std::optional<ShellTarget> FindShellTarget(const std::string& text);

// An executable file is run; "open" hands everything else to xdg-open, "print" to lp or lpr. The
// show command means nothing here. A program of these that is missing is a notice, and one that
// Start does not find. When a signal of the loop has come while StartAndWait waited, as from the
// terminal to both programs, its handler has run when that returns.
class PosixShell : public Shell {
 public:
  PosixShell(PosixLoop& loop, Notices& notices) : loop_(loop), notices_(notices) {}
  bool Execute(const ShellRequest& request) override;
  bool Start(const std::string& commandLine, ShowCommand show) override;
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override;

 private:
  bool Refuse(const char* why);

  PosixLoop& loop_;
  Notices& notices_;
};

}  // namespace orvanto::posix
