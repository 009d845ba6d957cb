// The file system of a POSIX host under Windows paths, see Paths.h.
#pragma once

#include "platform/Files.h"

namespace orvanto::posix {

class PosixFiles : public Files {
 public:
  bool Exists(const std::string& path) const override;
  bool Append(const std::string& path, const std::string& bytes) override;
};

}  // namespace orvanto::posix
