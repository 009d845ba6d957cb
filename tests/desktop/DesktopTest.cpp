#include "tests/desktop/DesktopTest.h"

#include <fstream>
#include <stdexcept>

#include "platform/win32/Text.h"

namespace orvanto::desktop {

using win32::ToUtf8;
using win32::ToWide;

namespace {

constexpr const wchar_t* kKey = L"Software\\Quellmark\\Orvanto";

}  // namespace

std::wstring TemporaryFile(const std::wstring& name) {
  wchar_t folder[MAX_PATH + 1];
  GetTempPathW(MAX_PATH + 1, folder);
  return folder + name;
}

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

void DesktopTest::Import(const std::vector<Task>& tasks, int hour, int minute) {
  const std::string file = ToUtf8(TemporaryFile(L"orvanto-tasks.reg"));
  const std::string key = "[HKEY_CURRENT_USER\\" + ToUtf8(kKey) + "\\";
  std::ofstream out(file);
  out << "Windows Registry Editor Version 5.00\n";
  int count = 0;
  for (const Task& task : tasks) {
    std::string path;
    for (const char c : task.path) path += c == '\\' ? "\\\\" : std::string(1, c);
    out << key << task.name << "]\n\"Group\"=\"" << task.group << "\"\n"
        << "\"TimeType\"=\"2\"\n\"Every\"=\"1\"\n\"In\"=\"1\"\n\"TimeHour\"=\"" << hour
        << "\"\n\"TimeMinute\"=\"" << minute << "\"\n\"TaskType\"=\"" << task.type
        << "\"\n\"Path\"=\"" << path << "\"\n"
        << key << "General]\n\"Task" << ++count << "\"=\"" << task.name << "\"\n";
  }
  out << key << "General]\n\"NoTasks\"=\"" << count << "\"\n";
  out.close();
  ASSERT_EQ(RunToEnd(L"reg.exe import \"" + ToWide(file) + L"\""), 0);
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
