#include "core/Scheduler.h"

#include <algorithm>
#include <utility>

#include "core/Convert.h"
#include "core/ProgramTitle.h"
#include "core/Sched.h"
#include "core/TaskExecution.h"
#include "core/modTaskOperations.h"

namespace orvanto {
namespace {

constexpr std::int64_t kMillisecondsPerSecond = 1000;
constexpr std::int64_t kSecondsPerMinute = 60;

std::int64_t SecondOf(const Clock& clock) {
  return clock.UnixMilliseconds() / kMillisecondsPerSecond;
}

}  // namespace

SecondTimer::SecondTimer(EventLoop& loop, const Clock& clock, std::function<void()> onSecond)
    : clock_(clock), onSecond_(std::move(onSecond)), timer_(loop.NewTimer([this] { OnTimer(); })) {}

void SecondTimer::Start() {
  lastSecond_ = SecondOf(clock_);
  Arm();
}

void SecondTimer::Stop() { timer_->Stop(); }

void SecondTimer::Arm() {
  const std::int64_t into = clock_.UnixMilliseconds() % kMillisecondsPerSecond;
  timer_->Start(std::chrono::milliseconds(kMillisecondsPerSecond - into));
}

void SecondTimer::OnTimer() {
  const std::int64_t second = SecondOf(clock_);
  // Armed before the call, which may take long, let this timer in again, stop it or throw.
  Arm();
  if (second == std::exchange(lastSecond_, second)) return;
  onSecond_();
}

Scheduler::Scheduler(EventLoop& loop, const Clock& clock, TaskStore& store, Sched& sched,
                     TaskExecution& execution)
    : tmrSched(loop, clock, [this] { Tick(); }),
      clock_(clock),
      store_(store),
      sched_(sched),
      execution_(execution) {}

std::string Scheduler::Caption() const {
  const DateTime now = clock_.Now();
  return std::string(kProgramTitle) + " - " + TwoDigits(now.hour) + ":" + TwoDigits(now.minute);
}

void Scheduler::Tick() {
  secondPassed.Raise();
  if (clock_.Now().second == 0 && LookAtThisMinute()) RunDueTasks();
}

std::int64_t Scheduler::Minute() const { return SecondOf(clock_) / kSecondsPerMinute; }

// False when it has been looked at: by a tick that came late, or before the clock was set back. By
// up to a minute, that leads to the last minute looked at or to the one before.
bool Scheduler::LookAtThisMinute() {
  const std::int64_t minute = Minute();
  std::erase_if(lateStarts_, [&](const LateStart& late) { return late.minute != minute; });
  if (std::find(lookedAt_.begin(), lookedAt_.end(), minute) != lookedAt_.end()) return false;
  lookedAt_ = {minute, lookedAt_[0]};
  return true;
}

bool Scheduler::HasStartedLate(const std::string& task) const {
  return std::any_of(lateStarts_.begin(), lateStarts_.end(), [&](const LateStart& late) {
    return late.task == task && late.minute == Minute();
  });
}

void Scheduler::RunDueTasks() {
  const std::int64_t minute = lookedAt_[0];
  for (const std::int16_t slot : store_.Slots()) {
    // A task may take long (a message box left open, a script). The program may be told to end
    // meanwhile, or a tick of the next minute, let in by the task, have run what is due by now.
    if (!tmrSched.Enabled() || lookedAt_[0] != minute) return;
    store_.LoadTask(slot);
    const std::string name = store_.CurrentTask.name;
    if (!sched_.IsDue(store_.CurrentTask) || HasStartedLate(name)) continue;
    if (const std::int64_t now = Minute(); now != minute) lateStarts_.push_back({now, name});
    try {
      execution_.RunTask(slot);
    } catch (const std::exception&) {
      // A task that fails is its own loss: those after it are still due.
    }
  }
}

}  // namespace orvanto
