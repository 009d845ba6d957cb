// What this system cannot do for the program.
#pragma once

#include <cstdio>
#include <functional>
#include <set>
#include <string>

namespace orvanto::posix {

class Notices {
 public:
  // Says it on the error output, once for each script command that asks for it and once for
  // everything else.
  void Say(const std::string& what) {
    const std::string command = commandAtWork ? commandAtWork() : "";
    const std::string line = "orvanto: " + (command.empty() ? "" : command + ": ") + what + '\n';
    if (said_.insert(line).second) std::fputs(line.c_str(), stderr);
  }

  // The script command that is being carried out; empty for none.
  std::function<std::string()> commandAtWork;

 private:
  std::set<std::string> said_;
};

}  // namespace orvanto::posix
