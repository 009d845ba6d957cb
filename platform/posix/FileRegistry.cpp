#include "platform/posix/FileRegistry.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cassert>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/registry/RegistryText.h"

namespace orvanto::posix {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kFreshFor(10);
constexpr milliseconds kLockPatience(5000);
constexpr mode_t kPrivate = 0600;  // the registry holds passwords

constexpr int kMaxLinks = 40;  // as the system has it

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

Status StatusOf(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return kDiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
      return kAccessDenied;
    default:
      return kWriteFault;
  }
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

FileRegistry::Stamp FileRegistry::Stamp::From(const struct stat& status) {
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

FileRegistry::Stamp FileRegistry::Stamp::Of(const std::string& path) {
  struct stat status;
  if (::stat(path.c_str(), &status) == 0) return From(status);
  Stamp missing;
  missing.error = errno;
  return missing;
}

FileRegistry::Stamp FileRegistry::Stamp::Of(int fd) {
  struct stat status;
  if (::fstat(fd, &status) == 0) return From(status);
  Stamp unknown;
  unknown.error = errno;
  return unknown;
}

FileRegistry::FileRegistry(const std::string& path, Report report, OnDamage onDamage)
    : path_(Settle(path)), report_(std::move(report)), onDamage_(onDamage) {
  Load();
  if (!damage_.empty() && onDamage_ == OnDamage::SetAside) SetAsideAtStart();
  starting_ = false;
}

void FileRegistry::Say(const std::string& message) {
  if (report_) report_("The registry file " + path_ + ' ' + message);
}

// Reads the file as it is now. What cannot be used leaves the tree as it was.
void FileRegistry::Load() {
  damage_.clear();
  unreadable_ = false;
  // Looked at before the opening: were it replaced in between, the next look would tell.
  stamp_ = Stamp::Of(path_);
  // Without O_NONBLOCK the opening of a pipe would never return.
  Descriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file) return ReadFrom(std::move(file));
  const int error = errno;
  file_.Close();
  if (error == ENOENT || error == ENOTDIR) {
    lastUnreadable_.clear();
    RegistryTree empty;
    if (!(tree_ == empty)) Say("is gone. The registry is empty now.");
    tree_ = std::move(empty);
    return;
  }
  SayUnreadable(std::strerror(error));
}

// What hinders the reading may pass without a trace in the file, so each later look tries again.
void FileRegistry::SayUnreadable(const std::string& reason) {
  unreadable_ = true;
  if (std::exchange(lastUnreadable_, reason) == reason) return;
  Say("cannot be read: " + reason + ". Nothing will be saved until it can.");
}

// Reads the file anew when there is reason to.
void FileRegistry::Look() {
  if (unreadable_ || !(Stamp::Of(path_) == stamp_)) Load();
}

void FileRegistry::ReadFrom(Descriptor file) {
  stamp_ = Stamp::Of(file.Get());
  const std::optional<std::string> text = ReadAll(file.Get());
  const int error = errno;
  file_ = std::move(file);
  if (!text) return SayUnreadable(std::strerror(error));
  lastUnreadable_.clear();
  RegistryTree fresh;
  const std::optional<RegistryTextError> wrong = ParseRegistry(*text, fresh);
  if (!wrong) {
    tree_ = std::move(fresh);
    return;
  }
  damage_ = "is damaged: line " + std::to_string(wrong->line) + ": " + wrong->reason + '.';
  if (onDamage_ == OnDamage::Refuse) {
    Say(damage_ + " Nothing is changed until it is mended or the scheduler is started, which sets" +
        " it aside and begins anew.");
  } else if (!starting_) {
    Say(damage_ + " What was read before stays in force.");
  }
}

void FileRegistry::SetAsideAtStart() {
  const bool locked = Lock();
  if (locked && !(stamp_ == Stamp::Of(path_))) Load();  // another process may have mended it
  std::string name;
  if (damage_.empty()) {
  } else if (locked && SetAside(name)) {
    Say(damage_ + " It has been set aside as " + name + "; the registry starts empty.");
    // The name made by SetAside is a second one for the same file.
    ::unlink(path_.c_str());
    Load();
  } else {
    Say(damage_ + " It could not be set aside; the registry starts empty.");
  }
  lock_.Close();
}

// Gives the damaged file a name of its own beside its present one, so that replacing it later is a
// single step.
bool FileRegistry::SetAside(std::string& name) {
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

void FileRegistry::Refresh() {
  if (depth_ > 0 && changeStatus_ == kSuccess) return;
  const auto now = steady_clock::now();
  if (now - lastLook_ < kFreshFor) return;
  lastLook_ = now;
  Look();
}

bool FileRegistry::Lock() {
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

void FileRegistry::BeginChange() {
  if (depth_++ > 0) return;
  changeStatus_ = kSuccess;
  failure_.Take();
  if (!Lock()) {
    changeStatus_ = kAccessDenied;
    SayFailure(std::string("the lock beside it cannot be had: ") + std::strerror(errno));
  }
  Look();
  const bool refused = !damage_.empty() && onDamage_ == OnDamage::Refuse;
  if (unreadable_ || refused) changeStatus_ = kAccessDenied;
  if (changeStatus_ == kSuccess) before_ = tree_;
}

Status FileRegistry::EndChange() {
  assert(depth_ > 0);
  if (--depth_ > 0) return kSuccess;
  const Status failure = failure_.Take();
  Status status = changeStatus_;
  if (status == kSuccess && failure != kSuccess) {
    tree_ = std::move(before_);
    status = failure;
  }
  if (status == kSuccess && tree_.Revision() != before_.Revision()) status = Store();
  before_ = RegistryTree();
  lock_.Close();
  return status;
}

Status FileRegistry::Write(const WriteStep& step) {
  BeginChange();
  const Status status = changeStatus_ == kSuccess ? step(tree_) : changeStatus_;
  const Status end = EndChange();
  return status != kSuccess ? status : end;
}

Status FileRegistry::Store() {
  std::string aside;
  const bool free = damage_.empty() || SetAside(aside);
  if (free && Replace(FormatRegistry(tree_))) {
    if (!aside.empty()) Say("was damaged and has been set aside as " + aside + '.');
    damage_.clear();
    lastFailure_.clear();
    return kSuccess;
  }
  const int error = errno;
  tree_ = std::move(before_);
  SayFailure(std::strerror(error));
  return StatusOf(error);
}

// A disk that is full is told once, not with every write.
void FileRegistry::SayFailure(const std::string& reason) {
  if (std::exchange(lastFailure_, reason) == reason) return;
  Say("cannot be written: " + reason + ". The last change is lost.");
}

// Under the lock, so the name of the new file can be a fixed one: what a killed process left behind
// goes. It is not opened, because it may be another user's or no file at all.
bool FileRegistry::Replace(const std::string& text) {
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
