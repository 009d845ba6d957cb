// The download window of a host that has none: its progress on the terminal.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "platform/Event.h"

namespace orvanto {

class Clock;
class Downloads;

class ConsoleDownloads {
 public:
  // Tells how downloads go: on a terminal in one line that is written again and again, elsewhere in
  // one now and then; failures go to `err`. One whose connection fails is stopped: nobody else can.
  // All must outlive this.
  ConsoleDownloads(Downloads& downloads, const Clock& clock, std::ostream& out, std::ostream& err,
                   bool terminal);
  ~ConsoleDownloads();

  // Whether all that has ended since is whole.
  bool AllWell() const { return allWell_; }

 private:
  void ShowProgress();
  void EndLine();

  Downloads& downloads_;
  const Clock& clock_;
  std::ostream& out_;
  std::ostream& err_;
  const bool terminal_;
  bool allWell_ = true;
  std::string stall_;
  std::size_t lineLength_ = 0;  // of the line that is still open
  std::int64_t shown_;          // when a line was written last
  Subscription ended_;
};

}  // namespace orvanto
