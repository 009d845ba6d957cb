// What every host's files and every registry keep to.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <map>
#include <set>

#include "tests/platform/host.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto {
namespace {

using namespace std::string_literals;

class FilesContract : public testing::Test {
 protected:
  std::string In(const std::string& name) const { return ShownPath(directory_ / "") + name; }
  std::string Read(const std::string& name) const {
    std::string text = "former";
    return files_->Read(In(name), text) ? text : "unreadable";
  }

  const TemporaryDirectory directory_;
  const std::unique_ptr<Files> files_ = std::make_unique<HostFiles>();
};

TEST_F(FilesContract, AppendsReadsCopiesAndReplaces) {
  std::filesystem::create_directory(directory_ / "folder");
  std::string bytes(200000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  EXPECT_TRUE(files_->Append(In("one"), bytes));
  for (const char* name : {"Other", "oTHER"}) EXPECT_TRUE(files_->Append(In(name), name));
  for (const char* name : {"folder", "none\\x"}) EXPECT_FALSE(files_->Append(In(name), "x"));
  EXPECT_EQ(Read("folder"), "unreadable");
  for (const std::string& reason :
       {files_->Copy(In("other"), In("other")), files_->Copy(In("none"), In("other")),
        files_->Copy(In("other"), In("folder")), files_->Replace(In("other"), In("folder")),
        files_->Remove(In("none")), files_->Remove(In("folder"))}) {
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(reason.find_first_of("\r\n"), std::string::npos) << reason;
    EXPECT_FALSE(reason.ends_with(' ')) << reason;
  }
  EXPECT_EQ(Read("OTHER"), "OtheroTHER") << "a failed copy has spoiled it";
  EXPECT_EQ(files_->Copy(In("one"), In("OTHER")), "");
  EXPECT_TRUE(Read("other") == bytes);
  EXPECT_TRUE(files_->Append(In("one"), "more"));
  EXPECT_EQ(files_->Replace(In("ONE"), In("OTHER")), "");
  EXPECT_EQ(Read("one"), "unreadable");
  EXPECT_EQ(Read("other"), bytes + "more");
}

// `distant` is where a file may end.
void ReadAndWriteAnywhere(Files& files, const std::string& path, std::uint64_t distant) {
  using Access = Files::Access;
  EXPECT_EQ(files.Open(path, Access::Read).error, kFileNotFoundError);
  const auto opened = files.Open(path, Access::Write);
  ASSERT_EQ(opened.error, kNoError);
  File& file = *opened.file;
  EXPECT_EQ(file.WriteAt(0, "0123456789"), kNoError);
  EXPECT_EQ(file.WriteAt(2, "ab"), kNoError);
  const auto other = files.Open(path, Access::Write).file;  // it is not cut
  EXPECT_EQ(other->WriteAt(8, "xyz"), kNoError);
  EXPECT_EQ(file.Flush(), kNoError);
  std::string all;
  EXPECT_TRUE(files.Read(path, all));
  EXPECT_EQ(all, "01ab4567xyz");
  char bytes[8] = {};
  const auto read = [&](std::uint64_t offset) {
    const auto result = file.ReadAt(offset, bytes, sizeof bytes);
    EXPECT_EQ(result.error, kNoError);
    return std::string(bytes, result.count);
  };
  EXPECT_EQ(read(1), "1ab4567x");
  EXPECT_EQ(read(11), "");
  EXPECT_EQ(file.WriteAt(distant, "!"), kNoError);
  EXPECT_EQ(file.Size(), distant + 1);
  EXPECT_EQ(read(distant - 1), std::string("\0!", 2));
  EXPECT_EQ(files.Remove(path), "") << "an open file is in nobody's way";
}

TEST_F(FilesContract, ReadsAndWritesAnywhereInAFile) {
  ReadAndWriteAnywhere(*files_, In("new"), (std::uint64_t{4} << 30) + 1);
  FakeFiles fake;
  ReadAndWriteAnywhere(fake, "C:\\new", 1000);

  std::filesystem::create_directory(directory_ / "folder");
  for (const auto access : {Files::Access::Read, Files::Access::Write}) {
    EXPECT_EQ(files_->Open(In("none\\new"), access).error, kPathNotFoundError);
    EXPECT_EQ(files_->Open(In("folder"), access).error, kPathAccessError);
  }
}

TEST_F(FilesContract, ListsFoldersAndTellsWhatExistsAndOfWhatKind) {
  using Kind = Files::EntryKind;
  const std::string name = "\u00e4\U0001F552.txt", folder = In("");
  ASSERT_TRUE(files_->Append(In(name), std::string(1234, 'x')));
  std::filesystem::create_directory(directory_ / "sub.dir");
  ASSERT_TRUE(files_->Append(In("sub.dir\\full"), "x"));
  const auto listed = [&](const std::string& in) {
    std::multiset<std::string> names;
    files_->ListFolder(in, [&](const std::string& entry, Kind kind) {
      names.insert(entry + (kind == Kind::Folder ? "\\" : ""));
      return true;
    });
    return names;
  };
  for (const std::string& written : {folder, folder.substr(0, folder.size() - 1)}) {
    EXPECT_EQ(listed(written), (std::multiset<std::string>{name, "sub.dir\\"}));
  }
  for (const std::string& none : {In("none"), In(name), std::string()}) {
    EXPECT_EQ(listed(none).size(), 0U) << none;
  }
  int seen = 0;
  files_->ListFolder(folder, [&](const std::string&, Kind) { return ++seen < 1; });
  EXPECT_EQ(seen, 1);
  EXPECT_TRUE(files_->Exists(In("\u00c4\U0001F552.TXT")));
  for (const auto& none : {In("none"), In("SUB.dir"), ""s}) EXPECT_FALSE(files_->Exists(none));

  // A moment in winter and one in summer, of which the zone may make different hours.
  for (const std::time_t moment : {1704445445, 1720173845}) {
    const std::chrono::sys_seconds time{std::chrono::seconds(moment)};
    const auto* const file = reinterpret_cast<const char8_t*>(name.c_str());
    std::filesystem::last_write_time(std::filesystem::path(directory_ / "") / file,
                                     std::chrono::file_clock::from_sys(time));
    const std::tm* local = std::localtime(&moment);
    EXPECT_EQ(files_->Look(In(name))->changed, moment);
    std::map<std::string, Files::Entry> entries;
    files_->ListDetails(folder, [&](const Files::Entry& entry) {
      return entries.emplace(entry.name, entry).second;
    });
    EXPECT_EQ(entries.size(), 2U);
    EXPECT_TRUE(entries["sub.dir"].kind == Kind::Folder && entries["sub.dir"].size == 0);
    EXPECT_TRUE(entries[name].kind == Kind::File && entries[name].size == 1234);
    const DateTime& is = entries[name].changed;
    EXPECT_EQ((std::array{is.year, is.month, is.day, is.hour, is.minute, is.second, is.weekday}),
              (std::array{2024, local->tm_mon + 1, local->tm_mday, local->tm_hour, local->tm_min,
                          local->tm_sec, local->tm_wday + 1}));
  }
  std::error_code cannot;  // not everybody may make a link
  std::filesystem::create_symlink("sub.dir", directory_ / "link", cannot);
  EXPECT_TRUE(cannot || files_->Look(In("link"))->isLink);
  EXPECT_FALSE(files_->Look(In("sub.dir"))->isLink || files_->Look(In("none")));
  for (const auto& full : {"sub.dir"s, name}) EXPECT_NE(files_->RemoveFolder(In(full)), "");
  EXPECT_EQ(files_->Remove(In("sub.dir\\full")), "");
  EXPECT_EQ(files_->RemoveFolder(In("SUB.DIR")), "");
  const auto drives = files_->Drives();
  EXPECT_TRUE(std::any_of(drives.begin(), drives.end(),
                          [&](const std::string& drive) { return folder.starts_with(drive); }));
}

std::string Below(const std::string& below) {
  return "Software\\OrvantoTest" + (below.empty() ? "" : '\\' + below);
}

// On the host's, and on the one in memory.
class RegistryContract : public testing::TestWithParam<bool> {
 protected:
  ~RegistryContract() override {
    for (const Registry::Key key : made_) registry_->CloseKey(key);
  }
  // Makes a key and keeps it open; `below` is relative to that.
  Registry::Key Make(const std::string& below,
                     std::uint32_t access = kQueryValue | kSetValue | kCreateSubKey) {
    Registry::Key key = 0;
    EXPECT_EQ(registry_->CreateKey(RootKey::CurrentUser, Below(below), access, key), kSuccess);
    return made_.emplace_back(key);
  }
  Status Put(Registry::Key key, const std::string& name, const std::string& bytes,
             ValueType type = ValueType::Binary) {
    return registry_->SetValue(key, name, type, bytes.data(),
                               static_cast<std::uint32_t>(bytes.size()));
  }
  // The value's bytes, asked for as the program does: the size first.
  std::string Read(Registry::Key key, const std::string& name, ValueType type = ValueType::Binary) {
    ValueType is = ValueType::None;
    std::uint32_t size = 0;
    const Status first = registry_->QueryValue(key, name, is, nullptr, size);
    if (first != kMoreData && (first != kSuccess || size != 0)) return std::to_string(first);
    std::string bytes(size, '?');
    EXPECT_EQ(registry_->QueryValue(key, name, is, bytes.data(), size), kSuccess);
    EXPECT_EQ(size, bytes.size());
    EXPECT_EQ(is, type);
    return bytes;
  }

  const std::unique_ptr<Registry> registry_ =
      GetParam() ? std::unique_ptr<Registry>(new MemoryRegistry) : std::make_unique<HostRegistry>();
  std::vector<Registry::Key> made_;
};

INSTANTIATE_TEST_SUITE_P(Registries, RegistryContract, testing::Bool());

TEST_P(RegistryContract, OpensWhatExistsWhateverItsCase) {
  std::string longest = "ß";  // 255 units of UTF-16
  for (int i = 0; i < 127; ++i) longest += "𝄞";
  Make("Alpha\\Größe\\Ж");
  Make(longest);
  const std::pair<std::string, Status> cases[] = {
      {"aLPHA\\GRÖßE", kSuccess}, {"Alpha\\größe\\ж\\", kSuccess},
      {"Alph", kFileNotFound},    {"Alpha\\\\Größe", kBadPathname},
      {longest, kSuccess},        {longest + 'k', kInvalidParameter}};
  for (const auto& [path, expected] : cases) {
    Registry::Key key = 77;
    EXPECT_EQ(registry_->OpenKey(RootKey::CurrentUser, Below(path), kQueryValue, key), expected);
    EXPECT_EQ(key != 0, expected == kSuccess) << path;
    if (key != 0) made_.push_back(key);
  }
  EXPECT_TRUE(registry_->IsSameKey("Größe", "grÖßE"));
}

TEST_P(RegistryContract, ReturnsWhatWasWrittenIfThereIsRoom) {
  const Registry::Key key = Make("Values");
  const std::tuple<std::string, ValueType, std::string> cases[] = {
      {"Name", ValueType::String, "text\0"s},
      {"Übung", ValueType::String, "\"Ж\\\"\r\n\t=;#[]%\0"s},
      {"bytes", ValueType::Binary, "\0\x01\xFF\x80"s},
      {"no bytes", ValueType::Binary, ""},
      {"number", ValueType::Dword, "\x0A\0\0\x80"s}};
  ASSERT_EQ(Put(key, "NAME", "text\0"s), kSuccess);
  for (const auto& [name, type, bytes] : cases) ASSERT_EQ(Put(key, name, bytes, type), kSuccess);
  const Registry::Key again = Make("vALUES");  // keeps its values
  for (const auto& [name, type, bytes] : cases) EXPECT_EQ(Read(again, name, type), bytes) << name;
  char buffer[] = "...";
  std::uint32_t size = 3;
  ValueType type = ValueType::None;
  EXPECT_EQ(registry_->QueryValue(key, "Number", type, buffer, size), kMoreData);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(buffer, "..."s);
}

TEST_P(RegistryContract, DeletesAndRefusesInALife) {
  const Registry::Key parent = Make(""), child = Make("One\\Two");
  const Registry::Key reader = Make("One\\Two", kQueryValue);
  EXPECT_EQ(Put(child, "v", "x"), kSuccess);
  EXPECT_EQ(Read(reader, "none"), std::to_string(kFileNotFound));
  EXPECT_EQ(registry_->CloseKey(reader), kSuccess);
  EXPECT_EQ(Read(reader, "v"), std::to_string(kInvalidHandle));
  EXPECT_EQ(registry_->DeleteKey(child, ""), kInvalidParameter);
  EXPECT_EQ(registry_->DeleteValue(child, "V"), kSuccess);
  EXPECT_EQ(registry_->DeleteKey(parent, "ONE\\two"), kSuccess);
  EXPECT_EQ(Put(child, "v", "x"), kKeyDeleted);
  EXPECT_EQ(Read(child, "v"), std::to_string(kKeyDeleted));
  EXPECT_EQ(registry_->DeleteKey(parent, "one"), kSuccess);
}

TEST_P(RegistryContract, ChangesNestAreSeenAtOnceAndReportTheirFirstFailedWrite) {
  const Registry::Key key = Make("Parent\\Child");
  const Registry::Key parent = Make("");
  RegistryChange failing(*registry_);
  {
    RegistryChange inner(*registry_);
    for (const std::string& path : {"Fine"s, "Bad\\\\Path"s, std::string(256, 'k')}) {
      Registry::Key created = 0;
      registry_->CreateKey(RootKey::CurrentUser, Below(path), kSetValue, created);
      registry_->CloseKey(created);
    }
    EXPECT_EQ(Put(key, "v", "x"), kSuccess);
  }
  EXPECT_EQ(Read(key, "v"), "x");
  EXPECT_EQ(failing.Commit(), kBadPathname);
  RegistryChange refused(*registry_);
  EXPECT_EQ(Put(Make("", kQueryValue), "v", "x"), kAccessDenied);
  EXPECT_EQ(refused.Commit(), kAccessDenied);
  // What a deletion meets does not count, nor what has failed before.
  Put(made_.back(), "v", "x");
  RegistryChange fine(*registry_);
  EXPECT_EQ(registry_->DeleteValue(key, "none"), kFileNotFound);
  EXPECT_EQ(registry_->DeleteKey(parent, "Parent"), kAccessDenied);
  EXPECT_EQ(fine.Commit(), kSuccess);
}

}  // namespace
}  // namespace orvanto
