#include <gtest/gtest.h>

#include "script/KeySequence.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

using Texts = std::vector<std::string>;

TEST(Windows, EachCommandDoesItsSteps) {
  ScriptDesk desk;
  desk.desktop.titles = {"Untitled - Notepad", "", "Other"};
  EXPECT_EQ(desk.Run("setfocus('notepad')\nminimize('NOTEPAD')\nmaximize('*Notepad*')\n"
                     "closewin('Note')\nsendkeys('Notepad',+a~)\nsendkeysdos('Notepad',dir {x)\n"
                     "setfocus('Nothing')"),
            0);
  EXPECT_EQ(desk.desktop.log, (Texts{"top 0", "show 1 0", "top 0", "show 2 0", "top 0", "show 3 0",
                                     "send 0 61536 0", "top 0", "show 1 0", "top 0", "show 1 0"}));
  EXPECT_EQ(desk.keyboard.typed, (std::vector<std::vector<KeyEvent>>{ParseKeySequence("+a~"),
                                                                     ParseKeySequence("%{ }ep")}));
  EXPECT_EQ(desk.clipboard.text, "dir {x");
}

TEST(Windows, ATitleIsActedOnOnceForEachPlace) {
  struct Case {
    const char* argument;
    Texts acted;
  };
  for (const Case& c :
       {Case{"aa", {"top 0", "top 0", "top 1"}},
        {"*aa*", {"top 0", "top 0", "top 1"}},
        {"**aa**", {}},
        {"aab", {}},
        {"", {"top 0", "top 0", "top 0", "top 0", "top 1", "top 1", "top 1", "top 3", "top 3"}},
        {"\xC3\xA4", {"top 3"}}}) {
    ScriptDesk desk;
    desk.desktop.titles = {"Aaa", "aA", "", "\xC3\x84"};
    if (*c.argument == '\0') desk.desktop.titles[3] = "x";
    desk.windows.WindowAction(c.argument, WindowCode::SetFocus, "");
    Texts tops;
    for (const std::string& one : desk.desktop.log) {
      if (one.rfind("top", 0) == 0) tops.push_back(one);
    }
    EXPECT_EQ(tops, c.acted) << c.argument;
  }
}

TEST(Windows, AWindowLeftWithoutATitleIsDestroyed) {
  class Untitling : public FakeDesktop {
   public:
    void Send(Window window, std::uint32_t message, std::uintptr_t wParam,
              std::intptr_t lParam) override {
      FakeDesktop::Send(window, message, wParam, lParam);
      titles[window].clear();
    }
  } desktop;
  desktop.titles = {"Gone"};
  ScriptDesk desk;
  WindowActions windows(desk.loop, desktop, desk.keyboard, desk.clipboard);
  windows.WindowAction("gone", WindowCode::Close, "");
  EXPECT_EQ(desktop.log, (Texts{"send 0 61536 0", "send 2 0 0"}));
}

TEST(Windows, KeysThatDoNotParseTouchNothing) {
  ScriptDesk desk;
  desk.desktop.titles = {"Notepad"};
  EXPECT_THROW(desk.windows.WindowAction("Notepad", WindowCode::SendKeys, "abc{"), Error);
  EXPECT_TRUE(desk.desktop.log.empty());
}

}  // namespace
}  // namespace orvanto
