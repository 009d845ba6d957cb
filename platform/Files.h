// The file system. Paths are Windows paths ("C:\dir\name", relative ones against the current
// directory) on every host; a host without drives shows its root directory as "Z:\". A name that
// does not exist as it is written is looked up without regard to case.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/File.h"

namespace orvanto {

class Files {
 public:
  virtual ~Files() = default;

  // Whether names that differ in case alone may be those of two files. A path in another case is
  // then another path, and means a file only as long as none is spelt like it.
  virtual bool TellsCaseApart() const = 0;

  // True for a file of any kind but a directory that its folder lists under this very name; case
  // apart, as above.
  virtual bool Exists(const std::string& path) const = 0;

  // Calls `each` for every entry of the folder but "." and "..", in the system's own order, until
  // it returns false. A file that the system keeps from the eyes of its users is Hidden. `each` may
  // change the folder and run other events. Nothing happens for a folder that is not there or
  // cannot be read.
  enum class EntryKind { File, Hidden, Folder, FolderLink };
  using EachEntry = std::function<bool(const std::string& name, EntryKind kind)>;
  virtual void ListFolder(const std::string& folder, const EachEntry& each) = 0;

  // The same with what the listing tells besides: of a link it may be the link's own, or that of
  // what it leads to. The size of a folder is 0; the time is local.
  struct Entry {
    std::string name;
    EntryKind kind;
    std::uint64_t size;
    DateTime changed;
  };
  virtual void ListDetails(const std::string& folder,
                           const std::function<bool(const Entry& entry)>& each) = 0;

  // What is under this path, of any kind; nothing where nothing is. A link says so wherever it
  // leads, even nowhere.
  struct Facts {
    bool isLink;
    std::int64_t changed;  // seconds since 1970-01-01 00:00 UTC; of a link, its own
  };
  virtual std::optional<Facts> Look(const std::string& path) const = 0;

  // The roots of the drives, as "C:\\".
  virtual std::vector<std::string> Drives() const = 0;

  // A file to be read, or to be written and read: then it is made when it is missing, and keeps
  // what it holds. With an error comes no file. The error is kFileNotFoundError in a folder that is
  // there, else kPathNotFoundError; for what is no file (a folder, a device, a pipe) it is
  // kPathAccessError.
  enum class Access { Read, Write };
  struct Opened {
    std::unique_ptr<File> file;
    ErrorNumber error;
  };
  virtual Opened Open(const std::string& path, Access access) = 0;

  // The whole file; false when it cannot be read.
  virtual bool Read(const std::string& path, std::string& contents) = 0;

  // Text of the system's single-byte code page, as UTF-8.
  virtual std::string FromCodePage(const std::string& bytes) const = 0;

  // These return the system's reason for a failure, or an empty text. Copy replaces an existing
  // file; copying a file onto itself is a failure.
  virtual std::string Copy(const std::string& from, const std::string& to) = 0;
  // `from` takes the place of `to`, if there is one, in the same folder. `to` is never there in
  // part, and stays when that fails.
  virtual std::string Replace(const std::string& from, const std::string& to) = 0;
  virtual std::string Remove(const std::string& path) = 0;
  // A folder that is empty.
  virtual std::string RemoveFolder(const std::string& path) = 0;

  // Appends the bytes, creating the file when it is missing. False when that failed.
  virtual bool Append(const std::string& path, const std::string& bytes) = 0;
};

}  // namespace orvanto
