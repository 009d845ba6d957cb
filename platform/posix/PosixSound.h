// Playing sound files by a player program.
#pragma once

#include "platform/Sound.h"

namespace orvanto::posix {

// Uses the first of paplay, pw-play and aplay that is on PATH. There are no system sounds: a name
// that is no file plays nothing. A missing player is told on the error output, once.
class PosixSound : public Sound {
 public:
  bool Play(const std::string& name) override;
  void Beep() override;  // of the terminal, if there is one

 private:
  bool said_ = false;
};

}  // namespace orvanto::posix
