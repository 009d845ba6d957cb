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

// One minute's wait: a task does an errand at its time, and nobody is there.
TEST_F(DesktopTest, AScriptDoesAnErrandAtItsMinuteThoughInvisible) {
  const TemporaryDirectory folder;
  const auto in = [&](const std::string& name) { return folder / name; };
  for (const char* made : {"out", "pause", "tree\\a\\b"}) fs::create_directories(in(made));
  const std::string errand = in("tree\\a\\b\\orvanto-errand.txt");
  WriteFile(errand, kByteOrderMark);
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(in("pause\\pause.bat"), "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + in("pause") + ")\r\n";
  const std::string types = "sendkeys('orvanto-errand.txt - Notepad',";
  const std::string script = ToUtf8(Beside(L"scripts\\errand.txt"));
  const fs::path log = Beside(L"ORVSCRPT.LOG");
  fs::create_directories(Beside(L"scripts"));
  fs::remove(log);
  WriteFile(script, "findopen('orvanto-errand.txt'," + in("tree") + ")\r\n" + pause + types +
                        "Done while +you were {(}äß€{)} away.~)\r\n" + types + "^s)\r\n" + types +
                        "%{F4})\r\n" + pause + "copy('" + errand + "'," + in("out") + ")\r\n");

  // A minute that begins too soon would be over before the program has started.
  const int due = MinuteOfTheDay(70);
  Import({{L"Errand", L"1", L"errand.txt"}}, due);
  const RunningProgram program(L"INVISIBLE");
  const HWND hidden = program.MainWindow();
  bool everShown = false;
  int began = -1;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown = everShown || IsWindowVisible(hidden);
        if (began < 0 && !TopLevel(0, L"Notepad").empty()) began = MinuteOfTheDay();
        return fs::exists(in("out\\orvanto-errand.txt"));
      },
      std::chrono::seconds(130)));
  EXPECT_FALSE(everShown);
  EXPECT_EQ(began, due);
  const std::string text = std::string(kByteOrderMark) + "Done while You were (äß€) away.\r\n";
  EXPECT_TRUE(WaitFor([&] { return ReadFile(in("out\\orvanto-errand.txt")) == text; }));
  EXPECT_TRUE(TopLevel(0, L"Notepad").empty());
  EXPECT_FALSE(fs::exists(log));
  fs::remove(script);
}

}  // namespace
}  // namespace orvanto::desktop
