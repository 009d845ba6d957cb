// The settings by keyboard: every control of every tab.
#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

std::wstring UsersShare() {
  wchar_t text[8] = L"none";
  DWORD size = sizeof text;
  RegGetValueW(HKEY_LOCAL_MACHINE, L"Software\\Quellmark\\Orvanto\\General", L"Users_Share",
               RRF_RT_REG_SZ, nullptr, text, &size);
  return text;
}

TEST_F(DesktopTest, SettingsByKeyboard) {
  const RunningProgram program;
  ASSERT_TRUE(program.MainIsInFront());
  const auto all = [] {
    return Stored(L"General", {L"Check_Auto_Update", L"Use_Proxy", L"Proxy", L"Inet_ServerOn",
                               L"Inet_Passwd", L"Inet_Chat_Auto", L"Inet_ServerPort",
                               L"Inet_FtpPort", L"Inet_Compat", L"Inet_Strict"}) +
           L"|" + UsersShare();
  };
  // Each time the tab is in sight that was the last one. At first there is a proxy "0".
  const std::pair<const char*, std::wstring> tabs[] = {
      {"%u%s", L"1||||||||||none"},
      {"{RIGHT}{TAB 2}proxy{TAB}8x0{TAB} %s", L"1|1|proxy||||||||none"},
      {"{RIGHT}{TAB} {TAB} {TAB}secret{TAB} {TAB}601{TAB}2121%s",
       L"1|1|proxy|1|secret|1|601|2121|||none"},
      {"{RIGHT}%h%s", L"1|1|proxy|1|secret|1|601|2121|||1"},
      {"%i%s", L"1|1|proxy|1|secret|1|601|2121|||0"},
      {"{RIGHT}%t%i%s", L"1|1|proxy|1|secret|1|601|2121|1|1|0"},
      {"%d%s", L"1|1|proxy|1|secret|1|601|2121|0|0|0"}};
  for (const auto& [keys, stored] : tabs) {
    // A menu that has only just come may take a key before it has chosen its first item.
    ASSERT_TRUE(WaitFor([] {
      if (FindWindowW(nullptr, L"Settings") == nullptr) Type("{ESC 3}{F10}{DOWN}~");
      return FindWindowW(nullptr, L"Settings") != nullptr;
    }));
    const HWND dialog = InFront(L"Settings");
    ASSERT_TRUE(WaitFor([&] { return FocusBeside(dialog) != nullptr; }));
    PressKeys(keys);
    WaitFor([&] { return all() == stored; });
    EXPECT_EQ(all(), stored) << keys;
    PressKeys("%c");
    ASSERT_TRUE(WaitFor([&] { return !IsWindow(dialog) || !IsWindowVisible(dialog); }));
    ASSERT_TRUE(program.MainIsInFront());
  }
  RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Quellmark\\Orvanto\\General", L"Users_Share");
}

}  // namespace
}  // namespace orvanto::desktop
