// The finished program on a desktop, driven from outside as a person drives it.
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include "platform/win32/Text.h"
#include "tests/desktop/DesktopTest.h"

#include <shellapi.h>

namespace orvanto::desktop {
namespace {

constexpr UINT kTrayCallback = WM_APP + 1;

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

  // Delete Task by the keyboard, which is back in the tree after it, for Enter too.
  program.ClickTreeLine(2);
  ASSERT_TRUE(WaitFor([&] { return GetForegroundWindow() == program.MainWindow(); }));
  const HWND deletes = program.Button(L"&Delete Task");
  for (const std::size_t left : {4U, 2U, 0U}) {
    PressKeys({VK_TAB, VK_TAB, VK_SPACE});
    EXPECT_TRUE(WaitFor([&] { return program.Tree().size() == left; })) << left;
    EXPECT_TRUE(WaitFor([&] { return FocusBeside(deletes) == program.TreeWindow(); }));
    EXPECT_EQ(GetWindowLongPtrW(deletes, GWL_STYLE) & BS_TYPEMASK, BS_PUSHBUTTON);
  }
  Exit(program);
}

TEST_F(DesktopTest, TheSelectionStaysInSightWhenTheServersAreaTakesItsPlace) {
  Import(std::vector<Task>(8, {"task", "", "6", "text"}));
  Store(L"General", L"Inet_ServerPort", L"0");
  const RunningProgram program;
  ASSERT_EQ(program.Tree().size(), 9u);
  program.ClickTreeLine(8);
  ASSERT_TRUE(WaitFor([&] { return IsWindowEnabled(program.Button(L"&Run Task")) != 0; }));
  program.Press(L"&On");
  const HWND tree = program.TreeWindow();
  EXPECT_TRUE(WaitFor([&] { return TreeView_GetFirstVisible(tree) != TreeView_GetRoot(tree); }));
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

TEST_F(DesktopTest, ComesBackToATaskBarThatStartedAnew) {
  const RunningProgram program;
  program.Press(L"&System Tray");
  NOTIFYICONDATAW icon = {};
  icon.cbSize = sizeof icon;
  icon.hWnd = program.TrayOwner();
  icon.uID = 1;
  const auto isThere = [&] { return Shell_NotifyIconW(NIM_MODIFY, &icon) != 0; };
  ASSERT_TRUE(WaitFor(isThere));
  ASSERT_TRUE(Shell_NotifyIconW(NIM_DELETE, &icon)) << "the icons go with the old task bar";
  ASSERT_FALSE(isThere());
  PostMessageW(icon.hWnd, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(WaitFor(isThere));
  PostMessageW(icon.hWnd, kTrayCallback, 1, WM_LBUTTONDBLCLK);
  ASSERT_TRUE(WaitFor([&] { return IsWindowVisible(program.MainWindow()) != 0; }));
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
    EXPECT_EQ(Stored(L"General", L"OnTop"), wasOnTop ? L"0" : L"1");
  }
}

// One minute's wait for everything that needs one.
TEST_F(DesktopTest, FiresInTheDueMinuteThoughInvisible) {
  const std::string note = win32::ToUtf8(TemporaryFile(L"orvanto-due.txt"));
  std::ofstream(note) << "tea is ready";
  const int due = DueSoon();
  Import({{"note", "", "2", note}, {"popup", "", "6", "Time for tea"}}, due / 60, due % 60);

  const RunningProgram program(L"INVISIBLE");
  const HWND hidden = program.MainWindow();
  ASSERT_NE(hidden, nullptr);
  const auto notes = [] {
    std::vector<HWND> found;
    for (const HWND window : TopLevel(0, L"Notepad")) {
      if (TextOf(window).find(L"orvanto-due") != std::wstring::npos) found.push_back(window);
    }
    return found;
  };
  EXPECT_TRUE(notes().empty());
  EXPECT_EQ(program.Box(), nullptr);

  bool everShown = false;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown = everShown || IsWindowVisible(hidden);
        return program.Box() != nullptr;
      },
      std::chrono::seconds(130)));
  SYSTEMTIME now;
  GetLocalTime(&now);
  EXPECT_EQ(now.wHour * 60 + now.wMinute, due);
  EXPECT_EQ(TextOf(GetDlgItem(program.Box(), 0xFFFF)), L"Time for tea");
  EXPECT_FALSE(everShown);
  EXPECT_TRUE(WaitFor([&] { return notes().size() == 1; })) << notes().size();
  for (const HWND window : notes()) {
    EXPECT_TRUE(
        WaitFor([&] { return TextOf(GetWindow(window, GW_CHILD)).starts_with(L"tea is ready"); }));
    PostMessageW(window, WM_CLOSE, 0, 0);
  }
  PostMessageW(program.Box(), WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitFor([&] { return program.Box() == nullptr; }));
}

TEST_F(DesktopTest, SavesAtTheEndOfTheSession) {
  const RunningProgram program;
  const HWND main = program.MainWindow();
  program.ChooseMenu(L's', 1);
  ASSERT_TRUE(WaitFor([&] { return IsTopMost(main); }));
  EXPECT_NE(Stored(L"General", L"OnTop"), L"1");
  for (const wchar_t* windowClass : {L"OrvantoForm", L"OrvantoLoop"}) {
    for (const HWND window : TopLevel(program.Id(), windowClass)) {
      EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
    }
  }
  for (const HWND window : TopLevel(program.Id(), L"OrvantoLoop")) {
    SendMessageW(window, WM_ENDSESSION, TRUE, 0);
  }
  // Saved when the message has been answered: nothing of ours runs any more after that.
  EXPECT_EQ(Stored(L"General", L"OnTop"), L"1");
}

}  // namespace
}  // namespace orvanto::desktop
