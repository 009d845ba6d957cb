#include <gtest/gtest.h>

#include <string>

#include "platform/Event.h"
#include "platform/text/PrintableLine.h"

namespace orvanto {
namespace {

TEST(Event, TellsWhoListensInOrderAsLongAsTheyDo) {
  Event<std::string> event;
  std::string heard;
  const auto listener = [&](const char* name) {
    return event.Subscribe([&heard, name](const std::string& what) { heard += name + what; });
  };
  Subscription one = listener("1");
  Subscription late;
  // Ends the next, and itself while it is being called, and subscribes another.
  Subscription two;
  Subscription three;
  two = event.Subscribe([&](const std::string& what) {
    heard += "2" + what;
    three.reset();
    if (!late) late = listener("L");
    two.reset();
    if (what == "a") event.Raise("x");
  });
  three = listener("3");
  event.Raise("a");
  EXPECT_EQ(heard, "1a2a1xLx");
  one.reset();
  event.Raise("b");
  EXPECT_EQ(heard, "1a2a1xLxLb");
  Subscription outlives;
  {
    Event<> brief;
    outlives = brief.Subscribe([] {});
  }
}

TEST(Text, APrintableLineHoldsNothingThatATerminalObeys) {
  const std::pair<std::string, std::string> cases[] = {
      {"plain ~ text", "plain ~ text"},
      {"Grüße \u00a0Ж € \U0001D11E", "Grüße \u00a0Ж € \U0001D11E"},
      {std::string("\0\x07\t\r\n\x1B[2J\x1F\x7F", 11), "??????[2J??"},
      {"\xC2\x80\xC2\x9B\xC2\x9F", "???"},
      {"\x80\x9B\xFF", "???"},
      {"a\xE2\x82", "a??"},                                // cut off
      {"\xC0\x9B\xE0\x80\x9B \xED\xA0\x80", "????? ???"},  // overlong, a surrogate
      {"\xF4\x90\x80\x80 \xE0\x90\x80", "???? ???"},
      {"\xC3(", "?("}};
  for (const auto& [text, line] : cases) EXPECT_EQ(PrintableLine(text), line);
}

}  // namespace
}  // namespace orvanto
