// What the desktop tests share. They use the user's own settings, so they are for a machine, or a
// Wine prefix, that nobody works on.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

#include "tests/desktop/RunningProgram.h"

namespace orvanto::desktop {

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

  // "Name=value Other=value". The section may be a task's name.
  static void Store(const std::wstring& section, const std::wstring& values) {
    std::wistringstream words(values);
    for (std::wstring word; words >> word;) {
      const std::size_t equals = word.find(L'=');
      RegSetKeyValueW(HKEY_CURRENT_USER, (kKey + (L"\\" + section)).c_str(),
                      word.substr(0, equals).c_str(), REG_SZ, &word[equals + 1],
                      static_cast<DWORD>((word.size() - equals) * sizeof(wchar_t)));
    }
  }
  // Stored texts with '|' between them.
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
