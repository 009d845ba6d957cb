#include "download/Url.h"

#include <gtest/gtest.h>

#include "download/Figures.h"

namespace orvanto {
namespace {

TEST(Url, HasAHostAndAFileName) {
  const char* const kCases[][3] = {{"http://host/dir/file.zip", "host", "file.zip"},
                                   {"http://host:8080/a.bin", "host:8080", "a.bin"},
                                   {"ftp://u:p@host/a:b", "u:p@host", "a"},
                                   {"host/x/", "host", ""},
                                   {"http://host", "old", "old"},
                                   {"", "old", "old"}};
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
  const char* const kCases[][2] = {{"a%20b.zip", "a%20b.zip"},
                                   {"file?x=1", "file_x=1"},
                                   {"..", "__"},
                                   {"a\\..\\b", "a_.._b"},
                                   {"a\x01\xFF.", "a___"},
                                   {"\xC3\xA4 ", "\xC3\xA4_"},
                                   {"Con.txt", ""},
                                   {"com1 .a", ""},
                                   {"com", "com"},
                                   {"LPT0", ""},
                                   {"com\u00B2.x", ""},
                                   {"Registry.txt.new", ""},
                                   {"ORVTASK.LOG", ""},
                                   {"orvanto.exe.local", ""},
                                   {"Version.DLL", ""},
                                   {"Scripts", ""},
                                   {"scripts.zip", "scripts.zip"}};
  for (const auto& [name, stored] : kCases) EXPECT_EQ(LocalFileName(name), stored) << name;
}

TEST(Figures, AreShownAsTheyAlwaysWere) {
  for (const auto& [bytes, text] : {std::pair(0.0F, "0 Bytes"),
                                    {1023, "1023 Bytes"},
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
  EXPECT_FLOAT_EQ(SpeedKbps(5678, 10, 12, 0), 2.84F);
  EXPECT_FLOAT_EQ(SpeedKbps(1000, 86399, 1, 0), 0.5F);
  EXPECT_EQ(SpeedKbps(1000, 10, 10, 7), 7);
  ElapsedTime time;
  for (int i = 0; i < 3600; ++i) time.Tick();
  EXPECT_EQ(time.Text(), "0:60:0");
  time.Tick();
  EXPECT_EQ(time.Text(), "01:00:01");
}

}  // namespace
}  // namespace orvanto
