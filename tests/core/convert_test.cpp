#include "core/Convert.h"

#include <gtest/gtest.h>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Convert, ReadsNumbersAsUsersAndStoresWriteThem) {
  const std::pair<const char*, int> numbers[] = {
      {"0", 0},         {"08", 8},          {" 7 ", 7}, {"+5", 5},  {"-12", -12},
      {"32767", 32767}, {"-32768", -32768}, {"2.5", 2}, {"3.5", 4}, {"-2.5", -2},
      {"1e3", 1000},    {"+-1", -1},        {"-.5", 0}};
  for (const auto& [text, number] : numbers) {
    EXPECT_EQ(ToInt16(text), number) << text;
    EXPECT_EQ(ToInt16Or(text, 77), number) << text;
  }
  for (const char* text : {"32768", "-32769", "99999999999999999999", "1e999"}) {
    EXPECT_EQ(ErrorOf([&] { ToInt16(text); }), kOverflow) << text;
    EXPECT_EQ(ToInt16Or(text, 77), 77) << text;
  }
  for (const char* text : {"", " ", "-", "--1", "1x", "0x10", "nan", "inf", "1 2"}) {
    EXPECT_EQ(ErrorOf([&] { ToInt16(text); }), kTypeMismatch) << text;
    EXPECT_EQ(ToInt16Or(text, 77), 77) << text;
  }
  EXPECT_EQ(ToInt32("70000"), 70000);
  EXPECT_THROW(ToInt32("2147483648"), Error);
}

}  // namespace
}  // namespace orvanto
