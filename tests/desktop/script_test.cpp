// Automation scripts in the finished program, with Notepad as the program they act on.
#include <filesystem>

#include "platform/win32/Text.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::desktop {
namespace {

namespace fs = std::filesystem;
using win32::ToUtf8;

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

// One minute's wait: two tasks of the same minute do an errand together, and nobody is there.
TEST_F(DesktopTest, ScriptsDoAnErrandAtTheirMinuteThoughInvisible) {
  const TemporaryDirectory folder;
  const auto in = [&](const std::string& name) { return folder / name; };
  for (const char* made : {"out", "pause", "tree\\a\\b", "tree\\c"}) {
    fs::create_directories(in(made));
  }
  WriteFile(in("began.txt"), "");
  WriteFile(in("tree\\a\\b\\orvanto-errand.txt"), kByteOrderMark);
  WriteFile(in("tree\\c\\other.txt"), "not this one");
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(in("pause\\pause.bat"), "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + in("pause") + ")\r\n";
  const std::string copies = "," + in("out") + ")\r\n";
  const std::string types = "sendkeys('orvanto-errand.txt - Notepad',";
  const std::string find = "findopen('orvanto-errand.txt'," + in("tree") + ")\r\n" + pause +
                           "copy('" + in("began.txt") + "'" + copies;
  const std::string write = "*(the window is there by now)\r\n" + types +
                            "Done while +you were {(}äß€{)} away.~)\r\n" + types + "^s)\r\n" +
                            types + "%{F4})\r\n" + pause + "copy('" +
                            in("tree\\a\\b\\orvanto-errand.txt") + "'" + copies;
  const fs::path scripts = Beside(L"scripts\\");
  const fs::path log = Beside(L"ORVSCRPT.LOG");
  fs::create_directories(scripts);
  fs::remove(log);
  WriteFile((scripts / "find.txt").string(), find);
  WriteFile((scripts / "write.txt").string(), write);

  // A minute that begins too soon would be over before the program has started.
  const int due = MinuteOfTheDay(70);
  Import({{L"Find", L"1", L"find.txt"}, {L"Write", L"1", L"write.txt"}}, due);
  const RunningProgram program(L"INVISIBLE");
  const HWND hidden = program.MainWindow();
  bool everShown = false;
  int began = -1;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown = everShown || IsWindowVisible(hidden);
        if (began < 0 && fs::exists(in("out\\began.txt"))) began = MinuteOfTheDay();
        return fs::exists(in("out\\orvanto-errand.txt"));
      },
      std::chrono::seconds(130)));
  EXPECT_FALSE(everShown);
  EXPECT_EQ(began, due);
  const std::string text = std::string(kByteOrderMark) + "Done while You were (äß€) away.\r\n";
  EXPECT_TRUE(WaitFor([&] { return ReadFile(in("out\\orvanto-errand.txt")) == text; }));
  EXPECT_TRUE(TopLevel(0, L"Notepad").empty());
  EXPECT_FALSE(fs::exists(log));
  for (const char* script : {"find.txt", "write.txt"}) fs::remove(scripts / script);
}

}  // namespace
}  // namespace orvanto::desktop
