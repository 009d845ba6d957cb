// The one thread of the program: timers, posted work and, on each host, its windows and sockets.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace orvanto {

// A repeating timer. Its handler is called from the loop, never from inside Start or Stop. Handlers
// may start, stop or restart their own timer; they may not destroy it. Periods missed while the
// thread was busy or held collapse into one call. Destroying a timer stops it.
class Timer {
 public:
  virtual ~Timer() = default;

  // (Re)starts: the first call comes one interval from now, then one each interval.
  // An interval below one millisecond is taken as one millisecond, one above the longest as that.
  static constexpr std::chrono::milliseconds kLongest{0x7FFFFFFF};  // 24 days
  virtual void Start(std::chrono::milliseconds interval) = 0;
  virtual void Stop() = 0;
  virtual bool Enabled() const = 0;
};

// Work that its owner posts again and again, without an allocation each time. Its handler is called
// from the loop, never from inside Post; it may post its own work anew and may not destroy it.
// Destroying it takes the work back.
class Deferred {
 public:
  virtual ~Deferred() = default;

  // Queues the work behind everything posted so far. Nothing happens when it is queued already.
  virtual void Post() = 0;
  virtual void Cancel() = 0;
};

// Everything runs on the thread that created the loop; nothing here may be called from another.
// An exception that leaves a handler is reported on the host's error output and goes no further.
class EventLoop {
 public:
  virtual ~EventLoop() = default;

  // Handles events until Quit has been called. Returns at once when it already was.
  virtual void Run() = 0;
  virtual void Quit() = 0;
  virtual bool QuitRequested() const = 0;

  // Handles what is pending now and returns; never waits. It re-enters: any handler may run inside.
  // What reached the system within the last 100 microseconds may come with the next call. Does
  // nothing while the loop is held.
  virtual void DoEvents() = 0;

  // Queues work to run from the loop, in order, after the caller has returned.
  virtual void Post(std::function<void()> work) = 0;

  // Not posted yet. The loop must outlive it.
  virtual std::unique_ptr<Deferred> NewDeferred(std::function<void()> handler) = 0;

  // The timer starts disabled. The loop must outlive it.
  virtual std::unique_ptr<Timer> NewTimer(std::function<void()> handler) = 0;

  // Handles events until `condition` holds; sleeps while there are none. The condition is asked at
  // first and after each round of events, and not any more once `owner`, whose members it may use,
  // has expired: the caller must not touch them either then. Inside a Hold, where nothing could
  // come, it ends at once, as timed out. Waits nest: an outer one cannot end before those begun
  // inside it. A limit is kept like a timer's interval.
  enum class Waited { Met, TimedOut, Quit, OwnerGone };
  Waited WaitFor(const std::weak_ptr<const void>& owner, const std::function<bool()>& condition,
                 std::optional<std::chrono::milliseconds> limit) {
    bool late = false;
    const std::unique_ptr<Timer> alarm = NewTimer([&late] { late = true; });
    if (limit) alarm->Start(*limit);
    for (;;) {
      if (owner.expired()) return Waited::OwnerGone;
      if (condition()) return Waited::Met;
      if (QuitRequested()) return Waited::Quit;
      if (late || Held()) return Waited::TimedOut;
      Round();
    }
  }

  // Blocking is deliberate: inside a Hold no timer, posted work or socket event is delivered, even
  // if something (a message box) pumps messages meanwhile. What falls due is kept and delivered
  // after the outermost Hold has ended. Holds nest.
  class Hold {
   public:
    explicit Hold(EventLoop& loop) : loop_(loop) { loop_.BeginHold(); }
    ~Hold() { loop_.EndHold(); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    EventLoop& loop_;
  };
  virtual bool Held() const = 0;

 protected:
  virtual void BeginHold() = 0;
  virtual void EndHold() = 0;
  // Handles some of what is pending; when that is nothing, waits for it.
  virtual void Round() = 0;
};

}  // namespace orvanto
