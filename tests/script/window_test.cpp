#include <gtest/gtest.h>

#include "script/KeySequence.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

TEST(Windows, EachCommandDoesItsSteps) {
  ScriptDesk desk;
  desk.desktop.titles = {"Untitled - Notepad", "", "Other"};
  EXPECT_EQ(desk.Run("setfocus('notepad')\nminimize('NOTEPAD')\nmaximize('*Notepad*')\n"
                     "closewin('Note')\nsendkeys('Notepad',+a~)\nsendkeysdos('Notepad',dir {x)\n"
                     "setfocus('Nothing')"),
            0);
  EXPECT_EQ(desk.done, (Texts{"top 0", "show 1 0", "top 0", "show 2 0", "top 0", "show 3 0",
                              "send 0 61536 0", "top 0", "show 1 0", "top 0", "show 1 0"}));
  EXPECT_EQ(desk.keyboard.typed, (std::vector<std::vector<KeyEvent>>{ParseKeySequence("+a~"),
                                                                     ParseKeySequence("%{ }ep")}));
  EXPECT_EQ(desk.clipboard.text, "dir {x");
  desk.done.clear();
  desk.clipboard.taken = true;
  EXPECT_EQ(desk.Run("sendkeysdos('Notepad',dir)"), 0);
  EXPECT_TRUE(desk.done.empty()) << "what another program left there is not pasted";
  EXPECT_EQ(
      desk.Log(),
      "\"s.txt, line 1: Window: Untitled - Notepad was sent nothing: the clipboard could not be "
      "written\"\r\n");
  EXPECT_THROW(desk.windows.WindowAction("Notepad", WindowCode::SendKeys, "abc{"), Error);
  EXPECT_TRUE(desk.done.empty()) << "keys that do not parse touch nothing";
  EXPECT_EQ(desk.Run("sendkeys('Nothing',abc{)"), 0) << "and without a window are not looked at";
  desk.done.clear();
  for (const WindowCode code : {WindowCode::CloseFile, WindowCode::Exit, WindowCode::Hide})
    desk.windows.WindowAction("Other", code, "");
  EXPECT_EQ(desk.done, (Texts{"top 2", "show 1 2", "top 2", "show 1 2", "top 2", "show 0 2"}));
  EXPECT_EQ(desk.keyboard.typed[2], ParseKeySequence("%fc"));
  EXPECT_EQ(desk.keyboard.typed[3], ParseKeySequence("%fx"));
  desk.done.clear();
  desk.desktop.closes = true;
  desk.windows.WindowAction("other", WindowCode::Close, "");
  EXPECT_EQ(desk.done, (Texts{"send 0 61536 2", "send 2 0 2"})) << "left without a title";
  desk.done.clear();
  desk.desktop.titles = {"One", "One"};
  desk.loop.Post([&] { desk.loop.Quit(); });
  desk.windows.WindowAction("One", WindowCode::SetFocus, "");
  EXPECT_EQ(desk.done, (Texts{"top 0", "show 1 0"})) << "the program has ended";
}

TEST(Windows, ATitleIsActedOnOnceForEachPlace) {
  const std::pair<const char*, const char*> cases[] = {{"aa", "001"},       {"*aa*", "001"},
                                                       {"**aa**", ""},      {"aab", ""},
                                                       {"", "00001113333"}, {"\xC3\xA4", "3"}};
  for (const auto& [argument, expected] : cases) {
    ScriptDesk desk;
    desk.desktop.titles = {"Aaa", "aA", "", "\xC3\x84xx"};
    desk.windows.WindowAction(argument, WindowCode::SetFocus, "");
    std::string tops;
    for (const std::string& one : desk.done) {
      if (one.starts_with("top ")) tops += one.substr(4);
    }
    EXPECT_EQ(tops, expected) << argument;
  }
}

TEST(Windows, TheEndOfTheProgramEndsTheWalk) {
  ScriptDesk desk;
  desk.desktop.titles = {"one", "two"};
  desk.loop.Post([&] { desk.loop.Quit(); });
  desk.windows.WindowAction("o", WindowCode::SetFocus, "");
  EXPECT_EQ(desk.done, (Texts{"top 0", "show 1 0"}));
}

}  // namespace
}  // namespace orvanto
