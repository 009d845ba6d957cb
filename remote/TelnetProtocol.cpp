#include "remote/TelnetProtocol.h"

#include <utility>

namespace orvanto {
namespace {

constexpr std::uint8_t kSubnegotiationEnd = 240;
constexpr std::uint8_t kSubnegotiation = 250;
constexpr std::uint8_t kWill = 251;
constexpr std::uint8_t kWont = 252;
constexpr std::uint8_t kDo = 253;
constexpr std::uint8_t kDont = 254;
constexpr std::uint8_t kCommand = 255;

constexpr std::uint8_t kSuppressGoAhead = 3;
constexpr std::uint8_t kTimingMark = 6;

void Answer(std::string& answers, std::uint8_t verb, std::uint8_t option) {
  answers += static_cast<char>(kCommand);
  answers += static_cast<char>(verb);
  answers += static_cast<char>(option);
}

}  // namespace

std::string TelnetProtocol::OfferCharacterMode() {
  std::string offer;
  for (const std::uint8_t option : {kEcho, kSuppressGoAhead}) {
    ours_[option] = Ours::Offered;
    Answer(offer, kWill, option);
  }
  return offer;
}

std::string TelnetProtocol::Receive(std::string_view chunk, std::string& answers) {
  std::string text;
  text.reserve(chunk.size());
  for (const char c : chunk) {
    if (Take(static_cast<std::uint8_t>(c), answers)) text += c;
  }
  return text;
}

bool TelnetProtocol::Take(std::uint8_t byte, std::string& answers) {
  switch (state_) {
    case State::Text:
      if (byte != kCommand) return true;
      state_ = State::Command;
      return false;
    case State::Command:
      if (byte >= kWill && byte <= kDont) {
        verb_ = byte;
        state_ = State::Negotiation;
        return false;
      }
      state_ = byte == kSubnegotiation ? State::Subnegotiation : State::Text;
      return byte == kCommand;
    case State::Negotiation:
      state_ = State::Text;
      Negotiate(byte, answers);
      return false;
    case State::Subnegotiation:
      // Thrown away byte by byte, so its length does not matter.
      if (byte == kCommand) state_ = State::SubnegotiationCommand;
      return false;
    case State::SubnegotiationCommand:
      state_ = byte == kSubnegotiationEnd ? State::Text : State::Subnegotiation;
      return false;
  }
  return false;
}

void TelnetProtocol::Negotiate(std::uint8_t option, std::string& answers) {
  const bool echo = option == kEcho;
  const bool goAhead = option == kSuppressGoAhead;
  switch (verb_) {
    case kDo:
      if (!echo && !goAhead && option != kTimingMark) {
        Answer(answers, kWont, option);
      } else if (std::exchange(ours_[option], Ours::Done) == Ours::Not) {
        Answer(answers, kWill, option);
      }
      // Asked for anew each time: everything before it has been handled.
      ours_[kTimingMark] = Ours::Not;
      break;
    case kDont:
      if (std::exchange(ours_[option], Ours::Not) == Ours::Done) Answer(answers, kWont, option);
      break;
    case kWill:
      if (!goAhead) {
        Answer(answers, kDont, option);
      } else if (!theirs_[option]) {
        theirs_[option] = true;
        Answer(answers, kDo, option);
      }
      break;
    case kWont:
      if (theirs_[option]) Answer(answers, kDont, option);
      theirs_[option] = false;
      break;
    default:
      break;
  }
}

std::string TelnetProtocol::Escape(std::string_view text) {
  if (text.find(static_cast<char>(kCommand)) == std::string::npos) return std::string(text);
  std::string escaped;
  escaped.reserve(text.size() + 1);
  for (const char c : text) {
    escaped += c;
    if (static_cast<std::uint8_t>(c) == kCommand) escaped += c;
  }
  return escaped;
}

}  // namespace orvanto
