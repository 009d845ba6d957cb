// The system's modal message box.
#pragma once

#include <string>

namespace orvanto {

// Enter presses the first one, but No in NoUnlessYes, which has the buttons of YesNo.
enum class Buttons { Ok, OkCancel, YesNo, NoUnlessYes, RetryCancel };
enum class BoxIcon { None, Question, Critical };
enum class Answer { Ok, Cancel, Yes, No, Retry };

class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;

  // Returns when it has been answered. Everything else waits meanwhile (EventLoop::Hold). Where
  // nobody can answer, the safe answer is taken: Ok, Cancel or No.
  virtual Answer Show(const std::string& text, const std::string& title, Buttons buttons,
                      BoxIcon icon) = 0;
};

}  // namespace orvanto
