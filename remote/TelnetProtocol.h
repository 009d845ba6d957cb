// The telnet protocol itself, at the edge of the socket: takes commands and option negotiation out
// of what arrives, so that the session sees plain text only.
//
// We echo and suppress go-aheads, and agree to that when we are asked; everything else is refused.
// We offer nothing unless we are told to: a client that speaks no telnet never sees a byte of it. A
// state that already holds is not answered, so two sides cannot talk for ever.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvanto {

class TelnetProtocol {
 public:
  // Forgets everything: a new connection.
  void Reset() { *this = TelnetProtocol(); }

  // One chunk as it arrived. Returns the text in it, and appends to `answers` what is to be sent at
  // once, as bytes. Commands may be split over chunks anywhere.
  std::string Receive(std::string_view chunk, std::string& answers);

  // Offers both, in bytes for the client. At the beginning of a connection.
  std::string OfferCharacterMode();
  // The client has taken our echo, and not given it back.
  bool Echoes() const { return ours_[kEcho] == Ours::Done; }

  // Text for the client: the byte 255 is doubled.
  static std::string Escape(std::string_view text);

 private:
  static constexpr std::uint8_t kEcho = 1;
  enum class Ours : std::uint8_t { Not, Offered, Done };
  enum class State { Text, Command, Negotiation, Subnegotiation, SubnegotiationCommand };

  // True when the byte is text.
  bool Take(std::uint8_t byte, std::string& answers);
  void Negotiate(std::uint8_t option, std::string& answers);

  State state_ = State::Text;
  std::uint8_t verb_ = 0;
  std::array<Ours, 256> ours_{};    // options of this side
  std::array<bool, 256> theirs_{};  // options that the client does
};

}  // namespace orvanto
