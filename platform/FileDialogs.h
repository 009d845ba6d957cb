// The system's dialog for choosing a file.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvanto {

struct FileFilter {
  std::string name;     // "Text Files (*.txt)"
  std::string pattern;  // "*.txt"
};

class FileDialogs {
 public:
  virtual ~FileDialogs() = default;

  // Asks for an existing file, modally: everything else waits (EventLoop::Hold). Starts in
  // `folder`, or where the system likes when it is empty. Nothing when the user gave up, or where
  // nobody can be asked.
  virtual std::optional<std::string> ChooseFile(const std::string& title,
                                                const std::vector<FileFilter>& filters,
                                                const std::string& folder) = 0;
};

}  // namespace orvanto
