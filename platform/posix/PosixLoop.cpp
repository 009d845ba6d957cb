#include "platform/posix/PosixLoop.h"

#include <sys/signalfd.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>
#include <utility>

namespace orvanto::posix {
namespace {

using std::chrono::milliseconds;

constexpr auto kLookInterval = std::chrono::microseconds(100);
constexpr std::size_t kPostedPerRound = 256;

template <typename Handler, typename... Arguments>
void Guarded(const Handler& handler, Arguments... arguments) {
  try {
    handler(arguments...);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "orvanto: an event handler failed: %s\n", error.what());
  } catch (...) {
    std::fprintf(stderr, "orvanto: an event handler failed\n");
  }
}

}  // namespace

struct PosixLoop::TimerEntry {
  std::function<void()> handler;
  Clock::duration interval{};
  Clock::time_point due{};
  bool enabled = false;
};

class PosixLoop::PosixTimer : public Timer {
 public:
  PosixTimer(PosixLoop& loop, std::shared_ptr<TimerEntry> entry)
      : loop_(loop), entry_(std::move(entry)) {}
  ~PosixTimer() override {
    entry_->enabled = false;
    std::erase(loop_.timers_, entry_);
  }

  void Start(milliseconds interval) override {
    entry_->interval = std::max(interval, milliseconds(1));
    entry_->due = Clock::now() + entry_->interval;
    entry_->enabled = true;
  }
  void Stop() override { entry_->enabled = false; }
  bool Enabled() const override { return entry_->enabled; }

 private:
  PosixLoop& loop_;
  const std::shared_ptr<TimerEntry> entry_;
};

struct PosixLoop::WatchEntry {
  int fd;  // -1 once the watch has ended
  short events;
  std::function<void(short)> handler;
};

class PosixLoop::PosixWatch : public Watch {
 public:
  PosixWatch(PosixLoop& loop, std::shared_ptr<WatchEntry> entry)
      : loop_(loop), entry_(std::move(entry)) {}
  ~PosixWatch() override {
    entry_->fd = -1;
    std::erase(loop_.watches_, entry_);
  }

  void SetEvents(short events) override { entry_->events = events; }

 private:
  PosixLoop& loop_;
  const std::shared_ptr<WatchEntry> entry_;
};

PosixLoop::PosixLoop() : alarm_(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
  if (!alarm_) throw std::system_error(errno, std::generic_category(), "timerfd_create");
}

PosixLoop::~PosixLoop() {
  // Work that was never run may own timers and watches, and what it owns may post.
  while (!posted_.empty()) std::exchange(posted_, {}).clear();
  signalWatch_.reset();
  if (signalFd_) ::sigprocmask(SIG_SETMASK, &signalsBefore_, nullptr);
  assert(timers_.empty() && watches_.empty());
}

std::unique_ptr<Timer> PosixLoop::NewTimer(std::function<void()> handler) {
  auto entry = std::make_shared<TimerEntry>();
  entry->handler = std::move(handler);
  timers_.push_back(entry);
  return std::make_unique<PosixTimer>(*this, std::move(entry));
}

std::unique_ptr<PosixLoop::Watch> PosixLoop::WatchFd(int fd, short events,
                                                     std::function<void(short)> handler) {
  auto entry = std::make_shared<WatchEntry>(WatchEntry{fd, events, std::move(handler)});
  watches_.push_back(entry);
  return std::make_unique<PosixWatch>(*this, std::move(entry));
}

void PosixLoop::OnSignals(std::initializer_list<int> signals, std::function<void(int)> handler) {
  assert(!signalFd_);
  sigset_t set;
  ::sigemptyset(&set);
  for (const int signal : signals) {
    struct sigaction before;
    const bool ignored = ::sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
    if (!ignored) ::sigaddset(&set, signal);
  }
  signalFd_ = Descriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
  // Without the descriptor the signals keep their usual effect, which ends the program too.
  if (!signalFd_) return;
  ::sigprocmask(SIG_BLOCK, &set, &signalsBefore_);
  signalHandler_ = std::move(handler);
  signalWatch_ = WatchFd(signalFd_.Get(), POLLIN, [this](short) { DeliverSignals(); });
}

void PosixLoop::DeliverSignals() {
  if (holds_ > 0) return;
  signalfd_siginfo info;
  while (::read(signalFd_.Get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
    Guarded(signalHandler_, static_cast<int>(info.ssi_signo));
  }
}

void PosixLoop::Run() {
  assert(holds_ == 0);
  while (!quit_) Round();
}

void PosixLoop::DoEvents() {
  if (holds_ != 0) return;
  // Long work calls this for each of its steps, which may be shorter than one look at the
  // descriptors.
  if (const auto now = Clock::now(); now - lastLook_ >= kLookInterval) {
    lastLook_ = now;
    Poll(false);
  }
  RunDueTimers();
  RunPosted();
}

void PosixLoop::Post(std::function<void()> work) { posted_.push_back(std::move(work)); }

void PosixLoop::Round() {
  Poll(posted_.empty());
  RunDueTimers();
  RunPosted();
}

std::shared_ptr<PosixLoop::TimerEntry> PosixLoop::Earliest() const {
  const std::shared_ptr<TimerEntry>* earliest = nullptr;
  for (const auto& entry : timers_) {
    if (entry->enabled && (earliest == nullptr || entry->due < (*earliest)->due)) {
      earliest = &entry;
    }
  }
  return earliest != nullptr ? *earliest : nullptr;
}

// The alarm is a timer descriptor that becomes readable when the next timer is due. It is set only
// when that time changes, which costs a busy loop less than a time-out for each poll, and it has no
// slack: poll rounds its time-outs up to the next millisecond.
void PosixLoop::SetAlarm() {
  const auto earliest = Earliest();
  const auto due = earliest ? earliest->due : Clock::time_point();
  if (due == alarmAt_) return;
  alarmAt_ = due;
  const std::chrono::nanoseconds at = due.time_since_epoch();
  itimerspec times{};  // zero: silent
  times.it_value.tv_sec = static_cast<time_t>(at.count() / 1'000'000'000);
  times.it_value.tv_nsec = static_cast<long>(at.count() % 1'000'000'000);
  ::timerfd_settime(alarm_.Get(), TFD_TIMER_ABSTIME, &times, nullptr);
}

// Waits, when asked to, for a descriptor or until a timer is due; calls the ready descriptors.
void PosixLoop::Poll(bool wait) {
  polled_.clear();
  for (const auto& watch : watches_) {
    polled_.push_back({watch->events != 0 ? watch->fd : -1, watch->events, 0});
  }
  if (wait) {
    SetAlarm();
    polled_.push_back({alarm_.Get(), POLLIN, 0});
  }
  if (::poll(polled_.data(), polled_.size(), wait ? -1 : 0) <= 0) return;

  // Handlers may end watches, begin others and re-enter, so the ready ones are noted first.
  auto ready = std::exchange(ready_, {});
  for (std::size_t i = 0; i < watches_.size(); ++i) {
    if (polled_[i].revents != 0) ready.emplace_back(watches_[i], polled_[i].revents);
  }
  for (const auto& [watch, events] : ready) {
    const short wanted =
        static_cast<short>(events & (watch->events | POLLERR | POLLHUP | POLLNVAL));
    if (watch->fd >= 0 && watch->events != 0 && wanted != 0) Guarded(watch->handler, wanted);
  }
  ready.clear();
  ready_ = std::move(ready);
}

void PosixLoop::RunDueTimers() {
  if (timers_.empty()) return;
  // Each timer comes once in a round: its next time lies after this moment.
  const Clock::time_point begin = Clock::now();
  for (auto entry = Earliest(); entry && entry->due <= begin; entry = Earliest()) {
    // Missed periods collapse, and the timer keeps its rhythm.
    const auto missed = (Clock::now() - entry->due) / entry->interval;
    entry->due += (missed + 1) * entry->interval;
    Guarded(entry->handler);
  }
}

void PosixLoop::RunPosted() {
  // What is posted from here on waits for the next round. Re-entered rounds take from the front.
  for (std::size_t left = std::min(posted_.size(), kPostedPerRound); left > 0 && !posted_.empty();
       --left) {
    const std::function<void()> work = std::move(posted_.front());
    posted_.pop_front();
    Guarded(work);
  }
}

}  // namespace orvanto::posix
