// A file system in memory.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/Files.h"

namespace orvanto {

using Texts = std::vector<std::string>;

class FakeFiles : public Files {
 public:
  static constexpr std::size_t kAny = std::string::npos;

  bool TellsCaseApart() const override { return tellsCaseApart; }
  bool Exists(const std::string& path) const override;
  void ListFolder(const std::string& folder, const EachEntry& each) override;
  void ListDetails(const std::string& folder,
                   const std::function<bool(const Entry& entry)>& each) override;
  std::optional<Facts> Look(const std::string& path) const override;
  std::vector<std::string> Drives() const override { return {"C:\\", "D:\\"}; }
  Opened Open(const std::string& path, Access access) override;
  bool Read(const std::string& path, std::string& text) override;
  std::string FromCodePage(const std::string& bytes) const override;  // takes it for Latin-1
  std::string Copy(const std::string& from, const std::string& to) override;
  std::string Replace(const std::string& from, const std::string& to) override;
  std::string Remove(const std::string& path) override;
  std::string RemoveFolder(const std::string& path) override;
  bool Append(const std::string& path, const std::string& bytes) override;

  std::map<std::string, std::string> contents;  // by path
  // The entries of a folder ("C:\\x\\") in the order in which they are listed, folders with a
  // backslash at their end, links to folders with an "@", hidden files with an asterisk. They need
  // not be in `contents`.
  std::map<std::string, Texts> listings;
  std::map<std::string, DateTime> changed;  // by path; others long ago
  std::set<std::string> links;              // of those in `contents` or `listings`
  std::set<std::string> locked;             // can be neither removed, copied nor opened
  // Faults of open files: what the disk still takes, and the reads and writes that still succeed.
  std::size_t diskLeft = kAny;
  std::size_t readsLeft = kAny;
  std::size_t writesLeft = kAny;
  int open = 0;  // files
  bool tellsCaseApart = false;

 private:
  class OpenFile;
  std::map<std::string, std::string>::const_iterator Find(const std::string& path) const;
};

}  // namespace orvanto
