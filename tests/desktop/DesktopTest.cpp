#include "tests/desktop/DesktopTest.h"

#include <stdexcept>

#include "platform/win32/Text.h"

namespace orvanto::desktop {

using win32::ToWide;

namespace {

constexpr const wchar_t* kKey = L"Software\\Quellmark\\Orvanto";

}  // namespace

DesktopTest::DesktopTest() {
  const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
  HKEY key = nullptr;
  if (!isWine && RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key) == ERROR_SUCCESS) {
    RegCloseKey(key);
    throw std::runtime_error("somebody's own tasks are on this machine");
  }
  RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
}

DesktopTest::~DesktopTest() { RegDeleteTreeW(HKEY_CURRENT_USER, kKey); }

void DesktopTest::Import(const std::vector<Task>& tasks, int minuteOfTheDay) {
  int count = 0;
  for (const Task& task : tasks) {
    const std::wstring name = ToWide(task.name);
    const std::pair<const wchar_t*, std::wstring> values[] = {
        {L"Group", ToWide(task.group)},
        {L"TimeType", L"2"},
        {L"Every", L"1"},
        {L"In", L"1"},
        {L"TimeHour", std::to_wstring(minuteOfTheDay / 60)},
        {L"TimeMinute", std::to_wstring(minuteOfTheDay % 60)},
        {L"TaskType", ToWide(task.type)},
        {L"Path", ToWide(task.path)}};
    for (const auto& [value, text] : values) Store(name.c_str(), value, text);
    Store(L"General", (L"Task" + std::to_wstring(++count)).c_str(), name);
  }
  Store(L"General", L"NoTasks", std::to_wstring(count));
}

int DesktopTest::MinuteOfTheDay(int secondsFromNow) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return (now.wHour * 60 + now.wMinute + (now.wSecond + secondsFromNow) / 60) % (24 * 60);
}

// A minute that begins too soon would be over before the program has started.
int DesktopTest::DueSoon() { return MinuteOfTheDay(70); }

void DesktopTest::Store(const wchar_t* section, const wchar_t* name, const std::wstring& text) {
  RegSetKeyValueW(HKEY_CURRENT_USER, (std::wstring(kKey) + L"\\" + section).c_str(), name, REG_SZ,
                  text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::wstring DesktopTest::Stored(const std::wstring& section, const wchar_t* name) {
  wchar_t text[1024] = L"";
  DWORD size = sizeof text;
  RegGetValueW(HKEY_CURRENT_USER, (std::wstring(kKey) + L"\\" + section).c_str(), name,
               RRF_RT_REG_SZ, nullptr, text, &size);
  return text;
}

void DesktopTest::Exit(const RunningProgram& program) {
  program.Press(L"E&xit");
  DWORD code = 1;
  ASSERT_TRUE(program.WaitForEnd(code));
  EXPECT_EQ(code, 0u);
}

}  // namespace orvanto::desktop
