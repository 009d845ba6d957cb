// What the telnet server does in more than one way. A connection keeps the policy that it began
// with.
#pragma once

#include <chrono>
#include <optional>

#include "core/ProgramSettings.h"
#include "platform/net/LineAssembler.h"

namespace orvanto {

// As it stands it is the default: as open as the program has always been, to a client that sends
// every key at once.
struct TelnetPolicy {
  LineAssembler::Policy lines = LineAssembler::Policy::Keys;
  // Offers to echo, and echoes to whoever takes the offer alone: the others do it themselves.
  bool offersCharacterMode = false;
  // A line that could not be carried out, and what a client leaves without Enter, is the beginning
  // of the next one.
  bool keepsLine = true;
  // Whoever is chatted with is at the menu afterwards, even if he has not logged in.
  bool chatLetsIn = true;
  // For everybody, after the first wrong password; doubled by the second and by the third.
  std::chrono::seconds afterWrongPassword{0};
  std::optional<std::chrono::minutes> longestSilence;
  // Without one nobody is let in from another computer.
  bool needsPassword = false;
};

TelnetPolicy TelnetPolicyFor(const RemoteSettings& remote);

}  // namespace orvanto
