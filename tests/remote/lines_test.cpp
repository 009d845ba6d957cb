#include <gtest/gtest.h>

#include <vector>

#include "platform/net/LineAssembler.h"
#include "remote/TelnetProtocol.h"

namespace orvanto {
namespace {

using Policy = LineAssembler::Policy;
constexpr std::size_t kLongest = 8;

// The pieces of an arrival: "typed" and "<line>", one after the other.
std::string Pieces(LineAssembler& lines, const std::string& arrival) {
  std::string all;
  lines.Feed(arrival);
  while (const auto piece = lines.Next()) {
    all += piece->complete ? "<" + piece->text + ">" : piece->erased ? "-" : piece->text;
  }
  return all;
}

TEST(LineAssembler, EachPolicyHasItsLines) {
  const std::string nul(1, '\0');
  const std::tuple<Policy, std::vector<std::string>, std::string> cases[] = {
      {Policy::Keys, {"ab", "c", "\r\n", "\r\n", "d"}, "abc<abc><>d, d"},
      {Policy::Keys, {"\r", "\n", "\r", nul, "\r" + nul, "\n", "\n"}, "<><><><><>, "},
      {Policy::Keys, {"\r", "", "a", "\n", "\r", "\nb"}, "<>a<a><>b, b"},
      {Policy::Keys, {"a\r\nb", "\r" + nul + "c\r"}, "a\r\nb\r\nc\r, a\r\nb\r\nc\r"},
      {Policy::Keys, {"123456789", "x", "\n", "y"}, "123456789x<12345678>y, y"},
      {Policy::Edited, {"ab\b", "\x7F\x7F", "c\xC3\xA9\bd\n"}, "ab--c\xC3\xA9-d<cd>, "},
      {Policy::Edited, {std::string(1 << 20, '\b') + "a\n"}, "a<a>, "},
      {Policy::Commands, {"A b\r\nB\nC\r\r\n", "\r\n"}, "A b<A b>B\nC\r<B\nC\r><>, "},
      {Policy::Commands,
       {"Q\r", "x\r", "\n", "123456789\r", "\n"},
       "Qx<Q\rx>123456789<12345678>, "}};
  for (const auto& [policy, arrivals, expected] : cases) {
    LineAssembler lines(policy, kLongest);
    std::string pieces;
    for (const std::string& arrival : arrivals) pieces += Pieces(lines, arrival);
    EXPECT_EQ(pieces + ", " + lines.Line(), expected);
  }
}

TEST(LineAssembler, LinesMayBeCutAnywhere) {
  const std::tuple<Policy, std::string, std::string> cases[] = {
      {Policy::Lines, "one\r\ntwo\n\nthree\r" + std::string(1, '\0') + "\r\rlonger than 8\r\nx",
       "<one><two><><three><><><longer t>"},
      {Policy::Commands, "one\r\n\r\n\rtwo\n\r\r\n", "<one><><\rtwo\n\r>"}};
  for (const auto& [policy, stream, expected] : cases) {
    for (std::size_t at = 0; at <= stream.size(); ++at) {
      LineAssembler lines(policy, kLongest);
      std::string complete;
      for (const std::string& arrival : {stream.substr(0, at), stream.substr(at)}) {
        lines.Feed(arrival);
        while (const auto piece = lines.Next()) {
          if (piece->complete) complete += "<" + piece->text + ">";
        }
      }
      EXPECT_EQ(complete, expected) << at;
    }
  }
}

TEST(LineAssembler, AnotherConnectionKeepsTheLineOnly) {
  LineAssembler lines(Policy::Lines, kLongest);
  lines.Feed("ab\rcd");
  lines.Next();
  lines.Next();
  lines.SetLine("put back");
  lines.Restart();
  EXPECT_FALSE(lines.Next());
  EXPECT_EQ(Pieces(lines, "\n"), "<put back>");
}

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
