#include <gtest/gtest.h>
#include <windows.h>

#include <set>
#include <string>

#include "platform/win32/Handle.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Files.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::win32 {
namespace {

class Win32FilesTest : public testing::Test {
 protected:
  static std::wstring Long(const std::string& path) { return ToWide("\\\\?\\" + path); }

  using FileHandle = Handle<HANDLE, CloseHandle, -1>;
  const TemporaryDirectory directory_;
  const std::string top_ = directory_ / "";
  const std::string deep_ = top_ + std::string(150, 'f') + '\\' + std::string(150, 'g');
  Win32Files files_;
};

TEST_F(Win32FilesTest, GoesBeyondTheOldLimitOfPaths) {
  for (const std::string& folder : {deep_.substr(0, deep_.rfind('\\')), deep_}) {
    CreateDirectoryW(Long(folder).c_str(), nullptr);
  }
  for (const char* name : {"\\plain", "\\hidden", "\\system"}) {
    EXPECT_TRUE(files_.Append(deep_ + name, name));
    EXPECT_TRUE(files_.Exists(deep_ + name));
  }
  SetFileAttributesW(Long(deep_ + "\\hidden").c_str(), FILE_ATTRIBUTE_HIDDEN);
  SetFileAttributesW(Long(deep_ + "\\system").c_str(), FILE_ATTRIBUTE_SYSTEM);
  const auto listed = [&](const std::string& folder) {
    std::set<std::string> names;
    files_.ListFolder(folder, [&](const std::string& name, Files::EntryKind kind) {
      const char* end[] = {"", "*", "\\", "@"};  // in the order of the kinds
      return names.insert(name + end[static_cast<int>(kind)]).second;
    });
    return names;
  };
  EXPECT_EQ(listed(deep_), (std::set<std::string>{"plain", "hidden*", "system*"}));
  // Folders that each system links to.
  const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  EXPECT_TRUE(wine ? listed("Z:\\proc\\self").contains("cwd@")
                   : listed("C:\\").contains("Documents and Settings@"));
  EXPECT_EQ(files_.Copy(deep_ + "\\plain", top_ + "copy"), "");
  for (const char* name : {"\\plain", "\\hidden", "\\system"}) {
    EXPECT_EQ(files_.Remove(deep_ + name), "");
  }
  // Nobody else could.
  for (const std::string& folder : {deep_, deep_.substr(0, deep_.rfind('\\'))}) {
    EXPECT_TRUE(RemoveDirectoryW(Long(folder).c_str()));
  }
}

TEST_F(Win32FilesTest, AFileExistsWhenItsFolderListsIt) {
  files_.Append(top_ + "a.txt", "x");
  for (const char* none : {"a.txt.", "a.txt ", "a.*", "con", "nul"}) {
    EXPECT_FALSE(files_.Exists(top_ + none)) << none;
  }
  EXPECT_FALSE(files_.Exists(top_ + std::string("a.txt\0b", 7)));
  for (const char* none : {"c:", "c:/", "c:\\", "con", "\\\\.\\nul"}) {
    EXPECT_FALSE(files_.Exists(none)) << none;
  }
}

TEST_F(Win32FilesTest, ReadsWhatAnotherWritesAndLeavesWhatIsLocked) {
  for (const char* name : {"one", "locked"}) files_.Append(top_ + name, name);
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

TEST_F(Win32FilesTest, KnowsTheCodePageOfOldTexts) {
  if (GetACP() != 1252 && GetACP() != CP_UTF8) GTEST_SKIP() << "the system has another one";
  EXPECT_EQ(files_.FromCodePage("a\xe4\x80"), "a\u00e4\u20ac");
  EXPECT_EQ(files_.FromCodePage(""), "");
}

}  // namespace
}  // namespace orvanto::win32
