#include "tests/support/FakeFiles.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/text/Case.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

constexpr DateTime kLongAgo{2001, 2, 3, 4, 5, 6, 7};

}  // namespace

std::map<std::string, std::string>::const_iterator FakeFiles::Find(const std::string& path) const {
  const auto exact = contents.find(path);
  if (exact != contents.end()) return exact;
  return std::find_if(contents.begin(), contents.end(),
                      [&](const auto& file) { return FoldCase(file.first) == FoldCase(path); });
}

bool FakeFiles::Exists(const std::string& path) const { return Find(path) != contents.end(); }

void FakeFiles::ListFolder(const std::string& folder, const EachEntry& each) {
  const auto listing = listings.find(folder);
  if (listing == listings.end()) return;
  for (const std::string& entry : std::vector<std::string>(listing->second)) {
    const EntryKind kind = entry.ends_with('\\')  ? EntryKind::Folder
                           : entry.ends_with('@') ? EntryKind::FolderLink
                           : entry.ends_with('*') ? EntryKind::Hidden
                                                  : EntryKind::File;
    if (!each(entry.substr(0, entry.size() - (kind != EntryKind::File ? 1 : 0)), kind)) return;
  }
}

void FakeFiles::ListDetails(const std::string& folder,
                            const std::function<bool(const Entry& entry)>& each) {
  ListFolder(folder, [&](const std::string& name, EntryKind kind) {
    const auto file = Find(folder + name);
    const auto time = changed.find(folder + name);
    return each({name, kind, file == contents.end() ? 0 : file->second.size(),
                 time == changed.end() ? kLongAgo : time->second});
  });
}

std::optional<Files::Facts> FakeFiles::Look(const std::string& path) const {
  if (!Exists(path) && !listings.contains(path + "\\") && !links.contains(path)) return {};
  const auto time = changed.find(path);
  const DateTime is = time == changed.end() ? kLongAgo : time->second;
  const std::chrono::sys_days day = std::chrono::year(is.year) / is.month / is.day;
  const auto second = is.hour * 3600 + is.minute * 60 + is.second;
  return Facts{links.contains(path),
               std::chrono::sys_seconds(day).time_since_epoch().count() + second};
}

class FakeFiles::OpenFile : public File {
 public:
  OpenFile(FakeFiles& files, std::string path) : files_(files), path_(std::move(path)) {
    ++files_.open;
  }
  ~OpenFile() override { --files_.open; }

  ReadResult ReadAt(std::uint64_t offset, char* bytes, std::size_t size) override {
    if (!Take(files_.readsLeft)) return {0, kDeviceError};
    const std::string& text = files_.contents[path_];
    return {offset > text.size() ? 0 : text.copy(bytes, size, offset), kNoError};
  }
  ErrorNumber WriteAt(std::uint64_t offset, std::string_view bytes) override {
    if (!Take(files_.writesLeft)) return kDeviceError;
    std::string& text = files_.contents[path_];
    const std::size_t size = std::min(bytes.size(), files_.diskLeft);
    if (files_.diskLeft != kAny) files_.diskLeft -= size;
    if (text.size() < offset + size) text.resize(offset + size);
    text.replace(offset, size, bytes.substr(0, size));
    return size < bytes.size() ? kDiskFullError : kNoError;
  }
  std::uint64_t Size() const override { return files_.contents[path_].size(); }
  ErrorNumber Flush() override { return kNoError; }

 private:
  static bool Take(std::size_t& left) {
    if (left == kAny) return true;
    return left > 0 && left-- > 0;
  }

  FakeFiles& files_;
  const std::string path_;
};

Files::Opened FakeFiles::Open(const std::string& path, Access access) {
  if (locked.contains(path)) return {nullptr, kPermissionError};
  auto file = Find(path);
  if (file == contents.end()) {
    if (access == Access::Read) return {nullptr, kFileNotFoundError};
    file = contents.try_emplace(path).first;
  }
  return {std::make_unique<OpenFile>(*this, file->first), kNoError};
}

bool FakeFiles::Read(const std::string& path, std::string& text) {
  const auto file = Find(path);
  if (file == contents.end()) return false;
  text = file->second;
  return true;
}

std::string FakeFiles::FromCodePage(const std::string& bytes) const {
  std::string text;
  for (const char c : bytes) AppendUtf8(static_cast<unsigned char>(c), text);
  return text;
}

std::string FakeFiles::Copy(const std::string& from, const std::string& to) {
  if (locked.count(from) != 0) return "It is locked.";
  contents[to].clear();
  const bool done = OpenFile(*this, to).WriteAt(0, Find(from)->second) == kNoError;
  return done ? "" : "The disk is full.";
}

std::string FakeFiles::Replace(const std::string& from, const std::string& to) {
  if (locked.count(from) + locked.count(to) != 0) return "It is locked.";
  contents[to] = Find(from)->second;
  return Remove(from);
}

std::string FakeFiles::Remove(const std::string& path) {
  if (locked.count(path) != 0) return "It is locked.";
  const auto found = Find(path);
  if (found == contents.end()) return "It is missing.";
  contents.erase(found);
  return "";
}

std::string FakeFiles::RemoveFolder(const std::string& path) {
  const auto folder = listings.find(path + "\\");
  if (folder == listings.end() || !folder->second.empty()) return "It is not empty.";
  listings.erase(folder);
  return "";
}

bool FakeFiles::Append(const std::string& path, const std::string& bytes) {
  contents[path] += bytes;
  return true;
}

}  // namespace orvanto
