#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <thread>

#include "platform/win32/Services.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/Win32Registry.h"
#include "platform/win32/Win32TrayIcon.h"
#include "tests/platform/event_loop_contract.h"
#include "tests/platform/registry_contract.h"

namespace orvanto::win32 {
namespace {

using std::chrono::milliseconds;

void DeleteScratch() { RegDeleteTreeW(HKEY_CURRENT_USER, ToWide(kScratchKey).c_str()); }

class ScratchRegistry : public Win32Registry {
 public:
  ScratchRegistry() { DeleteScratch(); }
  ~ScratchRegistry() override { DeleteScratch(); }
};

LoopUnderTest MakeLoop() {
  return {[](milliseconds time) { std::this_thread::sleep_for(time); },
          std::make_unique<Win32Loop>()};
}

INSTANTIATE_TEST_SUITE_P(Win32, RegistryContract,
                         testing::Values([] { return std::make_unique<ScratchRegistry>(); }));
INSTANTIATE_TEST_SUITE_P(Win32, EventLoopContract, testing::Values(MakeLoop));
INSTANTIATE_TEST_SUITE_P(Win32, RealLoopContract, testing::Values(MakeLoop));

// What other programs leave in the registry need not be as we would have written it.
TEST(Win32Registry, ReadsForeignStrings) {
  struct Case {
    const char* name;
    DWORD type;
    std::wstring stored;  // exactly, without a NUL that is not here
    std::string read;     // with its NUL
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {"proper", REG_SZ, L"text\0"s, "text\0"s},
      {"without a NUL", REG_SZ, L"text", "text\0"s},
      {"nothing at all", REG_SZ, L"", "\0"s},
      {"expandable", REG_EXPAND_SZ, L"%TEMP%\\x\0"s, "%TEMP%\\x\0"s},
      {"beyond Latin", REG_SZ, L"\u00e9\u20ac\U0001F552\0"s,
       "\xc3\xa9\xe2\x82\xac\xf0\x9f\x95\x92\0"s},
      {"long", REG_SZ, std::wstring(5000, L'\u00e9') + L'\0',
       [] {
         std::string text;
         for (int i = 0; i < 5000; ++i) text += "\xc3\xa9";
         return text + '\0';
       }()},
  };
  ScratchRegistry registry;
  Registry::Key key = 0;
  ASSERT_EQ(registry.CreateKey(RootKey::CurrentUser, kScratchKey, kQueryValue | kSetValue, key),
            kSuccess);
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    ASSERT_EQ(RegSetValueExW(reinterpret_cast<HKEY>(key), ToWide(each.name).c_str(), 0, each.type,
                             reinterpret_cast<const BYTE*>(each.stored.data()),
                             static_cast<DWORD>(each.stored.size() * sizeof(wchar_t))),
              ERROR_SUCCESS);
    ValueType type{};
    std::uint32_t size = 0;
    EXPECT_EQ(registry.QueryValue(key, each.name, type, nullptr, size), kMoreData);
    ASSERT_EQ(size, each.read.size());
    std::string text(size, '?');
    EXPECT_EQ(registry.QueryValue(key, each.name, type, text.data(), size), kSuccess);
    EXPECT_EQ(type, ValueType::String);
    EXPECT_EQ(text, each.read);
  }
  registry.CloseKey(key);
}

// A message box handles messages by itself; what is due meanwhile has to come after it all the
// same, each timer once. The box is answered from another thread, as a person would.
TEST(Win32MessageBoxes, HoldsTimersAndPosts) {
  Win32Loop loop;
  const Win32FormHost forms(loop);
  Win32MessageBoxes boxes(loop, forms);
  int ticks = 0;
  int ticksInside = -1;
  int postsInside = -1;
  int posts = 0;
  Answer answer{};
  const auto timer = loop.NewTimer([&] { ++ticks; });
  std::jthread person([](const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const HWND box = FindWindowW(L"#32770", L"Held box");
      if (box != nullptr && IsWindowVisible(box)) {
        std::this_thread::sleep_for(milliseconds(100));  // several periods of the timer
        SendMessageW(box, WM_COMMAND, IDYES, 0);
      }
      std::this_thread::sleep_for(milliseconds(10));
    }
  });
  loop.Post([&] {
    timer->Start(milliseconds(10));
    loop.Post([&] { ++posts; });
    answer = boxes.Show("?", "Held box", Buttons::YesNo, BoxIcon::Question);
    ticksInside = ticks;
    postsInside = posts;
    loop.Post([&] { loop.Quit(); });
  });
  loop.Run();
  EXPECT_EQ(answer, Answer::Yes);
  EXPECT_EQ(ticksInside, 0);
  EXPECT_EQ(postsInside, 0);
  EXPECT_EQ(ticks, 1);
  EXPECT_EQ(posts, 1);
}

// Posts that always post again must not starve the timers.
TEST(Win32Loop, TimersComeThroughAFloodOfPosts) {
  Win32Loop loop;
  const auto timer = loop.NewTimer([&] { loop.Quit(); });
  timer->Start(milliseconds(20));
  const ULONGLONG deadline = GetTickCount64() + 10000;
  std::function<void()> again = [&] {
    if (GetTickCount64() > deadline) loop.Quit();
    loop.Post(again);
  };
  loop.Post(again);
  loop.Run();
  EXPECT_LT(GetTickCount64(), deadline);
}

TEST(Win32Clock, SecondsOfBothBeginTogether) {
  const Win32Clock clock;
  for (int i = 0; i < 1000; ++i) {
    const std::int64_t before = clock.UnixMilliseconds() / 1000;
    const int second = clock.Now().second;
    const std::int64_t after = clock.UnixMilliseconds() / 1000;
    if (before == after) {
      ASSERT_EQ(second, before % 60);
    }
  }
}

// The shell tells of a new task bar by a message to all top-level windows.
TEST(Win32TrayIcon, PassesTheMouseAndOutlivesTheTaskBar) {
  Win32Loop loop;
  Win32TrayIcon icon(loop);
  std::vector<int> seen;
  icon.onMouse = [&](int message) {
    seen.push_back(message);
    if (message == kLeftDoubleClick) loop.Quit();
  };
  const HWND owner = FindWindowW(Win32TrayIcon::kWindowClass, nullptr);
  ASSERT_NE(owner, nullptr);
  EXPECT_EQ(GetParent(owner), nullptr);
  icon.Add("tip");
  SendMessageW(owner, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  PostMessageW(owner, Win32TrayIcon::kCallback, 1, kLeftDown);
  PostMessageW(owner, Win32TrayIcon::kCallback, 1, kLeftDoubleClick);
  loop.Run();
  EXPECT_EQ(seen, (std::vector<int>{kLeftDown, kLeftDoubleClick}));
  icon.Remove();
}

}  // namespace
}  // namespace orvanto::win32
