#include "platform/win32/Services.h"

#include <mmsystem.h>
#include <shellapi.h>

#include "platform/win32/Library.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Process.h"

namespace orvanto::win32 {

// Both read the same system clock, so their seconds begin together.
DateTime Win32Clock::Now() const {
  SYSTEMTIME time;
  GetLocalTime(&time);
  return {time.wYear,   time.wMonth,  time.wDay,          time.wHour,
          time.wMinute, time.wSecond, time.wDayOfWeek + 1};
}

std::int64_t Win32Clock::UnixMilliseconds() const {
  constexpr std::int64_t kFrom1601To1970 = 11644473600000;
  FILETIME time;
  GetSystemTimeAsFileTime(&time);
  const auto ticks = (static_cast<std::int64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  return ticks / 10000 - kFrom1601To1970;
}

std::string Win32Clock::ShortDate(int year, int month, int day) const {
  SYSTEMTIME date = {};
  date.wYear = static_cast<WORD>(year);
  date.wMonth = static_cast<WORD>(month);
  date.wDay = static_cast<WORD>(day);
  const auto format = [&](wchar_t* buffer, int room) {
    return GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &date, nullptr, buffer, room,
                           nullptr);
  };
  const int room = format(nullptr, 0);
  if (room <= 0) return {};
  std::wstring text(static_cast<std::size_t>(room), L'\0');
  format(text.data(), room);
  text.pop_back();
  return ToUtf8(text);
}

bool Win32Shell::Execute(const ShellRequest& request) {
  const std::wstring operation = ToWide(request.operation);
  const std::wstring file = ToWide(request.file);
  const std::wstring parameters = ToWide(request.parameters);
  const std::wstring directory = ToWide(request.directory);
  const auto orNull = [](const std::wstring& text) {
    return text.empty() ? nullptr : text.c_str();
  };
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = SEE_MASK_FLAG_NO_UI;
  info.hwnd = owner_();
  info.lpVerb = orNull(operation);
  info.lpFile = file.c_str();
  info.lpParameters = orNull(parameters);
  info.lpDirectory = orNull(directory);
  info.nShow = static_cast<int>(request.show);
  com_.Begin();
  // The shell may handle messages while it looks for the program.
  const EventLoop::Hold hold(loop_);
  return Late<decltype(ShellExecuteExW)>(L"shell32.dll", "ShellExecuteExW")(&info) != 0;
}

bool Win32Shell::Start(const std::string& commandLine, ShowCommand show) {
  return static_cast<bool>(StartProcess(commandLine, show));
}

bool Win32Shell::StartAndWait(const std::string& commandLine, ShowCommand show) {
  const ProcessHandle process = StartProcess(commandLine, show);
  if (!process) return false;
  // Nothing is to be held back: no message is handled meanwhile.
  WaitForSingleObject(process.Get(), INFINITE);
  return true;
}

bool Win32Sound::Play(const std::string& name) {
  const auto play = Late<decltype(PlaySoundW)>(L"winmm.dll", "PlaySoundW");
  return play(ToWide(name).c_str(), nullptr, SND_ASYNC) != 0;
}

void Win32Sound::Beep() { MessageBeep(MB_OK); }

}  // namespace orvanto::win32
