// A platform of fakes. Time stands still until a test moves it; nothing waits, and what would leave
// the program is written down.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/EventLoop.h"
#include "platform/FileDialogs.h"
#include "platform/Files.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Session.h"
#include "platform/Shell.h"
#include "platform/Sound.h"
#include "platform/TrayIcon.h"
#include "platform/forms.h"
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

  void Run() override;  // one pass over what is posted
  void Quit() override { quit_ = true; }
  bool QuitRequested() const override { return quit_; }
  void DoEvents() override;
  void Post(std::function<void()> work) override { posted_.push_back(std::move(work)); }
  std::unique_ptr<Timer> NewTimer(std::function<void()> handler) override;

  // Lets time pass, delivering each timer when it is due, or `lateness` milliseconds after that.
  void Advance(std::int64_t milliseconds);
  std::function<std::int64_t()> lateness;
  // The thread is busy: time passes and nothing is delivered. May be called from a handler.
  void Block(std::int64_t milliseconds);

 protected:
  void BeginHold() override { ++held_; }
  void EndHold() override { --held_; }

 private:
  class FakeTimer;
  void Pass(std::int64_t milliseconds);
  bool DeliverNext(std::int64_t until);

  FakeClock& clock_;
  std::int64_t monotonic_ = 0;
  std::list<FakeTimer*> timers_;
  std::deque<std::function<void()>> posted_;
  int held_ = 0;
  bool quit_ = false;
};

class FakeFiles : public Files {
 public:
  bool Exists(const std::string& path) const override;
  bool Append(const std::string& path, const std::string& bytes) override;

  std::map<std::string, std::string> contents;  // by path
};

// Shows nothing: answers from the list of what the test expects. A box that was not expected fails
// the test and takes the safe answer.
class FakeMessageBoxes : public MessageBoxes {
 public:
  Answer Show(const std::string& text, const std::string& title, Buttons buttons,
              BoxIcon icon) override;

  struct Expected {
    std::string text;
    Answer answer = Answer::Ok;
    std::function<void()> whileOpen = {};
  };
  std::deque<Expected> expected;
};

class FakeShell : public Shell {
 public:
  bool Execute(const ShellRequest& request) override {
    requests.push_back(request);
    return true;
  }
  bool Start(const std::string& commandLine, ShowCommand) override {
    started.push_back(commandLine);
    return true;
  }
  std::vector<ShellRequest> requests;
  std::vector<std::string> started;
};

// Answers with `chosen`; keeps what it was asked.
class FakeFileDialogs : public FileDialogs {
 public:
  std::optional<std::string> ChooseFile(const std::string& title,
                                        const std::vector<FileFilter>& filters,
                                        const std::string& folder) override {
    asked = title + "|" + folder;
    for (const FileFilter& filter : filters) asked += "|" + filter.name + "=" + filter.pattern;
    return chosen;
  }
  std::optional<std::string> chosen;
  std::string asked;
};

class FakeSession : public Session {
 public:
  bool End(std::uint32_t flags) override {
    ends.push_back(flags);
    return false;
  }
  std::vector<std::uint32_t> ends;
};

class FakeSound : public Sound {
 public:
  bool Play(const std::string& name) override {
    played.push_back(name);
    return true;
  }
  std::vector<std::string> played;
};

class FakeTrayIcon : public TrayIcon {
 public:
  void Add(const std::string& tip) override {
    added = true;
    shownTip = tip;
  }
  void Remove() override { added = false; }
  bool added = false;
  std::string shownTip;
};

// All of them, put together.
struct FakePlatform {
  FakeClock clock;
  FakeLoop loop{clock};
  MemoryRegistry registry;
  FakeFiles files;
  FakeShell shell;
  FakeSession session;
  FakeSound sound;
  FakeMessageBoxes messageBoxes;
  FakeFileDialogs fileDialogs;
  FakeTrayIcon trayIcon;
  forms::HeadlessFormHost forms;
  Platform platform{loop,  clock,        registry,    files,    shell, session,
                    sound, messageBoxes, fileDialogs, trayIcon, forms};
};

}  // namespace orvanto
