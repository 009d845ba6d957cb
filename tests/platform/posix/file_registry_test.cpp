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
using testing::HasSubstr;

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

TEST(RegistryText, ReadsWhatAPersonWritesAndNamesTheLineOfDamage) {
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
  const auto damage = [&](const std::string& text) {
    const auto wrong = ParseRegistry(text + "\n# end of registry\n", tree);
    return wrong ? wrong->line : 0;
  };
  for (const char* line :
       {"[HKEY_USERS\\A", "[HKEY_NOWHERE\\A]", "[HKEY_USERS\\\\A]", "[HKEY_USERS\\100%]",
        "\"n\"=\"x", "\"n\"=\"x\" y", "\"n\"=\"C:\\dir\"", "\"n\"=dword:00000000a", "\"n\"=hex:1",
        "\"n\"=hex:01,", "\"n\"=hex(x):01"}) {
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
  static bool Locked(const std::string& path) {
    const Descriptor lock(::open((path + ".lock").c_str(), O_RDWR | O_CLOEXEC));
    return ::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0;
  }
  // What it holds, the files with their first lines, of a registry's with the value, and how what
  // has been said since begins.
  std::string Now(Store& store) {
    std::map<std::string, std::string> files;
    for (const auto& each : fs::directory_iterator(directory_ / "")) {
      const std::string text = ReadFile(each.path());
      const std::size_t begin = text.find("\"n\"") == text.npos ? 0 : text.find("\"n\"");
      files[each.path().filename()] = text.substr(begin, text.find('\n', begin) - begin);
    }
    files.erase("registry.lock");
    std::string all = store.Get();
    for (const auto& [name, text] : files) all += ", " + name + ' ' + text;
    const std::size_t begin = ("The registry file " + path_).size();
    for (const auto& what : std::exchange(said_, {})) all += ';' + what.substr(begin, 19);
    return all;
  }
  // The same after a write, and its error.
  std::string After(Store& store, const std::string& text) {
    const Status status = store.Put(text);
    return Now(store) + (status == kSuccess ? "" : " = " + std::to_string(status));
  }

  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "registry";
  std::vector<std::string> said_;
  const FileRegistry::Report report_ = [this](const std::string& what) { said_.push_back(what); };
};

TEST_F(FileRegistryTest, AChangeIsOneReplacementUnderALockOrNoneWhereLinksLead) {
  fs::create_symlink("dir/second", path_);
  fs::create_directory(directory_ / "dir");
  fs::create_symlink("../other/target", directory_ / "dir/second");
  const std::string target = directory_ / "other/target";
  Store registry(path_, report_);
  ASSERT_EQ(registry.Put("0"), kSuccess);
  const fs::perms own = fs::perms::owner_read | fs::perms::owner_write;
  EXPECT_EQ(fs::status(target).permissions(), own);
  fs::permissions(target, own | fs::perms::group_read);
  // What somebody may have left there.
  WriteFile(directory_ / "note", "note");
  fs::create_symlink(directory_ / "note", target + ".new");
  {
    RegistryChange change(registry);
    ASSERT_EQ(registry.Put("1"), kSuccess);
    EXPECT_TRUE(Locked(target));
    WriteFile(path_, ReadFile(path_) + "\n");
    EXPECT_EQ(Now(registry), "1, dir , note note, other , registry \"n\"=\"0\"")
        << "nobody between";
    EXPECT_EQ(change.Commit(), kSuccess);
  }
  EXPECT_FALSE(Locked(target) || fs::exists(fs::symlink_status(target + ".new")));
  EXPECT_EQ(fs::status(target).permissions(), own | fs::perms::group_read) << "as it was";
  WriteFile(path_, ReadFile(path_) + "\n");
  const std::string kept = ReadFile(path_);
  EXPECT_EQ(registry.Put("1"), kSuccess) << "which changes nothing";
  // One with a failed write is undone as a whole.
  RegistryChange change(registry);
  EXPECT_EQ(registry.Put("new"), kSuccess);
  Registry::Key key = 0;
  EXPECT_EQ(registry.CreateKey(RootKey::CurrentUser, "a\\\\b", kSetValue, key), kBadPathname);
  EXPECT_EQ(change.Commit(), kBadPathname);
  EXPECT_EQ(Now(registry), "1, dir , note note, other , registry \"n\"=\"1\"");
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
  std::string edited = ReadFile(path_);
  std::replace(edited.begin(), edited.end(), 'c', 'z');
  WriteFile(path_, edited);
  EXPECT_EQ(one.Get(), "zz") << "an edit in place, of the same size";
  fs::remove(path_);
  EXPECT_EQ(Now(one), "nothing; is gone. The regis");
}

TEST_F(FileRegistryTest, ADamagedFileIsSetAsideByTheNextStartOrWriteNotByWhoOnlyLooks) {
  WriteFile(path_ + ".damaged-1", "older");
  WriteFile(path_, "Orvanto registry 1\nrubbish");
  Store registry(path_, report_);
  EXPECT_THAT(said_, testing::ElementsAre(HasSubstr("as " + path_ + ".damaged-2; ")));
  const std::string both = ", registry.damaged-1 older, registry.damaged-2 Orvanto registry 1";
  const std::string all = both + ", registry.damaged-3 half";
  EXPECT_EQ(Now(registry), "nothing" + both + "; is damaged: line 2");
  ASSERT_EQ(registry.Put("good"), kSuccess);
  Store looker(path_, report_, FileRegistry::OnDamage::Refuse);
  WriteFile(path_, "half");
  Store late(path_, report_, FileRegistry::OnDamage::Refuse);
  EXPECT_EQ(After(looker, "x"),
            "good, registry half" + both + "; is damaged: line 1; is damaged: line 1 = 5");
  EXPECT_EQ(After(late, "x"), "nothing, registry half" + both + " = 5");
  EXPECT_EQ(Now(registry), "good, registry half" + both + "; is damaged: line 1");
  // A write that fails sets it aside no more than once.
  fs::create_directory(path_ + ".new");
  EXPECT_EQ(After(registry, "best"),
            "good, registry half" + all + ", registry.new ; cannot be written: = 29");
  fs::remove(path_ + ".new");
  EXPECT_EQ(After(registry, "best"),
            "best, registry \"n\"=\"best\"" + all + "; was damaged and ha");
  EXPECT_EQ(After(registry, "x"), "x, registry \"n\"=\"x\"" + all);
  for (Store* each : {&looker, &late}) {
    EXPECT_EQ(each->Get(), "x");
    EXPECT_EQ(each->Put("x"), kSuccess);
  }
}

// Sets a limit of this process, and returns what it was.
rlim_t Limit(__rlimit_resource resource, rlim_t value) {
  rlimit limit{};
  ::getrlimit(resource, &limit);
  std::swap(limit.rlim_cur, value);
  ::setrlimit(resource, &limit);
  return value;
}

TEST_F(FileRegistryTest, WhatFailsKeepsTheOldFileAndIsToldOnceUntilItSucceeds) {
  fs::create_directory(path_);
  Store folder(path_, report_);
  EXPECT_EQ(After(folder, "x"), "nothing, registry ; cannot be read: Is = 5");
  fs::remove(path_);
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  ASSERT_EQ(Store(path_, nullptr).Put("old"), kSuccess) << "an empty one, which is set aside";
  EXPECT_TRUE(fs::remove(path_ + ".damaged-1"));
  Store registry(path_, [this](const std::string& message) {
    said_.push_back(message);
    EXPECT_TRUE(message.find("written") == message.npos || Locked(path_)) << "until it is done";
  });
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  for (int round = 0; round < 2; ++round) {
    const std::string before = ReadFile(path_);
    const rlim_t sizes = Limit(RLIMIT_FSIZE, before.size());
    EXPECT_EQ(registry.Put("a longer text"), kDiskFull);
    EXPECT_EQ(After(registry, "a longer text"),
              "old, registry \"n\"=\"old\"; cannot be written: = 112");
    Limit(RLIMIT_FSIZE, sizes);
    EXPECT_EQ(ReadFile(path_), before);
    for (const char* text : {"young", "old"}) EXPECT_EQ(registry.Put(text), kSuccess);

    WriteFile(path_, before + "\n");
    const rlim_t descriptors = Limit(RLIMIT_NOFILE, 0);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Get(), "old");
    Limit(RLIMIT_NOFILE, descriptors);
    EXPECT_EQ(Now(registry), "old, registry \"n\"=\"old\"; cannot be read: To");
  }
  std::signal(SIGXFSZ, handler);
}

}  // namespace
}  // namespace orvanto::posix
