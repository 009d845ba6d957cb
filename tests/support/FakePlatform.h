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

#include "platform/Clipboard.h"
#include "platform/Clock.h"
#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/FileDialogs.h"
#include "platform/Files.h"
#include "platform/Keyboard.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Session.h"
#include "platform/Shell.h"
#include "platform/Sound.h"
#include "platform/TcpSocket.h"
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
  void ListFolder(const std::string& folder, const EachEntry& each) override;
  bool Read(const std::string& path, std::string& text) override;
  std::string FromCodePage(const std::string& bytes) const override;  // takes it for Latin-1
  std::string Copy(const std::string& from, const std::string& to) override;
  std::string Remove(const std::string& path) override;
  bool Append(const std::string& path, const std::string& bytes) override;

  std::map<std::string, std::string> contents;  // by path
  // The entries of a folder ("C:\\x\\") in the order in which they are listed, folders with a
  // backslash at their end. They need not be in `contents`.
  std::map<std::string, std::vector<std::string>> listings;
  std::set<std::string> locked;  // can be neither removed nor copied

 private:
  std::map<std::string, std::string>::const_iterator Find(const std::string& path) const;
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
  bool answersAll = false;  // the safe answer to every box that is not expected
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
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override {
    waitedFor.push_back(commandLine + " " + std::to_string(static_cast<int>(show)));
    return true;
  }
  std::vector<std::string> waitedFor;
  std::vector<ShellRequest> requests;
  std::vector<std::string> started;
};

// Windows that a test puts there, from the top down; what is done to them is written down.
class FakeDesktop : public Desktop {
 public:
  std::vector<Window> TopLevelWindows() override;
  std::string Title(Window window) override { return titles.at(window); }
  void BringToTop(Window window) override { Log("top", window); }
  void Show(Window window, ShowCommand show) override {
    Log("show " + std::to_string(static_cast<int>(show)), window);
  }
  void Send(Window window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t) override {
    Log("send " + std::to_string(message) + " " + std::to_string(wParam), window);
  }
  void Log(const std::string& what, Window window) {
    log.push_back(what + " " + std::to_string(window));
  }
  std::vector<std::string> titles;  // a window is its number here
  std::vector<std::string> log;
};

class FakeKeyboard : public Keyboard {
 public:
  void Type(const std::vector<KeyEvent>& events) override { typed.push_back(events); }
  std::vector<std::vector<KeyEvent>> typed;
};

class FakeClipboard : public Clipboard {
 public:
  bool SetText(const std::string& newText) override {
    text = newText;
    return true;
  }
  std::string text;
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
  void ChangeResolution(int width, int height) override {
    sizes.push_back(std::to_string(width) + "x" + std::to_string(height));
  }
  void HangUp() override { ++hangUps; }
  std::vector<std::string> sizes;
  int hangUps = 0;
  std::vector<std::uint32_t> ends;
};

class FakeSound : public Sound {
 public:
  bool Play(const std::string& name) override {
    played.push_back(name);
    return true;
  }
  void Beep() override { ++beeps; }
  int beeps = 0;
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

// Sockets without a network. A test is the other end: it connects, sends chunks and reads what
// came.
class FakeSocketHost : public SocketHost {
 public:
  class Socket : public TcpSocket {
   public:
    explicit Socket(FakeSocketHost& host) : host_(host) {}
    ~Socket() override { host_.sockets.remove(this); }
    State GetState() const override { return state_; }
    bool Listen(std::uint16_t port) override;
    std::uint16_t LocalPort() const override { return port_; }
    bool Accept(RequestId) override;
    void Connect(const std::string&, std::uint16_t) override { state_ = State::Connecting; }
    void Send(std::string_view bytes) override {
      if (state_ == State::Connected) sent += bytes;
    }
    std::string GetData() override { return std::exchange(arrived_, {}); }
    void Close() override { state_ = State::Closed; }
    std::string RemoteAddress() const override {
      return state_ == State::Connected ? "10.1.2.3" : "";
    }
    std::string LocalAddress() const override { return "10.9.8.7"; }

    // The other end.
    bool PeerConnects();  // false where nothing listens
    void PeerSends(const std::string& chunk);
    void PeerCloses();
    std::string Sent() { return std::exchange(sent, {}); }
    std::string sent;

   private:
    FakeSocketHost& host_;
    State state_ = State::Closed;
    std::uint16_t port_ = 0;
    std::string arrived_;
  };

  std::unique_ptr<TcpSocket> NewSocket() override;
  std::list<Socket*> sockets;     // in the order of their making
  std::set<std::uint16_t> taken;  // ports on which nobody can listen
};

// All of them, put together.
struct FakePlatform {
  FakeClock clock;
  FakeLoop loop{clock};
  MemoryRegistry registry;
  FakeFiles files;
  FakeShell shell;
  FakeSession session;
  FakeDesktop desktop;
  FakeKeyboard keyboard;
  FakeClipboard clipboard;
  FakeSound sound;
  FakeMessageBoxes messageBoxes;
  FakeFileDialogs fileDialogs;
  FakeTrayIcon trayIcon;
  FakeSocketHost sockets;
  forms::HeadlessFormHost forms;
  Platform platform{loop,         clock,       registry, files,     shell,
                    session,      desktop,     keyboard, clipboard, sound,
                    messageBoxes, fileDialogs, trayIcon, sockets,   forms};
};

}  // namespace orvanto
