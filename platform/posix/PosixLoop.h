// The event loop of a POSIX host, on poll and a timer descriptor.
#pragma once

#include <poll.h>
#include <signal.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/posix/Descriptor.h"

namespace orvanto::posix {

// Each round handles every ready descriptor and every due timer once, then a bounded number of
// posted works, so none of the three can starve the others.
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
  // Looks at the descriptors at most every 100 microseconds.
  void DoEvents() override;
  void Post(std::function<void()> work) override;
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override;

  // Calls the handler from the loop, with what poll reported, as long as the descriptor is ready.
  // Re-entered events may have used the readiness up, so the descriptor should be non-blocking.
  std::unique_ptr<Watch> WatchFd(int fd, short events, std::function<void(short)> handler);

  // Hands these signals to the handler, from the loop, instead of their usual effect. Those that
  // are ignored, as in a program started by nohup, stay so. At most once for each loop; the usual
  // effect returns with the loop's end.
  void OnSignals(std::initializer_list<int> signals, std::function<void(int)> handler);
  // Hands over now what has come of them, and nothing else. Does nothing while the loop is held.
  void DeliverSignals();
  // Readable while such a signal waits to be handled; -1 without OnSignals. For blocking waits.
  int SignalFd() const { return signalFd_.Get(); }

 protected:
  void BeginHold() override { ++holds_; }
  void EndHold() override { --holds_; }

 private:
  using Clock = std::chrono::steady_clock;
  struct TimerEntry;
  struct WatchEntry;
  class PosixTimer;
  class PosixWatch;

  void Round();
  void SetAlarm();
  void Poll(bool wait);
  void RunDueTimers();
  void RunPosted();
  std::shared_ptr<TimerEntry> Earliest() const;

  std::vector<std::shared_ptr<TimerEntry>> timers_;
  std::vector<std::shared_ptr<WatchEntry>> watches_;
  std::vector<pollfd> polled_;                                        // kept for its memory
  std::vector<std::pair<std::shared_ptr<WatchEntry>, short>> ready_;  // empty; for its memory
  std::deque<std::function<void()>> posted_;
  const Descriptor alarm_;
  Clock::time_point alarmAt_;   // zero: it is not set
  Clock::time_point lastLook_;  // of DoEvents at the descriptors
  int holds_ = 0;
  bool quit_ = false;

  Descriptor signalFd_;
  sigset_t signalsBefore_{};
  std::function<void(int)> signalHandler_;
  std::unique_ptr<Watch> signalWatch_;
};

}  // namespace orvanto::posix
