// The file system of a POSIX host under Windows paths, see Paths.h.
#pragma once

#include "platform/Files.h"

namespace orvanto::posix {

// Names that hold a backslash cannot be named here, and are passed over in listings.
class PosixFiles : public Files {
 public:
  bool TellsCaseApart() const override { return true; }
  bool Exists(const std::string& path) const override;
  void ListFolder(const std::string& folder, const EachEntry& each) override;
  void ListDetails(const std::string& folder,
                   const std::function<bool(const Entry& entry)>& each) override;
  std::optional<Facts> Look(const std::string& path) const override;
  std::vector<std::string> Drives() const override;
  Opened Open(const std::string& path, Access access) override;
  bool Read(const std::string& path, std::string& contents) override;
  std::string FromCodePage(const std::string& bytes) const override;  // Windows-1252
  std::string Copy(const std::string& from, const std::string& to) override;
  std::string Replace(const std::string& from, const std::string& to) override;
  std::string Remove(const std::string& path) override;
  std::string RemoveFolder(const std::string& path) override;
  bool Append(const std::string& path, const std::string& bytes) override;
};

}  // namespace orvanto::posix
