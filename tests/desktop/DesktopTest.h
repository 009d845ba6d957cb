// What the desktop tests share. They use the user's own settings, so they are for a machine, or a
// Wine prefix, that nobody works on.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/desktop/RunningProgram.h"

namespace orvanto::desktop {

struct Task {
  std::wstring name;
  std::wstring type;
  std::wstring path;
};

// Begins and ends without any settings.
class DesktopTest : public testing::Test {
 protected:
  DesktopTest();
  ~DesktopTest() override;

  // All of them are due every day at the given time.
  static void Import(const std::vector<Task>& tasks, int minuteOfTheDay = 0);
  static int MinuteOfTheDay(int secondsFromNow = 0);

  static void Store(const std::wstring& section, const wchar_t* name, const std::wstring& text);
  // Stored texts with '|' between them. The section may be a task's name.
  static std::wstring Stored(const std::wstring& section,
                             std::initializer_list<const wchar_t*> names);
};

}  // namespace orvanto::desktop
