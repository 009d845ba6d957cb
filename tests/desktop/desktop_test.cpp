// The finished program on a desktop, driven from outside as a person drives it.
#include <gtest/gtest.h>

#include <chrono>

#include "tests/desktop/DesktopTest.h"

#include <shellapi.h>

namespace orvanto::desktop {
namespace {

constexpr UINT kTrayCallback = WM_APP + 1;

TEST_F(DesktopTest, RunsAndDeletesWhatIsSelected) {
  Import({{"first", "B", "6", "one"}, {"second", "A", "6", "two"}, {"third", "B", "6", "three"}});
  const RunningProgram program;
  const HWND tree = program.TreeWindow();
  program.SelectLine(2);
  program.Press(L"&Run Task");
  ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
  EXPECT_EQ(TextOf(program.Box()), L"Orvanto");
  EXPECT_EQ(TextOf(GetDlgItem(program.Box(), 0xFFFF)), L"three");
  EXPECT_FALSE(IsWindowEnabled(program.MainWindow())) << "everything waits for the answer";
  PostMessageW(program.Box(), WM_COMMAND, IDOK, 0);
  ASSERT_TRUE(WaitFor([&] { return GetForegroundWindow() == program.MainWindow(); }));

  // Delete Task by the keyboard, which is back in the tree after it, for Enter too.
  program.SelectLine(2);
  const HWND deletes = program.Button(L"&Delete Task");
  for (const UINT left : {4U, 2U, 0U}) {
    PressKeys({VK_TAB, VK_TAB, VK_SPACE});
    EXPECT_TRUE(WaitFor([&] { return TreeView_GetCount(tree) == left; })) << left;
    EXPECT_TRUE(WaitFor([&] { return FocusBeside(deletes) == tree; }));
    EXPECT_EQ(GetWindowLongPtrW(deletes, GWL_STYLE) & BS_TYPEMASK, BS_PUSHBUTTON);
  }
  Exit(program);
}

TEST_F(DesktopTest, TheSelectionStaysInSightWhenTheServersAreaTakesItsPlace) {
  Import(std::vector<Task>(8, {"task", "", "6", "text"}));
  Store(L"General", L"Inet_ServerPort", L"0");
  const RunningProgram program;
  program.SelectLine(8);
  program.Press(L"&On");
  const HWND tree = program.TreeWindow();
  EXPECT_TRUE(WaitFor([&] { return TreeView_GetFirstVisible(tree) != TreeView_GetRoot(tree); }));
}

TEST_F(DesktopTest, GoesToTheTrayAndComesBackOnADoubleClick) {
  const RunningProgram program;
  const HWND main = program.MainWindow();
  ASSERT_TRUE(WaitFor([&] { return IsWindowVisible(main) != 0; }));
  EXPECT_EQ(GetWindow(main, GW_OWNER), nullptr) << "an owned window is not in the task bar";
  program.Press(L"&System Tray");
  NOTIFYICONDATAW icon = {};
  icon.cbSize = sizeof icon;
  icon.hWnd = program.TrayOwner();
  icon.uID = 1;
  const auto isThere = [&] { return Shell_NotifyIconW(NIM_MODIFY, &icon) != 0; };
  ASSERT_TRUE(WaitFor(isThere));
  ASSERT_TRUE(Shell_NotifyIconW(NIM_DELETE, &icon)) << "the icons go with the old task bar";
  PostMessageW(icon.hWnd, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(WaitFor(isThere));
  for (const LPARAM single : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONUP}) {
    PostMessageW(icon.hWnd, kTrayCallback, 1, single);
  }
  EXPECT_FALSE(WaitFor([&] { return IsWindowVisible(main) != 0; }, std::chrono::milliseconds(300)));
  PostMessageW(icon.hWnd, kTrayCallback, 1, WM_LBUTTONDBLCLK);
  EXPECT_TRUE(WaitFor([&] { return IsWindowVisible(main) != 0; }));
  EXPECT_FALSE(isThere());
}

TEST_F(DesktopTest, SavesAtTheEndOfTheSession) {
  for (const bool wasOnTop : {false, true}) {
    SCOPED_TRACE(wasOnTop);
    const RunningProgram program;
    const HWND main = program.MainWindow();
    ASSERT_NE(main, nullptr);
    EXPECT_EQ(IsTopMost(main), wasOnTop);
    program.ChooseMenu(L's', 1);
    ASSERT_TRUE(WaitFor([&] { return IsTopMost(main) != wasOnTop; }));
    if (wasOnTop) {  // with the editor open this time
      program.Press(L"&New Task");
      ASSERT_NE(program.InFront(L"New Task"), nullptr);
    }
    for (const wchar_t* windowClass : {L"OrvantoForm", L"OrvantoLoop"}) {
      for (const HWND window : TopLevel(program.Id(), windowClass)) {
        EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
      }
    }
    EXPECT_EQ(Stored(L"General", L"OnTop"), wasOnTop ? L"1" : L"");
    for (const HWND window : TopLevel(program.Id(), L"OrvantoLoop")) {
      SendMessageW(window, WM_ENDSESSION, TRUE, 0);
    }
    // Saved when the message has been answered: nothing of ours runs any more after that.
    EXPECT_EQ(Stored(L"General", L"OnTop"), wasOnTop ? L"0" : L"1");
    DWORD code = 1;
    ASSERT_TRUE(program.WaitForEnd(code));
    EXPECT_EQ(code, 0u);
  }
}

}  // namespace
}  // namespace orvanto::desktop
