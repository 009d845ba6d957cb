// The scheduler's second: tells that it has passed, and at second 00 runs what is due. There is
// no queue and no catch-up: the tick at second 00 is the only look at its minute.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/Event.h"
#include "platform/EventLoop.h"

namespace orvanto {

class Sched;
class TaskExecution;
class TaskStore;

// Calls back once for every second of the wall clock while the thread is free: aligned to where the
// second begins, however late a timer comes, and never twice in a row for the same second. A second
// during which the thread was busy to its end is skipped. A clock that is set, forward or back, is
// followed at once.
class SecondTimer {
 public:
  SecondTimer(EventLoop& loop, const Clock& clock, std::function<void()> onSecond);

  void Start();  // the first call comes with the next second
  void Stop();
  bool Enabled() const { return timer_->Enabled(); }

 private:
  void OnTimer();
  void Arm();

  const Clock& clock_;
  std::function<void()> onSecond_;
  std::int64_t lastSecond_ = 0;
  std::unique_ptr<Timer> timer_;
};

class Scheduler {
 public:
  Scheduler(EventLoop& loop, const Clock& clock, TaskStore& store, Sched& sched,
            TaskExecution& execution);

  // One tick. It may re-enter: a script that a task runs lets other events through, and the second
  // 00 of the next minute among them is looked at like any other. Each minute is looked at once,
  // also when the clock is set back by up to a minute, and no task is started twice in it.
  void Tick();

  // For the main window: "Orvanto - 14:05".
  std::string Caption() const;

  // On every tick, before the minute is looked at.
  Event<> secondPassed;

  SecondTimer tmrSched;

 private:
  std::int64_t Minute() const;
  bool LookAtThisMinute();
  bool HasStartedLate(const std::string& task) const;
  void RunDueTasks();

  const Clock& clock_;
  TaskStore& store_;
  Sched& sched_;
  TaskExecution& execution_;
  // The minutes that were looked at last, the latest first, counted from 1970.
  std::array<std::int64_t, 2> lookedAt_{};
  // The tasks that a look at an earlier minute, coming late, has started in this one.
  struct LateStart {
    std::int64_t minute;
    std::string task;
  };
  std::vector<LateStart> lateStarts_;
};

}  // namespace orvanto
