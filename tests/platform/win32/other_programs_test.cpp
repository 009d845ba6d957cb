// What scripts do to the rest of the desktop: Notepad is the other program.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <future>
#include <thread>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Desktop.h"
#include "tests/desktop/Screen.h"

namespace orvanto::win32 {
namespace {

using desktop::Type;
using desktop::WaitFor;

// In front once it is made.
class Notepad : public desktop::Program {
 public:
  Notepad() : Program("notepad.exe") {
    WaitFor([this] {
      window = GetForegroundWindow();
      return std::ranges::count(Windows(L"Notepad"), window) == 1;
    });
    edit = FindWindowExW(window, nullptr, L"Edit", nullptr);
  }

  Desktop::Window Handle() const { return reinterpret_cast<Desktop::Window>(window); }
  std::string Text() const { return ToUtf8(desktop::TextOf(edit)); }
  bool WaitForText(const std::string& text) const {
    return WaitFor([&] { return Text() == text; });
  }

  HWND window = nullptr;
  HWND edit = nullptr;
};

bool AnyModifierDown() {
  return std::ranges::any_of(std::initializer_list<int>{VK_SHIFT, VK_CONTROL, VK_MENU},
                             [](int key) { return GetAsyncKeyState(key) < 0; });
}

TEST(Win32Keyboard, NotepadHoldsExactlyWhatWasTypedWhateverTheUserHolds) {
  std::string lines;
  for (int i = 0; i < 10; ++i) lines += "The quick brown fox, jumps over 13 LAZY dogs. ";
  const std::pair<std::string, std::string> cases[] = {
      {"Hi, WORLD! 1{+}1=2; {{}{[}{(}{~}{^}{%}&|\\<>@#$\"'`?{)}{]}{}} äÖß€",
       "Hi, WORLD! 1+1=2; {[(~^%&|\\<>@#$\"'`?)]} äÖß€"},
      {"a\U0001F552b", "a\U0001F552b"},  // beyond 16 bits
      {lines, lines},                    // several pieces
      {"a~b\rc\nd\r\ne{TAB}\tf", "a\r\nb\r\nc\r\nd\r\ne\t\tf"},
      {"old^anew", "new"},
      {"one two^+{LEFT}X", "one X"},
      {"+(abC1)d", "ABC!d"},  // by the layout
      {"+\u4e2d", "\u4e2d"},  // there is no such key
      {"abc{HOME}{DEL}{END}{BS}{LEFT}{ADD}{DIVIDE}", "+/b"},
      {"{h 10}{LEFT 4}{x 0}{DEL 3}", "hhhhhhh"}};
  const Notepad notepad;
  ASSERT_NE(notepad.edit, nullptr);
  for (const auto& [keys, text] : cases) {
    SendMessageW(notepad.edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
    Type(keys);
    EXPECT_FALSE(AnyModifierDown()) << keys;
    EXPECT_TRUE(notepad.WaitForText(text)) << keys << notepad.Text();
  }
  for (const BYTE key : {BYTE{VK_LSHIFT}, BYTE{VK_RCONTROL}, BYTE{VK_LMENU}}) {
    keybd_event(key, 0, 0, 0);
  }
  ASSERT_TRUE(WaitFor(AnyModifierDown));
  Type("{HOME}X");
  EXPECT_FALSE(AnyModifierDown());
  EXPECT_TRUE(notepad.WaitForText("Xhhhhhhh")) << notepad.Text();
}

TEST(Win32Desktop, SeesAndMovesOtherWindows) {
  const Notepad one;
  const Notepad other;
  Win32Desktop desktop;
  const std::string title = std::string(400, 'x') + " \u00e4\U0001F552";
  SetWindowTextW(one.window, ToWide(title).c_str());
  EXPECT_EQ(desktop.Title(one.Handle()), title);
  const auto isAbove = [&](const Notepad& upper, const Notepad& lower) {
    const auto windows = desktop.TopLevelWindows();
    const auto place = std::ranges::find(windows, upper.Handle());
    return std::find(place, windows.end(), lower.Handle()) != windows.end();
  };
  // A program that has just started may come to the front by itself once more.
  EXPECT_TRUE(WaitFor([&] {
    desktop.BringToTop(one.Handle());
    return isAbove(one, other) && GetForegroundWindow() == one.window;
  }));
  desktop.Show(one.Handle(), ShowCommand::Maximized);
  EXPECT_TRUE(WaitFor([&] { return IsZoomed(one.window) != 0; }));
  desktop.Show(one.Handle(), ShowCommand::Hide);
  EXPECT_TRUE(WaitFor([&] { return !IsWindowVisible(one.window); }));
  EXPECT_TRUE(isAbove(one, one)) << "hidden windows are windows too";
  desktop.Send(other.Handle(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"renamed"));
  EXPECT_EQ(desktop.Title(other.Handle()), "renamed");
}

// One of our own process hangs as well as another program's, and would hang who asks it for its
// title by a message.
TEST(Win32Desktop, NothingWaitsLongForAWindowThatHangs) {
  std::promise<Desktop::Window> made;
  std::promise<void> release;
  std::jthread hanging([&] {
    const HWND window = CreateWindowExW(0, L"STATIC", L"I hang", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                        0, 0, 300, 100, nullptr, nullptr, nullptr, nullptr);
    SetForegroundWindow(window);
    made.set_value(reinterpret_cast<Desktop::Window>(window));
    release.get_future().wait();
    DestroyWindow(window);
  });
  const Desktop::Window window = made.get_future().get();
  Win32Desktop desktop;
  const ULONGLONG began = GetTickCount64();
  EXPECT_EQ(desktop.Title(window), "I hang");
  EXPECT_EQ(reinterpret_cast<Desktop::Window>(GetForegroundWindow()), window);
  Type("^+{F16 1000}");
  EXPECT_FALSE(AnyModifierDown());
  desktop.Send(window, WM_CLOSE, 0, 0);
  desktop.BringToTop(window);
  desktop.Show(window, ShowCommand::Minimized);
  EXPECT_LT(GetTickCount64() - began, 20000u);
  release.set_value();
}

}  // namespace
}  // namespace orvanto::win32
