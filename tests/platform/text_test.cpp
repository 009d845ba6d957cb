#include "platform/Text.h"

#include <gtest/gtest.h>

namespace orvanto {
namespace {

TEST(Text, APrintableLineHoldsNothingThatATerminalObeys) {
  const struct {
    std::string text;
    std::string line;
  } cases[] = {
      {"", ""},
      {"plain ~ text", "plain ~ text"},
      {"Gr\xC3\xBC\xC3\x9F"
       "e \xC2\xA0\xD0\x96 \xE2\x82\xAC \xF0\x9D\x84\x9E",
       "Gr\xC3\xBC\xC3\x9F"
       "e \xC2\xA0\xD0\x96 \xE2\x82\xAC \xF0\x9D\x84\x9E"},
      {std::string("\0\x07\t\r\n\x1B[2J\x1F\x7F", 11), "??????[2J??"},
      {"\xC2\x80\xC2\x9B\xC2\x9F", "???"},
      {"\x80\x9B\xFF", "???"},
      {"a\xE2\x82", "a??"},                                // cut off
      {"\xC0\x9B\xE0\x80\x9B \xED\xA0\x80", "????? ???"},  // overlong, a surrogate
      {"\xF4\x90\x80\x80", "????"},
      {"\xC3(", "?("},
  };
  for (const auto& c : cases) EXPECT_EQ(PrintableLine(c.text), c.line);
}

}  // namespace
}  // namespace orvanto
