// The file system. Paths are Windows paths ("C:\dir\name", relative ones against the current
// directory) on every host; a host without drives shows its root directory as "Z:\" and looks names
// up without regard to case.
#pragma once

#include <functional>
#include <string>

namespace orvanto {

class Files {
 public:
  virtual ~Files() = default;

  // True for an existing file of any kind but a directory.
  virtual bool Exists(const std::string& path) const = 0;

  // Calls `each` for every entry of the folder but "." and "..", in the system's own order and
  // without a look at the entries themselves, until it returns false. A link to a folder is a
  // folder where the system says so in the listing; a file that it keeps from the eyes of its users
  // is Hidden. `each` may change the folder and run other events. Nothing happens for a folder that
  // is not there or cannot be read.
  enum class EntryKind { File, Hidden, Folder };
  using EachEntry = std::function<bool(const std::string& name, EntryKind kind)>;
  virtual void ListFolder(const std::string& folder, const EachEntry& each) = 0;

  // The whole file; false when it cannot be read.
  virtual bool Read(const std::string& path, std::string& contents) = 0;

  // Text of the system's single-byte code page, as UTF-8.
  virtual std::string FromCodePage(const std::string& bytes) const = 0;

  // These return the system's reason for a failure, or an empty text. Copy replaces an existing
  // file; copying a file onto itself is a failure.
  virtual std::string Copy(const std::string& from, const std::string& to) = 0;
  virtual std::string Remove(const std::string& path) = 0;

  // Appends the bytes, creating the file when it is missing. False when that failed.
  virtual bool Append(const std::string& path, const std::string& bytes) = 0;
};

}  // namespace orvanto
