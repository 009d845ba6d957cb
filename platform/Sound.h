// Playing sounds.
#pragma once

#include <string>

namespace orvanto {

class Sound {
 public:
  virtual ~Sound() = default;

  // Starts playing and returns at once. The name is resolved as the system resolves a sound name: a
  // system sound first, then a file. False when nothing plays.
  virtual bool Play(const std::string& name) = 0;

  virtual void Beep() = 0;
};

}  // namespace orvanto
