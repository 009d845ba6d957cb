#include "remote/TelnetProtocol.h"

#include <gtest/gtest.h>

namespace orvanto {
namespace {

// "\xFF" in short: a string literal's hex escapes would run into letters behind them.
const std::string kIac = "\xFF";
std::string Iac(std::initializer_list<int> bytes) {
  std::string text = kIac;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}
constexpr int kSe = 240, kSb = 250, kWill = 251, kWont = 252, kDo = 253, kDont = 254;

struct Case {
  std::string name;
  std::vector<std::string> chunks;
  std::string text;  // '|' between the texts of chunks that brought some
  std::string answers;
};

std::vector<Case> Cases() {
  return {{"plain", {"abc", "\r\n", "a\r\nb"}, "abc|\r\n|a\r\nb", ""},
          {"line end keys",
           {"\r", "\n", "\r", std::string(1, '\0'), std::string("\r\0", 2), "\r\n"},
           "\r\n|\r\n|\r\n|\r\n",
           ""},
          {"cr, then a key", {"\r", "a", "\n"}, "\r\n|a|\r\n", ""},
          {"cr nul in a text", {std::string("ab\r\0c", 5)}, "ab\r\nc", ""},
          {"refused",
           {Iac({kDo, 24}) + Iac({kWill, 31}), Iac({kWont, 31}) + Iac({kDont, 24})},
           "",
           Iac({kWont, 24}) + Iac({kDont, 31})},
          {"agreed once",
           {Iac({kDo, 1}) + Iac({kDo, 1}) + Iac({kDo, 3}) + Iac({kWill, 3}),
            Iac({kWill, 3}) + Iac({kDont, 1}) + Iac({kDont, 1}) + Iac({kDo, 1})},
           "",
           Iac({kWill, 1}) + Iac({kWill, 3}) + Iac({kDo, 3}) + Iac({kWont, 1}) + Iac({kWill, 1})},
          {"timing mark each time",
           {Iac({kDo, 6}) + Iac({kDo, 6})},
           "",
           Iac({kWill, 6}) + Iac({kWill, 6})},
          {"byte 255", {"a" + kIac + kIac + "b"}, "a" + kIac + "b", ""},
          {"commands without options", {"a" + Iac({244}) + "b" + Iac({241}) + "c"}, "abc", ""},
          {"subnegotiation",
           {"a" + Iac({kSb, 31}) + "0" + kIac + kIac + "1" + Iac({kSe}) + "b"},
           "ab",
           ""},
          {"putty's greeting",
           {Iac({kWill, 31}) + Iac({kWill, 32}) + Iac({kWill, 24}) + Iac({kWill, 39}) +
            Iac({kDo, 1}) + Iac({kWill, 3}) + Iac({kDo, 3})},
           "",
           Iac({kDont, 31}) + Iac({kDont, 32}) + Iac({kDont, 24}) + Iac({kDont, 39}) +
               Iac({kWill, 1}) + Iac({kDo, 3}) + Iac({kWill, 3})}};
}

TEST(TelnetProtocol, TakesTelnetOutOfTheText) {
  for (const Case& c : Cases()) {
    TelnetProtocol protocol;
    std::string text;
    std::string answers;
    for (const std::string& chunk : c.chunks) {
      const std::string part = protocol.Receive(chunk, answers);
      if (!part.empty()) text += (text.empty() ? "" : "|") + part;
    }
    EXPECT_EQ(text, c.text) << c.name;
    EXPECT_EQ(answers, c.answers) << c.name;
  }
}

TEST(TelnetProtocol, ACommandMayBeSplitAnywhere) {
  const std::string stream = "ab" + Iac({kDo, 1}) + "c" + Iac({kSb, 24}) + std::string(1000, 'x') +
                             kIac + kIac + Iac({kSe}) + kIac + kIac + Iac({kWill, 31}) + "d";
  for (std::size_t at = 0; at <= stream.size(); ++at) {
    TelnetProtocol protocol;
    std::string answers;
    std::string text = protocol.Receive(stream.substr(0, at), answers);
    text += protocol.Receive(stream.substr(at), answers);
    EXPECT_EQ(text, "abc" + kIac + "d") << at;
    EXPECT_EQ(answers, Iac({kWill, 1}) + Iac({kDont, 31})) << at;
  }
}

}  // namespace
}  // namespace orvanto
