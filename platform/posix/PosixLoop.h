// The event loop of a Linux host, on epoll and a timer descriptor.
#pragma once

#include <poll.h>
#include <signal.h>

#include <chrono>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/WorkQueue.h"
#include "platform/posix/Descriptor.h"

namespace orvanto::posix {

// Each round handles ready descriptors and every due timer once, then posted work for a slice of
// time, so that none of the three can starve the others. While work is posted the descriptors are
// looked at by the clock, not once for each piece of work.
class PosixLoop : public EventLoop {
 public:
  // A watched descriptor; destroying it ends the watch, also from inside its own handler. The
  // descriptor stays its owner's, who ends the watch before closing it.
  class Watch {
   public:
    virtual ~Watch() = default;
    // POLLIN, POLLOUT, both, or 0 for a pause in which not even a hang-up is reported.
    virtual void SetEvents(short events) = 0;
  };

  // Throws std::system_error where the system has no descriptor left.
  PosixLoop();
  ~PosixLoop() override;
  PosixLoop(const PosixLoop&) = delete;
  PosixLoop& operator=(const PosixLoop&) = delete;

  void Run() override;
  void Quit() override { quit_ = true; }
  bool QuitRequested() const override { return quit_; }
  void DoEvents() override;
  void Post(std::function<void()> work) override { work_.Post(std::move(work)); }
  std::unique_ptr<Deferred> NewDeferred(std::function<void()> handler) override {
    return work_.NewDeferred(std::move(handler));
  }
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override;

  // Calls the handler from the loop, with what was reported in poll's terms, as long as the
  // descriptor is ready. One that the system cannot watch, a file say, counts as ready. One watch
  // for each descriptor: the former one ends before another begins.
  std::unique_ptr<Watch> WatchFd(int fd, short events, std::function<void(short)> handler);

  // Hands these signals to the handler, from the loop, instead of their usual effect. Those that
  // are ignored, as in a program started by nohup, stay so. At most once for each loop; the usual
  // effect returns with the loop's end.
  void OnSignals(std::initializer_list<int> signals, std::function<void(int)> handler);
  // Hands over now what has come of them, and nothing else. Does nothing while the loop is held.
  void DeliverSignals();
  // Readable while such a signal waits to be handled; -1 without OnSignals. For blocking waits.
  int SignalFd() const { return signalFd_.Get(); }

  bool Held() const override { return holds_ > 0; }

 protected:
  void BeginHold() override { ++holds_; }
  void EndHold() override { --holds_; }
  void Round() override;

 private:
  using Clock = std::chrono::steady_clock;
  struct TimerEntry;
  struct WatchEntry;
  class PosixTimer;
  class PosixWatch;

  void SetEvents(WatchEntry& entry, short events);
  void SetAlarm();
  void Look(bool wait);
  void LookByTheClock();
  void RunDueTimers();
  void RunFirst();
  void RunPosted();

  const Descriptor epoll_;
  const Descriptor alarm_;
  Clock::time_point alarmAt_;   // zero: it is not set
  Clock::time_point lookedAt_;  // at the descriptors, while there was other work
  std::vector<std::shared_ptr<WatchEntry>> unwatchable_;
  std::vector<std::pair<std::shared_ptr<WatchEntry>, short>> ready_;      // empty; for its memory
  std::multimap<Clock::time_point, std::shared_ptr<TimerEntry>> timers_;  // those that run, by due
  WorkQueue work_;
  unsigned looks_ = 0;
  int holds_ = 0;
  bool quit_ = false;

  Descriptor signalFd_;
  sigset_t signalsBefore_{};
  std::function<void(int)> signalHandler_;
  std::unique_ptr<Watch> signalWatch_;
};

}  // namespace orvanto::posix
