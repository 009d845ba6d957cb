#include "platform/posix/Paths.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/registry/RegistryTree.h"
#include "platform/text/Case.h"

namespace orvanto::posix {
namespace {

bool Exists(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0;
}

// The entries of `directory` that differ from `name` in case alone, in order of bytes.
std::vector<std::string> OtherSpellings(const std::string& directory, const std::string& name) {
  std::vector<std::string> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(
      ::opendir(directory.empty() ? "." : directory.c_str()), ::closedir);
  if (!listing) return found;
  const std::string wanted = FoldCase(name);
  while (const dirent* entry = ::readdir(listing.get())) {
    if (entry->d_name != name && FoldCase(entry->d_name) == wanted) {
      found.emplace_back(entry->d_name);
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

// Looks a path up without regard to case, where it does not exist as it is written. Directories may
// differ in case alone: one that is spelt as written is the one meant; where none is, it goes into
// each until the whole path is found.
class Lookup {
 public:
  explicit Lookup(const std::string& path) : path_(path), best_(path) { Descend("", 0); }

  // The path that exists, or else the first of those that exist the furthest.
  const std::string& Result() const { return best_; }

 private:
  // `found` exists and stands for the first `begin` bytes of the path.
  bool Descend(const std::string& found, std::size_t begin) {
    const bool whole = begin >= path_.size();
    const bool exists = whole && Exists(found);
    if (begin > reached_ || exists) {
      reached_ = begin;
      best_ = whole ? found : found + path_.substr(begin);
    }
    if (whole) return exists;
    const std::size_t end = std::min(path_.find('/', begin), path_.size());
    const std::string name = path_.substr(begin, end - begin);
    const std::string slash = end < path_.size() ? "/" : "";
    const auto enter = [&](const std::string& entry) {
      return Descend(found + entry + slash, end + 1);
    };
    if (name.empty()) return enter(name);
    if (Exists(found + name + slash)) return enter(name);
    const std::vector<std::string> others = OtherSpellings(found, name);
    return std::any_of(others.begin(), others.end(), enter);
  }

  const std::string& path_;
  std::size_t reached_ = 0;
  std::string best_;
};

}  // namespace

std::string ToNative(const std::string& path) {
  std::string native = path;
  std::replace(native.begin(), native.end(), '\\', '/');
  if (native.starts_with("Z:") || native.starts_with("z:")) {
    native.erase(0, 2);
    if (!native.starts_with('/')) native.insert(0, "/");
  }
  // A link that leads nowhere is there too: what it stands beside is not meant.
  struct stat status;
  return ::lstat(native.c_str(), &status) == 0 ? native : Lookup(native).Result();
}

std::string FromNative(const std::string& path) {
  std::string shown = path.starts_with('/') ? "Z:" + path : path;
  std::replace(shown.begin(), shown.end(), '/', '\\');
  return shown;
}

}  // namespace orvanto::posix
