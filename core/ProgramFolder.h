// The folder that the program is installed in, and what is found from there.
#pragma once

#include <string>

namespace orvanto {

class ProgramFolder {
 public:
  // With a backslash at its end; empty until start-up sets it.
  std::string AppDir;
  void Set(const std::string& folder);

  std::string Scripts() const { return AppDir + "scripts\\"; }

  // The full path of a task's file: relative ones belong to the scripts folder.
  std::string TaskFile(const std::string& path) const;
};

}  // namespace orvanto
