#include <gtest/gtest.h>
#include <windows.h>

#include <set>
#include <string>
#include <thread>
#include <tuple>

#include "platform/win32/Handle.h"
#include "platform/win32/Services.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Files.h"
#include "platform/win32/forms/Dialogs.h"
#include "platform/win32/forms/Win32FormHost.h"
#include "tests/platform/contracts.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::win32 {
namespace {

using std::chrono::milliseconds;

// What other programs leave in the registry need not be as we would have written it.
TEST(Win32Registry, ReadsForeignStrings) {
  using namespace std::string_literals;
  // Type, what is stored exactly (without a NUL that is not here), what is read, with its NUL.
  const std::tuple<DWORD, std::wstring, std::string> cases[] = {
      {REG_SZ, L"te\u00e9\U0001F552\0"s, "te\u00e9\U0001F552\0"s},
      {REG_SZ, L"text", "text\0"s},
      {REG_SZ, L"", "\0"s},
      {REG_EXPAND_SZ, L"%TEMP%\\x\0"s, "%TEMP%\\x\0"s},
      {REG_SZ, std::wstring(9999, L'e') + L'\0', std::string(9999, 'e') + '\0'}};
  const auto registry = NewHostRegistry();
  Registry::Key key = 0;
  ASSERT_EQ(registry->CreateKey(RootKey::CurrentUser, kScratchKey, kQueryValue | kSetValue, key),
            kSuccess);
  for (const auto& [stored, bytes, read] : cases) {
    ASSERT_EQ(RegSetValueExW(reinterpret_cast<HKEY>(key), L"foreign", 0, stored,
                             reinterpret_cast<const BYTE*>(bytes.data()),
                             static_cast<DWORD>(bytes.size() * sizeof(wchar_t))),
              ERROR_SUCCESS);
    ValueType type{};
    std::uint32_t size = 0;
    registry->QueryValue(key, "foreign", type, nullptr, size);
    std::string text(size, '?');
    EXPECT_EQ(registry->QueryValue(key, "foreign", type, text.data(), size), kSuccess);
    EXPECT_TRUE(type == ValueType::String && text == read) << text;
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
      {Buttons::OkCancel, IDCANCEL, Answer::Cancel},
      {Buttons::YesNo, IDYES, Answer::Yes},
      {Buttons::NoUnlessYes, IDNO, Answer::No},
      {Buttons::RetryCancel, IDCANCEL, Answer::Cancel}};
  for (const auto& [buttons, id, answer] : cases) {
    int ticks = 0;
    int posts = 0;
    int shown = 0;
    loop.onTimerHeld = [&] { ++shown; };
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
    EXPECT_GE(shown, 1) << "the time goes on";
    loop.DoEvents();
    timer->Stop();
    EXPECT_GE(ticks, 1);
    EXPECT_EQ(posts, 1);
  }
}

std::wstring Long(const std::string& path) { return ToWide("\\\\?\\" + path); }

class Win32FilesTest : public testing::Test {
 protected:
  const TemporaryDirectory directory_;
  const std::string top_ = directory_ / "";
  Win32Files files_;
};

TEST_F(Win32FilesTest, GoesBeyondTheOldLimitOfPaths) {
  const std::string outer = top_ + std::string(150, 'f');
  const std::string deep = outer + '\\' + std::string(150, 'g');
  for (const auto& folder : {outer, deep}) CreateDirectoryW(Long(folder).c_str(), nullptr);
  const std::pair<std::string, DWORD> made[] = {{deep + "\\plain", FILE_ATTRIBUTE_NORMAL},
                                                {deep + "\\hidden", FILE_ATTRIBUTE_HIDDEN},
                                                {deep + "\\system", FILE_ATTRIBUTE_SYSTEM}};
  for (const auto& [path, attributes] : made) {
    EXPECT_TRUE(files_.Append(path, "x") && files_.Exists(path));
    SetFileAttributesW(Long(path).c_str(), attributes);
  }
  const auto listed = [&](const std::string& folder) {
    std::set<std::string> names;
    files_.ListFolder(folder, [&](const std::string& name, Files::EntryKind kind) {
      return names.insert(name + " *\\@"[static_cast<int>(kind)]).second;
    });
    return names;
  };
  EXPECT_EQ(listed(deep), (std::set<std::string>{"plain ", "hidden*", "system*"}));
  // Folders that each system links to.
  const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  EXPECT_TRUE(wine ? listed("Z:\\proc\\self").contains("cwd@")
                   : listed("C:\\").contains("Documents and Settings@"));
  EXPECT_EQ(files_.Copy(deep + "\\plain", top_ + "copy"), "");
  for (const auto& [path, attributes] : made) EXPECT_EQ(files_.Remove(path), "");
  // Nobody else could.
  for (const auto& folder : {deep, outer}) EXPECT_TRUE(RemoveDirectoryW(Long(folder).c_str()));
}

TEST_F(Win32FilesTest, AFileExistsWhenItsFolderListsIt) {
  files_.Append(top_ + "a.txt", "x");
  for (const std::string& none : {top_ + "a.txt.", top_ + "a.txt ", top_ + "a.*", top_ + "con",
                                  top_ + std::string("a.txt\0b", 7), std::string("c:"),
                                  std::string("c:\\"), std::string("con")}) {
    EXPECT_FALSE(files_.Exists(none)) << none;
  }
}

TEST_F(Win32FilesTest, ReadsWhatAnotherWritesAndLeavesWhatIsLocked) {
  for (const char* name : {"one", "locked"}) files_.Append(top_ + name, name);
  using FileHandle = Handle<HANDLE, CloseHandle, -1>;
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const FileHandle writer(CreateFileW(Long(top_ + "one").c_str(), GENERIC_WRITE, kAll, nullptr,
                                      OPEN_EXISTING, 0, nullptr));
  const FileHandle owner(CreateFileW(Long(top_ + "locked").c_str(), GENERIC_READ, 0, nullptr,
                                     OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(writer && owner);
  std::string got;
  EXPECT_TRUE(files_.Read(top_ + "one", got));
  EXPECT_EQ(got, "one");
  EXPECT_FALSE(files_.Read(top_ + "locked", got));
  EXPECT_NE(files_.Copy(top_ + "one", top_ + "locked"), "");
  EXPECT_NE(files_.Remove(top_ + "locked"), "");
}

}  // namespace
}  // namespace orvanto::win32
