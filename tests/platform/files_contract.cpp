// What every host's files keep to.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tests/platform/contracts.h"
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
  EXPECT_EQ(Read("OTHER"), "OtheroTHER");
  EXPECT_FALSE(files_->Append(In("folder"), "x"));
  EXPECT_FALSE(files_->Append(In("none\\x"), "x"));
  for (const char* none : {"none", "folder"}) EXPECT_EQ(Read(none), "unreadable");
  for (const std::string& reason :
       {files_->Copy(In("other"), In("other")), files_->Copy(In("none"), In("other")),
        files_->Copy(In("other"), In("folder")), files_->Remove(In("none")),
        files_->Remove(In("folder"))}) {
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(reason.find_first_of("\r\n"), std::string::npos) << reason;
    EXPECT_FALSE(reason.ends_with(' ')) << reason;
  }
  EXPECT_EQ(Read("other"), "OtheroTHER") << "a failed copy has spoiled it";
  EXPECT_EQ(files_->Copy(In("one"), In("OTHER")), "");
  EXPECT_TRUE(Read("other") == bytes);
  EXPECT_EQ(files_->Remove(In("OTHER")), "");
  EXPECT_EQ(Read("other"), "unreadable");
}

TEST_F(FilesContract, ListsFoldersAndTellsWhatExists) {
  const std::string name = "\u00e4\U0001F552.txt";
  ASSERT_TRUE(files_->Append(In(name), "x"));
  std::filesystem::create_directory(directory_ / "sub.dir");
  const auto listed = [&](const std::string& folder) {
    std::multiset<std::string> names;
    files_->ListFolder(folder, [&](const std::string& entry, Files::EntryKind kind) {
      names.insert(entry + (kind == Files::EntryKind::Folder ? "\\" : ""));
      return true;
    });
    return names;
  };
  const std::string folder = In("");
  for (const std::string& written : {folder, folder.substr(0, folder.size() - 1)}) {
    EXPECT_EQ(listed(written), (std::multiset<std::string>{name, "sub.dir\\"}));
  }
  for (const std::string& none : {In("none"), In(name), std::string()}) {
    EXPECT_EQ(listed(none).size(), 0U) << none;
  }
  int seen = 0;
  files_->ListFolder(folder, [&](const std::string&, Files::EntryKind) { return ++seen < 1; });
  EXPECT_EQ(seen, 1);

  EXPECT_TRUE(files_->Exists(In("\u00c4\U0001F552.TXT")));
  for (const std::string& none : {In("none"), In("SUB.dir"), In(""), std::string()}) {
    EXPECT_FALSE(files_->Exists(none)) << none;
  }
}

}  // namespace
}  // namespace orvanto
