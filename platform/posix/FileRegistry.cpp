#include "platform/posix/FileRegistry.h"

#include <cassert>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/registry/RegistryText.h"

namespace orvanto::posix {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kFreshFor(10);

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

}  // namespace

FileRegistry::FileRegistry(const std::string& path, Report report, OnDamage onDamage)
    : file_(path), report_(std::move(report)), onDamage_(onDamage) {
  Load();
  if (!damage_.empty() && onDamage_ == OnDamage::SetAside) SetAsideAtStart();
  starting_ = false;
}

void FileRegistry::Say(const std::string& message) {
  if (report_) report_("The registry file " + file_.Path() + ' ' + message);
}

// Reads the file as it is now. What cannot be used leaves the tree as it was.
void FileRegistry::Load() {
  damage_.clear();
  const RegistryFile::Content content = file_.Read();
  unreadable_ = content.kind == RegistryFile::Content::Kind::Unreadable;
  if (unreadable_) return SayUnreadable(std::strerror(content.error));
  lastUnreadable_.clear();
  content.kind == RegistryFile::Content::Kind::Missing ? BeEmpty() : Parse(content.text);
}

void FileRegistry::BeEmpty() {
  RegistryTree empty;
  if (!(tree_ == empty)) Say("is gone. The registry is empty now.");
  tree_ = std::move(empty);
}

void FileRegistry::Parse(const std::string& text) {
  RegistryTree fresh;
  const std::optional<RegistryTextError> wrong = ParseRegistry(text, fresh);
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

// What hinders the reading may pass without a trace in the file, so each later look tries again.
void FileRegistry::SayUnreadable(const std::string& reason) {
  if (std::exchange(lastUnreadable_, reason) == reason) return;
  Say("cannot be read: " + reason + ". Nothing will be saved until it can.");
}

// Reads the file anew when there is reason to.
void FileRegistry::Look() {
  if (unreadable_ || !file_.IsAsLastSeen()) Load();
}

void FileRegistry::SetAsideAtStart() {
  const bool locked = file_.Lock();
  if (locked && !file_.IsAsLastSeen()) Load();  // another process may have mended it
  if (!damage_.empty()) {
    std::string name;
    const bool aside = locked && file_.SetAside(name);
    Say(damage_ + (aside ? " It has been set aside as " + name + "; the registry starts empty."
                         : " It could not be set aside; the registry starts empty."));
    if (aside) {
      file_.Remove();
      Load();
    }
  }
  file_.Unlock();
}

void FileRegistry::Refresh() {
  if (depth_ > 0 && changeStatus_ == kSuccess) return;
  const auto now = steady_clock::now();
  if (now - lastLook_ < kFreshFor) return;
  lastLook_ = now;
  Look();
}

void FileRegistry::BeginChange() {
  if (depth_++ > 0) return;
  changeStatus_ = kSuccess;
  failure_.Take();
  if (!file_.Lock()) {
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
  file_.Unlock();
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
  const bool free = damage_.empty() || file_.SetAside(aside);
  if (free && file_.Replace(FormatRegistry(tree_))) {
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

}  // namespace orvanto::posix
