// What the desktop tests share. They use the user's own settings, so they are for a machine, or a
// Wine prefix, that nobody works on.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
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
  DesktopTest() {
    const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    if (!isWine && !Stored(L"General", {L"NoTasks"}).empty()) {
      throw std::runtime_error("somebody's own tasks are on this machine");
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
  }
  ~DesktopTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

  // All of them are due every day at the given time.
  static void Import(const std::vector<Task>& tasks, int minuteOfTheDay = 0) {
    int count = 0;
    for (const Task& task : tasks) {
      const std::pair<const wchar_t*, std::wstring> values[] = {
          {L"TimeType", L"2"},
          {L"Every", L"1"},
          {L"In", L"1"},
          {L"TimeHour", std::to_wstring(minuteOfTheDay / 60)},
          {L"TimeMinute", std::to_wstring(minuteOfTheDay % 60)},
          {L"TaskType", task.type},
          {L"Path", task.path}};
      for (const auto& [value, text] : values) Store(task.name, value, text);
      Store(L"General", L"Task" + std::to_wstring(++count), task.name);
    }
    Store(L"General", L"NoTasks", std::to_wstring(count));
  }
  static int MinuteOfTheDay(int secondsFromNow = 0) {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return (now.wHour * 60 + now.wMinute + (now.wSecond + secondsFromNow) / 60) % (24 * 60);
  }

  static void Store(const std::wstring& section, const std::wstring& name,
                    const std::wstring& text) {
    RegSetKeyValueW(HKEY_CURRENT_USER, (kKey + (L"\\" + section)).c_str(), name.c_str(), REG_SZ,
                    text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  }
  // Stored texts with '|' between them. The section may be a task's name.
  static std::wstring Stored(const std::wstring& section,
                             std::initializer_list<const wchar_t*> names) {
    std::wstring all;
    for (const wchar_t* name : names) {
      wchar_t text[1024] = L"";
      DWORD size = sizeof text;
      RegGetValueW(HKEY_CURRENT_USER, (kKey + (L"\\" + section)).c_str(), name, RRF_RT_REG_SZ,
                   nullptr, text, &size);
      all += (all.empty() ? L"" : L"|") + std::wstring(text);
    }
    return all;
  }

 private:
  static constexpr const wchar_t* kKey = L"Software\\Quellmark\\Orvanto";
};

}  // namespace orvanto::desktop
