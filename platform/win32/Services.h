// The small services of the system: each is a call or two.
#pragma once

#include <windows.h>

#include <functional>

#include "platform/Clock.h"
#include "platform/EventLoop.h"
#include "platform/MessageBoxes.h"
#include "platform/Shell.h"
#include "platform/Sound.h"

namespace orvanto::win32 {

class Win32Clock : public Clock {
 public:
  DateTime Now() const override;
  std::int64_t UnixMilliseconds() const override;
  std::string ShortDate(int year, int month, int day) const override;
};

class Win32Shell : public Shell {
 public:
  // `mainWindow` answers the owner of what the shell shows, or null.
  Win32Shell(EventLoop& loop, std::function<HWND()> mainWindow);
  bool Execute(const ShellRequest& request) override;
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override;

 private:
  EventLoop& loop_;
  std::function<HWND()> mainWindow_;
};

class Win32Sound : public Sound {
 public:
  bool Play(const std::string& name) override;
  void Beep() override;
};

class Win32MessageBoxes : public MessageBoxes {
 public:
  explicit Win32MessageBoxes(EventLoop& loop) : loop_(loop) {}
  Answer Show(const std::string& text, const std::string& title, Buttons buttons,
              BoxIcon icon) override;

 private:
  EventLoop& loop_;
};

}  // namespace orvanto::win32
