// The finished program on a desktop, driven from outside as a person drives it. Uses the user's own
// settings, so it is for a machine, or a Wine prefix, that nobody works on.
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <stdexcept>

#include "platform/win32/Text.h"
#include "tests/desktop/RunningProgram.h"

namespace orvanto::desktop {
namespace {

using win32::ToUtf8;
using win32::ToWide;

constexpr const wchar_t* kKey = L"Software\\Quellmark\\Orvanto";
constexpr const wchar_t* kGeneralKey = L"Software\\Quellmark\\Orvanto\\General";
constexpr UINT kTrayCallback = WM_APP + 1;

struct Task {
  std::string name;
  std::string group;
  std::string type;
  std::string path;
};

std::string TemporaryFile(const std::string& name) {
  wchar_t folder[MAX_PATH + 1];
  GetTempPathW(MAX_PATH + 1, folder);
  return ToUtf8(folder) + name;
}

class DesktopTest : public testing::Test {
 protected:
  DesktopTest() {
    const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    HKEY key = nullptr;
    if (!isWine && RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key) == ERROR_SUCCESS) {
      RegCloseKey(key);
      throw std::runtime_error("somebody's own tasks are on this machine");
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  }
  ~DesktopTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

  // By the system's own tool. All of them are due every day at the given time.
  static void Import(const std::vector<Task>& tasks, int hour = 0, int minute = 0) {
    const std::string file = TemporaryFile("orvanto-tasks.reg");
    const std::string key = "[HKEY_CURRENT_USER\\" + ToUtf8(kKey) + "\\";
    std::ofstream out(file);
    out << "Windows Registry Editor Version 5.00\n";
    int count = 0;
    for (const Task& task : tasks) {
      std::string path;
      for (const char c : task.path) path += c == '\\' ? "\\\\" : std::string(1, c);
      out << key << task.name << "]\n\"Group\"=\"" << task.group << "\"\n"
          << "\"TimeType\"=\"2\"\n\"Every\"=\"1\"\n\"In\"=\"1\"\n\"TimeHour\"=\"" << hour
          << "\"\n\"TimeMinute\"=\"" << minute << "\"\n\"TaskType\"=\"" << task.type
          << "\"\n\"Path\"=\"" << path << "\"\n"
          << key << "General]\n\"Task" << ++count << "\"=\"" << task.name << "\"\n";
    }
    out << key << "General]\n\"NoTasks\"=\"" << count << "\"\n";
    out.close();
    ASSERT_EQ(RunToEnd(L"reg.exe import \"" + ToWide(file) + L"\""), 0);
  }

  static std::wstring Setting(const wchar_t* name) {
    wchar_t text[64] = L"";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, kGeneralKey, name, RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
  }

  static void Exit(const RunningProgram& program) {
    program.Press(L"E&xit");
    DWORD code = 1;
    ASSERT_TRUE(program.WaitForEnd(code));
    EXPECT_EQ(code, 0u);
  }

  static bool IsTopMost(HWND window) {
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
  }
};

TEST_F(DesktopTest, ShowsGroupsInOrderOfFirstAppearanceAndRunsWhatIsClicked) {
  Import({{"first", "B", "6", "one"}, {"second", "A", "6", "two"}, {"third", "B", "6", "three"}});
  const RunningProgram program;
  ASSERT_NE(program.MainWindow(), nullptr);
  std::vector<TreeLine> lines = program.Tree();
  for (TreeLine& line : lines) line.text.resize(std::min(line.text.find(L" | "), line.text.size()));
  EXPECT_EQ(lines, (std::vector<TreeLine>{
                       {0, L"B"}, {1, L"first"}, {1, L"third"}, {0, L"A"}, {1, L"second"}}));

  const HWND run = program.Button(L"&Run Task");
  EXPECT_FALSE(IsWindowEnabled(run));
  program.ClickTreeLine(2);
  ASSERT_TRUE(WaitFor([&] { return IsWindowEnabled(run) != 0; }));
  program.Press(L"&Run Task");
  ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
  const HWND box = program.Box();
  EXPECT_EQ(TextOf(box), L"Orvanto");
  EXPECT_EQ(TextOf(GetDlgItem(box, 0xFFFF)), L"three");
  EXPECT_FALSE(IsWindowEnabled(program.MainWindow())) << "everything waits for the answer";
  PostMessageW(box, WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitFor([&] { return IsWindowEnabled(program.MainWindow()) != 0; }));
  Exit(program);
}

TEST_F(DesktopTest, GoesToTheTrayAndComesBackOnADoubleClick) {
  const RunningProgram program;
  const HWND main = program.MainWindow();
  ASSERT_TRUE(WaitFor([&] { return IsWindowVisible(main) != 0; }));
  EXPECT_EQ(GetWindow(main, GW_OWNER), nullptr) << "an owned window is not in the task bar";
  program.Press(L"&System Tray");
  ASSERT_TRUE(WaitFor([&] { return IsWindowVisible(main) == 0; }));

  const HWND owner = program.TrayOwner();
  ASSERT_NE(owner, nullptr);
  for (const LPARAM single : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONUP}) {
    PostMessageW(owner, kTrayCallback, 1, single);
  }
  EXPECT_FALSE(WaitFor([&] { return IsWindowVisible(main) != 0; }, std::chrono::milliseconds(300)));
  PostMessageW(owner, kTrayCallback, 1, WM_LBUTTONDBLCLK);
  EXPECT_TRUE(WaitFor([&] { return IsWindowVisible(main) != 0; }));
  Exit(program);
}

TEST_F(DesktopTest, KeepsAlwaysOnTopFromOneStartToTheNext) {
  for (const bool wasOnTop : {false, true}) {
    SCOPED_TRACE(wasOnTop);
    const RunningProgram program;
    const HWND main = program.MainWindow();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(IsTopMost(main), wasOnTop);
    program.ChooseMenu(L's', 1);
    EXPECT_TRUE(WaitFor([&] { return IsTopMost(main) != wasOnTop; }));
    Exit(program);
    EXPECT_EQ(Setting(L"OnTop"), wasOnTop ? L"0" : L"1");
  }
}

// One minute's wait for everything that needs one.
TEST_F(DesktopTest, FiresInTheDueMinuteShownOrInvisible) {
  const std::string note = TemporaryFile("orvanto-due.txt");
  std::ofstream(note) << "tea is ready";
  SYSTEMTIME now;
  GetLocalTime(&now);
  // A minute that begins too soon would be over before the programs have started.
  const int due = (now.wHour * 60 + now.wMinute + (now.wSecond < 50 ? 1 : 2)) % (24 * 60);
  Import({{"note", "", "2", note}, {"popup", "", "6", "Time for tea"}}, due / 60, due % 60);

  const RunningProgram shown;
  const RunningProgram invisible(L"INVISIBLE");
  ASSERT_NE(shown.MainWindow(), nullptr);
  const HWND hidden = invisible.MainWindow();
  ASSERT_NE(hidden, nullptr);
  EXPECT_TRUE(IsWindowVisible(shown.MainWindow()));
  const auto notes = [] {
    std::vector<HWND> found;
    for (const HWND window : TopLevel(0, L"Notepad")) {
      if (TextOf(window).find(L"orvanto-due") != std::wstring::npos) found.push_back(window);
    }
    return found;
  };
  EXPECT_TRUE(notes().empty());
  EXPECT_EQ(shown.Box(), nullptr);

  bool everShown = false;
  for (const RunningProgram* program : {&shown, &invisible}) {
    ASSERT_TRUE(WaitFor(
        [&] {
          everShown = everShown || IsWindowVisible(hidden);
          return program->Box() != nullptr;
        },
        std::chrono::seconds(130)));
    GetLocalTime(&now);
    EXPECT_EQ(now.wHour * 60 + now.wMinute, due);
    EXPECT_EQ(TextOf(GetDlgItem(program->Box(), 0xFFFF)), L"Time for tea");
  }
  EXPECT_FALSE(everShown);
  EXPECT_TRUE(WaitFor([&] { return notes().size() == 2; })) << notes().size();
  const auto opened = notes();
  for (const HWND window : opened) {
    EXPECT_TRUE(
        WaitFor([&] { return TextOf(GetWindow(window, GW_CHILD)).starts_with(L"tea is ready"); }));
    PostMessageW(window, WM_CLOSE, 0, 0);
  }
  for (const RunningProgram* program : {&shown, &invisible}) {
    PostMessageW(program->Box(), WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(WaitFor([&] { return program->Box() == nullptr; }));
  }
  Exit(shown);
}

TEST_F(DesktopTest, SavesAtTheEndOfTheSession) {
  const RunningProgram program;
  const HWND main = program.MainWindow();
  program.ChooseMenu(L's', 1);
  ASSERT_TRUE(WaitFor([&] { return IsTopMost(main); }));
  EXPECT_NE(Setting(L"OnTop"), L"1");
  for (const wchar_t* windowClass : {L"OrvantoForm", L"OrvantoLoop"}) {
    for (const HWND window : TopLevel(program.Id(), windowClass)) {
      EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
    }
  }
  for (const HWND window : TopLevel(program.Id(), L"OrvantoLoop")) {
    SendMessageW(window, WM_ENDSESSION, TRUE, 0);
  }
  // Saved when the message has been answered: nothing of ours runs any more after that.
  EXPECT_EQ(Setting(L"OnTop"), L"1");
}

}  // namespace
}  // namespace orvanto::desktop
