#include "script/KeySequence.h"

#include <gtest/gtest.h>

#include "platform/text/Error.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

// The events in short: "S+" Shift held, "S-" released, "a" a character, "<tab>" a key, "*3" three
// times.
std::string Short(const std::vector<KeyEvent>& events) {
  std::string text;
  for (const KeyEvent& event : events) {
    if (!text.empty()) text += ' ';
    if (event.action != KeyEvent::Action::Press) {
      text += event.key == Key::Shift ? 'S' : event.key == Key::Control ? 'C' : 'A';
      text += event.action == KeyEvent::Action::Hold ? '+' : '-';
      continue;
    }
    for (const auto& [key, name] : {std::pair{Key::Enter, "<enter>"},
                                    {Key::Left, "<left>"},
                                    {Key::Tab, "<tab>"},
                                    {Key::F1, "<f1>"},
                                    {Key::F16, "<f16>"},
                                    {Key::Backspace, "<backspace>"}}) {
      if (event.key == key) text += name;
    }
    if (event.key == Key::Character) AppendUtf8(event.character, text);
    if (event.count != 1) text += "*" + std::to_string(event.count);
  }
  return text;
}

void Reads(std::initializer_list<std::string> rows) {
  for (const std::string& row : rows) {
    const std::size_t arrow = row.find(" => ");
    EXPECT_EQ(Short(ParseKeySequence(row.substr(0, arrow))), row.substr(arrow + 4)) << row;
  }
}

TEST(KeySequence, ReadsTheNotation) {
  Reads({" => ", "aB1 [ => a B 1   [", "~{Enter} => <enter> <enter>", "+EC => S+ E S- C",
         "+(EC) => S+ E C S-", "^a^c => C+ a C- C+ c C-", "+^%x => S+ C+ A+ x A- C- S-",
         "^(a%(c))d => C+ a A+ c A- C- d", "+ => S+ S-", "a^ => a C+ C-", "(+) => S+ S-",
         "+() => S+ S-"});
  Reads({"{LEFT 42} => <left>*42", "+{TAB 4} => S+ <tab>*4 S-", "{} 3} => }*3", "{ } =>  ",
         "{  2} =>  *2", "{a 0} => ", "{a 99999999999} => a*10000", "{F1}{f16} => <f1> <f16>",
         "{BKSP} => <backspace>", "\xE4 => \xC3\xA4", "{+}{^}{%}{~}{(} => + ^ % ~ (",
         "{)}{{}{}}{[}{]} => ) { } [ ]", "{€ 2}😀 => €*2 😀"});
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
