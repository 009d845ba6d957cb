#include "platform/posix/RegistryFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>

namespace orvanto::posix {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kLockPatience(5000);
constexpr mode_t kPrivate = 0600;  // the registry holds passwords
constexpr int kMaxLinks = 40;      // as the system has it

// Follows symbolic links once and for all, so that replacing the file does not replace the link,
// and makes the path independent of the current directory.
std::string Settle(const std::string& path) {
  std::error_code error;
  std::filesystem::path settled = std::filesystem::absolute(path, error);
  // weakly_canonical leaves a link to nothing alone, and a relative path to nothing relative.
  for (int links = 0; links < kMaxLinks && std::filesystem::is_symlink(settled, error); ++links) {
    settled = settled.parent_path() / std::filesystem::read_symlink(settled, error);
  }
  const std::filesystem::path canonical = std::filesystem::weakly_canonical(settled, error);
  return error ? settled.string() : canonical.string();
}

std::string Directory(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

// The whole content, or nothing with errno set.
std::optional<std::string> ReadAll(int fd) {
  std::string text;
  char buffer[16384];
  for (;;) {
    const ssize_t count = ::read(fd, buffer, sizeof buffer);
    if (count == 0) return text;
    if (count > 0) {
      text.append(buffer, static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return std::nullopt;
    }
  }
}

}  // namespace

RegistryFile::Stamp RegistryFile::Stamp::From(const struct stat& status) {
  const auto nanoseconds = [](const timespec& time) {
    return static_cast<long long>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
  };
  return {0,
          status.st_dev,
          status.st_ino,
          status.st_size,
          nanoseconds(status.st_mtim),
          nanoseconds(status.st_ctim)};
}

RegistryFile::Stamp RegistryFile::Stamp::Of(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) == 0) return From(status);
  Stamp missing;
  missing.error = errno;
  return missing;
}

RegistryFile::Stamp RegistryFile::Stamp::Of(int fd) {
  struct stat status;
  if (::fstat(fd, &status) == 0) return From(status);
  Stamp unknown;
  unknown.error = errno;
  return unknown;
}

RegistryFile::RegistryFile(const std::string& path) : path_(Settle(path)) {}

bool RegistryFile::IsAsLastSeen() const { return Stamp::Of(path_) == stamp_; }

RegistryFile::Content RegistryFile::Read() {
  using Kind = Content::Kind;
  // Looked at before the opening: were it replaced in between, the next look would tell.
  stamp_ = Stamp::Of(path_);
  // Without O_NONBLOCK the opening of a pipe would never return.
  Descriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) {
    const int error = errno;
    file_.Close();
    const bool missing = error == ENOENT || error == ENOTDIR;
    return {missing ? Kind::Missing : Kind::Unreadable, {}, error};
  }
  stamp_ = Stamp::Of(file.Get());
  std::optional<std::string> text = ReadAll(file.Get());
  const int error = errno;
  file_ = std::move(file);
  if (!text) return {Kind::Unreadable, {}, error};
  return {Kind::Text, std::move(*text), 0};
}

// Gives the damaged file a name of its own beside its present one, so that replacing it later is a
// single step.
bool RegistryFile::SetAside(std::string& name) {
  for (int number = 1;; ++number) {
    name = path_ + ".damaged-" + std::to_string(number);
    const bool linked = ::link(path_.c_str(), name.c_str()) == 0;
    if (linked) stamp_ = Stamp::Of(path_);  // the new name has changed it
    if (linked) return true;
    if (errno == EEXIST) {
      // Already done, by a write that failed thereafter?
      if (Stamp::Of(name) == stamp_) return true;
      continue;
    }
    // A file system without links.
    struct stat status;
    if (::lstat(name.c_str(), &status) == 0) continue;
    return errno == ENOENT && ::rename(path_.c_str(), name.c_str()) == 0;
  }
}

// The name made by SetAside is a second one for the same file.
void RegistryFile::Remove() { ::unlink(path_.c_str()); }

bool RegistryFile::Lock() {
  std::error_code ignored;
  std::filesystem::create_directories(Directory(path_), ignored);
  const std::string name = path_ + ".lock";
  Descriptor lock(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kPrivate));
  if (!lock) return false;
  const auto deadline = steady_clock::now() + kLockPatience;
  while (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) {
    if ((errno != EWOULDBLOCK && errno != EINTR) || steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(milliseconds(1));
  }
  lock_ = std::move(lock);
  return true;
}

// Under the lock, so the name of the new file can be a fixed one: what a killed process left behind
// goes. It is not opened, because it may be another user's or no file at all.
bool RegistryFile::Replace(const std::string& text) {
  const std::string name = path_ + ".new";
  ::unlink(name.c_str());
  Descriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kPrivate));
  if (!file) return false;
  struct stat old;
  if (::stat(path_.c_str(), &old) == 0) {
    // Best effort: only root can give a file away, and it should.
    if (::fchown(file.Get(), old.st_uid, old.st_gid) == 0) ::fchmod(file.Get(), old.st_mode & 0777);
  }
  // What is kept open is for reading: a file that is open for writing somewhere cannot be leased,
  // and its file system not be made read-only.
  const bool written = WriteAll(file.Get(), text.data(), text.size()) && ::fsync(file.Get()) == 0;
  if (written) file = Descriptor(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
  if (!written || !file || ::rename(name.c_str(), path_.c_str()) != 0) {
    const int error = errno;
    ::unlink(name.c_str());
    errno = error;
    return false;
  }
  // From here on the change is made; that the directory could not be synchronised undoes nothing.
  const Descriptor directory(::open(Directory(path_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory) ::fsync(directory.Get());
  stamp_ = Stamp::Of(file.Get());  // the renaming has changed it
  file_ = std::move(file);
  return true;
}

}  // namespace orvanto::posix
