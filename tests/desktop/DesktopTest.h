// What the desktop tests share. They use the user's own settings, so they are for a machine, or a
// Wine prefix, that nobody works on.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/desktop/RunningProgram.h"

namespace orvanto::desktop {

struct Task {
  std::string name;
  std::string group;
  std::string type;
  std::string path;
};

// Begins and ends without any settings.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  // All of them are due every day at the given time.
  static void Import(const std::vector<Task>& tasks, int minuteOfTheDay = 0);

  static int MinuteOfTheDay(int secondsFromNow = 0);
  // The next one that a program started now does not miss.
  static int DueSoon();

  static void Store(const wchar_t* section, const wchar_t* name, const std::wstring& text);
  // A stored text, or "" where there is none. The section may be a task's name.
  static std::wstring Stored(const std::wstring& section, const wchar_t* name);

  static void Exit(const RunningProgram& program);
};

}  // namespace orvanto::desktop
