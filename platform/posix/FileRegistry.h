// The registry of a host that has none: a text file, see RegistryText.h. How that is read and
// replaced is RegistryFile's; here is what it means, and what the user is told.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/posix/RegistryFile.h"
#include "platform/registry/TreeRegistry.h"

namespace orvanto::posix {

// Several processes may use one file. Each change replaces the file in one durable step under a
// lock (NAME.lock beside it), on top of what the others have written; reads notice the changes of
// others within 10 ms. A missing file is an empty registry; it and its directory are made by the
// first write.
//
// A damaged file is never overwritten. What happens instead is the owner's choice:
// - SetAside, for the one process that keeps the store: at the start the file is renamed to
//   NAME.damaged-1 (or the next free number) and the registry begins empty; later on, while
//   somebody edits it, what was read before stays in force, and the file is set aside when a write
//   has to replace it.
// - Refuse, for those who only look in: the file stays where it is, and writes and EndChange fail
//   with kAccessDenied until it is mended. Reads give what was read before, if anything was.
//
// A file that cannot be read is left alone: writes fail with kAccessDenied until it can be. One
// that goes missing leaves the registry empty.
class FileRegistry : public TreeRegistry {
 public:
  // Receives what the user should know, each time one sentence or two without a line end. May be
  // called from the constructor and from every operation.
  using Report = std::function<void(const std::string&)>;

  enum class OnDamage { SetAside, Refuse };

  FileRegistry(const std::string& path, Report report, OnDamage onDamage = OnDamage::SetAside);

  // Waits at most five seconds for the lock; without it every write of the change, and EndChange,
  // gives kAccessDenied. EndChange gives kDiskFull, kAccessDenied or kWriteFault when the file
  // could not be replaced. A change that fails is undone in memory as well.
  void BeginChange() override;
  Status EndChange() override;

 protected:
  void Refresh() override;
  Status Write(const WriteStep& step) override;

 private:
  void Load();
  void BeEmpty();
  void Parse(const std::string& text);
  void Look();
  void SayUnreadable(const std::string& reason);
  void SetAsideAtStart();
  Status Store();
  void Say(const std::string& message);
  void SayFailure(const std::string& reason);

  RegistryFile file_;
  const Report report_;
  const OnDamage onDamage_;
  std::chrono::steady_clock::time_point lastLook_;
  bool starting_ = true;
  std::string damage_;       // what is wrong with the file as it was last seen
  bool unreadable_ = false;  // it is there but cannot be read
  std::string lastUnreadable_;

  int depth_ = 0;
  Status changeStatus_ = kSuccess;  // why the current change can write nothing
  RegistryTree before_;             // what the current change began with
  std::string lastFailure_;
};

}  // namespace orvanto::posix
