#include "platform/posix/FileRegistry.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>

#include "platform/registry/RegistryText.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::posix {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// What means something to the format, and what is no text.
const std::string kWritten = R"(Orvanto registry 1
# This file may be edited. The program writes it anew and does not keep comments.

[HKEY_CURRENT_USER]
"at the root"="x"

[HKEY_LOCAL_MACHINE\Soft ware]\100%25 Grüße%0a Ж € 𝄞 %e2%82]
""=" \t blanks \t "
"\\x41 \"quoted\""="[HKEY_USERS] %41 \r\n# end of registry \x00\x1f\x7f Grüße Ж € 𝄞"
"bytes"=hex:00,80,ff
"d"=dword:800100ff
"no text"="\xc0\xaf \xed\xa0\x80 \xf5\x80\x80\x80 \xe2\x82"
"none"=hex:
"odd"=hex(4):01,02
"t"=hex(4294967295):00
"unterminated"=hex(1):78

[HKEY_USERS\Empty\Leaf]

# end of registry
)";

TEST(RegistryText, IsReadAsItIsWrittenAndOnlyAsAWhole) {
  RegistryTree tree;
  EXPECT_FALSE(ParseRegistry(kWritten, tree));
  EXPECT_EQ(FormatRegistry(tree), kWritten);
  for (std::size_t size = 0; size < kWritten.size() - 1; ++size) {
    EXPECT_TRUE(ParseRegistry(kWritten.substr(0, size), tree)) << size;
  }
}

TEST(RegistryText, ReadsWhatAPersonWrites) {
  RegistryTree tree;
  const auto error = ParseRegistry(
      "\xEF\xBB\xBFOrvanto registry 1\r\n; note\r\n\r\n  [hkey_current_user\\Software\\A%5b]  \r\n"
      "\t\"n\" = \"first\"\r\n\"N\"=\"sec\\x6fnd\"\r\n\"d\"=dword:a\r\n\"h\"=hex: 01, FF\r\n"
      "[HKEY_CURRENT_USER\\SOFTWARE\\a[\\b]\r\n# end of registry\r\n\r\n",
      tree);
  ASSERT_FALSE(error) << error->line << ": " << error->reason;
  EXPECT_THAT(
      FormatRegistry(tree),
      HasSubstr("\n[HKEY_CURRENT_USER\\Software\\A[]\n\"d\"=dword:0000000a\n"
                "\"h\"=hex:01,ff\n\"n\"=\"second\"\n\n[HKEY_CURRENT_USER\\Software\\A[\\b]"));
  EXPECT_EQ(tree.DeleteKey("2"), kAccessDenied) << "a root";
}

TEST(RegistryText, NamesTheLineOfDamage) {
  const auto damage = [](const std::string& text) {
    RegistryTree tree;
    const auto error = ParseRegistry(text + "\n# end of registry\n", tree);
    return error ? error->line : 0;
  };
  for (const char* line :
       {"[HKEY_USERS\\A", "[HKEY_NOWHERE\\A]", "[HKEY_USERS\\\\A]", "[HKEY_USERS\\100%]", "n=\"x\"",
        "\"n\" \"x\"", "\"n\"=\"x", "\"n\"=\"x\" y", "\"n\"=\"C:\\dir\"", "\"n\"=dword:00000000a",
        "\"n\"=hex:1", "\"n\"=hex:01,", "\"n\"=hex(x):01", "\"n\"=text"}) {
    EXPECT_EQ(damage("Orvanto registry 1\n[HKEY_USERS]\n"s + line), 3) << line;
  }
  EXPECT_EQ(damage("Orvanto registry 1\n[HKEY_USERS]\n# end of registry\n[HKEY_USERS]"), 4);
  EXPECT_EQ(damage("Orvanto registry 1\n\"n\"=\"x\""), 2);
  for (const char* line : {"Orvanto registry 10", "[HKEY_USERS]"}) EXPECT_EQ(damage(line), 1);
}

// With short ways to one key of it.
class Store : public FileRegistry {
 public:
  using FileRegistry::FileRegistry;
  Status Put(const std::string& text, const std::string& name = "n") {
    Key key = 0;
    if (Status status = CreateKey(RootKey::CurrentUser, "A", kSetValue, key)) return status;
    const auto size = static_cast<std::uint32_t>(text.size() + 1);
    return SetValue(key, name, ValueType::String, text.c_str(), size);
  }
  std::string Get(const std::string& name = "n") {
    ::usleep(11'000);  // after which the file is looked at again
    if (reader_ == 0) OpenKey(RootKey::CurrentUser, "A", kQueryValue, reader_);
    ValueType type = ValueType::None;
    char text[64] = "nothing";
    std::uint32_t size = sizeof text;
    QueryValue(reader_, name, type, text, size);
    return text;
  }

 private:
  Key reader_ = 0;
};

class FileRegistryTest : public testing::Test {
 protected:
  bool Locked() const {
    const Descriptor lock(::open((path_ + ".lock").c_str(), O_RDWR | O_CLOEXEC));
    return ::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0;
  }
  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "registry";
  const std::string new_ = path_ + ".new";
  const std::string damaged_ = path_ + ".damaged-";
  std::vector<std::string> said_;
  const FileRegistry::Report report_ = [this](const std::string& what) { said_.push_back(what); };
};

TEST_F(FileRegistryTest, KeepsWhatWasWrittenWhereLinksLeadAndLeavesNothingBeside) {
  fs::create_directory(directory_ / "dir");
  fs::create_symlink("dir/second", path_);
  fs::create_symlink("../other/target", directory_ / "dir/second");
  const std::string target = directory_ / "other/target";
  Store registry(path_, report_);
  ASSERT_EQ(registry.Put("x"), kSuccess);
  EXPECT_EQ(Store(path_, report_).Get(), "x");
  const fs::perms own = fs::perms::owner_read | fs::perms::owner_write;
  EXPECT_EQ(fs::status(target).permissions(), own);
  fs::permissions(target, own | fs::perms::group_read);
  // What somebody may have left there.
  WriteFile(directory_ / "note", "note");
  fs::create_symlink(directory_ / "note", target + ".new");
  EXPECT_EQ(registry.Put("y"), kSuccess);
  EXPECT_EQ(ReadFile(directory_ / "note"), "note");
  EXPECT_FALSE(fs::exists(fs::symlink_status(target + ".new")));
  EXPECT_EQ(fs::status(target).permissions(), own | fs::perms::group_read) << "as it was";
  EXPECT_TRUE(fs::is_symlink(path_) && fs::is_symlink(directory_ / "dir/second"));
  for (const auto& open : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(open, gone) != target) continue;
    EXPECT_EQ(open.symlink_status().permissions() & fs::perms::owner_write, fs::perms::none);
  }
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(FileRegistryTest, AChangeIsOneReplacementUnderALockOrNone) {
  Store registry(path_, report_);
  ASSERT_EQ(registry.Put("0"), kSuccess);
  std::string kept = ReadFile(path_);
  {
    RegistryChange change(registry);
    ASSERT_EQ(registry.Put("1"), kSuccess);
    EXPECT_TRUE(Locked());
    EXPECT_EQ(ReadFile(path_), kept);
    WriteFile(path_, kept + "\n");
    EXPECT_EQ(registry.Get(), "1") << "nobody comes between";
    EXPECT_EQ(change.Commit(), kSuccess);
  }
  EXPECT_FALSE(Locked());
  kept = ReadFile(path_) + "\n";
  EXPECT_THAT(kept, HasSubstr("\"n\"=\"1\""));
  WriteFile(path_, kept);
  EXPECT_EQ(registry.Put("1"), kSuccess) << "which changes nothing";
  // One with a failed write is undone as a whole.
  RegistryChange change(registry);
  EXPECT_EQ(registry.Put("new"), kSuccess);
  Registry::Key key = 0;
  EXPECT_EQ(registry.CreateKey(RootKey::CurrentUser, "a\\\\b", kSetValue, key), kBadPathname);
  EXPECT_EQ(change.Commit(), kBadPathname);
  EXPECT_EQ(registry.Get(), "1");
  EXPECT_EQ(ReadFile(path_), kept);
}

TEST_F(FileRegistryTest, TwoOnOneFileLoseNoUpdateAndSeeEachOther) {
  Store one(path_, report_);
  Store two(path_, report_);
  // Texts of one length, so that only the file's identity and time tell the difference.
  for (const char* text : {"aa", "bb", "cc"}) {
    ASSERT_EQ(one.Put(text, text), kSuccess);
    ASSERT_EQ(two.Put(text), kSuccess);
    EXPECT_EQ(one.Get() + two.Get(text), std::string(text) + text);
  }
  EXPECT_EQ(one.Get("aa") + two.Get("bb"), "aabb");
  std::string edited = ReadFile(path_);
  std::replace(edited.begin(), edited.end(), 'c', 'z');
  WriteFile(path_, edited);
  EXPECT_EQ(one.Get(), "zz") << "an edit in place, of the same size";
  EXPECT_THAT(said_, IsEmpty());
  fs::remove(path_);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(one.Get(), "nothing");
  EXPECT_THAT(said_, ElementsAre(HasSubstr("is gone")));
}

TEST_F(FileRegistryTest, ADamagedFileIsSetAsideAtTheStartAndLaterByTheNextWrite) {
  WriteFile(damaged_ + "1", "older");
  WriteFile(path_, "Orvanto registry 1\nrubbish\n");
  Store registry(path_, report_);
  EXPECT_EQ(registry.Get(), "nothing");
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_THAT(said_, ElementsAre(AllOf(HasSubstr("line 2: "), HasSubstr(damaged_ + "2"))));
  ASSERT_EQ(registry.Put("good"), kSuccess);
  WriteFile(path_, "half an edit");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Get(), "good");
  EXPECT_EQ(said_.size(), 2u) << "said once";
  EXPECT_EQ(ReadFile(path_), "half an edit");
  // A write that fails sets it aside no more than once.
  fs::create_directory(new_);
  EXPECT_EQ(registry.Put("better"), kWriteFault);
  fs::remove(new_);
  for (const char* text : {"better", "best"}) EXPECT_EQ(registry.Put(text), kSuccess);
  EXPECT_EQ(said_.size(), 4u) << said_.back();
  EXPECT_EQ(Store(path_, nullptr).Get(), "best");
  const char* asides[] = {"older", "Orvanto registry 1\nrubbish\n", "half an edit", ""};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(ReadFile(damaged_ + std::to_string(i + 1)), asides[i]);
}

TEST_F(FileRegistryTest, WhoOnlyLooksInLeavesADamagedFileAlone) {
  ASSERT_EQ(Store(path_, nullptr).Put("good"), kSuccess);
  const std::string good = ReadFile(path_);
  Store before(path_, report_, FileRegistry::OnDamage::Refuse);
  WriteFile(path_, "half");
  Store after(path_, report_, FileRegistry::OnDamage::Refuse);
  for (Store* registry : {&before, &after}) {
    EXPECT_EQ(registry->Put("x"), kAccessDenied);
    EXPECT_EQ(RegistryChange(*registry).Commit(), kAccessDenied);
    EXPECT_EQ(registry->Get(), registry == &before ? "good" : "nothing");
  }
  EXPECT_THAT(said_, ElementsAre(HasSubstr("line 1: "), HasSubstr("line 1: ")));
  EXPECT_EQ(ReadFile(path_), "half");
  EXPECT_FALSE(fs::exists(damaged_ + "1"));
  WriteFile(path_, good);
  EXPECT_EQ(after.Get(), "good");
  EXPECT_EQ(before.Put("better"), kSuccess);
}

// A limit of this process, for the time of a scope.
class Limit {
 public:
  Limit(__rlimit_resource resource, rlim_t value) : resource_(resource) {
    ::getrlimit(resource, &old_);
    const rlimit low{value, old_.rlim_max};
    ::setrlimit(resource, &low);
  }
  ~Limit() { ::setrlimit(resource_, &old_); }

 private:
  const __rlimit_resource resource_;
  rlimit old_{};
};

TEST_F(FileRegistryTest, AFailedWriteKeepsTheOldFileAndTheOldContent) {
  Store registry(path_, [this](const std::string& message) {
    said_.push_back(message);
    EXPECT_TRUE(Locked()) << "until it is done";
  });
  ASSERT_EQ(registry.Put("old"), kSuccess);
  const std::string before = ReadFile(path_);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  for (const std::size_t failures : {1U, 2U}) {
    std::optional<Limit> full(std::in_place, RLIMIT_FSIZE, before.size());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Put("a longer text"), kDiskFull);
    full.reset();
    EXPECT_EQ(registry.Get(), "old");
    EXPECT_EQ(ReadFile(path_), before);
    EXPECT_FALSE(fs::exists(new_));
    EXPECT_EQ(said_.size(), failures) << "again after a success";
    EXPECT_THAT(said_.back(), HasSubstr("cannot be written"));
    for (const char* text : {"young", "old"}) EXPECT_EQ(registry.Put(text), kSuccess);
  }
  std::signal(SIGXFSZ, handler);
}

TEST_F(FileRegistryTest, WhatCannotBeReadIsTriedAgainAndNotOverwritten) {
  fs::create_directory(path_);
  EXPECT_EQ(Store(path_, report_).Put("x"), kAccessDenied);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
  fs::remove(path_);
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  ASSERT_EQ(Store(path_, nullptr).Put("x"), kSuccess) << "an empty one, which is replaced";
  Store registry(path_, report_);
  for (const std::size_t times : {2U, 3U}) {
    WriteFile(path_, ReadFile(path_) + "\n");
    std::optional<Limit> noDescriptors(std::in_place, RLIMIT_NOFILE, 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Get(), "x");
    noDescriptors.reset();
    EXPECT_EQ(said_.size(), times) << "once until it could be read";
    EXPECT_EQ(registry.Get(), "x");
  }
  EXPECT_EQ(registry.Put("y"), kSuccess);
}

}  // namespace
}  // namespace orvanto::posix
