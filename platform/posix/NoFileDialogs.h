// Choosing files on a host without a desktop: nobody can be asked.
#pragma once

#include "platform/FileDialogs.h"

namespace orvanto::posix {

class NoFileDialogs : public FileDialogs {
 public:
  std::optional<std::string> ChooseFile(const std::string&, const std::vector<FileFilter>&,
                                        const std::string&) override {
    return std::nullopt;
  }
};

}  // namespace orvanto::posix
