#include "core/Convert.h"

#include <gtest/gtest.h>

namespace orvanto {
namespace {

constexpr int kNoError = 0;

TEST(Convert, ReadsNumbersAsUsersAndStoresWriteThem) {
  struct Case {
    const char* text;
    int number;
    int error;
  };
  for (const Case& c : {Case{"0", 0, kNoError},
                        {"08", 8, kNoError},
                        {" 7 ", 7, kNoError},
                        {"+5", 5, kNoError},
                        {"-12", -12, kNoError},
                        {"32767", 32767, kNoError},
                        {"-32768", -32768, kNoError},
                        {"2.5", 2, kNoError},
                        {"3.5", 4, kNoError},
                        {"-2.5", -2, kNoError},
                        {"1e3", 1000, kNoError},
                        {"32768", 0, kOverflow},
                        {"99999999999999999999", 0, kOverflow},
                        {"1e999", 0, kOverflow},
                        {"", 0, kTypeMismatch},
                        {" ", 0, kTypeMismatch},
                        {"-", 0, kTypeMismatch},
                        {"--1", 0, kTypeMismatch},
                        {"+-1", -1, kNoError},
                        {"1x", 0, kTypeMismatch},
                        {"0x10", 0, kTypeMismatch},
                        {"nan", 0, kTypeMismatch},
                        {"inf", 0, kTypeMismatch},
                        {"1 2", 0, kTypeMismatch}}) {
    int error = kNoError;
    int number = 0;
    try {
      number = ToInt16(c.text);
    } catch (const Error& failure) {
      error = failure.Number();
    }
    EXPECT_EQ(error, c.error) << c.text;
    EXPECT_EQ(number, c.number) << c.text;
    EXPECT_EQ(ToInt16Or(c.text, 77), c.error == kNoError ? c.number : 77) << c.text;
  }
  EXPECT_EQ(ToInt32("70000"), 70000);
  EXPECT_THROW(ToInt32("2147483648"), Error);
}

}  // namespace
}  // namespace orvanto
