// The file system. Paths are Windows paths ("C:\dir\name", relative ones against the current
// directory) on every host; a host without drives shows its root directory as "Z:\" and looks names
// up without regard to case.
#pragma once

#include <string>

namespace orvanto {

class Files {
 public:
  virtual ~Files() = default;

  // True for an existing file of any kind but a directory.
  virtual bool Exists(const std::string& path) const = 0;

  // Appends the bytes, creating the file when it is missing. False when that failed.
  virtual bool Append(const std::string& path, const std::string& bytes) = 0;
};

}  // namespace orvanto
