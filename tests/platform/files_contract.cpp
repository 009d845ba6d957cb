// What every host's files keep to.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <set>
#include <system_error>

#include "tests/platform/contracts.h"
#include "tests/support/FakeFiles.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto {
namespace {

class FilesContract : public testing::Test {
 protected:
  std::string In(const std::string& name) const { return ShownPath(directory_ / "") + name; }
  std::string Read(const std::string& name) const {
    std::string text = "former";
    return files_->Read(In(name), text) ? text : "unreadable";
  }

  const TemporaryDirectory directory_;
  const std::unique_ptr<Files> files_ = NewHostFiles();
};

TEST_F(FilesContract, AppendsReadsCopiesAndRemoves) {
  std::filesystem::create_directory(directory_ / "folder");
  std::string bytes(200000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  EXPECT_TRUE(files_->Append(In("one"), bytes));
  EXPECT_TRUE(Read("one") == bytes);
  for (const char* name : {"Other", "oTHER"}) EXPECT_TRUE(files_->Append(In(name), name));
  for (const char* name : {"folder", "none\\x"}) EXPECT_FALSE(files_->Append(In(name), "x"));
  for (const char* none : {"none", "folder"}) EXPECT_EQ(Read(none), "unreadable");
  for (const std::string& reason :
       {files_->Copy(In("other"), In("other")), files_->Copy(In("none"), In("other")),
        files_->Copy(In("other"), In("folder")), files_->Replace(In("none"), In("other")),
        files_->Replace(In("other"), In("folder")), files_->Remove(In("none")),
        files_->Remove(In("folder"))}) {
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
  EXPECT_EQ(files_->Remove(In("OTHER")), "");
  EXPECT_EQ(Read("other"), "unreadable");
}

// `far` is where a file may end.
void ReadAndWriteAnywhere(Files& files, const std::string& path, std::uint64_t far) {
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
  EXPECT_EQ(read(9), "yz");
  EXPECT_EQ(read(11) + read(2 * far), "");
  EXPECT_EQ(file.WriteAt(far, "!"), kNoError);
  EXPECT_EQ(file.Size(), far + 1);
  EXPECT_EQ(read(far - 1), std::string("\0!", 2));
  EXPECT_EQ(files.Remove(path), "") << "an open file is in nobody's way";
}

TEST_F(FilesContract, ReadsAndWritesAnywhereInAFile) {
  ReadAndWriteAnywhere(*files_, In("new"), (std::uint64_t{4} << 30) + 1);
  FakeFiles fake;
  ReadAndWriteAnywhere(fake, "C:\\new", 1000);

  std::filesystem::create_directory(directory_ / "folder");
  ASSERT_TRUE(files_->Append(In("READ"), "x"));
  const std::pair<std::string, ErrorNumber> cases[] = {{"none\\new", kPathNotFoundError},
                                                       {"READ\\new", kPathNotFoundError},
                                                       {"folder", kPathAccessError}};
  for (const auto access : {Files::Access::Read, Files::Access::Write}) {
    for (const auto& [name, error] : cases) EXPECT_EQ(files_->Open(In(name), access).error, error);
  }
  const auto reader = files_->Open(In("read"), Files::Access::Read).file;
  ASSERT_TRUE(reader);
  EXPECT_NE(reader->WriteAt(0, "no"), kNoError);
  EXPECT_EQ(Read("READ"), "x");
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
  for (const std::string& none : {In("none"), In("SUB.dir"), In(""), std::string()}) {
    EXPECT_FALSE(files_->Exists(none)) << none;
  }

  // A moment in winter and one in summer, of which the zone may make different hours.
  for (const std::time_t moment : {1704445445, 1720173845}) {
    const std::chrono::sys_seconds time{std::chrono::seconds(moment)};
    const auto* const file = reinterpret_cast<const char8_t*>(name.c_str());
    std::filesystem::last_write_time(std::filesystem::path(directory_ / "") / file,
                                     std::chrono::file_clock::from_sys(time));
    const std::tm* local = std::localtime(&moment);
    EXPECT_EQ(files_->Look(In(name))->changed, moment);
    std::set<std::string> details;
    files_->ListDetails(folder, [&](const Files::Entry& entry) {
      details.insert(entry.name + (entry.kind == Kind::Folder ? "\\" : " ") +
                     std::to_string(entry.size));
      const DateTime& is = entry.changed;
      EXPECT_TRUE(
          entry.kind == Kind::Folder ||
          (std::array{is.year, is.month, is.day, is.hour, is.minute, is.second, is.weekday}) ==
              (std::array{2024, local->tm_mon + 1, local->tm_mday, local->tm_hour, local->tm_min,
                          local->tm_sec, local->tm_wday + 1}));
      return true;
    });
    EXPECT_EQ(details, (std::set<std::string>{name + " 1234", "sub.dir\\0"}));
  }
  std::error_code cannot;  // not everybody may make a link
  for (const char* target : {"sub.dir", "nowhere"}) {
    EXPECT_FALSE(files_->Look(In(target)) && files_->Look(In(target))->isLink);
    const std::string link = std::string(target) + "link";
    std::filesystem::create_symlink(target, directory_ / link, cannot);
    EXPECT_TRUE(cannot || files_->Look(In(link))->isLink) << link;
  }
  EXPECT_FALSE(files_->Look(In("none")));
  for (const auto& full : {std::string("sub.dir"), name}) {
    EXPECT_NE(files_->RemoveFolder(In(full)), "");
  }
  EXPECT_EQ(files_->Remove(In("sub.dir\\full")), "");
  EXPECT_EQ(files_->RemoveFolder(In("SUB.DIR")), "");
  EXPECT_FALSE(std::filesystem::exists(directory_ / "sub.dir"));
  const auto drives = files_->Drives();
  EXPECT_TRUE(std::any_of(drives.begin(), drives.end(),
                          [&](const std::string& drive) { return folder.starts_with(drive); }));
}

}  // namespace
}  // namespace orvanto
