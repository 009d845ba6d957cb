// The task editor and the about box, by mouse and by keyboard, and a second start of the program.
#include <windows.h>

#include <oleacc.h>

#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

constexpr const wchar_t* kNew = L"New Task";

struct Editor {
  explicit Editor(HWND form)
      : window(form),
        texts(RunningProgram::Children(form, L"Edit")),
        lists(RunningProgram::Children(form, L"ComboBox")) {
    if (texts.size() != 9 || lists.size() != 4) throw std::runtime_error("not the editor");
  }
  HWND First() const { return texts[1]; }
  HWND Day() const { return texts[8]; }
  HWND Group() const { return lists[0]; }
  HWND Style() const { return lists[1]; }

  HWND window;
  std::vector<HWND> texts;  // from the task's name to the day of the month
  std::vector<HWND> lists;
};

using Values = std::vector<std::pair<const wchar_t*, std::wstring>>;

class EditorDesktopTest : public DesktopTest {
 protected:
  static void ExpectStored(const std::wstring& task, const Values& values) {
    for (const auto& [name, value] : values) {
      EXPECT_EQ(Stored(task, name), value) << std::string(name, name + wcslen(name));
    }
  }

  static Editor OpenNew(const RunningProgram& program) {
    program.Press(L"&New Task");
    return Editor(program.InFront(kNew));
  }

  static bool BackInMain(const RunningProgram& program) {
    const HWND main = program.MainWindow();
    return WaitFor([&] { return IsWindowVisible(main) && GetForegroundWindow() == main; });
  }
};

TEST_F(EditorDesktopTest, MouseMakesATask) {
  const RunningProgram program;
  const Editor editor = OpenNew(program);
  EXPECT_FALSE(IsWindowVisible(program.MainWindow()));
  EXPECT_NE(GetWindowLongPtrW(editor.window, GWL_EXSTYLE) & WS_EX_APPWINDOW, 0)
      << "it stands in for the main window in the task bar";
  const wchar_t* entries[] = {L"Mouse made", L"C:\\no such.exe", L"C:\\a b.txt", L"7", L"05"};
  for (std::size_t i = 0; i < std::size(entries); ++i) {
    SendMessageW(editor.texts[i], WM_SETTEXT, 0, reinterpret_cast<LPARAM>(entries[i]));
  }
  EXPECT_EQ(SendMessageW(editor.texts[4], EM_GETLIMITTEXT, 0, 0), 2);
  // Refused, with everything still there.
  RunningProgram::Press(editor.window, L"&Save");
  ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
  const HWND box = program.Box();
  EXPECT_EQ(GetWindow(box, GW_OWNER), editor.window);
  EXPECT_FALSE(IsWindowEnabled(editor.window));
  PostMessageW(box, WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(WaitFor([&] { return FocusBeside(editor.window) == editor.First(); }));
  EXPECT_EQ(TextOf(editor.First()), entries[1]);

  SendMessageW(editor.First(), WM_SETTEXT, 0,
               reinterpret_cast<LPARAM>(L"C:\\windows\\notepad.exe"));
  // What the open list does when its second line is clicked.
  SendMessageW(editor.Style(), CB_SETCURSEL, 1, 0);
  SendMessageW(editor.window, WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(editor.Style()), CBN_SELCHANGE),
               reinterpret_cast<LPARAM>(editor.Style()));
  EXPECT_FALSE(IsWindowEnabled(editor.Day()));
  RunningProgram::Press(editor.window, L"&Every month, on this day number:");
  ASSERT_TRUE(WaitFor([&] { return IsWindowEnabled(editor.Day()) != 0; }));
  PostMessageW(editor.Day(), WM_KEYDOWN, VK_UP, 0);
  // The upper of the two arrows.
  const HWND arrows = RunningProgram::Children(editor.window, UPDOWN_CLASSW).at(0);
  PostMessageW(arrows, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
  PostMessageW(arrows, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  ASSERT_TRUE(WaitFor([&] { return TextOf(editor.Day()) == L"3"; }));
  RunningProgram::Press(editor.window, L"&Save");
  ASSERT_TRUE(BackInMain(program));
  ExpectStored(L"Mouse made", {{L"Path", L"C:\\windows\\notepad.exe"},
                               {L"CmdLine", L"C:\\a b.txt"},
                               {L"WinStyle", L"2"},
                               {L"TimeHour", L"07"},
                               {L"DayNo", L"3"}});
}

// Nothing but keys, from the first task to its end.
TEST_F(EditorDesktopTest, KeysDoEverything) {
  const RunningProgram program;
  ASSERT_TRUE(BackInMain(program));
  PressWith(VK_MENU, 'N');
  ASSERT_NE(program.InFront(kNew), nullptr);
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
  ASSERT_TRUE(BackInMain(program));
  const Values values = {{L"TaskType", L"6"},    {L"Path", L"Tea is ready"}, {L"TimeHour", L"23"},
                         {L"TimeMinute", L"59"}, {L"Every", L"2"},           {L"In", L"3"},
                         {L"Group", L"Home"}};
  ExpectStored(L"Typed", values);

  // The tree has the keyboard and the new task is selected: up to its group and back.
  PressKeys({VK_UP, VK_DOWN});
  PressWith(VK_MENU, 'E');
  ASSERT_NE(program.InFront(L"Edit Task - Typed"), nullptr);
  TypeText(L"Renamed");
  PressKeys({VK_TAB});
  PressKeys({VK_RETURN});  // from the group's list
  ASSERT_TRUE(BackInMain(program));
  ExpectStored(L"Renamed", values);

  PressWith(VK_MENU, 'R');
  ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
  EXPECT_EQ(TextOf(GetDlgItem(program.Box(), 0xFFFF)), L"Tea is ready");
  ASSERT_TRUE(WaitFor([&] { return GetForegroundWindow() == program.Box(); }));
  PressKeys({VK_RETURN});
  ASSERT_TRUE(BackInMain(program));
  // Without Alt the letters of the buttons do nothing, though one of them has the keyboard.
  PressKeys({VK_TAB, 'X', 'D'});
  PressWith(VK_MENU, 'A');
  ASSERT_NE(program.InFront(L"About Orvanto"), nullptr);
  PressKeys({VK_ESCAPE});
  ASSERT_TRUE(BackInMain(program));
  EXPECT_TRUE(WaitFor([&] { return FocusBeside(program.TreeWindow()) == program.TreeWindow(); }));
  // By the menu, from the tree: Alt alone, then Tasks, Delete.
  PressKeys({VK_MENU, 'T'});
  ASSERT_TRUE(WaitFor([&] { return !TopLevel(program.Id(), L"#32768").empty(); }));
  PressKeys({VK_DOWN, VK_RETURN});
  ASSERT_TRUE(WaitFor([&] { return TreeView_GetCount(program.TreeWindow()) == 0; }));
  // Esc leaves the editor, from a list too, and a list first.
  PressWith(VK_MENU, 'N');
  const HWND window = program.InFront(kNew);
  ASSERT_NE(window, nullptr);
  const Editor editor(window);
  const auto isOpen = [&] { return SendMessageW(editor.Group(), CB_GETDROPPEDSTATE, 0, 0) != 0; };
  PressKeys({VK_TAB});
  PressWith(VK_MENU, VK_DOWN);
  ASSERT_TRUE(WaitFor(isOpen));
  PressKeys({VK_ESCAPE});
  ASSERT_TRUE(WaitFor([&] { return !isOpen(); }));
  EXPECT_TRUE(IsWindowVisible(window));
  PressKeys({VK_ESCAPE});
  EXPECT_TRUE(BackInMain(program));
  PressWith(VK_MENU, 'X');
  DWORD code = 1;
  EXPECT_TRUE(program.WaitForEnd(code));
}

// As the system tells a screen reader.
std::wstring SpokenName(HWND window) {
  IAccessible* accessible = nullptr;
  if (FAILED(CreateStdAccessibleObject(window, DWORD(OBJID_CLIENT), __uuidof(IAccessible),
                                       reinterpret_cast<void**>(&accessible)))) {
    return L"";
  }
  VARIANT self = {};
  self.vt = VT_I4;
  BSTR name = nullptr;
  accessible->get_accName(self, &name);
  const std::wstring text = name == nullptr ? L"" : name;
  SysFreeString(name);
  accessible->Release();
  return text;
}

TEST_F(EditorDesktopTest, EveryBoxHasANameThatCanBeSpoken) {
  const RunningProgram program;
  const Editor editor = OpenNew(program);
  ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
  std::vector<std::wstring> names;
  for (const HWND box : editor.texts) names.push_back(SpokenName(box));
  CoUninitialize();
  if (names[5] == L"Day") std::swap(names[5], names[6]);  // as the locale writes dates
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Name of Task:", L"Program or Shortcut:",
                                              L"Parameters:", L"At this time:", L"Minute", L"Month",
                                              L"Day", L"Year", L"Day of the month"}));
}

TEST_F(EditorDesktopTest, BrowsesForAFile) {
  const std::wstring file = Beside(L"desktop_test.exe");
  const RunningProgram program;
  const Editor editor = OpenNew(program);
  // Once given up, once with a name.
  for (const bool choose : {false, true}) {
    SCOPED_TRACE(choose);
    RunningProgram::Press(editor.window, L"&Browse");
    ASSERT_TRUE(WaitFor([&] {
      const HWND dialog = program.Box();
      return dialog != nullptr && TextOf(dialog) == L"Select File" &&
             GetForegroundWindow() == dialog;
    }));
    EXPECT_EQ(GetWindow(program.Box(), GW_OWNER), editor.window);
    EXPECT_FALSE(IsWindowEnabled(editor.window));
    if (choose) {
      TypeText(file);
      PressKeys({VK_RETURN});
    } else {
      PressKeys({VK_ESCAPE});
    }
    EXPECT_TRUE(WaitFor([&] { return IsWindowEnabled(editor.window) != 0; }));
    EXPECT_TRUE(WaitFor([&] { return TextOf(editor.First()) == (choose ? file : L""); }));
  }
}

TEST_F(EditorDesktopTest, ASecondStartShowsTheFirst) {
  const std::wstring again = L"\"" + Beside(L"orvanto.exe") + L"\"";
  const RunningProgram program;
  const HWND main = program.MainWindow();
  ASSERT_TRUE(BackInMain(program));
  program.Press(L"&System Tray");
  ASSERT_TRUE(WaitFor([&] { return !IsWindowVisible(main); }));
  EXPECT_EQ(RunToEnd(again + L" InVisible"), 0);
  EXPECT_FALSE(WaitFor([&] { return IsWindowVisible(main) != 0; }, std::chrono::milliseconds(300)));
  EXPECT_EQ(RunToEnd(again), 0);
  EXPECT_TRUE(BackInMain(program));

  ShowWindow(main, SW_MINIMIZE);
  ASSERT_TRUE(WaitFor([&] { return IsIconic(main) != 0; }));
  EXPECT_EQ(RunToEnd(again), 0);
  EXPECT_TRUE(WaitFor([&] { return !IsIconic(main); }));
  EXPECT_TRUE(BackInMain(program));

  // The open editor comes, not the main window behind it.
  const Editor editor = OpenNew(program);
  ShowWindow(editor.window, SW_MINIMIZE);
  EXPECT_EQ(RunToEnd(again), 0);
  EXPECT_EQ(program.InFront(kNew), editor.window);
  EXPECT_FALSE(IsIconic(editor.window));
  EXPECT_FALSE(IsWindowVisible(main));
}

}  // namespace
}  // namespace orvanto::desktop
