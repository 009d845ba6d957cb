#include "core/Convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

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
  }
  for (const char* text : {"", " ", "-", "--1", "1x", "0x10", "nan", "inf", "1 2"}) {
    EXPECT_EQ(ErrorOf([&] { ToInt16(text); }), kTypeMismatch) << text;
    EXPECT_EQ(ToInt16Or(text, 77), 77) << text;
  }
  EXPECT_EQ(ToInt32("70000"), 70000);
  EXPECT_THROW(ToInt32("2147483648"), Error);
}

TEST(Format, NumbersByThePatternsOfTheDownloadWindow) {
  // A number, a pattern, the text.
  for (const std::string row :
       {"0 ####.00 .00", "0.125 ####.00 .13", "1.005 0.00 1.01", "99.995 0.00 100.00",
        "0.004 0.00 0.00", "7.4 00 07", "99.5 00 100", "0 ###0 0",
        "1234567.891 ###,###,##0.00 1,234,567.89", "123 ###,###,##0.00 123.00",
        "12.3456 ##.#0# 12.346", "12.3 ##.#0# 12.30", "-0.126 0.00 -0.13", "-0.001 0.00 0.00",
        "5e15 0 5000000000000000"}) {
    const std::size_t blank = row.find(' ');
    const std::string pattern = row.substr(blank + 1, row.rfind(' ') - blank - 1);
    EXPECT_EQ(FormatNumber(std::stod(row), pattern), row.substr(row.rfind(' ') + 1)) << row;
  }
  EXPECT_EQ(FormatNumber(HUGE_VAL, "0"), "0");
}

TEST(Format, SinglesAndTimes) {
  const std::pair<float, const char*> kSingles[] = {
      {0, "0"},         {9999999, "9999999"}, {10000000, "1E+07"}, {12345678, "1.234568E+07"},
      {0.5F, "0.5"},    {1234.5F, "1234.5"},  {-20, "-20"},        {0.001F, "0.001"},
      {1e-10F, "1E-10"}};
  for (const auto& [number, text] : kSingles) EXPECT_EQ(SingleText(number), text);
  for (const char* const text : {"24:0:0", "0:60:1", "1:2", "1:2:3:4", "1:2:003", "", "-1:2:3"}) {
    EXPECT_EQ(FormatTime(text), text);
  }
  EXPECT_EQ(FormatTime("0:00:5") + FormatTime("23:59:59"), "00:00:0523:59:59");
  EXPECT_EQ(LeadingSingle(" 1234\r"), 1234);
  EXPECT_EQ(LeadingSingle("-5") + LeadingSingle("x"), 0);
}

}  // namespace
}  // namespace orvanto
