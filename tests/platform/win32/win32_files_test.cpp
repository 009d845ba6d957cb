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
