#include "tests/desktop/DesktopTest.h"

#include <stdexcept>

namespace orvanto::desktop {

namespace {

const std::wstring kKey = L"Software\\Quellmark\\Orvanto";

}  // namespace

DesktopTest::DesktopTest() {
  const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
  if (!isWine && !Stored(L"General", {L"NoTasks"}).empty()) {
    throw std::runtime_error("somebody's own tasks are on this machine");
  }
  RegDeleteTreeW(HKEY_CURRENT_USER, kKey.c_str());
}

DesktopTest::~DesktopTest() { RegDeleteTreeW(HKEY_CURRENT_USER, kKey.c_str()); }

void DesktopTest::Import(const std::vector<Task>& tasks, int minuteOfTheDay) {
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
    Store(L"General", (L"Task" + std::to_wstring(++count)).c_str(), task.name);
  }
  Store(L"General", L"NoTasks", std::to_wstring(count));
}

int DesktopTest::MinuteOfTheDay(int secondsFromNow) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return (now.wHour * 60 + now.wMinute + (now.wSecond + secondsFromNow) / 60) % (24 * 60);
}

void DesktopTest::Store(const std::wstring& section, const wchar_t* name,
                        const std::wstring& text) {
  RegSetKeyValueW(HKEY_CURRENT_USER, (kKey + L"\\" + section).c_str(), name, REG_SZ, text.c_str(),
                  static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::wstring DesktopTest::Stored(const std::wstring& section,
                                 std::initializer_list<const wchar_t*> names) {
  std::wstring all;
  for (const wchar_t* name : names) {
    wchar_t text[1024] = L"";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, (kKey + L"\\" + section).c_str(), name, RRF_RT_REG_SZ, nullptr,
                 text, &size);
    all += (all.empty() ? L"" : L"|") + std::wstring(text);
  }
  return all;
}

}  // namespace orvanto::desktop
