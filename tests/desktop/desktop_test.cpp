// The finished program on a desktop, driven from outside as a person drives it: in the tray, by
// mouse, and all of it by keyboard.
#include "tests/desktop/DesktopTest.h"

#include <shellapi.h>

namespace orvanto::desktop {
namespace {

TEST_F(DesktopTest, GoesToTheTrayAndComesBackByItsIconOrASecondStart) {
  const RunningProgram program;
  const HWND main = program.MainWindow();
  EXPECT_EQ(GetWindow(main, GW_OWNER), nullptr) << "an owned window is not in the task bar";
  Press(program.MainWindow(), L"&System Tray");
  ASSERT_TRUE(WaitFor([&] { return !program.Windows(L"OrvantoTray").empty(); }));
  NOTIFYICONDATAW icon = {};
  icon.cbSize = sizeof icon;
  icon.hWnd = program.Windows(L"OrvantoTray").at(0);
  icon.uID = 1;
  const auto isThere = [&] { return Shell_NotifyIconW(NIM_MODIFY, &icon) != 0; };
  const auto isInTray = [&] { return isThere() && !IsWindowVisible(main); };
  ASSERT_TRUE(WaitFor(isInTray));
  ASSERT_TRUE(Shell_NotifyIconW(NIM_DELETE, &icon)) << "the icons go with the old task bar";
  PostMessageW(icon.hWnd, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(WaitFor(isThere));
  // As the icon tells of mouse and keyboard.
  for (const LPARAM event : {WM_LBUTTONDBLCLK, NIN_KEYSELECT, WM_CONTEXTMENU}) {
    PostMessageW(icon.hWnd, WM_APP + 1, MAKEWPARAM(300, 300), MAKELPARAM(event, 1));
    if (event == WM_CONTEXTMENU) {
      EXPECT_TRUE(WaitFor([&] { return !program.Windows(L"#32768").empty(); }));
      Type("o");
    }
    EXPECT_TRUE(program.MainIsInFront());
    EXPECT_TRUE(WaitFor([&] { return !isThere(); }));
    Press(program.MainWindow(), L"&System Tray");
    ASSERT_TRUE(WaitFor(isInTray));
  }

  EXPECT_EQ(RunningProgram(L"InVisible").ExitCode(), 0);
  EXPECT_FALSE(WaitFor([&] { return IsWindowVisible(main) != 0; }, std::chrono::milliseconds(300)));
  EXPECT_EQ(RunningProgram().ExitCode(), 0);
  EXPECT_TRUE(program.MainIsInFront());
  // The open editor comes, not the main window after it.
  Press(program.MainWindow(), L"&New Task");
  const HWND editor = InFront(L"New Task");
  ShowWindow(editor, SW_MINIMIZE);
  EXPECT_EQ(RunningProgram().ExitCode(), 0);
  EXPECT_EQ(InFront(L"New Task"), editor);
  EXPECT_TRUE(WaitFor([&] { return !IsIconic(editor); }));
  EXPECT_FALSE(IsWindowVisible(main));
}

TEST_F(DesktopTest, SavesAtTheEndOfTheSession) {
  const RunningProgram program;
  ASSERT_TRUE(program.MainIsInFront());
  const HWND main = program.MainWindow();
  Type("%()s");
  ASSERT_TRUE(WaitFor([&] { return !program.Windows(L"#32768").empty(); })) << "a menu";
  Type("{DOWN}~");
  ASSERT_TRUE(WaitFor([&] { return HasStyle(main, WS_EX_TOPMOST); }));
  Press(program.MainWindow(), L"&New Task");
  Press(InFront(L"New Task"), L"&Save");
  EXPECT_NE(BoxInFront(), L"") << "it has no name, and nobody answers";
  std::vector<HWND> windows = program.Windows(L"OrvantoForm");
  windows.push_back(program.Windows(L"OrvantoLoop").at(0));
  for (const HWND window : windows) {
    EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
  }
  EXPECT_EQ(Stored(L"General", {L"OnTop"}), L"");
  SendMessageW(windows.back(), WM_ENDSESSION, TRUE, 0);
  // Saved when the message has been answered: nothing of ours runs any more after that.
  EXPECT_EQ(Stored(L"General", {L"OnTop"}), L"1");
  EXPECT_EQ(program.ExitCode(), 0);
}

TEST_F(DesktopTest, MouseMakesATask) {
  const RunningProgram program;
  Press(program.MainWindow(), L"&New Task");
  const HWND editor = InFront(L"New Task");
  EXPECT_FALSE(IsWindowVisible(program.MainWindow()));
  EXPECT_TRUE(HasStyle(editor, WS_EX_APPWINDOW)) << "it stands in for the main window";
  const std::vector<HWND> texts = Children(editor, WC_EDITW);
  // A screen reader takes the text before a box for its name, seen or not.
  std::vector<std::wstring> names;
  for (const HWND text : texts) names.push_back(TextOf(GetWindow(text, GW_HWNDPREV)));
  if (names.at(5) == L"Day") std::swap(names[5], names[6]);  // as the locale writes dates
  ASSERT_EQ(names, (std::vector<std::wstring>{L"Name of Task:", L"Program or Shortcut:",
                                              L"Parameters:", L"At this time:", L"Minute", L"Month",
                                              L"Day", L"Year", L"Day of the month"}));
  const HWND path = texts[1];
  SendMessageW(texts[0], WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"Mouse made"));
  SendMessageW(path, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"C:\\no such.exe"));
  // Refused, with everything still there.
  Press(editor, L"&Save");
  EXPECT_EQ(BoxInFront(), L"File does not exist");
  EXPECT_EQ(GetWindow(GetForegroundWindow(), GW_OWNER), editor);
  EXPECT_FALSE(IsWindowEnabled(editor)) << "everything waits for the answer";
  Type("~");
  EXPECT_TRUE(WaitFor([&] { return FocusBeside(editor) == path; }));

  const std::wstring file = Beside(L"desktop_test.exe");
  Press(editor, L"&Browse");
  const HWND dialog = InFront(L"Select File");
  EXPECT_EQ(GetWindow(dialog, GW_OWNER), editor);
  SendMessageW(FocusBeside(dialog), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(file.c_str()));
  Type("~");
  EXPECT_TRUE(WaitFor([&] { return IsWindowEnabled(editor) && TextOf(path) == file; }));

  Press(editor, L"&Every month, on this day number:");
  ASSERT_TRUE(WaitFor([&] { return IsWindowEnabled(texts[8]) != 0; }));
  // The upper of the two arrows.
  const HWND arrows = Children(editor, UPDOWN_CLASSW).at(0);
  PostMessageW(arrows, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
  PostMessageW(arrows, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  ASSERT_TRUE(WaitFor([&] { return TextOf(texts[8]) == L"2"; }));
  Press(editor, L"&Save");
  ASSERT_TRUE(program.MainIsInFront());
  EXPECT_EQ(Stored(L"Mouse made", {L"Path", L"WinStyle", L"DayNo"}), file + L"|1|2");
}

// Nothing but keys, from the first task to its end.
TEST_F(DesktopTest, KeysDoEverything) {
  const RunningProgram program;
  const HWND tree = Children(program.MainWindow(), WC_TREEVIEWW).at(0);
  const auto treeHasKeyboard = [&] { return FocusBeside(tree) == tree; };
  const auto stored = [](const wchar_t* task) {
    return Stored(task,
                  {L"TaskType", L"Path", L"TimeHour", L"TimeMinute", L"Every", L"In", L"Group"});
  };
  // Keys, and whether they lead to that form; to the main window, if none is named.
  const auto lead = [&](const char* keys, const wchar_t* form = nullptr) {
    Type(keys);
    return form != nullptr ? InFront(form) != nullptr : program.MainIsInFront();
  };
  ASSERT_TRUE(lead(""));
  ASSERT_TRUE(lead("%n", L"New Task"));
  // The group replaces the one that was selected on the way in; from program to message; past Now,
  // from once to recurring; past the dates, which are disabled.
  Type("Typed{TAB}Home{TAB}{DOWN 4}{TAB}Tea is ready{TAB}23{TAB}59{TAB 2}{DOWN}");
  ASSERT_TRUE(lead("{TAB}{DOWN}{TAB}{DOWN 2}~"));
  EXPECT_EQ(stored(L"Typed"), L"6|Tea is ready|23|59|2|3|Home");

  // The tree has the keyboard and the new task is selected: up to its group and back.
  Type("{UP}{DOWN}{DELETE}");
  EXPECT_EQ(BoxInFront(), L"Delete the task \"Typed\"?");
  ASSERT_TRUE(lead("~")) << "No";
  ASSERT_TRUE(lead("~", L"Edit Task - Typed"));
  ASSERT_TRUE(lead("Renamed{TAB}~")) << "from the group's list";
  EXPECT_EQ(stored(L"Renamed"), stored(L"Typed"));
  Type("%r");
  EXPECT_EQ(BoxInFront(), L"Tea is ready");
  ASSERT_TRUE(lead("~"));
  // Without Alt the letters of the buttons do nothing, though one of them has the keyboard.
  ASSERT_TRUE(lead("{TAB}xd%a", L"About Orvanto"));
  ASSERT_TRUE(lead("{ESC}"));
  EXPECT_TRUE(WaitFor(treeHasKeyboard));
  ASSERT_TRUE(lead("%n", L"New Task"));
  ASSERT_TRUE(lead("{TAB}{ESC}")) << "from a list, too";
  // Delete by its button, which leaves the keyboard to the tree, for Enter too.
  Type("{TAB 2}+ ");
  EXPECT_TRUE(WaitFor([&] { return TreeView_GetCount(tree) == 0 && treeHasKeyboard(); }));
  Type("%x");
  EXPECT_EQ(program.ExitCode(), 0);
}

TEST_F(DesktopTest, SettingsByKeyboard) {
  const RunningProgram program;
  ASSERT_TRUE(program.MainIsInFront());
  // Each time the tab is in sight that was the last one. With Shift a blank is the key, as a box
  // wants it, and no character.
  for (const char* keys :
       {"%u%s", "{RIGHT}{TAB 2}proxy{TAB}8x0{TAB}+ %s",
        "{RIGHT}{TAB}+ {TAB}+ {TAB}secret{TAB}+ {TAB}601{TAB}2121%s", "{RIGHT 2}%t%i%s"}) {
    // A menu that has only just come may take a key before it has chosen its first item.
    ASSERT_TRUE(WaitFor([] {
      if (FindWindowW(nullptr, L"Settings") == nullptr) Type("{ESC 3}{F10}{DOWN}~");
      return FindWindowW(nullptr, L"Settings") != nullptr;
    }));
    const HWND dialog = InFront(L"Settings");
    ASSERT_TRUE(WaitFor([&] { return IsChild(dialog, FocusBeside(dialog)) != 0; }));
    Type(keys);
    Type("%c");
    ASSERT_TRUE(program.MainIsInFront());
  }
  EXPECT_EQ(Stored(L"General", {L"Check_Auto_Update", L"Use_Proxy", L"Proxy", L"Inet_ServerOn",
                                L"Inet_Passwd", L"Inet_Chat_Auto", L"Inet_ServerPort",
                                L"Inet_FtpPort", L"Inet_Compat", L"Inet_Strict"}),
            L"1|1|proxy|1|secret|1|601|2121|1|1");
}

}  // namespace
}  // namespace orvanto::desktop
