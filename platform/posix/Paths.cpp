#include "platform/posix/Paths.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <optional>

#include "platform/RegistryTree.h"

namespace orvanto::posix {
namespace {

bool Exists(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0;
}

// The entry of `directory` that differs from `name` in case alone; the first in order of bytes.
std::optional<std::string> FindEntry(const std::string& directory, const std::string& name) {
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(
      ::opendir(directory.empty() ? "." : directory.c_str()), ::closedir);
  if (!listing) return std::nullopt;
  const std::string wanted = RegistryTree::Fold(name);
  std::optional<std::string> found;
  while (const dirent* entry = ::readdir(listing.get())) {
    if (RegistryTree::Fold(entry->d_name) != wanted) continue;
    if (!found || entry->d_name < *found) found = entry->d_name;
  }
  return found;
}

std::string FindWithoutCase(const std::string& path) {
  std::string found;  // what has been settled, with its trailing slash
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    const std::string name = path.substr(begin, end - begin);
    std::string next = found + name;
    if (!name.empty() && !Exists(next)) {
      const std::optional<std::string> entry = FindEntry(found, name);
      if (!entry) return found + path.substr(begin);
      next = found + *entry;
    }
    found = next;
    if (end < path.size()) found += '/';
    begin = end + 1;
  }
  return found;
}

}  // namespace

std::string ToNative(const std::string& path) {
  std::string native = path;
  std::replace(native.begin(), native.end(), '\\', '/');
  if (native.starts_with("Z:") || native.starts_with("z:")) {
    native.erase(0, 2);
    if (!native.starts_with('/')) native.insert(0, "/");
  }
  return Exists(native) ? native : FindWithoutCase(native);
}

std::string FromNative(const std::string& path) {
  std::string shown = path.starts_with('/') ? "Z:" + path : path;
  std::replace(shown.begin(), shown.end(), '/', '\\');
  return shown;
}

}  // namespace orvanto::posix
