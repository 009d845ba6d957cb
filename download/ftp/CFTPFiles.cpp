#include "download/ftp/CFTPFiles.h"

#include <algorithm>

#include "platform/text/Error.h"

namespace orvanto {

CFTPFile& CFTPFiles::Item(std::size_t index) {
  if (index < 1 || index > Count()) throw Error(kSubscriptOutOfRange, "Subscript out of range");
  return files_[index - 1];
}

CFTPFile& CFTPFiles::Item(std::string_view name) { return Item(PlaceOf(name)); }

void CFTPFiles::Remove(std::size_t index) {
  files_.erase(files_.begin() + (&Item(index) - files_.data()));
}

void CFTPFiles::Remove(std::string_view name) { Remove(PlaceOf(name)); }

std::size_t CFTPFiles::PlaceOf(std::string_view name) const {
  const auto found =
      std::find_if(begin(), end(), [&](const CFTPFile& file) { return file.Filename == name; });
  if (found == end()) throw Error(kIllegalCall, "Invalid procedure call or argument");
  return static_cast<std::size_t>(found - begin()) + 1;
}

}  // namespace orvanto
