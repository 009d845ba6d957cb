// Playing sound files by a player program.
#pragma once

#include "platform/Sound.h"
#include "platform/posix/Notices.h"

namespace orvanto::posix {

// Uses the first of paplay, pw-play and aplay that is on PATH. There are no system sounds: a name
// that is no file plays nothing. A missing player, or terminal to beep on, is a notice.
class PosixSound : public Sound {
 public:
  explicit PosixSound(Notices& notices) : notices_(notices) {}
  bool Play(const std::string& name) override;
  void Beep() override;  // of the terminal, if there is one

 private:
  Notices& notices_;
};

}  // namespace orvanto::posix
