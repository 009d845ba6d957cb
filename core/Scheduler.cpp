#include "core/Scheduler.h"

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/TaskExecution.h"
#include "core/modTaskOperations.h"

namespace orvanto {
namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;
constexpr std::int64_t kStepBackWaitedFor = 60;  // seconds

}  // namespace

SecondTimer::SecondTimer(EventLoop& loop, const Clock& clock, std::function<void()> onSecond)
    : clock_(clock), onSecond_(std::move(onSecond)), timer_(loop.NewTimer([this] { OnTimer(); })) {}

void SecondTimer::Start() {
  lastSecond_ = clock_.UnixMilliseconds() / kMillisecondsPerSecond;
  Arm();
}

void SecondTimer::Stop() { timer_->Stop(); }

void SecondTimer::SkipThisSecond() {
  lastSecond_ = clock_.UnixMilliseconds() / kMillisecondsPerSecond;
}

void SecondTimer::Arm() {
  const std::int64_t into = clock_.UnixMilliseconds() % kMillisecondsPerSecond;
  timer_->Start(std::chrono::milliseconds(kMillisecondsPerSecond - into));
}

void SecondTimer::OnTimer() {
  const std::int64_t second = clock_.UnixMilliseconds() / kMillisecondsPerSecond;
  const bool seen = second <= lastSecond_ && lastSecond_ - second <= kStepBackWaitedFor;
  // Armed before the call, which may take long, let this timer in again, stop it or throw.
  Arm();
  if (seen) return;
  lastSecond_ = second;
  onSecond_();
}

Scheduler::Scheduler(EventLoop& loop, const Clock& clock, TaskStore& store, Sched& sched,
                     TaskExecution& execution)
    : tmrSched(loop, clock, [this] { Tick(); }),
      clock_(clock),
      store_(store),
      sched_(sched),
      execution_(execution) {}

void Scheduler::Tick() {
  const DateTime now = clock_.Now();
  if (onCaption) onCaption("Orvanto - " + TwoDigits(now.hour) + ":" + TwoDigits(now.minute));
  if (onSecond) onSecond();
  if (clock_.Now().second != 0) return;
  tmrSched.SkipThisSecond();
  RunDueTasks();
}

void Scheduler::RunDueTasks() {
  const std::int16_t count = store_.NoTasks();
  for (int i = 1; i <= count; ++i) {
    // The program may be told to end while a task runs (a message box left open).
    if (!tmrSched.Enabled()) return;
    const auto slot = static_cast<std::int16_t>(i);
    store_.LoadTask(slot);
    if (!sched_.IsDue(store_.CurrentTask)) continue;
    try {
      execution_.RunTask(slot);
    } catch (const std::exception&) {
      // A task that fails is its own loss: those behind it are still due.
    }
  }
}

}  // namespace orvanto
