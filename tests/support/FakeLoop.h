// A clock that stands still until a test moves it, and a loop that moves it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <limits>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>

#include "platform/Clock.h"
#include "platform/EventLoop.h"
#include "platform/WorkQueue.h"

namespace orvanto {

// A clock whose local time is UTC.
class FakeClock : public Clock {
 public:
  DateTime Now() const override {
    const std::time_t seconds = now_ / 1000;
    const std::tm& now = *std::gmtime(&seconds);
    return {now.tm_year + 1900, now.tm_mon + 1, now.tm_mday,    now.tm_hour,
            now.tm_min,         now.tm_sec,     now.tm_wday + 1};
  }
  std::int64_t UnixMilliseconds() const override { return now_; }
  std::string ShortDate(int year, int month, int day) const override {
    std::string text;
    for (const char c : shortDateOrder) {
      const int number = c == 'd' ? day : c == 'm' ? month : c == 'y' ? year : 0;
      text += number != 0 ? std::to_string(number) : std::string(1, c);
    }
    return text;
  }

  void Set(int year, int month, int day, int hour, int minute, int second, int millisecond = 0) {
    const std::chrono::sys_days date = std::chrono::year(year) / month / day;
    const auto days = date.time_since_epoch() / std::chrono::seconds(1);
    now_ = (days + (hour * 60 + minute) * 60 + second) * 1000LL + millisecond;
  }
  void Move(std::int64_t milliseconds) { now_ += milliseconds; }
  std::string shortDateOrder = "d.m.y";  // 'd', 'm', 'y' stand for the numbers

 private:
  std::int64_t now_ = 1'795'269'870'000;  // 21 November 2026, 14:04:30
};

// A loop that a test advances by hand. Moving it moves the clock with it.
class FakeLoop : public EventLoop {
 public:
  explicit FakeLoop(FakeClock& clock) : clock_(clock) {}

  void Run() override { DoEvents(); }
  void Quit() override { quit_ = true; }
  bool QuitRequested() const override { return quit_; }
  void DoEvents() override {
    if (held_ > 0) return;
    for (std::size_t left = work_.Size(); left > 0 && !work_.Empty(); --left) {
      work_.RunFirst([](const auto& work) { work(); });
    }
    while (DeliverNext(monotonic_)) {
    }
  }
  void Post(std::function<void()> work) override { work_.Post(std::move(work)); }
  std::unique_ptr<Deferred> NewDeferred(std::function<void()> handler) override {
    return work_.NewDeferred(std::move(handler));
  }
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override {
    return std::make_unique<FakeTimer>(*this, std::move(handler));
  }

  // Lets time pass, delivering each timer when it is due, or `lateness` milliseconds after that.
  void Advance(std::int64_t milliseconds) {
    const std::int64_t until = monotonic_ + milliseconds;
    DoEvents();
    while (monotonic_ < until && DeliverNext(until)) DoEvents();
    if (monotonic_ < until) Block(until - monotonic_);
  }
  std::function<std::int64_t()> lateness;
  // The thread is busy: time passes and nothing is delivered. May be called from a handler.
  void Block(std::int64_t milliseconds) {
    monotonic_ += milliseconds;
    clock_.Move(milliseconds);
  }

  bool Held() const override { return held_ > 0; }

 protected:
  void BeginHold() override { ++held_; }
  void EndHold() override { --held_; }
  // Nobody waits: with nothing to do, time goes on to the next timer.
  void Round() override {
    if (!work_.Empty()) return DoEvents();
    if (!DeliverNext(std::numeric_limits<std::int64_t>::max())) {
      throw std::logic_error("waiting for what can never come");
    }
  }

 private:
  struct FakeTimer : Timer {
    FakeTimer(FakeLoop& of, std::function<void()> work) : loop(of), handler(std::move(work)) {
      loop.timers_.push_back(this);
    }
    ~FakeTimer() override { loop.timers_.remove(this); }
    void Start(std::chrono::milliseconds every) override {
      interval = std::clamp(every, std::chrono::milliseconds(1), kLongest).count();
      deadline = loop.monotonic_ + interval;
      enabled = true;
    }
    void Stop() override { enabled = false; }
    bool Enabled() const override { return enabled; }

    FakeLoop& loop;
    const std::function<void()> handler;
    std::int64_t interval = 1, deadline = 0;
    bool enabled = false;
  };

  bool DeliverNext(std::int64_t until) {
    FakeTimer* next = nullptr;
    for (FakeTimer* timer : timers_) {
      if (!timer->enabled || timer->deadline > until) continue;
      if (next == nullptr || timer->deadline < next->deadline) next = timer;
    }
    if (next == nullptr) return false;
    if (next->deadline > monotonic_) Block(next->deadline - monotonic_);
    if (lateness) Block(lateness());
    next->deadline += ((monotonic_ - next->deadline) / next->interval + 1) * next->interval;
    next->handler();
    return true;
  }

  FakeClock& clock_;
  std::int64_t monotonic_ = 0;
  std::list<FakeTimer*> timers_;
  WorkQueue work_;
  int held_ = 0;
  bool quit_ = false;
};

}  // namespace orvanto
