#include "remote/ftpserver/file_control.h"

#include <algorithm>
#include <array>

#include "core/Convert.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

bool CanBeNamed(const std::string& path) { return path.find('\0') == std::string::npos; }

// " Nov 05 14:07 "
std::string TimeInListing(const DateTime& time) {
  constexpr std::array<const char*, 12> kMonths{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto month = static_cast<std::size_t>(std::clamp(time.month, 1, 12) - 1);
  return std::string(" ") + kMonths[month] + " " + TwoDigits(time.day) + " " +
         TwoDigits(time.hour) + ":" + TwoDigits(time.minute) + " ";
}

bool IsFolder(Files::EntryKind kind) {
  return kind == Files::EntryKind::Folder || kind == Files::EntryKind::FolderLink;
}

}  // namespace

bool IsFile(const Files& files, const std::string& path) {
  return CanBeNamed(path) && files.Exists(path);
}

std::unique_ptr<File> OpenFile(Files& files, const std::string& path, Files::Access access) {
  return CanBeNamed(path) ? files.Open(path, access).file : nullptr;
}

bool DeleteOneFile(Files& files, const std::string& path) {
  return IsFile(files, path) && files.Remove(path).empty();
}

bool RemoveOneFolder(Files& files, const std::string& path) {
  return CanBeNamed(path) && files.RemoveFolder(path).empty();
}

std::string ListingOf(Files& files, const std::string& folder) {
  std::string folders;
  std::string others;
  files.ListDetails(folder, [&](const Files::Entry& entry) {
    if (entry.name.find_first_of(kCrLf) != std::string::npos) return true;
    const bool isFolder = IsFolder(entry.kind);
    std::string& lines = isFolder ? folders : others;
    lines += isFolder ? "drwx------ 1 user group 0 "
                      : "-rwx------ 1 user group " + std::to_string(entry.size);
    lines += TimeInListing(entry.changed) + entry.name + kCrLf;
    return true;
  });
  return folders + others;
}

}  // namespace orvanto
