#include <gtest/gtest.h>

#include "download/Figures.h"
#include "download/Url.h"
#include "download/ftp/Listing.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Url, HasAHostAndAFileName) {
  const char* const kCases[][3] = {{"http://host/dir/file.zip", "host", "file.zip"},
                                   {"ftp://u:p@host/a:b", "u:p@host", "a"},
                                   {"http://host", "old", "old"}};
  for (const auto& [url, host, name] : kCases) {
    DownloadState state;
    state.ConnectHost = state.UrlFileName = "old";
    ParseUrl(url, state);
    EXPECT_EQ(state.ConnectHost + "|" + state.UrlFileName, host + std::string("|") + name) << url;
  }
  EXPECT_EQ(WithoutLogin("ftp://u:p@q@host/a@b") + WithoutLogin("u:p@host") + WithoutLogin("x/a@b"),
            "ftp://host/a@bhostx/a@b");
  const char* const kFtp[][2] = {{"ftp://host/file", "  host 21  file"},
                                 {"FTP://u:p:q@r@host:2100/a/b/file", "u p:q@r host 2100 a/b file"},
                                 {"ftp://u@host:x//f", "u  host 21 / f"},
                                 {"ftp://host:99999", "  host 21  "}};
  for (const auto& [url, told] : kFtp) {
    const FtpAddress address = ParseFtpUrl(url);
    EXPECT_EQ(address.user + " " + address.password + " " + address.host + " " +
                  std::to_string(address.port) + " " + address.directory + " " + address.file,
              told);
  }
}

TEST(Url, GivesANameThatCanBeStored) {
  for (const std::string row :
       {"a%20b.zip>a%20b.zip", "file?x=1>file_x=1", "..>__", "a\\..\\b>a_.._b", "a\x01\xFF.>a___",
        "\xC3\xA4 >\xC3\xA4_", "Con.txt>", "com1 .a>", "com>com", "LPT0>", "com\u00B2.x>"}) {
    EXPECT_EQ(LocalFileName(row.substr(0, row.find('>'))), row.substr(row.find('>') + 1)) << row;
  }
  // The program's own.
  for (const char* name :
       {"Registry.txt.new", "ORVTASK.LOG", "orvanto.exe.local", "Version.DLL", "Scripts"}) {
    EXPECT_EQ(LocalFileName(name), "") << name;
  }
}

TEST(Figures, AreShownAsTheyAlwaysWere) {
  for (const auto& [bytes, text] : {std::pair(1023.0F, "1023 Bytes"),
                                    {1024, ""},
                                    {1536, "1.50 KB"},
                                    {1048576, "1024.00 KB"},
                                    {1.5F * (1 << 30), "1,536.00 MB"}}) {
    EXPECT_EQ(FormatSize(bytes), text);
  }
  for (const auto& [seconds, text] :
       {std::pair(7, "00:00:07"), {60, "00:01:00"}, {3661, "01:01:01"}, {90000, "25:0:0"}}) {
    EXPECT_EQ(ConvertTime(seconds), text);
  }
  EXPECT_EQ(PercentOf(1, 0) + PercentOf(5, 4) + PercentOf(-1, 4) + PercentOf(1, 3), 133);
  EXPECT_FLOAT_EQ(SpeedKbps(1'234'567, 10, 12, 0), 617.28F);
  EXPECT_FLOAT_EQ(SpeedKbps(1000, 86399, 1, 0), 0.5F);
  EXPECT_EQ(SpeedKbps(1000, 10, 10, 7), 7);
  ElapsedTime time;
  for (int i = 0; i < 3600; ++i) time.Tick();
  EXPECT_EQ(time.Text(), "0:60:0");
  time.Tick();
  EXPECT_EQ(time.Text(), "01:00:01");
}

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
      {"-rw-r--r-- 1 o g 99999999999999999999 nov 21 2026 x",
       "d/x 2147483647 -rw-r--r-- o g 0 0 0 0 0 0"},
      {"-rw-r--r-- 1 o g -5 Feb 30 2026 x", "d/x 0 -rw-r--r-- o g 0 0 0 0 0 0"},
      {"-rw-r--r-- 1 o g 5 Feb 3 24:00 x", "d/x 5 -rw-r--r-- o g 0 0 0 0 0 0"},
      {"11-21-26  02:04PM                 1234 my file.txt",
       "d/my file.txt 1234    2026 11 21 14 4 7"},
      {"01-02-1999  12:30AM       <DIR>          sub", "/d/sub 0    1999 1 2 0 30 7"},
      {"2010-12-31  23:59  2147483648 x", "d/x 2147483647    2010 12 31 23 59 6"},
      {"01-02-30 12:30 x x", "d/x 0    1930 1 2 12 30 5"},
      {"a m c x", "d/x 0    0 0 0 0 0 0"}};
  CFTPFiles all;
  std::string text;
  for (const auto& [line, told] : kLines) {
    CFTPFiles files;
    ParseListing(line, "d", 2026, files);
    EXPECT_EQ(files.Count() == 0 ? "" : Told(files.Item(1)), told) << line;
    text += std::string(line) + "\r\n";
  }
  for (const std::string line :
       {"total 8", "totally 1 o g 5 Jan 1 2026 x", "drwxr-xr-x 2 o g 4096 Jan 1 2026 .",
        "drwxr-xr-x 2 o g 4096 Jan 1 2026 ..", "drwxr-xr-x 2 o g 4096 Jan 1 2026 ", "a b c", ""}) {
    text += line + "\r\n";
  }
  ParseListing(text, "/", 2026, all);
  ASSERT_EQ(all.Count(), 12U);
  EXPECT_EQ(all.Item("sub").FilePath, "/sub");
  all.Remove("sub");
  EXPECT_EQ(ErrorOf([&] { all.Item("sub"); }), kIllegalCall);
  EXPECT_EQ(ErrorOf([&] { all.Item(12); }), kSubscriptOutOfRange);
  EXPECT_EQ(ErrorOf([&] { all.Remove(std::size_t{0}); }), kSubscriptOutOfRange);
}

}  // namespace
}  // namespace orvanto
