// The small services of the system: each is a call or two.
#pragma once

#include <windows.h>

#include "platform/Clock.h"
#include "platform/FileDialogs.h"
#include "platform/MessageBoxes.h"
#include "platform/Shell.h"
#include "platform/Sound.h"
#include "platform/win32/Win32FormHost.h"
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
  // The main window owns what the shell shows.
  Win32Shell(Win32Loop& loop, const Win32FormHost& forms) : loop_(loop), forms_(forms) {}
  bool Execute(const ShellRequest& request) override;
  bool Start(const std::string& commandLine, ShowCommand show) override;
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override;

 private:
  Win32Loop& loop_;
  const Win32FormHost& forms_;
};

class Win32Sound : public Sound {
 public:
  bool Play(const std::string& name) override;
  void Beep() override;
};

class Win32MessageBoxes : public MessageBoxes {
 public:
  Win32MessageBoxes(Win32Loop& loop, const Win32FormHost& forms) : loop_(loop), forms_(forms) {}
  Answer Show(const std::string& text, const std::string& title, Buttons buttons,
              BoxIcon icon) override;

 private:
  Win32Loop& loop_;
  const Win32FormHost& forms_;
};

class Win32FileDialogs : public FileDialogs {
 public:
  Win32FileDialogs(Win32Loop& loop, const Win32FormHost& forms) : loop_(loop), forms_(forms) {}
  std::optional<std::string> ChooseFile(const std::string& title,
                                        const std::vector<FileFilter>& filters,
                                        const std::string& folder) override;

 private:
  Win32Loop& loop_;
  const Win32FormHost& forms_;
};

}  // namespace orvanto::win32
