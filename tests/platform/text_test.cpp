#include "platform/text/PrintableLine.h"

#include <gtest/gtest.h>

namespace orvanto {
namespace {

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
