#include "remote/TelnetProtocol.h"

#include <gtest/gtest.h>

namespace orvanto {
namespace {

const std::string kIac = "\xFF";
std::string Iac(std::initializer_list<int> bytes) {
  std::string text = kIac;
  for (const int byte : bytes) text += static_cast<char>(byte);
  return text;
}
constexpr int kSe = 240, kSb = 250, kWill = 251, kWont = 252, kDo = 253, kDont = 254;

// A stream, the text in it and the answers to it; wherever it is cut.
TEST(TelnetProtocol, TakesTelnetOutOfTheText) {
  const struct {
    std::string stream, text, answers;
  } cases[] = {
      {"ab\r\n", "ab\r\n", ""},
      {Iac({kDo, 24}) + Iac({kWill, 31}) + Iac({kWill, 1}) + Iac({kWont, 31}) + Iac({kDont, 24}),
       "", Iac({kWont, 24}) + Iac({kDont, 31}) + Iac({kDont, 1})},
      // What holds already is not agreed to again.
      {Iac({kDo, 1}) + Iac({kDo, 1}) + Iac({kDo, 3}) + Iac({kWill, 3}) + Iac({kWill, 3}) +
           Iac({kDont, 1}) + Iac({kDont, 1}) + Iac({kDo, 1}) + Iac({kWont, 3}) + Iac({kWont, 3}),
       "",
       Iac({kWill, 1}) + Iac({kWill, 3}) + Iac({kDo, 3}) + Iac({kWont, 1}) + Iac({kWill, 1}) +
           Iac({kDont, 3})},
      {Iac({kDo, 6}) + Iac({kDo, 6}), "", Iac({kWill, 6}) + Iac({kWill, 6})},
      {"a" + kIac + kIac + "b" + Iac({244}) + "c" + Iac({241}) + "d", "a" + kIac + "bcd", ""},
      {"a" + Iac({kSb, 31}) + "0" + kIac + kIac + "1" + Iac({kSe}) + "b", "ab", ""}};
  for (const auto& c : cases) {
    for (std::size_t at = 0; at <= c.stream.size(); ++at) {
      TelnetProtocol protocol;
      std::string answers;
      std::string text = protocol.Receive(c.stream.substr(0, at), answers);
      text += protocol.Receive(c.stream.substr(at), answers);
      EXPECT_EQ(text, c.text) << at;
      EXPECT_EQ(answers, c.answers) << at;
    }
  }
}

TEST(TelnetProtocol, AnOfferIsTakenOrRefused) {
  const std::tuple<std::string, bool, std::string> cases[] = {
      {"", false, ""},
      {Iac({kDo, 1}) + Iac({kDo, 3}) + Iac({kDo, 1}), true, ""},
      {Iac({kDont, 1}), false, ""},
      {Iac({kDo, 1}) + Iac({kDont, 1}), false, Iac({kWont, 1})},
      {Iac({kDont, 1}) + Iac({kDo, 1}), true, Iac({kWill, 1})}};
  for (const auto& [stream, echoes, expected] : cases) {
    TelnetProtocol protocol;
    EXPECT_EQ(protocol.OfferCharacterMode(), Iac({kWill, 1}) + Iac({kWill, 3}));
    std::string answers;
    protocol.Receive(stream, answers);
    EXPECT_EQ(protocol.Echoes(), echoes);
    EXPECT_EQ(answers, expected);
  }
}

}  // namespace
}  // namespace orvanto
