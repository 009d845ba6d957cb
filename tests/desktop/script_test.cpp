// Automation scripts in the finished program, with Notepad and a console as the programs they act
// on.
#include <filesystem>

#include "platform/win32/Text.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::desktop {
namespace {

namespace fs = std::filesystem;
using win32::ToUtf8;
using win32::ToWide;

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

// The first window that has the text in its title.
HWND Find(const std::wstring& text) {
  HWND window = nullptr;
  while ((window = FindWindowExW(nullptr, window, nullptr, nullptr)) != nullptr) {
    wchar_t title[256] = L"";
    InternalGetWindowText(window, title, 256);
    if (std::wstring(title).find(text) != std::wstring::npos) break;
  }
  return window;
}

class ScriptTest : public DesktopTest {
 protected:
  ScriptTest() {
    for (const char* folder : {"out", "pause", "tree\\a\\b", "tree\\c"}) {
      fs::create_directories(In(folder));
    }
    fs::create_directories(Beside(L"scripts"));
    fs::remove(log_);
  }
  ~ScriptTest() override {
    for (const std::string& script : scripts_) fs::remove(script);
  }

  // A script that tells of its last line by a file; the task that runs it has the same name.
  void Add(const std::string& name, const std::vector<std::string>& lines) {
    scripts_.push_back(ToUtf8(Beside(L"scripts\\")) + name + ".txt");
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    WriteFile(In(name + ".end"), name);
    WriteFile(scripts_.back(), text + "copy('" + In(name + ".end") + "'," + In("out") + ")\r\n");
    tasks_.push_back({name, "Scripts", "1", name + ".txt"});
  }
  // Whether the script has come to its last line.
  bool Ended(const std::string& name) const { return fs::exists(In("out\\" + name + ".end")); }
  // The full name of a file that the scripts work on.
  std::string In(const std::string& name) const { return folder_ / name; }

  const TemporaryDirectory folder_;
  const std::string log_ = ToUtf8(Beside(L"ORVSCRPT.LOG"));
  std::vector<Task> tasks_;

 private:
  std::vector<std::string> scripts_;
};

// In Wine the keys open no menu of a console, and its window takes no characters that are not keys.
// So this looks at what the program does for its part: the text on the clipboard and the console in
// front.
TEST_F(ScriptTest, PastesIntoAConsole) {
  WriteFile(In("console.bat"),
            "@title orvanto-console\r\n@set /p line=\r\n@echo pressed>" + In("got.txt") + "\r\n");
  Add("console", {"open('" + In("console.bat") + "')"});
  Add("paste", {"sendkeysdos('orvanto-console',Grüße +1)"});
  Add("enter", {"sendkeys('orvanto-console',~)"});
  Import(tasks_);
  const RunningProgram program;
  const auto run = [&](int line) {
    program.SelectLine(line);
    program.Press(L"&Run Task");
    return WaitFor([&] { return Ended(tasks_[static_cast<std::size_t>(line) - 1].name); });
  };
  ASSERT_TRUE(run(1));
  HWND console = nullptr;
  ASSERT_TRUE(WaitFor([&] { return (console = Find(L"orvanto-console")) != nullptr; }));
  ASSERT_TRUE(run(2));
  EXPECT_EQ(GetForegroundWindow(), console);
  ASSERT_TRUE(WaitFor([] { return OpenClipboard(nullptr) != 0; }));
  const auto* text = static_cast<const wchar_t*>(GetClipboardData(CF_UNICODETEXT));
  const std::wstring clipboard = text == nullptr ? L"" : text;
  CloseClipboard();
  EXPECT_EQ(clipboard, L"Grüße +1");
  ASSERT_TRUE(run(3));
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(console); }));
  EXPECT_EQ(ReadFile(In("got.txt")), "pressed\r\n");
}

// One minute's wait: two tasks of the same minute do an errand together, and nobody is there.
TEST_F(ScriptTest, DoesAnErrandAtItsMinuteThoughInvisible) {
  const std::string errand = In("tree\\a\\b\\orvanto-errand.txt");
  WriteFile(errand, kByteOrderMark);
  WriteFile(In("tree\\c\\other.txt"), "not this one");
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(In("pause\\pause.bat"), "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + In("pause") + ")";
  const std::string keys = "sendkeys('orvanto-errand.txt - Notepad',";
  Add("find", {"findopen('orvanto-errand.txt'," + In("tree") + ")", pause});
  Add("write", {"*(the window is there by now)", keys + "Done while +you were {(}äß€{)} away.~)",
                keys + "^s)", keys + "%{F4})", pause, "copy('" + errand + "'," + In("out") + ")"});
  const int due = DueSoon();
  Import(tasks_, due);
  const RunningProgram program(L"INVISIBLE");
  const HWND hidden = program.MainWindow();
  ASSERT_NE(hidden, nullptr);
  bool everShown = false;
  int began = -1;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown = everShown || IsWindowVisible(hidden);
        if (began < 0 && Ended("find")) began = MinuteOfTheDay();
        return Ended("write");
      },
      std::chrono::seconds(130)));
  EXPECT_FALSE(everShown);
  EXPECT_EQ(began, due);
  EXPECT_EQ(ReadFile(In("out\\orvanto-errand.txt")),
            std::string(kByteOrderMark) + "Done while You were (äß€) away.\r\n");
  EXPECT_EQ(Find(L"orvanto-errand.txt"), nullptr);
  EXPECT_FALSE(fs::exists(log_)) << ReadFile(log_);
}

}  // namespace
}  // namespace orvanto::desktop
