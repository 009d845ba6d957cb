#include "platform/posix/PosixLoop.h"

#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>
#include <utility>

namespace orvanto::posix {
namespace {

using std::chrono::milliseconds;

// Of posted work, between two looks at the descriptors.
constexpr auto kSlice = std::chrono::microseconds(100);
constexpr int kReadyAtOnce = 64;

static_assert(EPOLLIN == POLLIN && EPOLLOUT == POLLOUT && EPOLLERR == POLLERR &&
              EPOLLHUP == POLLHUP);

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
  bool enabled = false;
  decltype(timers_)::iterator place{};  // while it is enabled
};

class PosixLoop::PosixTimer : public Timer {
 public:
  PosixTimer(PosixLoop& loop, std::function<void()> handler) : loop_(loop) {
    entry_->handler = std::move(handler);
  }
  ~PosixTimer() override { Stop(); }

  void Start(milliseconds interval) override {
    Stop();
    entry_->interval = std::clamp(interval, milliseconds(1), kLongest);
    entry_->enabled = true;
    entry_->place = loop_.timers_.emplace(Clock::now() + entry_->interval, entry_);
  }
  void Stop() override {
    if (std::exchange(entry_->enabled, false)) loop_.timers_.erase(entry_->place);
  }
  bool Enabled() const override { return entry_->enabled; }

 private:
  PosixLoop& loop_;
  const std::shared_ptr<TimerEntry> entry_ = std::make_shared<TimerEntry>();
};

struct PosixLoop::WatchEntry : std::enable_shared_from_this<WatchEntry> {
  WatchEntry(int watched, std::function<void(short)> ready)
      : fd(watched), handler(std::move(ready)) {}

  const int fd;
  const std::function<void(short)> handler;
  short events = 0;  // 0 once the watch has ended, too
};

class PosixLoop::PosixWatch : public Watch {
 public:
  PosixWatch(PosixLoop& loop, std::shared_ptr<WatchEntry> entry)
      : loop_(loop), entry_(std::move(entry)) {}
  ~PosixWatch() override { SetEvents(0); }

  void SetEvents(short events) override { loop_.SetEvents(*entry_, events); }

 private:
  PosixLoop& loop_;
  const std::shared_ptr<WatchEntry> entry_;
};

PosixLoop::PosixLoop()
    : epoll_(::epoll_create1(EPOLL_CLOEXEC)),
      alarm_(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {
  epoll_event wanted{.events = EPOLLIN, .data = {.ptr = nullptr}};
  if (!epoll_ || !alarm_ || ::epoll_ctl(epoll_.Get(), EPOLL_CTL_ADD, alarm_.Get(), &wanted) != 0) {
    throw std::system_error(errno, std::generic_category(), "event loop");
  }
}

PosixLoop::~PosixLoop() {
  work_.Clear();  // it may own timers and watches
  signalWatch_.reset();
  if (signalFd_) ::sigprocmask(SIG_SETMASK, &signalsBefore_, nullptr);
  assert(timers_.empty() && unwatchable_.empty());
}

std::unique_ptr<Timer> PosixLoop::NewTimer(std::function<void()> handler) {
  return std::make_unique<PosixTimer>(*this, std::move(handler));
}

std::unique_ptr<PosixLoop::Watch> PosixLoop::WatchFd(int fd, short events,
                                                     std::function<void(short)> handler) {
  auto watch =
      std::make_unique<PosixWatch>(*this, std::make_shared<WatchEntry>(fd, std::move(handler)));
  watch->SetEvents(events);
  return watch;
}

// In a pause the descriptor is out of the system's list, which would report a hang-up all the same.
void PosixLoop::SetEvents(WatchEntry& entry, short events) {
  if (events == entry.events) return;
  const int operation = entry.events == 0 ? EPOLL_CTL_ADD
                        : events == 0     ? EPOLL_CTL_DEL
                                          : EPOLL_CTL_MOD;
  entry.events = events;
  epoll_event wanted{.events = static_cast<std::uint32_t>(events), .data = {.ptr = &entry}};
  if (::epoll_ctl(epoll_.Get(), operation, entry.fd, &wanted) == 0) return;
  assert(errno != EEXIST);
  std::erase(unwatchable_, entry.shared_from_this());
  if (events != 0) unwatchable_.push_back(entry.shared_from_this());
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
  // Long work calls this for each of its steps, which may be shorter than a look.
  LookByTheClock();
  RunDueTimers();
  // What is posted from here on waits for the next time. Re-entered calls take from the front.
  for (std::size_t left = work_.Size(); left > 0 && !work_.Empty(); --left) RunFirst();
}

void PosixLoop::Round() {
  if (work_.Empty()) {
    Look(true);
  } else {
    LookByTheClock();
  }
  RunDueTimers();
  RunPosted();
}

void PosixLoop::LookByTheClock() {
  const Clock::time_point now = Clock::now();
  if (now - lookedAt_ < kSlice) return;
  lookedAt_ = now;
  Look(false);
}

// The alarm is a timer descriptor that becomes readable when the next timer is due. It is set only
// when that time changes, which costs a busy loop less than a time-out for each poll, and it has no
// slack: poll rounds its time-outs up to the next millisecond.
void PosixLoop::SetAlarm() {
  const auto due = timers_.empty() ? Clock::time_point() : timers_.begin()->first;
  if (due == alarmAt_) return;
  alarmAt_ = due;
  const std::chrono::nanoseconds at = due.time_since_epoch();
  itimerspec times{};  // zero: silent
  times.it_value.tv_sec = static_cast<time_t>(at.count() / 1'000'000'000);
  times.it_value.tv_nsec = static_cast<long>(at.count() % 1'000'000'000);
  ::timerfd_settime(alarm_.Get(), TFD_TIMER_ABSTIME, &times, nullptr);
}

// Waits, when asked to, for a descriptor or until a timer is due; calls the ready descriptors.
void PosixLoop::Look(bool wait) {
  if (wait) SetAlarm();
  std::array<epoll_event, kReadyAtOnce> reported;
  const int count = ::epoll_wait(epoll_.Get(), reported.data(), kReadyAtOnce,
                                 wait && unwatchable_.empty() ? -1 : 0);
  // Handlers may end watches, begin others and re-enter, so the ready ones are noted first.
  auto ready = std::exchange(ready_, {});
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = reported[static_cast<std::size_t>(i)];
    if (event.data.ptr == nullptr) continue;  // the alarm
    ready.emplace_back(static_cast<WatchEntry*>(event.data.ptr)->shared_from_this(),
                       static_cast<short>(event.events));
  }
  for (const auto& entry : unwatchable_) ready.emplace_back(entry, entry->events);
  const unsigned look = ++looks_;
  for (const auto& [watch, events] : ready) {
    if (look != looks_) break;  // one inside a handler: the rest have come there, or come next
    const short wanted = static_cast<short>(events & (watch->events | POLLERR | POLLHUP));
    if (watch->events != 0 && wanted != 0) Guarded(watch->handler, wanted);
  }
  ready.clear();
  ready_ = std::move(ready);
}

void PosixLoop::RunDueTimers() {
  if (timers_.empty()) return;
  // Each timer comes once in a round: its next time lies after this moment.
  const Clock::time_point begin = Clock::now();
  while (!timers_.empty() && timers_.begin()->first <= begin) {
    auto node = timers_.extract(timers_.begin());
    const std::shared_ptr<TimerEntry> entry = node.mapped();
    // Missed periods collapse, and the timer keeps its rhythm.
    const auto missed = (Clock::now() - node.key()) / entry->interval;
    node.key() += (missed + 1) * entry->interval;
    entry->place = timers_.insert(std::move(node));
    Guarded(entry->handler);
  }
}

void PosixLoop::RunFirst() {
  work_.RunFirst([](const auto& handler) { Guarded(handler); });
}

void PosixLoop::RunPosted() {
  if (work_.Empty()) return;
  const Clock::time_point end = Clock::now() + kSlice;
  do {
    RunFirst();
  } while (!work_.Empty() && !quit_ && Clock::now() < end);
}

}  // namespace orvanto::posix
