// The small services of the system: each is a call or two.
#pragma once

#include <windows.h>

#include <functional>
#include <utility>

#include "platform/Clock.h"
#include "platform/Shell.h"
#include "platform/Sound.h"
#include "platform/win32/Com.h"
#include "platform/win32/Win32Loop.h"

namespace orvanto::win32 {

class Win32Clock : public Clock {
 public:
  DateTime Now() const override;
  std::int64_t UnixMilliseconds() const override;
  std::string ShortDate(int year, int month, int day) const override;
};

class Win32Shell : public Shell {
 public:
  // `owner` gives the window that owns what the shell shows, or null.
  Win32Shell(Win32Loop& loop, std::function<HWND()> owner)
      : loop_(loop), owner_(std::move(owner)) {}
  bool Execute(const ShellRequest& request) override;
  bool Start(const std::string& commandLine, ShowCommand show) override;
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override;

 private:
  Win32Loop& loop_;
  std::function<HWND()> owner_;
  Com com_;
};

class Win32Sound : public Sound {
 public:
  bool Play(const std::string& name) override;
  void Beep() override;
};

}  // namespace orvanto::win32
