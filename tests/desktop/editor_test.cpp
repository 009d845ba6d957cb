// The task editor by mouse, and the whole program by keyboard.
#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

class EditorDesktopTest : public DesktopTest {
 protected:
  const RunningProgram program_;
};

TEST_F(EditorDesktopTest, MouseMakesATask) {
  program_.Press(L"&New Task");
  const HWND editor = InFront(L"New Task");
  EXPECT_FALSE(IsWindowVisible(program_.MainWindow()));
  EXPECT_NE(GetWindowLongPtrW(editor, GWL_EXSTYLE) & WS_EX_APPWINDOW, 0)
      << "it stands in for the main window in the task bar";
  const std::vector<HWND> texts = RunningProgram::Children(editor, WC_EDITW);
  // A screen reader takes the text before a box for its name, seen or not.
  std::vector<std::wstring> names;
  for (const HWND text : texts) names.push_back(TextOf(GetWindow(text, GW_HWNDPREV)));
  if (names.at(5) == L"Day") std::swap(names[5], names[6]);  // as the locale writes dates
  ASSERT_EQ(names, (std::vector<std::wstring>{L"Name of Task:", L"Program or Shortcut:",
                                              L"Parameters:", L"At this time:", L"Minute", L"Month",
                                              L"Day", L"Year", L"Day of the month"}));
  const HWND path = texts[1];
  const HWND minute = texts[4];
  const HWND day = texts[8];
  EXPECT_EQ(SendMessageW(minute, EM_GETLIMITTEXT, 0, 0), 2);
  SendMessageW(texts[0], WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"Mouse made"));
  SendMessageW(path, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"C:\\no such.exe"));
  // Refused, with everything still there.
  RunningProgram::Press(editor, L"&Save");
  EXPECT_EQ(program_.BoxInFront(), L"File does not exist");
  EXPECT_EQ(GetWindow(program_.Box(), GW_OWNER), editor);
  EXPECT_FALSE(IsWindowEnabled(editor)) << "everything waits for the answer";
  PostMessageW(program_.Box(), WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitFor([&] { return FocusBeside(editor) == path; }));
  EXPECT_EQ(TextOf(path), L"C:\\no such.exe");

  const std::wstring file = Beside(L"desktop_test.exe");
  RunningProgram::Press(editor, L"&Browse");
  program_.BoxInFront();
  EXPECT_EQ(TextOf(program_.Box()), L"Select File");
  EXPECT_EQ(GetWindow(program_.Box(), GW_OWNER), editor);
  TypeText(file);
  PressKeys({VK_RETURN});
  EXPECT_TRUE(WaitFor([&] { return IsWindowEnabled(editor) && TextOf(path) == file; }));

  // What the open list does when its second line is clicked.
  const HWND style = RunningProgram::Children(editor, WC_COMBOBOXW).at(1);
  SendMessageW(style, CB_SETCURSEL, 1, 0);
  SendMessageW(editor, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(style), CBN_SELCHANGE),
               reinterpret_cast<LPARAM>(style));
  EXPECT_FALSE(IsWindowEnabled(day));
  RunningProgram::Press(editor, L"&Every month, on this day number:");
  ASSERT_TRUE(WaitFor([&] { return IsWindowEnabled(day) != 0; }));
  PostMessageW(day, WM_KEYDOWN, VK_UP, 0);
  // The upper of the two arrows.
  const HWND arrows = RunningProgram::Children(editor, UPDOWN_CLASSW).at(0);
  PostMessageW(arrows, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
  PostMessageW(arrows, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  ASSERT_TRUE(WaitFor([&] { return TextOf(day) == L"3"; }));
  RunningProgram::Press(editor, L"&Save");
  ASSERT_TRUE(program_.MainIsInFront());
  EXPECT_EQ(Stored(L"Mouse made", {L"Path", L"WinStyle", L"DayNo"}), file + L"|2|3");
}

// Nothing but keys, from the first task to its end.
TEST_F(EditorDesktopTest, KeysDoEverything) {
  ASSERT_TRUE(program_.MainIsInFront());
  const HWND tree = program_.TreeWindow();
  PressWith(VK_MENU, 'N');
  ASSERT_NE(InFront(L"New Task"), nullptr);
  TypeText(L"Typed");
  PressKeys({VK_TAB});
  TypeText(L"Home");  // replaces the group that was selected on the way in
  PressKeys({VK_TAB, VK_DOWN, VK_DOWN, VK_DOWN, VK_DOWN, VK_TAB});  // from program to message
  TypeText(L"Tea is ready");
  PressKeys({VK_TAB});
  TypeText(L"23");
  PressKeys({VK_TAB});
  TypeText(L"59");
  PressKeys({VK_TAB, VK_TAB, VK_DOWN});           // past Now, from once to recurring
  PressKeys({VK_TAB, VK_DOWN, VK_TAB, VK_DOWN});  // past the dates: they are disabled
  PressKeys({VK_DOWN, VK_RETURN});
  ASSERT_TRUE(program_.MainIsInFront());
  const auto stored = [](const wchar_t* task) {
    return Stored(task,
                  {L"TaskType", L"Path", L"TimeHour", L"TimeMinute", L"Every", L"In", L"Group"});
  };
  EXPECT_EQ(stored(L"Typed"), L"6|Tea is ready|23|59|2|3|Home");

  // The tree has the keyboard and the new task is selected: up to its group and back.
  PressKeys({VK_UP, VK_DOWN});
  PressWith(VK_MENU, 'E');
  ASSERT_NE(InFront(L"Edit Task - Typed"), nullptr);
  TypeText(L"Renamed");
  PressKeys({VK_TAB, VK_RETURN});  // from the group's list
  ASSERT_TRUE(program_.MainIsInFront());
  EXPECT_EQ(stored(L"Renamed"), stored(L"Typed"));

  PressWith(VK_MENU, 'R');
  EXPECT_EQ(program_.BoxInFront(), L"Tea is ready");
  PressKeys({VK_RETURN});
  ASSERT_TRUE(program_.MainIsInFront());
  // Without Alt the letters of the buttons do nothing, though one of them has the keyboard.
  PressKeys({VK_TAB, 'X', 'D'});
  PressWith(VK_MENU, 'A');
  ASSERT_NE(InFront(L"About Orvanto"), nullptr);
  PressKeys({VK_ESCAPE});
  ASSERT_TRUE(program_.MainIsInFront());
  EXPECT_TRUE(WaitFor([&] { return FocusBeside(tree) == tree; }));
  // Esc leaves the editor, from a list too, and a list first.
  PressWith(VK_MENU, 'N');
  const HWND editor = InFront(L"New Task");
  const HWND group = FindWindowExW(editor, nullptr, WC_COMBOBOXW, nullptr);
  const auto isOpen = [&] { return SendMessageW(group, CB_GETDROPPEDSTATE, 0, 0) != 0; };
  PressKeys({VK_TAB});
  PressWith(VK_MENU, VK_DOWN);
  ASSERT_TRUE(WaitFor(isOpen));
  PressKeys({VK_ESCAPE});
  ASSERT_TRUE(WaitFor([&] { return !isOpen(); }));
  EXPECT_TRUE(IsWindowVisible(editor));
  PressKeys({VK_ESCAPE});
  ASSERT_TRUE(program_.MainIsInFront());
  // Delete by its button, which leaves the keyboard to the tree, for Enter too.
  const HWND deletes = program_.Button(L"&Delete Task");
  PressKeys({VK_TAB, VK_TAB, VK_SPACE});
  EXPECT_TRUE(WaitFor([&] { return TreeView_GetCount(tree) == 0; }));
  EXPECT_TRUE(WaitFor([&] { return FocusBeside(tree) == tree; }));
  EXPECT_EQ(GetWindowLongPtrW(deletes, GWL_STYLE) & BS_TYPEMASK, BS_PUSHBUTTON);
  PressWith(VK_MENU, 'X');
  EXPECT_EQ(program_.ExitCode(), 0);
}

}  // namespace
}  // namespace orvanto::desktop
