// The small services of the system: each is a call or two.
#pragma once

#include <windows.h>

#include <functional>

#include "platform/Clock.h"
#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Shell.h"
#include "platform/Sound.h"

namespace orvanto::win32 {

class Win32Clock : public Clock {
 public:
  DateTime Now() const override;
  std::int64_t UnixMilliseconds() const override;
  std::string ShortDate(int year, int month, int day) const override;
};

// Paths of any length.
class Win32Files : public Files {
 public:
  bool Exists(const std::string& path) const override;
  bool Append(const std::string& path, const std::string& bytes) override;
};

class Win32Shell : public Shell {
 public:
  // `mainWindow` answers the owner of what the shell shows, or null.
  Win32Shell(EventLoop& loop, std::function<HWND()> mainWindow);
  bool Execute(const ShellRequest& request) override;

 private:
  EventLoop& loop_;
  std::function<HWND()> mainWindow_;
};

class Win32Session : public Session {
 public:
  bool End(std::uint32_t flags) override;
};

class Win32Sound : public Sound {
 public:
  bool Play(const std::string& name) override;
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
