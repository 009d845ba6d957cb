// The finished program on a desktop, driven from outside as a person drives it.
#include "tests/desktop/DesktopTest.h"

#include <shellapi.h>

namespace orvanto::desktop {
namespace {

TEST_F(DesktopTest, GoesToTheTrayAndComesBackByItsIconOrASecondStart) {
  const RunningProgram program;
  const HWND main = program.MainWindow();
  EXPECT_EQ(GetWindow(main, GW_OWNER), nullptr) << "an owned window is not in the task bar";
  program.Press(L"&System Tray");
  NOTIFYICONDATAW icon = {};
  icon.cbSize = sizeof icon;
  ASSERT_TRUE(WaitFor([&] { return !TopLevel(program.Id(), L"OrvantoTray").empty(); }));
  icon.hWnd = TopLevel(program.Id(), L"OrvantoTray").at(0);
  icon.uID = 1;
  const auto isThere = [&] { return Shell_NotifyIconW(NIM_MODIFY, &icon) != 0; };
  ASSERT_TRUE(WaitFor([&] { return isThere() && !IsWindowVisible(main); }));
  ASSERT_TRUE(Shell_NotifyIconW(NIM_DELETE, &icon)) << "the icons go with the old task bar";
  PostMessageW(icon.hWnd, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(WaitFor(isThere));
  // As the icon tells of mouse and keyboard.
  for (const LPARAM event : {WM_LBUTTONDBLCLK, NIN_KEYSELECT, WM_CONTEXTMENU}) {
    PostMessageW(icon.hWnd, WM_APP + 1, MAKEWPARAM(300, 300), MAKELPARAM(event, 1));
    if (event == WM_CONTEXTMENU) {
      EXPECT_TRUE(WaitFor([&] { return !TopLevel(program.Id(), L"#32768").empty(); }));
      Type("o");
    }
    EXPECT_TRUE(program.MainIsInFront());
    EXPECT_FALSE(isThere());
    if (event == WM_CONTEXTMENU) break;
    program.Press(L"&System Tray");
    ASSERT_TRUE(WaitFor(isThere));
  }

  program.Press(L"&System Tray");
  ASSERT_TRUE(WaitFor([&] { return !IsWindowVisible(main); }));
  EXPECT_EQ(RunningProgram(L"InVisible").ExitCode(), 0);
  EXPECT_FALSE(WaitFor([&] { return IsWindowVisible(main) != 0; }, std::chrono::milliseconds(300)));
  EXPECT_EQ(RunningProgram().ExitCode(), 0);
  EXPECT_TRUE(program.MainIsInFront());
  // The open editor comes, not the main window after it.
  program.Press(L"&New Task");
  const HWND editor = InFront(L"New Task");
  ShowWindow(editor, SW_MINIMIZE);
  EXPECT_EQ(RunningProgram().ExitCode(), 0);
  EXPECT_EQ(InFront(L"New Task"), editor);
  EXPECT_TRUE(WaitFor([&] { return !IsIconic(editor); }));
  EXPECT_FALSE(IsWindowVisible(main));
}

TEST_F(DesktopTest, TheListByKeyboard) {
  Import({{L"Tea", L"6", L"x"}});
  const RunningProgram program;
  ASSERT_TRUE(program.MainIsInFront());
  Type("{HOME}{DOWN}");
  for (const wchar_t* count : {L"1", L"0"}) {
    Type("{DELETE}");
    EXPECT_EQ(program.BoxInFront(), L"Delete the task \"Tea\"?");
    Type(*count == L'1' ? "~" : "{LEFT}~");
    EXPECT_TRUE(program.MainIsInFront());
    EXPECT_EQ(Stored(L"General", {L"NoTasks"}), count);
    if (*count == L'0') break;
    Type("~");
    const HWND editor = InFront(L"Edit Task - Tea");
    EXPECT_NE(editor, nullptr);
    Type("{ESC}");
    EXPECT_TRUE(program.MainIsInFront());
  }
}

TEST_F(DesktopTest, SavesAtTheEndOfTheSession) {
  const RunningProgram program;
  ASSERT_TRUE(program.MainIsInFront());
  const HWND main = program.MainWindow();
  Type("%()s");
  ASSERT_TRUE(WaitFor([&] { return !TopLevel(program.Id(), L"#32768").empty(); })) << "a menu";
  Type("{DOWN}~");
  ASSERT_TRUE(WaitFor([&] { return IsTopMost(main); }));
  program.Press(L"&New Task");
  RunningProgram::Press(InFront(L"New Task"), L"&Save");
  EXPECT_NE(program.BoxInFront(), L"") << "it has no name, and nobody answers";
  std::vector<HWND> windows = TopLevel(program.Id(), L"OrvantoForm");
  windows.push_back(TopLevel(program.Id(), L"OrvantoLoop").at(0));
  for (const HWND window : windows) {
    EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
  }
  EXPECT_EQ(Stored(L"General", {L"OnTop"}), L"");
  SendMessageW(windows.back(), WM_ENDSESSION, TRUE, 0);
  // Saved when the message has been answered: nothing of ours runs any more after that.
  EXPECT_EQ(Stored(L"General", {L"OnTop"}), L"1");
  EXPECT_EQ(program.ExitCode(), 0);
}

}  // namespace
}  // namespace orvanto::desktop
