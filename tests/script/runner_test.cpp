#include <gtest/gtest.h>

#include "platform/text/Error.h"
#include "script/ScriptLine.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

class Runner : public testing::Test, public ScriptDesk {};

TEST(ScriptLine, SplitsArguments) {
  // A line, its arguments; "-" stands for the value from the line before.
  for (const std::string row :
       {"open('c:\\a.doc',3) => c:\\a.doc|3", "OPEN('A b') => A b|", "open(2) => 2|", "open() => |",
        "open('') => |", "open(') => |", "open('a','bc') => a','bc|", "open('it's',x) => it's|x",
        "open('a','b',c) => a|'b',c", "open('a', b ) => a| b ", "open(',x) => |x",
        "open('a',) => a|", "open(a,'b') => a,'b'|", "open(\"a\") => \"a\"|", "open('a'b) => -|-",
        "open('a',b => -|-", "open('a')  => -|-", "open => -|-", " => -|-"}) {
    const std::string line = row.substr(0, row.find(" => "));
    std::string word = "open";
    std::string arg1 = "-";
    std::string arg2 = "-";
    ReadCommandWord(line, word);
    EXPECT_EQ(word, "open");
    SplitArguments(word, line, arg1, arg2);
    EXPECT_EQ(line + " => " + arg1 + "|" + arg2, row);
  }
}

TEST_F(Runner, RunsLinesOfAnyEndingAndEncoding) {
  EXPECT_EQ(RunText("beep()\r\nBEEP()\n   Beep()  \rbeep()"), 0);
  EXPECT_EQ(Beeps(), 4);
  EXPECT_EQ(RunText("\xEF\xBB\xBFmsgbox('\xC3\xA4',nostop)"), 0);
  EXPECT_EQ(RunText("msgbox('\xE4',nostop)"), 0);
  EXPECT_EQ(RunText(std::string("msgbox('a\0b',nostop)", 20)), 0);
  EXPECT_EQ(RunText("msgbox('" + std::string(200000, 'x') + "',nostop)"), 0);
  for (const bool highFirst : {false, true}) {
    const std::u16string text = u"\uFEFFmsgbox('\U0001F552\xD83D\xDD52\xDD52\xD83D',nostop)\r\n*(";
    std::string bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    for (std::size_t i = 0; highFirst && i < bytes.size(); i += 2)
      std::swap(bytes[i], bytes[i + 1]);
    EXPECT_EQ(RunText(bytes + "\xFF"), 0);
    EXPECT_EQ(popups.back(), "\U0001F552\U0001F552\uFFFD\uFFFD");
    popups.pop_back();
  }
  EXPECT_EQ(popups,
            (Texts{"\xC3\xA4", "\xC3\xA4", std::string("a\0b", 3), std::string(200000, 'x')}));
  EXPECT_EQ(Log(), "");
  EXPECT_FALSE(scripts.Slot(1).inUse);
}

TEST_F(Runner, ALineWithoutParenthesisRepeatsTheCommand) {
  EXPECT_EQ(
      RunText("* a comment\n*(another)\nbeep()\n\nbeep\n* one more\nmsgbox('x',nostop)\nagain"), 0);
  EXPECT_EQ(Beeps(), 4);
  EXPECT_EQ(popups, (Texts{"x", "x"}));
}

TEST_F(Runner, ABadLineIsLoggedTwiceAndReachesTheCaller) {
  const std::pair<const char*, const char*> cases[] = {
      {"rem(x)", "Not a command"},
      {"\nbeep()", "Not a command"},
      {"beep", "Not a command"},
      {"\tbeep()", "Not a command"},
      {"changeres(x)\nbeep()", "Type mismatch"},
      {"delay('3')", "Type mismatch"},
      {"delay()", "Type mismatch"},
      {"sdown(99999999999)", "Overflow"},
      {"sendkeys('x',{)", "A brace is not closed"}};
  for (const auto& [text, reason] : cases) {
    ScriptDesk desk;
    desk.desktop.titles = {"x"};
    EXPECT_EQ(desk.RunText(text), kFileAlreadyOpen) << text;
    EXPECT_EQ(desk.failures, Texts{std::string("s.txt, line 1: ") + reason}) << text;
    EXPECT_EQ(desk.Log(), ScriptDesk::Twice("s.txt")) << text;
    EXPECT_EQ(desk.Faults(), std::string("1: ") + reason + "\n") << "without running it";
    EXPECT_TRUE(desk.scripts.Slot(1).inUse) << text;
    EXPECT_EQ(desk.scripts.Slot(1).linesDone, 2) << "the failed line and the one after it";
  }
  EXPECT_EQ(RunByPath("Missing.txt"), kFileNotFoundError);
  EXPECT_EQ(Log(), Twice("Missing.txt"));
  EXPECT_EQ(RunText("msgbox('x',nostop)\rx\ry("), kFileAlreadyOpen);
  EXPECT_EQ(failures, (Texts{"Missing.txt: File not found", "s.txt, line 3: Not a command"}));
  files.contents["D:\\there.txt"] = "beep()";
  EXPECT_EQ(RunByPath("D:\\There.TXT"), 0);
  EXPECT_EQ(Beeps(), 1);
}

TEST_F(Runner, ADelayEndsWithTheTickOfItsNumber) {
  EXPECT_EQ(RunText("beep()\ndelay(5)\nmsgbox('end',nostop)"), 0);
  EXPECT_TRUE(scripts.Waiting());
  loop.Advance(5 * 1000 - 1);
  EXPECT_EQ(Beeps(), 1);
  // The resumed script takes a fresh slot and so starts from its first line again.
  loop.Advance(1);
  EXPECT_EQ(Beeps(), 2);
  EXPECT_EQ(scripts.Slot(1).linesDone, 3);
  EXPECT_TRUE(scripts.Slot(1).inUse);
  EXPECT_TRUE(scripts.Slot(2).delayPending);
}

TEST_F(Runner, ADelayingScriptTakesSlotsUntilNoneIsLeft) {
  bool idle = false;
  scripts.onIdle = [&] { idle = true; };
  EXPECT_EQ(RunText("beep()\ndelay(1)"), 0);
  loop.Advance(99 * 1000);
  EXPECT_EQ(Beeps(), 100);
  EXPECT_FALSE(idle);
  loop.Advance(1000);
  EXPECT_EQ(failures, Texts{"s.txt: all 100 places are taken"});
  EXPECT_TRUE(idle);
  EXPECT_FALSE(scripts.Waiting());
  EXPECT_EQ(RunByPath("s.txt"), kSubscriptOutOfRange);
  EXPECT_EQ(Log(), "");
}

TEST_F(Runner, OnlyTheLowestDelayCountsAndAStartStopsTheCount) {
  Script("b.txt", "delay(2)");
  EXPECT_EQ(RunText("delay(3)\nbeep()"), 0);
  EXPECT_EQ(RunByPath("b.txt"), 0);
  loop.Advance(2000);
  EXPECT_EQ(scripts.Slot(1).delayElapsed, 3);
  EXPECT_EQ(scripts.Slot(2).delayElapsed, 1);
  // Any start stops the shared timer; the next delay starts it again.
  Script("c.txt", "*");
  EXPECT_EQ(RunByPath("c.txt"), 0);
  loop.Advance(10000);
  EXPECT_EQ(scripts.Slot(1).delayElapsed, 3);
  EXPECT_EQ(RunByPath("b.txt"), 0);
  loop.Advance(1000);
  EXPECT_FALSE(scripts.Slot(1).delayPending) << "resumed";
  EXPECT_TRUE(scripts.Slot(2).delayPending);
}

TEST_F(Runner, ADelayOfNothingNeverEndsAndFailsAtLast) {
  EXPECT_EQ(RunText("delay(0)"), 0);
  loop.Advance(32766 * 1000);
  EXPECT_EQ(scripts.Slot(1).delayElapsed, 32767);
  EXPECT_THROW(loop.Advance(1000), Error);
}

TEST_F(Runner, TheCountersOfASlotHold16Bits) {
  std::string text;
  for (int i = 0; i < 32767; ++i) text += "*\n";
  EXPECT_EQ(RunText(text), 0);
  EXPECT_EQ(RunText("beep()"), kOverflow);
  EXPECT_EQ(Beeps(), 0);
}

TEST_F(Runner, AScriptMayStartAnotherFromInsideAndEndsWithTheProgram) {
  Script("inner.txt", "beep()\nmsgbox('inner',nostop)");
  messageBoxes.expected = {{"outer", Answer::Ok,
                            [&] {
                              EXPECT_EQ(RunByPath("inner.txt"), 0);
                              EXPECT_EQ(scripts.CommandAtWork(), "msgbox");
                            }},
                           {"the end", Answer::Ok, [&] { loop.Quit(); }}};
  EXPECT_EQ(RunText("msgbox('outer')\nbeep()\nmsgbox('the end')\nmsgbox('two')\nshutdown()"), 0);
  EXPECT_EQ(done, (Texts{"beep", "beep"}));
  EXPECT_EQ(scripts.CommandAtWork(), "");
  EXPECT_FALSE(scripts.Slot(2).inUse);
}

}  // namespace
}  // namespace orvanto
