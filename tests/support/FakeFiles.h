// A file system in memory.
#pragma once

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <vector>

#include "platform/Files.h"
#include "platform/text/Case.h"
#include "platform/text/Utf8.h"

namespace orvanto {

using Texts = std::vector<std::string>;

class FakeFiles : public Files {
 public:
  static constexpr std::size_t kAny = std::string::npos;

  std::map<std::string, std::string> contents;  // by path
  // The entries of a folder ("C:\\x\\") in their order: folders with a backslash at their end,
  // links to folders with an "@", hidden files with an asterisk. They need not be in `contents`.
  std::map<std::string, Texts> listings;
  std::map<std::string, DateTime> changed;  // by path; others long ago
  std::set<std::string> links;              // of those in `contents` or `listings`
  std::set<std::string> locked;             // can be neither removed, copied nor opened
  // Faults of open files: what the disk still takes, and the reads and writes that still succeed.
  std::size_t diskLeft = kAny, readsLeft = kAny, writesLeft = kAny;
  int open = 0;  // files
  bool tellsCaseApart = false;

  bool TellsCaseApart() const override { return tellsCaseApart; }
  bool Exists(const std::string& path) const override { return Find(path) != contents.end(); }
  void ListFolder(const std::string& folder, const EachEntry& each) override {
    if (!listings.contains(folder)) return;
    for (std::string entry : Texts(listings[folder])) {
      const EntryKind kind = entry.ends_with('\\')  ? EntryKind::Folder
                             : entry.ends_with('@') ? EntryKind::FolderLink
                             : entry.ends_with('*') ? EntryKind::Hidden
                                                    : EntryKind::File;
      if (kind != EntryKind::File) entry.pop_back();
      if (!each(entry, kind)) return;
    }
  }
  void ListDetails(const std::string& folder,
                   const std::function<bool(const Entry& entry)>& each) override {
    ListFolder(folder, [&](const std::string& name, EntryKind kind) {
      const auto file = Find(folder + name);
      const std::size_t size = file == contents.end() ? 0 : file->second.size();
      return each({name, kind, size, Changed(folder + name)});
    });
  }
  std::optional<Facts> Look(const std::string& path) const override {
    if (!Exists(path) && !listings.contains(path + "\\") && !links.contains(path)) return {};
    const DateTime is = Changed(path);
    const std::chrono::sys_seconds day =
        std::chrono::sys_days(std::chrono::year(is.year) / is.month / is.day);
    const int second = is.hour * 3600 + is.minute * 60 + is.second;
    return Facts{links.contains(path), day.time_since_epoch().count() + second};
  }
  std::vector<std::string> Drives() const override { return {"C:\\", "D:\\"}; }
  Opened Open(const std::string& path, Access access) override {
    if (locked.contains(path)) return {nullptr, kPermissionError};
    auto file = Find(path);
    if (file == contents.end()) {
      if (access == Access::Read) return {nullptr, kFileNotFoundError};
      file = contents.try_emplace(path).first;
    }
    return {std::make_unique<OpenFile>(*this, file->first), kNoError};
  }
  bool Read(const std::string& path, std::string& text) override {
    const auto file = Find(path);
    if (file != contents.end()) text = file->second;
    return file != contents.end();
  }
  std::string FromCodePage(const std::string& bytes) const override {  // takes it for Latin-1
    std::string text;
    for (const char c : bytes) AppendUtf8(static_cast<unsigned char>(c), text);
    return text;
  }
  std::string Copy(const std::string& from, const std::string& to) override {
    if (locked.contains(from)) return "It is locked.";
    contents[to].clear();
    return OpenFile(*this, to).WriteAt(0, Find(from)->second) == kNoError ? "" : "The disk is full";
  }
  std::string Replace(const std::string& from, const std::string& to) override {
    if (locked.contains(from) || locked.contains(to)) return "It is locked.";
    contents[to] = Find(from)->second;
    return Remove(from);
  }
  std::string Remove(const std::string& path) override {
    if (locked.contains(path)) return "It is locked.";
    const auto found = Find(path);
    if (found == contents.end()) return "It is missing.";
    contents.erase(found);
    return "";
  }
  std::string RemoveFolder(const std::string& path) override {
    const auto folder = listings.find(path + "\\");
    if (folder == listings.end() || !folder->second.empty()) return "It is not empty.";
    listings.erase(folder);
    return "";
  }
  bool Append(const std::string& path, const std::string& bytes) override {
    contents[path] += bytes;
    return true;
  }

 private:
  struct OpenFile : File {
    OpenFile(FakeFiles& files, std::string its) : fs(files), path(std::move(its)) { ++fs.open; }
    ~OpenFile() override { --fs.open; }
    ReadResult ReadAt(std::uint64_t offset, char* bytes, std::size_t size) override {
      if (!Take(fs.readsLeft)) return {0, kDeviceError};
      const std::string& text = fs.contents[path];
      return {offset > text.size() ? 0 : text.copy(bytes, size, offset), kNoError};
    }
    ErrorNumber WriteAt(std::uint64_t offset, std::string_view bytes) override {
      if (!Take(fs.writesLeft)) return kDeviceError;
      std::string& text = fs.contents[path];
      const std::size_t size = std::min(bytes.size(), fs.diskLeft);
      if (fs.diskLeft != kAny) fs.diskLeft -= size;
      if (text.size() < offset + size) text.resize(offset + size);
      text.replace(offset, size, bytes.substr(0, size));
      return size < bytes.size() ? kDiskFullError : kNoError;
    }
    std::uint64_t Size() const override { return fs.contents[path].size(); }
    ErrorNumber Flush() override { return kNoError; }
    static bool Take(std::size_t& left) { return left == kAny || (left > 0 && left-- > 0); }
    FakeFiles& fs;
    const std::string path;
  };

  std::map<std::string, std::string>::const_iterator Find(const std::string& path) const {
    const auto exact = contents.find(path);
    if (exact != contents.end()) return exact;
    return std::ranges::find_if(
        contents, [&](const auto& file) { return FoldCase(file.first) == FoldCase(path); });
  }
  DateTime Changed(const std::string& path) const {
    const auto time = changed.find(path);
    return time == changed.end() ? DateTime{2001, 2, 3, 4, 5, 6, 7} : time->second;
  }
};

}  // namespace orvanto
