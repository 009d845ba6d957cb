#include "script/KeySequence.h"

#include <gtest/gtest.h>

#include "platform/text/Error.h"

namespace orvanto {
namespace {

// The events in short: "S+" Shift held, "S-" released, "a" a character, "<9>" the key of that
// number, "*3" three times.
std::string Short(const std::vector<KeyEvent>& events) {
  std::string text;
  for (const KeyEvent& event : events) {
    if (!text.empty()) text += ' ';
    if (event.action != KeyEvent::Action::Press) {
      text += event.key == Key::Shift ? 'S' : event.key == Key::Control ? 'C' : 'A';
      text += event.action == KeyEvent::Action::Hold ? '+' : '-';
      continue;
    }
    if (event.key != Key::Character) {
      text += "<" + std::to_string(static_cast<int>(event.key)) + ">";
    } else if (event.character < 0x80) {
      text += static_cast<char>(event.character);
    } else {
      text += "U" + std::to_string(static_cast<std::uint32_t>(event.character));
    }
    if (event.count != 1) text += "*" + std::to_string(event.count);
  }
  return text;
}

std::string KeyText(Key key) { return "<" + std::to_string(static_cast<int>(key)) + ">"; }

TEST(KeySequence, ReadsTheNotation) {
  const std::string enter = KeyText(Key::Enter);
  const std::string left = KeyText(Key::Left);
  const std::pair<const char*, std::string> cases[] = {
      {"", ""},
      {"aB1 [", "a B 1   ["},
      {"~{ENTER}{enter}", enter + " " + enter + " " + enter},
      {"+EC", "S+ E S- C"},
      {"+(EC)", "S+ E C S-"},
      {"^a^c", "C+ a C- C+ c C-"},
      {"^(a)^(c)", "C+ a C- C+ c C-"},
      {"+^%x", "S+ C+ A+ x A- C- S-"},
      {"^(a+b%(c))d", "C+ a S+ b S- A+ c A- C- d"},
      {"(ab)", "a b"},
      {"+", "S+ S-"},
      {"a^", "a C+ C-"},
      {"(+)", "S+ S-"},
      {"+()", "S+ S-"},
      {"{+}{^}{%}{~}{(}{)}{{}{}}{[}{]}", "+ ^ % ~ ( ) { } [ ]"},
      {"{LEFT 42}", left + "*42"},
      {"{h 10}", "h*10"},
      {"+{TAB 4}", "S+ " + KeyText(Key::Tab) + "*4 S-"},
      {"{} 3}", "}*3"},
      {"{ }", " "},
      {"{  2}", " *2"},
      {"{a 0}", ""},
      {"{a 99999999999}", "a*10000"},
      {"{F1}{f16}", KeyText(Key::F1) + " " + KeyText(Key::F16)},
      {"{BS}{BKSP}{BACKSPACE}",
       KeyText(Key::Backspace) + " " + KeyText(Key::Backspace) + " " + KeyText(Key::Backspace)},
      {"{DEL}{INS}{ESC}{PGUP}{PGDN}", KeyText(Key::Delete) + " " + KeyText(Key::Insert) + " " +
                                          KeyText(Key::Escape) + " " + KeyText(Key::PageUp) + " " +
                                          KeyText(Key::PageDown)},
      {"\xC3\xA4{\xE2\x82\xAC 2}\xF0\x9F\x98\x80", "U228 U8364*2 U128512"},
      {"\xE4", "U228"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Short(ParseKeySequence(text)), expected) << text;
  }
}

TEST(KeySequence, RefusesWhatItIsNot) {
  for (const char* text :
       {"}",     "a}",    "{",       "{a",     "{}",     "{abc}",    "{F0}", "{F17}",
        "{F01}", "{a x}", "{a 1 2}", "{a -1}", "{a }",   "{LEFT x}", ")",    "(a))",
        "(",     "+(a",   "++a",     "+(+a)",  "^(b^c)", "{ENTER",   "{3 {}"}) {
    EXPECT_THROW(ParseKeySequence(text), Error) << text;
  }
}

}  // namespace
}  // namespace orvanto
