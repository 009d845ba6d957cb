#include <gtest/gtest.h>

#include "script/KeySequence.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

class Windows : public testing::Test, public ScriptDesk {};

TEST_F(Windows, EachCommandDoesItsSteps) {
  desktop.titles = {"Untitled - Notepad", "", "Other"};
  EXPECT_EQ(RunText("setfocus('notepad')\nminimize('NOTEPAD')\nmaximize('*Notepad*')\n"
                    "closewin('Note')\nsendkeys('Notepad',+a~)\nsendkeysdos('Notepad',dir {x)\n"
                    "setfocus('Nothing')"),
            0);
  EXPECT_EQ(Done(), (Texts{"top 0", "show 1 0", "top 0", "show 2 0", "top 0", "show 3 0",
                           "send 0 61536 0", "top 0", "show 1 0", "top 0", "show 1 0"}));
  EXPECT_EQ(clipboard.text, "dir {x");
  clipboard.taken = true;
  EXPECT_EQ(RunText("sendkeysdos('Notepad',dir)"), 0);
  EXPECT_EQ(
      Log(),
      "\"s.txt, line 1: Window: Untitled - Notepad was sent nothing: the clipboard could not be "
      "written\"\r\n");
  EXPECT_THROW(windows.WindowAction("Notepad", WindowCode::SendKeys, "abc{"), Error);
  EXPECT_TRUE(done.empty()) << "nor where the keys do not parse";
  EXPECT_EQ(RunText("sendkeys('Nothing',abc{)"), 0) << "without a window they are not looked at";
  for (const WindowCode code : {WindowCode::CloseFile, WindowCode::Exit, WindowCode::Hide})
    windows.WindowAction("Other", code, "");
  EXPECT_EQ(Done(), (Texts{"top 2", "show 1 2", "top 2", "show 1 2", "top 2", "show 0 2"}));
  std::vector<std::vector<KeyEvent>> typed;
  for (const char* keys : {"+a~", "%{ }ep", "%fc", "%fx"}) typed.push_back(ParseKeySequence(keys));
  EXPECT_EQ(keyboard.typed, typed);
  desktop.closes = true;
  windows.WindowAction("other", WindowCode::Close, "");
  EXPECT_EQ(Done(), (Texts{"send 0 61536 2", "send 2 0 2"})) << "left without a title";
}

TEST_F(Windows, ATitleIsActedOnOnceForEachPlace) {
  const std::pair<const char*, const char*> cases[] = {{"aa", "001"},       {"*aa*", "001"},
                                                       {"**aa**", ""},      {"aab", ""},
                                                       {"", "00001113333"}, {"\xC3\xA4", "3"}};
  desktop.titles = {"Aaa", "aA", "", "\xC3\x84xx"};
  for (const auto& [argument, expected] : cases) {
    windows.WindowAction(argument, WindowCode::SetFocus, "");
    std::string tops;
    for (const std::string& one : Done()) {
      if (one.starts_with("top ")) tops += one.substr(4);
    }
    EXPECT_EQ(tops, expected) << argument;
  }
  loop.Post([&] { loop.Quit(); });
  windows.WindowAction("aa", WindowCode::SetFocus, "");
  EXPECT_EQ(done, (Texts{"top 0", "show 1 0", "top 0", "show 1 0"})) << "the program has ended";
}

}  // namespace
}  // namespace orvanto
