#include <gtest/gtest.h>

#include <map>
#include <sstream>
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
      {Policy::Lines, {"a\r\nb\n\nc\r" + nul, "\r", "\r", "\nd"}, "a<a>b<b><>c<c><><>d, d"},
      {Policy::Edited, {"ab\b", "\x7F\x7F", "c\xC3\xA9\bd\n"}, "ab--c\xC3\xA9-d<cd>, "},
      {Policy::Edited, {std::string(1 << 20, '\b') + "a\n"}, "a<a>, "},
      {Policy::Commands, {"A b\r\nB\nC\r\r\n", "\r\n"}, "A b<A b>B\nC\r<B\nC\r><>, "},
      {Policy::Commands,
       {"Q\r", "x\r", "\n", "1234", "56789\r", "\n"},
       "Qx<Q\rx>123456789<12345678>, "}};
  for (const auto& [policy, arrivals, expected] : cases) {
    LineAssembler lines(policy, kLongest);
    std::string pieces;
    for (const std::string& arrival : arrivals) pieces += Pieces(lines, arrival);
    EXPECT_EQ(pieces + ", " + lines.Line(), expected);
    lines.Feed("left");
    lines.Restart();
    EXPECT_FALSE(lines.Next()) << "another connection";
  }
}

// Telnet commands in words between blanks: "do1 will3 sb31", a number is a byte, others are text.
std::string Bytes(const std::string& words) {
  const std::map<std::string, int> codes{{"will", 251}, {"wont", 252}, {"do", 253}, {"dont", 254}};
  std::string bytes;
  std::istringstream each(words);
  for (std::string word; each >> word;) {
    const std::size_t digits = word.find_first_of("0123456789");
    const auto code = codes.find(word.substr(0, digits));
    if (code != codes.end()) bytes += {'\xFF', static_cast<char>(code->second)};
    bytes += digits == word.npos
                 ? word
                 : std::string(1, static_cast<char>(std::stoi(word.substr(digits))));
  }
  return bytes;
}

// Whether an echo is offered; a stream, wherever it is cut, its text, the answers, who echoes.
TEST(TelnetProtocol, TakesTelnetOutOfTheText) {
  const std::tuple<bool, const char*, const char*, const char*, bool> cases[] = {
      {false, "do24 will31 will1 wont31 dont24", "", "wont24 dont31 dont1", false},
      // What holds already is not agreed to again.
      {false, "do1 do1 do3 will3 will3", "", "will1 will3 do3", true},
      {false, "do1 dont1 dont1 do1 will3 wont3 wont3", "", "will1 wont1 will1 do3 dont3", true},
      {false, "do6 do6", "", "will6 will6", false},
      {false, "a 255 255 b 255 244 c 255 241 d", "a 255 bcd", "", false},
      {false, "a 255 250 31 48 255 255 49 255 240 b", "ab", "", false},
      {true, "do1 do3 do1", "", "", true},
      {true, "do1 dont1", "", "wont1", false},
      {true, "dont1 do1", "", "will1", true}};
  for (const auto& [offers, stream, text, answers, echoes] : cases) {
    const std::string bytes = Bytes(stream);
    for (std::size_t at = 0; at <= bytes.size(); ++at) {
      TelnetProtocol protocol;
      EXPECT_TRUE(!offers || protocol.OfferCharacterMode() == Bytes("will1 will3"));
      std::string answered;
      std::string left = protocol.Receive(bytes.substr(0, at), answered);
      left += protocol.Receive(bytes.substr(at), answered);
      EXPECT_EQ(left + "|" + answered, Bytes(text) + "|" + Bytes(answers)) << at;
      EXPECT_EQ(protocol.Echoes(), echoes) << stream;
    }
  }
}

}  // namespace
}  // namespace orvanto
