#include "download/ftp/Listing.h"

#include <gtest/gtest.h>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

std::string Told(const CFTPFile& file) {
  const DateTime& time = file.LastWriteTime;
  std::string text = file.IsDirectory ? "/" : "";
  text += file.FilePath + " " + std::to_string(file.FileSize) + " " + file.Permissions + " " +
          file.Owner + " " + file.Group;
  for (const int number : {time.year, time.month, time.day, time.hour, time.minute, time.weekday}) {
    text += " " + std::to_string(number);
  }
  return text;
}

// Each line alone is an entry, or none.
TEST(Listing, TellsUnixAndDosLines) {
  const char* const kLines[][2] = {
      {"-rw-r--r--    1 ftp      ftp             7 Nov 21 14:04 a.txt",
       "d/a.txt 7 -rw-r--r-- ftp ftp 2026 11 21 14 4 7"},
      {"drwxr-xr-x 2 0 staff 4096 Feb 29 2008 two  words  here",
       "/d/two words here 4096 drwxr-xr-x 0 staff 2008 2 29 0 0 6"},
      {"lrwxrwxrwx 1 o g 3 Jan 1 2026 link -> /usr.d/lib",
       "/d/link 3 lrwxrwxrwx o g 2026 1 1 0 0 5"},
      {"lrwxrwxrwx 1 o g 5 Jan 1 2026 link -> lib/a.txt", "d/link 5 lrwxrwxrwx o g 2026 1 1 0 0 5"},
      {"lrwxrwxrwx 1 o g 5 Jan 1 2026 link", "/d/link 5 lrwxrwxrwx o g 2026 1 1 0 0 5"},
      {"-rw-r--r-- 1 o g 99999999999999999999 nov 21 2026 x",
       "d/x 2147483647 -rw-r--r-- o g 0 0 0 0 0 0"},
      {"-rw-r--r-- 1 o g -5 Feb 30 2026 x", "d/x 0 -rw-r--r-- o g 0 0 0 0 0 0"},
      {"-rw-r--r-- 1 o g 5 Feb 3 24:00 x", "d/x 5 -rw-r--r-- o g 0 0 0 0 0 0"},
      {"11-21-26  02:04PM                 1234 my file.txt",
       "d/my file.txt 1234    2026 11 21 14 4 7"},
      {"01-02-1999  12:30AM       <DIR>          sub", "/d/sub 0    1999 1 2 0 30 7"},
      {"2010-12-31  23:59  2147483648 x", "d/x 2147483647    2010 12 31 23 59 6"},
      {"01-02-30 12:30 x x", "d/x 0    1930 1 2 12 30 5"},
      {"a m c x", "d/x 0    0 0 0 0 0 0"},
      {"total 8", ""},
      {"totally 1 o g 5 Jan 1 2026 x", ""},
      {"drwxr-xr-x 2 o g 4096 Jan 1 2026 .", ""},
      {"drwxr-xr-x 2 o g 4096 Jan 1 2026 ..", ""},
      {"drwxr-xr-x 2 o g 4096 Jan 1 2026 ", ""},
      {"three fields here", ""},
      {"", ""}};
  CFTPFiles all;
  std::string text;
  for (const auto& [line, told] : kLines) {
    CFTPFiles files;
    ParseListing(line, "d", 2026, files);
    EXPECT_EQ(files.Count() == 0 ? "" : Told(files.Item(1)), told) << line;
    text += std::string(line) + "\r\n";
  }
  ParseListing(text, "/", 2026, all);
  ASSERT_EQ(all.Count(), 13U);
  EXPECT_EQ(all.Item("sub").FilePath, "/sub");
  all.Remove("sub");
  all.Remove(1);
  EXPECT_EQ(all.Item(1).Filename, "two words here");
  EXPECT_EQ(all.Count(), 11U);
  EXPECT_EQ(ErrorOf([&] { all.Item("sub"); }), kIllegalCall);
  EXPECT_EQ(ErrorOf([&] { all.Item(12); }), kSubscriptOutOfRange);
  EXPECT_EQ(ErrorOf([&] { all.Remove(std::size_t{0}); }), kSubscriptOutOfRange);
}

}  // namespace
}  // namespace orvanto
