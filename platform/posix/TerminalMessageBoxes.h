// Message boxes on the terminal.
#pragma once

#include <unistd.h>

#include <optional>

#include "platform/MessageBoxes.h"
#include "platform/posix/PosixLoop.h"

namespace orvanto::posix {

// Asks when both descriptors are terminals and this process may read from them. Otherwise the box
// is written as one paragraph and the safe answer taken, as it is at the end of the input and when
// a signal of the loop arrives; its handler has run when Show returns. Control characters of the
// text do not reach the terminal.
class TerminalMessageBoxes : public MessageBoxes {
 public:
  explicit TerminalMessageBoxes(PosixLoop& loop, int input = STDIN_FILENO,
                                int output = STDOUT_FILENO)
      : loop_(loop), input_(input), output_(output) {}

  Answer Show(const std::string& text, const std::string& title, Buttons buttons,
              BoxIcon icon) override;

  // Only writes it, as one paragraph: a text for which nobody waits.
  void Tell(const std::string& text, const std::string& title) const;

 private:
  Answer Ask(const std::string& text, const std::string& title, Buttons buttons) const;
  bool CanAsk() const;
  void Print(const std::string& text) const;
  std::optional<std::string> ReadLine() const;

  PosixLoop& loop_;
  const int input_;
  const int output_;
};

}  // namespace orvanto::posix
