// What an FTP server lists of a directory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Clock.h"

namespace orvanto {

struct CFTPFile {
  bool IsDirectory = false;
  std::int32_t FileSize = 0;  // bytes; what is larger than it can hold is its largest number
  DateTime LastWriteTime;     // the server's time; all zero when the line has none
  std::string Filename;
  std::string FilePath;  // the name behind the directory that was listed
  std::string Permissions;
  std::string Owner;
  std::string Group;
};

// In the order of the listing. An entry is found by its place, from 1, or by its file name, case
// included: the first one of that name. Asking for what is not there throws Error 9 for a place, 5
// for a name.
class CFTPFiles {
 public:
  void Add(CFTPFile file) { files_.push_back(std::move(file)); }
  CFTPFile& Item(std::size_t index);
  CFTPFile& Item(std::string_view name);
  std::size_t Count() const { return files_.size(); }
  void Remove(std::size_t index);
  void Remove(std::string_view name);

  // For each entry; none may be added or removed meanwhile.
  auto begin() const { return files_.begin(); }
  auto end() const { return files_.end(); }

 private:
  std::size_t PlaceOf(std::string_view name) const;
  std::vector<CFTPFile> files_;
};

}  // namespace orvanto
