// The one file of a registry: looked at, locked, replaced in one durable step, set aside.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/posix/Descriptor.h"

namespace orvanto::posix {

class RegistryFile {
 public:
  // Symbolic links are followed here, once and for all.
  explicit RegistryFile(const std::string& path);

  const std::string& Path() const { return path_; }

  // Whether it is, or is missing, as it was when it was last read or replaced.
  bool IsAsLastSeen() const;

  struct Content {
    enum class Kind { Missing, Unreadable, Text };
    Kind kind;
    std::string text;
    int error;  // the system's, where there is no text
  };
  Content Read();

  // Shuts other processes off, with NAME.lock beside it; waits at most five seconds. False with
  // errno set when it cannot be had.
  bool Lock();
  void Unlock() { lock_.Close(); }

  // Replaces it under the lock. False with errno set; then it is as it was.
  bool Replace(const std::string& text);

  // Gives it a second name, NAME.damaged-1 or the next free number; false when that failed.
  bool SetAside(std::string& name);
  void Remove();

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

  const std::string path_;
  Stamp stamp_;      // of the file as it was last read or written
  Descriptor file_;  // keeps that file's inode number from being given to another
  Descriptor lock_;
};

}  // namespace orvanto::posix
