#include "core/ProgramFolder.h"

namespace orvanto {

void ProgramFolder::Set(const std::string& folder) {
  // A drive's root ends with its backslash already.
  AppDir = folder.size() == 3 ? folder : folder + "\\";
}

std::string ProgramFolder::TaskFile(const std::string& path) const {
  const bool absolute = path.size() >= 3 && path.compare(1, 2, ":\\") == 0;
  return absolute ? path : Scripts() + path;
}

}  // namespace orvanto
