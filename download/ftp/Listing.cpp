#include "download/ftp/Listing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <limits>

#include "platform/text/Lines.h"

namespace orvanto {
namespace {

using Fields = std::array<std::string_view, 9>;
constexpr std::size_t kDosFields = 4;
constexpr std::string_view kArrow = " -> ";

std::string WithSingleBlanks(std::string_view line) {
  std::string single(line);
  const auto both = [](char left, char right) { return left == ' ' && right == ' '; };
  single.erase(std::unique(single.begin(), single.end(), both), single.end());
  return single;
}

// Cuts the line at its blanks; the last of `most` fields takes the rest. Returns how many it has.
std::size_t Split(std::string_view line, std::size_t most, Fields& fields) {
  for (std::size_t i = 0;; ++i) {
    const std::size_t blank = i + 1 < most ? line.find(' ') : std::string_view::npos;
    fields[i] = line.substr(0, blank);
    if (blank == std::string_view::npos) return i + 1;
    line.remove_prefix(blank + 1);
  }
}

// What begins the text; 0 when that is no number.
std::int32_t Number(std::string_view text) {
  std::int64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  if (result.ec == std::errc::result_out_of_range) return kMost;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(number, 0, kMost));
}

// Nothing when there is no such moment.
DateTime Moment(int year, int month, int day, int hour, int minute) {
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (year < 1 || year > 9999 || month > 12 || day > 31 || !date.ok()) return {};
  if (hour > 23 || minute > 59) return {};
  const std::chrono::weekday weekday{std::chrono::sys_days(date)};
  return {year, month, day, hour, minute, 0, static_cast<int>(weekday.c_encoding()) + 1};
}

// The numbers of "11-21-26" or "14:04".
std::array<int, 3> Numbers(std::string_view text) {
  std::array<int, 3> numbers{};
  for (int& number : numbers) {
    number = Number(text);
    text.remove_prefix(std::min(text.find_first_of("-/:"), text.size()));
    if (!text.empty()) text.remove_prefix(1);
  }
  return numbers;
}

// "11-21-26  02:04PM", also with the year in front, and with 24 hours.
DateTime DosTime(std::string_view date, std::string_view time) {
  auto [month, day, year] = Numbers(date);
  if (month > 31) {
    const int inFront = month;
    month = day;
    day = year;
    year = inFront;
  }
  if (year < 100) year += year < 30 ? 2000 : 1900;
  auto [hour, minute, second] = Numbers(time);
  if (time.find_first_of("Pp") != std::string_view::npos) {
    hour = hour % 12 + 12;
  } else if (time.find_first_of("Aa") != std::string_view::npos && hour == 12) {
    hour = 0;
  }
  return Moment(year, month, day, hour, minute);
}

// "Nov 21 14:04" of this year, "Nov 21 2010".
DateTime UnixTime(const Fields& fields, int thisYear) {
  constexpr std::string_view kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const auto* const found = std::find(std::begin(kMonths), std::end(kMonths), fields[5]);
  if (found == std::end(kMonths)) return {};
  const int month = static_cast<int>(found - std::begin(kMonths)) + 1;
  const int day = Number(fields[6]);
  if (fields[7].find(':') == std::string_view::npos) {
    return Moment(Number(fields[7]), month, day, 0, 0);
  }
  const auto time = Numbers(fields[7]);
  return Moment(thisYear, month, day, time[0], time[1]);
}

CFTPFile FromDos(const Fields& fields) {
  CFTPFile file;
  file.IsDirectory = fields[2] == "<DIR>";
  if (!file.IsDirectory) file.FileSize = Number(fields[2]);
  file.Filename = fields[3];
  file.LastWriteTime = DosTime(fields[0], fields[1]);
  return file;
}

CFTPFile FromUnix(const Fields& fields, int year) {
  CFTPFile file;
  file.Permissions = fields[0];
  file.Owner = fields[2];
  file.Group = fields[3];
  file.FileSize = Number(fields[4]);
  file.LastWriteTime = UnixTime(fields, year);
  file.Filename = fields[8];
  file.IsDirectory = fields[0].starts_with('d');
  if (fields[0].starts_with('l')) {
    // Where it leads is not told otherwise: to a directory, unless the name looks like a file's.
    const std::size_t arrow = std::min(file.Filename.find(kArrow), file.Filename.size());
    const std::string target = file.Filename.substr(arrow);
    file.IsDirectory = target.find('.', target.rfind('/') + 1) == std::string::npos;
    file.Filename.resize(arrow);
  }
  return file;
}

}  // namespace

std::string JoinRemotePath(const std::string& directory, const std::string& name) {
  return directory + (directory.empty() || directory.ends_with('/') ? "" : "/") + name;
}

void ParseListing(std::string_view text, const std::string& directory, int year, CFTPFiles& files) {
  LineReader lines(text);
  while (const auto raw = lines.Next()) {
    const std::string line = WithSingleBlanks(*raw);
    if (line.starts_with("total")) continue;
    Fields fields;
    CFTPFile file;
    if (Split(line, fields.size(), fields) == fields.size()) {
      file = FromUnix(fields, year);
    } else if (Split(line, kDosFields, fields) == kDosFields) {
      file = FromDos(fields);
    }
    if (file.Filename.empty() || file.Filename == "." || file.Filename == "..") continue;
    file.FilePath = JoinRemotePath(directory, file.Filename);
    files.Add(std::move(file));
  }
}

}  // namespace orvanto
