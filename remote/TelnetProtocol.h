// The telnet protocol itself, at the edge of the socket: takes commands and option negotiation out
// of what arrives, so that the session sees plain text only.
//
// We echo and suppress go-aheads, and agree to that when we are asked; everything else is refused.
// We offer nothing on our own: a client that speaks no telnet never sees a byte of it. A state that
// already holds is not answered, so two sides cannot talk for ever.
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

  // Text for the client: the byte 255 is doubled.
  static std::string Escape(std::string_view text);

 private:
  enum class State { Text, Command, Negotiation, Subnegotiation, SubnegotiationCommand };

  // True when the byte is text.
  bool Take(std::uint8_t byte, std::string& answers);
  void Negotiate(std::uint8_t option, std::string& answers);

  State state_ = State::Text;
  std::uint8_t verb_ = 0;
  std::array<bool, 256> ours_{};    // options that we do
  std::array<bool, 256> theirs_{};  // options that the client does
};

}  // namespace orvanto
