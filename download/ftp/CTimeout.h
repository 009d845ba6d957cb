// Counts the seconds in which nothing has come.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/EventLoop.h"

namespace orvanto {

class CTimeout {
 public:
  // The loop must outlive it.
  explicit CTimeout(EventLoop& loop) : timer_(loop.NewTimer([this] { Tick(); })) {}

  std::int32_t TimeoutValue = 30;  // seconds; less than one counts as one

  // Goes on counting from where the count stands.
  void StartTimer() { timer_->Start(std::chrono::seconds(1)); }
  void StopTimer() { timer_->Stop(); }
  void Reset() { count_ = 0; }

  // The count has reached its value; the timer has stopped. Its handler may start it again.
  std::function<void()> Timeout;

 private:
  void Tick() {
    if (++count_ < TimeoutValue) return;
    StopTimer();
    if (Timeout) Timeout();
  }

  std::int32_t count_ = 0;
  const std::unique_ptr<Timer> timer_;
};

}  // namespace orvanto
