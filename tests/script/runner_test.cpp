#include <gtest/gtest.h>

#include "platform/text/Error.h"
#include "script/ScriptLine.h"
#include "tests/script/ScriptDesk.h"

namespace orvanto {
namespace {

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

TEST(Runner, RunsLinesOfAnyEndingAndEncoding) {
  ScriptDesk desk;
  EXPECT_EQ(desk.Run("beep()\r\nBEEP()\n   Beep()  \rbeep()"), 0);
  EXPECT_EQ(desk.Beeps(), 4);
  EXPECT_EQ(desk.Run("\xEF\xBB\xBFmsgbox('\xC3\xA4',nostop)"), 0);
  EXPECT_EQ(desk.Run("msgbox('\xE4',nostop)"), 0);
  EXPECT_EQ(desk.Run(std::string("msgbox('a\0b',nostop)", 20)), 0);
  EXPECT_EQ(desk.Run("msgbox('" + std::string(200000, 'x') + "',nostop)"), 0);
  for (const bool highFirst : {false, true}) {
    const std::u16string text = u"\uFEFFmsgbox('\U0001F552\xD83D\xDD52\xDD52\xD83D',nostop)\r\n*(";
    std::string bytes(reinterpret_cast<const char*>(text.data()), 2 * text.size());
    for (std::size_t i = 0; highFirst && i < bytes.size(); i += 2)
      std::swap(bytes[i], bytes[i + 1]);
    EXPECT_EQ(desk.Run(bytes + "\xFF"), 0);
    EXPECT_EQ(desk.popups.back(), "\U0001F552\U0001F552\uFFFD\uFFFD");
    desk.popups.pop_back();
  }
  EXPECT_EQ(desk.popups,
            (Texts{"\xC3\xA4", "\xC3\xA4", std::string("a\0b", 3), std::string(200000, 'x')}));
  EXPECT_EQ(desk.Log(), "");
  EXPECT_FALSE(desk.scripts.Slot(1).inUse);
}

TEST(Runner, ALineWithoutParenthesisRepeatsTheCommand) {
  ScriptDesk desk;
  EXPECT_EQ(
      desk.Run("* a comment\n*(another)\nbeep()\n\nbeep\n* one more\nmsgbox('x',nostop)\nagain"),
      0);
  EXPECT_EQ(desk.Beeps(), 4);
  EXPECT_EQ(desk.popups, (Texts{"x", "x"}));
}

TEST(Runner, ABadLineIsLoggedTwiceAndReachesTheCaller) {
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
    EXPECT_EQ(desk.Run(text), kFileAlreadyOpen) << text;
    EXPECT_EQ(desk.failures, Texts{std::string("s.txt, line 1: ") + reason}) << text;
    EXPECT_EQ(desk.Log(), ScriptDesk::Twice("s.txt")) << text;
    EXPECT_TRUE(desk.scripts.Slot(1).inUse) << text;
    EXPECT_EQ(desk.scripts.Slot(1).linesDone, 2) << "the failed line and the one behind it";
  }
  ScriptDesk desk;
  EXPECT_EQ(desk.RunByPath("Missing.txt"), kFileNotFoundError);
  EXPECT_EQ(desk.Log(), ScriptDesk::Twice("Missing.txt"));
  EXPECT_EQ(desk.Run("msgbox('x',nostop)\rx\ry("), kFileAlreadyOpen);
  EXPECT_EQ(desk.failures, (Texts{"Missing.txt: File not found", "s.txt, line 3: Not a command"}));
  desk.files.contents["D:\\there.txt"] = "beep()";
  EXPECT_EQ(desk.RunByPath("D:\\There.TXT"), 0);
  EXPECT_EQ(desk.Beeps(), 1);
}

TEST(Runner, ADelayEndsWithTheTickOfItsNumber) {
  ScriptDesk desk;
  EXPECT_EQ(desk.Run("beep()\ndelay(5)\nmsgbox('end',nostop)"), 0);
  EXPECT_TRUE(desk.scripts.Waiting());
  desk.loop.Advance(5 * 1000 - 1);
  EXPECT_EQ(desk.Beeps(), 1);
  // The resumed script takes a fresh slot and so starts from its first line again.
  desk.loop.Advance(1);
  EXPECT_EQ(desk.Beeps(), 2);
  EXPECT_EQ(desk.scripts.Slot(1).linesDone, 3);
  EXPECT_TRUE(desk.scripts.Slot(1).inUse);
  EXPECT_TRUE(desk.scripts.Slot(2).delayPending);
}

TEST(Runner, ADelayingScriptTakesSlotsUntilNoneIsLeft) {
  ScriptDesk desk;
  bool idle = false;
  desk.scripts.onIdle = [&] { idle = true; };
  EXPECT_EQ(desk.Run("beep()\ndelay(1)"), 0);
  desk.loop.Advance(99 * 1000);
  EXPECT_EQ(desk.Beeps(), 100);
  EXPECT_FALSE(idle);
  desk.loop.Advance(1000);
  EXPECT_EQ(desk.failures, Texts{"s.txt: all 100 places are taken"});
  EXPECT_TRUE(idle);
  EXPECT_FALSE(desk.scripts.Waiting());
  EXPECT_EQ(desk.RunByPath("s.txt"), kSubscriptOutOfRange);
  EXPECT_EQ(desk.Log(), "");
}

TEST(Runner, OnlyTheLowestDelayCountsAndAStartStopsTheCount) {
  ScriptDesk desk;
  desk.Script("b.txt", "delay(2)");
  EXPECT_EQ(desk.Run("delay(3)\nbeep()"), 0);
  EXPECT_EQ(desk.RunByPath("b.txt"), 0);
  desk.loop.Advance(2000);
  EXPECT_EQ(desk.scripts.Slot(1).delayElapsed, 3);
  EXPECT_EQ(desk.scripts.Slot(2).delayElapsed, 1);
  // Any start stops the shared timer; the next delay starts it again.
  desk.Script("c.txt", "*");
  EXPECT_EQ(desk.RunByPath("c.txt"), 0);
  desk.loop.Advance(10000);
  EXPECT_EQ(desk.scripts.Slot(1).delayElapsed, 3);
  EXPECT_EQ(desk.RunByPath("b.txt"), 0);
  desk.loop.Advance(1000);
  EXPECT_FALSE(desk.scripts.Slot(1).delayPending) << "resumed";
  EXPECT_TRUE(desk.scripts.Slot(2).delayPending);
}

TEST(Runner, ADelayOfNothingNeverEndsAndFailsAtLast) {
  ScriptDesk desk;
  EXPECT_EQ(desk.Run("delay(0)"), 0);
  desk.loop.Advance(32766 * 1000);
  EXPECT_EQ(desk.scripts.Slot(1).delayElapsed, 32767);
  EXPECT_THROW(desk.loop.Advance(1000), Error);
}

TEST(Runner, ASlotIsUsedAgainFromItsFirstLine) {
  ScriptDesk desk;
  // One that a box ends, too.
  desk.messageBoxes.expected = {{"Stop here?", Answer::Cancel}};
  for (const char* text : {"beep()\nbeep()", "msgbox('Stop here?',okcancel)\nbeep()", "beep()"}) {
    EXPECT_EQ(desk.Run(text), 0);
  }
  EXPECT_EQ(desk.Beeps(), 3);
  EXPECT_EQ(desk.scripts.Slot(1).linesDone, 4);
  EXPECT_EQ(desk.Log(), "");
}

TEST(Runner, TheCountersOfASlotHold16Bits) {
  ScriptDesk desk;
  std::string text;
  for (int i = 0; i < 32767; ++i) text += "*\n";
  EXPECT_EQ(desk.Run(text), 0);
  EXPECT_EQ(desk.Run("beep()"), kOverflow);
  EXPECT_EQ(desk.Beeps(), 0);
}

TEST(Runner, AScriptMayStartAnotherFromInsideAndEndsWithTheProgram) {
  ScriptDesk desk;
  desk.Script("inner.txt", "beep()\nmsgbox('inner',nostop)");
  desk.messageBoxes.expected = {{"outer", Answer::Ok,
                                 [&] {
                                   EXPECT_EQ(desk.RunByPath("inner.txt"), 0);
                                   EXPECT_EQ(desk.scripts.CommandAtWork(), "msgbox");
                                 }},
                                {"the end", Answer::Ok, [&] { desk.loop.Quit(); }}};
  EXPECT_EQ(desk.Run("msgbox('outer')\nbeep()\nmsgbox('the end')\nmsgbox('two')\nshutdown()"), 0);
  EXPECT_EQ(desk.done, (Texts{"beep", "beep"}));
  EXPECT_EQ(desk.scripts.CommandAtWork(), "");
  EXPECT_FALSE(desk.scripts.Slot(2).inUse);
}

}  // namespace
}  // namespace orvanto
