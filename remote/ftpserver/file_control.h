// What the FTP server does with files: plain functions on the paths that a policy has made.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/Files.h"

namespace orvanto {

// No folder, and no name that a system would cut short, or that is empty.
bool IsFile(const Files& files, const std::string& path);
// Null when it cannot be opened, or has such a name.
std::unique_ptr<File> OpenFile(Files& files, const std::string& path, Files::Access access);

// False when there is no such file, or it cannot be deleted.
bool DeleteOneFile(Files& files, const std::string& path);
bool RemoveOneFolder(Files& files, const std::string& path);

struct ListingForm {
  bool onlyNames = false;
  std::string pattern = "*";  // of a name; '*' and '?' stand for any
};
// One line for each folder in it, then one for each file, in the system's order, as `ls -l` has
// them but without a year. A name that would break its line is left out.
std::string ListingOf(Files& files, const std::string& folder, const ListingForm& form);

// "20261105140700", of seconds since 1970.
std::string UtcText(std::int64_t moment);

}  // namespace orvanto
