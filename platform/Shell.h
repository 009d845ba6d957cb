// Opening, printing and starting things the way the user's desktop does it.
#pragma once

#include <string>

namespace orvanto {

// The show-window commands that the program uses, with their system numbers.
enum class ShowCommand : int {
  Hide = 0,
  Normal = 1,
  Minimized = 2,
  Maximized = 3,
  NoActivate = 4,
  MinimizedNoActivate = 7,
};

struct ShellRequest {
  std::string operation;   // "open" or "print"
  std::string file;        // a file, document or program, as the caller has it
  std::string parameters;  // mostly empty: task command lines travel in `file`
  std::string directory;   // working directory, empty for the current one
  ShowCommand show = ShowCommand::Normal;
};

class Shell {
 public:
  virtual ~Shell() = default;

  // Returns at once; what was started runs on its own. False when nothing was started. Shows no
  // error of its own.
  virtual bool Execute(const ShellRequest& request) = 0;

  // Starts a program by its command line, not through file associations. Returns at once; false
  // when it could not be started.
  virtual bool Start(const std::string& commandLine, ShowCommand show) = 0;

  // The same, and waits until the program has ended. Everything else waits too (EventLoop::Hold).
  virtual bool StartAndWait(const std::string& commandLine, ShowCommand show) = 0;
};

}  // namespace orvanto
