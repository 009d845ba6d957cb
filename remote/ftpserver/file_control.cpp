#include "remote/ftpserver/file_control.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "core/Convert.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

bool CanBeNamed(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

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

// A '*' is tried with as little as it takes, and with more when what follows does not match.
bool Matches(std::string_view name, std::string_view pattern) {
  std::size_t star = std::string_view::npos;
  std::size_t from = 0;  // what comes after the star is tried from here
  std::size_t at = 0;    // in the pattern
  for (std::size_t i = 0; i < name.size();) {
    if (at < pattern.size() && pattern[at] == '*') {
      star = at++;
      from = i;
    } else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == name[i])) {
      ++at;
      ++i;
    } else if (star != std::string_view::npos) {
      at = star + 1;
      i = ++from;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', at) == std::string_view::npos;
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

std::string ListingOf(Files& files, const std::string& folder, const ListingForm& form) {
  std::string folders;
  std::string others;
  files.ListDetails(folder, [&](const Files::Entry& entry) {
    if (entry.name.find_first_of(kCrLf) != std::string::npos) return true;
    if (!Matches(entry.name, form.pattern)) return true;
    const bool isFolder = IsFolder(entry.kind);
    std::string& lines = isFolder ? folders : others;
    if (!form.onlyNames) {
      lines += isFolder ? "drwx------ 1 user group 0 "
                        : "-rwx------ 1 user group " + std::to_string(entry.size);
      lines += TimeInListing(entry.changed);
    }
    lines += entry.name + kCrLf;
    return true;
  });
  return folders + others;
}

std::string UtcText(std::int64_t moment) {
  const std::chrono::sys_seconds time{std::chrono::seconds(moment)};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::string text = std::to_string(int(date.year()));
  for (const std::int64_t part :
       {std::int64_t{unsigned(date.month())}, std::int64_t{unsigned(date.day())},
        std::int64_t{clock.hours().count()}, std::int64_t{clock.minutes().count()},
        std::int64_t{clock.seconds().count()}}) {
    text += TwoDigits(static_cast<int>(part));
  }
  return text;
}

}  // namespace orvanto
