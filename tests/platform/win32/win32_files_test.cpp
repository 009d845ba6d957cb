#include <gtest/gtest.h>
#include <windows.h>

#include <set>
#include <string>

#include "platform/win32/Handle.h"
#include "platform/win32/Text.h"
#include "platform/win32/Win32Files.h"

namespace orvanto::win32 {
namespace {

class Win32FilesTest : public testing::Test {
 protected:
  Win32FilesTest() {
    wchar_t temporary[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temporary);
    top_ = ToUtf8(temporary) + "orvanto-files";
    Clear(top_);
    Make(top_);
    deep_ = top_ + "\\" + std::string(150, 'f');
    Make(deep_);
    deep_ += "\\" + std::string(150, 'g');
    Make(deep_);
  }
  ~Win32FilesTest() override { Clear(top_); }  // the test's own handles are closed by then

  static std::wstring Long(const std::string& path) { return ToWide("\\\\?\\" + path); }
  static void Make(const std::string& folder) { CreateDirectoryW(Long(folder).c_str(), nullptr); }
  void Clear(const std::string& folder) {
    files_.ListFolder(folder, [&](const std::string& name, Files::EntryKind kind) {
      const std::string path = folder + "\\" + name;
      if (kind == Files::EntryKind::Folder) {
        Clear(path);
      } else {
        DeleteFileW(Long(path).c_str());
      }
      return true;
    });
    RemoveDirectoryW(Long(folder).c_str());
  }
  std::multiset<std::string> Listed(const std::string& folder) {
    std::multiset<std::string> names;
    files_.ListFolder(folder, [&](const std::string& name, Files::EntryKind kind) {
      const char* end[] = {"", "*", "\\", "@"};  // in the order of the kinds
      names.insert(name + end[static_cast<int>(kind)]);
      return true;
    });
    return names;
  }

  using FileHandle = Handle<HANDLE, CloseHandle, -1>;
  Win32Files files_;
  std::string top_;
  std::string deep_;  // beyond the old limit of paths
};

TEST_F(Win32FilesTest, ListsFolders) {
  const std::string umlaut = "\u00e4\U0001F552.txt";
  files_.Append(deep_ + "\\" + umlaut, "x");
  files_.Append(deep_ + "\\hidden", "x");
  files_.Append(deep_ + "\\system", "x");
  SetFileAttributesW(Long(deep_ + "\\hidden").c_str(), FILE_ATTRIBUTE_HIDDEN);
  SetFileAttributesW(Long(deep_ + "\\system").c_str(), FILE_ATTRIBUTE_SYSTEM);
  Make(deep_ + "\\sub.dir");
  const std::multiset<std::string> all = {umlaut, "hidden*", "system*", "sub.dir\\"};
  EXPECT_EQ(Listed(deep_), all);
  EXPECT_EQ(Listed(deep_ + "\\"), all);
  EXPECT_EQ(Listed(top_), std::multiset{std::string(150, 'f') + "\\"});
  for (const std::string& none : {top_ + "\\none", deep_ + "\\hidden", std::string()}) {
    EXPECT_TRUE(Listed(none).empty()) << none;
  }
  // Folders that each system links to.
  const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  EXPECT_EQ(wine ? Listed("Z:\\proc\\self").count("cwd@")
                 : Listed("C:\\").count("Documents and Settings@"),
            1u);
  int seen = 0;
  files_.ListFolder(deep_, [&](const std::string&, Files::EntryKind) { return ++seen < 2; });
  EXPECT_EQ(seen, 2);
}

TEST_F(Win32FilesTest, AFileExistsWhenItsFolderListsIt) {
  for (const std::string& folder : {top_, deep_}) {
    files_.Append(folder + "\\a.txt", "x");
    EXPECT_TRUE(files_.Exists(folder + "\\A.TXT"));
    for (const char* none : {"\\a.txt.", "\\a.txt ", "\\a.*", "\\con", "\\nul", "\\", ""}) {
      EXPECT_FALSE(files_.Exists(folder + none)) << none;
    }
    EXPECT_FALSE(files_.Exists(folder + std::string("\\a.txt\0b", 8)));
  }
  for (const char* none : {"", "c:", "c:/", "c:\\", "con", "\\\\.\\nul"}) {
    EXPECT_FALSE(files_.Exists(none)) << none;
  }
}

TEST_F(Win32FilesTest, CopiesReadsAndRemoves) {
  const std::string one = deep_ + "\\one";
  const std::string other = top_ + "\\other";
  const std::string locked = top_ + "\\locked";
  std::string bytes(200000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  files_.Append(one, bytes);
  EXPECT_FALSE(files_.Exists(other));
  for (const char* text : {"for", "mer"}) EXPECT_TRUE(files_.Append(other, text));
  EXPECT_TRUE(files_.Exists(other));
  EXPECT_FALSE(files_.Exists(deep_));
  EXPECT_FALSE(files_.Append(deep_, "to a folder"));
  files_.Append(locked, "kept");
  constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const FileHandle writer(
      CreateFileW(Long(one).c_str(), GENERIC_WRITE, kAll, nullptr, OPEN_EXISTING, 0, nullptr));
  const FileHandle owner(
      CreateFileW(Long(locked).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(writer && owner);

  std::string got = "rest";
  EXPECT_TRUE(files_.Read(one, got)) << "while another writes";
  EXPECT_TRUE(got == bytes);
  for (const std::string& path : {top_ + "\\none", top_, locked}) {
    EXPECT_FALSE(files_.Read(path, got)) << path;
  }
  for (const std::string& reason :
       {files_.Copy(other, other), files_.Copy(top_ + "\\none", other), files_.Copy(other, locked),
        files_.Copy(other, top_), files_.Remove(locked), files_.Remove(top_ + "\\none"),
        files_.Remove(top_)}) {
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(reason.find_first_of("\r\n"), std::string::npos) << reason;
    EXPECT_FALSE(reason.ends_with(' ')) << reason;
  }
  EXPECT_TRUE(files_.Read(other, got));
  EXPECT_EQ(got, "former") << "a failed copy has spoiled it";
  EXPECT_EQ(files_.Copy(one, other), "");
  EXPECT_TRUE(files_.Read(other, got));
  EXPECT_TRUE(got == bytes);
  EXPECT_EQ(files_.Remove(other), "");
  EXPECT_FALSE(files_.Exists(other));
}

TEST_F(Win32FilesTest, KnowsTheCodePageOfOldTexts) {
  if (GetACP() != 1252 && GetACP() != CP_UTF8) GTEST_SKIP() << "the system has another one";
  EXPECT_EQ(files_.FromCodePage("a\xe4\x80"), "a\u00e4\u20ac");
  EXPECT_EQ(files_.FromCodePage(""), "");
}

}  // namespace
}  // namespace orvanto::win32
