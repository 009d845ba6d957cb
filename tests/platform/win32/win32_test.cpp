#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <thread>
#include <tuple>

#include "platform/win32/Services.h"
#include "platform/win32/forms/Dialogs.h"
#include "platform/win32/forms/Win32FormHost.h"
#include "tests/platform/contracts.h"

namespace orvanto::win32 {
namespace {

using std::chrono::milliseconds;

// What other programs leave in the registry need not be as we would have written it.
TEST(Win32Registry, ReadsForeignStrings) {
  using namespace std::string_literals;
  std::string longText;
  for (int i = 0; i < 5000; ++i) longText += "\u00e9";
  const struct {
    DWORD type;
    std::wstring stored;  // exactly, without a NUL that is not here
    std::string read;     // with its NUL
  } cases[] = {{REG_SZ, L"text\0"s, "text\0"s},
               {REG_SZ, L"text", "text\0"s},
               {REG_SZ, L"", "\0"s},
               {REG_EXPAND_SZ, L"%TEMP%\\x\0"s, "%TEMP%\\x\0"s},
               {REG_SZ, L"\u00e9\u20ac\U0001F552\0"s, "\u00e9\u20ac\U0001F552\0"s},
               {REG_SZ, std::wstring(5000, L'\u00e9') + L'\0', longText + '\0'}};
  const auto registry = NewHostRegistry();
  Registry::Key key = 0;
  ASSERT_EQ(registry->CreateKey(RootKey::CurrentUser, kScratchKey, kQueryValue | kSetValue, key),
            kSuccess);
  for (const auto& each : cases) {
    ASSERT_EQ(RegSetValueExW(reinterpret_cast<HKEY>(key), L"foreign", 0, each.type,
                             reinterpret_cast<const BYTE*>(each.stored.data()),
                             static_cast<DWORD>(each.stored.size() * sizeof(wchar_t))),
              ERROR_SUCCESS);
    ValueType type{};
    std::uint32_t size = 0;
    EXPECT_EQ(registry->QueryValue(key, "foreign", type, nullptr, size), kMoreData);
    ASSERT_EQ(size, each.read.size()) << each.read;
    std::string text(size, '?');
    EXPECT_EQ(registry->QueryValue(key, "foreign", type, text.data(), size), kSuccess);
    EXPECT_EQ(type, ValueType::String);
    EXPECT_EQ(text, each.read);
  }
  registry->CloseKey(key);
}

// A message box handles messages by itself; what is due meanwhile has to come after it all the
// same, each timer once. The box is answered from another thread, as a person would.
TEST(Win32MessageBoxes, HoldsTimersAndPosts) {
  Win32Loop loop;
  const Win32FormHost forms(loop);
  Win32MessageBoxes boxes(loop, forms);
  const std::tuple<Buttons, WPARAM, Answer> cases[] = {
      {Buttons::Ok, IDOK, Answer::Ok},
      {Buttons::OkCancel, IDOK, Answer::Ok},
      {Buttons::OkCancel, IDCANCEL, Answer::Cancel},
      {Buttons::YesNo, IDYES, Answer::Yes},
      {Buttons::NoUnlessYes, IDNO, Answer::No}};
  for (const auto& [buttons, id, answer] : cases) {
    int ticks = 0;
    int posts = 0;
    const auto timer = loop.NewTimer([&] { ++ticks; });
    timer->Start(milliseconds(10));
    loop.Post([&] { ++posts; });
    std::jthread person([id](const std::stop_token& stop) {
      while (!stop.stop_requested()) {
        std::this_thread::sleep_for(milliseconds(50));  // several periods of the timer
        const HWND box = FindWindowW(L"#32770", L"Held box");
        if (IsWindowVisible(box)) SendMessageW(box, WM_COMMAND, id, 0);
      }
    });
    EXPECT_EQ(boxes.Show("?", "Held box", buttons, BoxIcon::Question), answer);
    EXPECT_EQ(ticks + posts, 0);
    loop.DoEvents();
    timer->Stop();
    EXPECT_GE(ticks, 1);
    EXPECT_EQ(posts, 1);
  }
}

TEST(Win32Clock, SecondsOfBothBeginTogether) {
  const Win32Clock clock;
  for (int i = 0; i < 1000; ++i) {
    const std::int64_t before = clock.UnixMilliseconds() / 1000;
    const int second = clock.Now().second;
    if (clock.UnixMilliseconds() / 1000 == before) {
      ASSERT_EQ(second, before % 60);
    }
  }
}

// Enter in a line that acts on it itself; in any other it is the default button's.
TEST(Win32Form, EnterBelongsToTheLineThatTakesIt) {
  Win32Loop loop;
  Win32FormHost host(loop);
  struct : forms::Form {
    using Form::Form;
    forms::TextBox acting{*this, nullptr, {}, {0, 0, 900, 300}};
    forms::TextBox plain{*this, nullptr, {}, {0, 600, 900, 300}};
    forms::Button button{*this, nullptr, "OK", {0, 1200, 900, 300}};
  } form{host, "Enter", {3000, 1800}};
  std::string did;
  form.defaultButton = &form.button;
  form.acting.onEnter = [&] { did += "entered "; };
  form.button.onClick = [&] { did += "pressed "; };
  form.Show();
  const auto pressEnterIn = [&](HWND edit) {
    SetFocus(edit);
    // Not posted: the screen could take the focus away before it came.
    MSG key = {edit, WM_KEYDOWN, VK_RETURN, 1, 0, {}};
    EXPECT_TRUE(loop.preTranslate(key));
  };
  const HWND acting = FindWindowExW(host.MainWindow(), nullptr, WC_EDITW, nullptr);
  pressEnterIn(acting);
  EXPECT_EQ(did, "entered ");
  pressEnterIn(FindWindowExW(host.MainWindow(), acting, WC_EDITW, nullptr));
  EXPECT_EQ(did, "entered pressed ");
  form.acting.onEnter = [&] { form.Unload(); };  // the line may unload its form
  pressEnterIn(acting);
  EXPECT_FALSE(form.Loaded());
}

// A client of the remote control may type a NUL in a chat.
TEST(Win32Form, ATextIsShownWhole) {
  Win32Loop loop;
  Win32FormHost host(loop);
  struct : forms::Form {
    using Form::Form;
    forms::TextBox box{*this, nullptr, {.multiLine = true, .readOnly = true}, {0, 0, 900, 900}};
  } form{host, "Text", {3000, 1800}};
  form.Load();
  form.box.SetText(std::string("a\0\u00e4", 4));
  EXPECT_EQ(WindowText(FindWindowExW(host.MainWindow(), nullptr, WC_EDITW, nullptr)), "a \u00e4");
}

// Who closes a group that the selected task is in has the group selected then.
TEST(Win32Form, AClosedGroupTakesTheSelection) {
  Win32Loop loop;
  Win32FormHost host(loop);
  struct : forms::Form {
    using Form::Form;
    forms::TreeView tree{*this, nullptr, {0, 0, 3000, 1800}};
  } form{host, "Tree", {3000, 1800}};
  const auto group = form.tree.Add({{}, "", "group", "", ""});
  const auto task = form.tree.Add({group, "", "task", "", ""});
  form.tree.EnsureVisible(task);
  form.Show();
  form.tree.ClickNode(task);
  int clicks = 0;
  form.tree.onNodeClick = [&] { ++clicks; };
  const HWND window = FindWindowExW(host.MainWindow(), nullptr, WC_TREEVIEWW, nullptr);
  TVHITTESTINFO hit = {};
  hit.pt = {1, 5};
  while (hit.pt.x < 100 && (TreeView_HitTest(window, &hit), hit.flags != TVHT_ONITEMBUTTON)) {
    ++hit.pt.x;
  }
  const LPARAM place = MAKELPARAM(hit.pt.x, hit.pt.y);
  PostMessageW(window, WM_LBUTTONUP, 0, place);
  SendMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, place);
  EXPECT_FALSE(form.tree.Nodes()[group].expanded);
  EXPECT_EQ(TreeView_GetSelection(window), TreeView_GetRoot(window));
  EXPECT_EQ(form.tree.Selected(), group);
  EXPECT_EQ(clicks, 1);
}

BOOL CALLBACK CountWithChildren(HWND window, LPARAM count) {
  ++*reinterpret_cast<int*>(count);
  EnumChildWindows(window, CountWithChildren, count);
  return TRUE;
}

int GdiObjects() {
  if (const DWORD count = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)) return int(count);
  // Wine counts nothing, but keeps the table of them that Windows had before version 10.
  struct Entry {
    ULONG64 object;
    WORD owner, unique, type, flags;
    ULONG64 data;
  };
  const auto* block = reinterpret_cast<const BYTE* (*)()>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")))();
  const auto* table = *reinterpret_cast<const Entry* const*>(block + 0xF8);
  return int(
      std::count_if(table, table + 0x4000, [](const Entry& each) { return each.type != 0; }));
}

TEST(Win32Form, OpeningsLeaveNothingBehind) {
  Win32Loop loop;
  Win32FormHost host(loop);
  struct : forms::Form {
    using Form::Form;
    forms::Frame frame{*this, nullptr, "Frame", {}};
    forms::Label label{*this, &frame, "Label", {}};
    forms::TextBox text{*this, &frame, {}, {}};
    forms::UpDown arrows{*this, &frame, text, 1, 31, {}};
    forms::ComboBox list{*this, &frame, {}, {}};
    forms::OptionButton option{*this, &frame, "Option", {}};
    forms::Button button{*this, nullptr, "Button", {}};
    forms::Lamp lamp{*this, nullptr, {}};
    forms::TreeView tree{*this, nullptr, {}};
    forms::MenuItem menu{*this, "Menu"};
    forms::MenuItem item{menu, "Item"};
  } form{host, "Form", {3000, 1800}};
  int windows[2] = {};
  int objects[2] = {};
  constexpr int kOpenings = 200;
  for (const int round : {0, 1}) {
    for (int i = 0; i < kOpenings; ++i) {
      form.Show();
      form.Unload();
      loop.DoEvents();
    }
    EnumThreadWindows(GetCurrentThreadId(), CountWithChildren,
                      reinterpret_cast<LPARAM>(&windows[round]));
    objects[round] = GdiObjects();
  }
  EXPECT_EQ(windows[1], windows[0]);
  EXPECT_GT(objects[0], 0);
  EXPECT_LT(objects[1], objects[0] + kOpenings) << "what the system caches comes now and then";
}

}  // namespace
}  // namespace orvanto::win32
