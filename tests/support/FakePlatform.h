// A platform of fakes. Time stands still until a test moves it; nothing waits, and what would leave
// the program is written down.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/EventLoop.h"
#include "platform/Platform.h"
#include "platform/WorkQueue.h"
#include "platform/forms/forms.h"
#include "tests/support/FakeServices.h"
#include "tests/support/FakeSockets.h"
#include "tests/support/MemoryRegistry.h"

namespace orvanto {

// A clock whose local time is UTC.
class FakeClock : public Clock {
 public:
  FakeClock() { Set(2026, 11, 21, 14, 4, 30); }

  DateTime Now() const override;
  std::int64_t UnixMilliseconds() const override { return now_; }
  std::string ShortDate(int year, int month, int day) const override;

  void Set(int year, int month, int day, int hour, int minute, int second, int millisecond = 0);
  void Move(std::int64_t milliseconds) { now_ += milliseconds; }
  std::string shortDateOrder = "d.m.y";  // 'd', 'm', 'y' stand for the numbers

 private:
  std::int64_t now_ = 0;
};

// A loop that a test advances by hand. Moving it moves the clock with it.
class FakeLoop : public EventLoop {
 public:
  explicit FakeLoop(FakeClock& clock) : clock_(clock) {}

  void Run() override { DoEvents(); }
  void Quit() override { quit_ = true; }
  bool QuitRequested() const override { return quit_; }
  void DoEvents() override;
  void Post(std::function<void()> work) override { work_.Post(std::move(work)); }
  std::unique_ptr<Deferred> NewDeferred(std::function<void()> handler) override {
    return work_.NewDeferred(std::move(handler));
  }
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override;

  // Lets time pass, delivering each timer when it is due, or `lateness` milliseconds after that.
  void Advance(std::int64_t milliseconds);
  std::function<std::int64_t()> lateness;
  // The thread is busy: time passes and nothing is delivered. May be called from a handler.
  void Block(std::int64_t milliseconds) { Pass(milliseconds); }

  bool Held() const override { return held_ > 0; }

 protected:
  void BeginHold() override { ++held_; }
  void EndHold() override { --held_; }
  void Round() override;  // nobody waits: with nothing to do, time goes on to the next timer

 private:
  class FakeTimer;
  void Pass(std::int64_t milliseconds);
  bool DeliverNext(std::int64_t until);

  FakeClock& clock_;
  std::int64_t monotonic_ = 0;
  std::list<FakeTimer*> timers_;
  WorkQueue work_;
  int held_ = 0;
  bool quit_ = false;
};

// All of them, put together. Its end fails the test when a box it announced has not come, or when a
// key or a change of the registry is still open.
struct FakePlatform {
  ~FakePlatform();

  FakeClock clock;
  FakeLoop loop{clock};
  MemoryRegistry registry;
  FakeFiles files;
  Texts done;  // see Doer
  FakeShell shell{done};
  FakeSession session{done};
  FakeDesktop desktop{done};
  FakeKeyboard keyboard;
  FakeClipboard clipboard;
  FakeSound sound{done};
  FakeMessageBoxes messageBoxes;
  FakeFileDialogs fileDialogs;
  FakeTrayIcon trayIcon;
  FakeSocketHost sockets{loop};
  forms::HeadlessFormHost forms;
  Platform platform{loop,         clock,       registry, files,     shell,
                    session,      desktop,     keyboard, clipboard, sound,
                    messageBoxes, fileDialogs, trayIcon, sockets,   forms};
};

}  // namespace orvanto
