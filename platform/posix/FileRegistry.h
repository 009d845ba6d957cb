// The registry of a host that has none: a text file, see RegistryText.h.
#pragma once

#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <string>

#include "platform/posix/Descriptor.h"
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
  // Tells one state of the file from another. That of a missing file is an error of its own.
  struct Stamp {
    int error = 0;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    long long modified = 0;  // ns
    long long changed = 0;   // ns
    bool operator==(const Stamp&) const = default;

    static Stamp Of(const std::string& path);
    static Stamp Of(int fd);
    static Stamp From(const struct stat& status);
  };

  void Load();
  void ReadFrom(Descriptor file);
  void Look();
  void SayUnreadable(const std::string& reason);
  void SetAsideAtStart();
  bool SetAside(std::string& name);
  bool Lock();
  Status Store();
  bool Replace(const std::string& text);
  void Say(const std::string& message);
  void SayFailure(const std::string& reason);

  const std::string path_;
  const Report report_;
  const OnDamage onDamage_;
  std::chrono::steady_clock::time_point lastLook_;
  Stamp stamp_;      // of the file as it was last read or written
  Descriptor file_;  // keeps that file's inode number from being given to another
  bool starting_ = true;
  std::string damage_;       // what is wrong with the file that stamp_ tells of
  bool unreadable_ = false;  // it is there but cannot be read
  std::string lastUnreadable_;

  int depth_ = 0;
  Descriptor lock_;
  Status changeStatus_ = kSuccess;  // why the current change can write nothing
  RegistryTree before_;             // what the current change began with
  std::string lastFailure_;
};

}  // namespace orvanto::posix
