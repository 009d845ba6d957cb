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
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

RegistryTree HostileTree() {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  const std::string texts[] = {"",
                               all,
                               "Grüße Ж € 𝄞",
                               "\xC0\xAF \xED\xA0\x80 \xF5\x80\x80\x80 \xE2\x82",
                               "\\x41 \\n \"quoted\" %41 [HKEY_CURRENT_USER] # end of registry",
                               std::string("nul\0inside", 10),
                               " \t blanks \t "};
  RegistryTree tree;
  for (const std::string& text : texts) {
    std::string component = "k" + text.substr(0, 200);
    std::replace(component.begin(), component.end(), '\\', '/');
    const std::string path = "Soft ware]\\" + component;
    std::string id;
    EXPECT_EQ(tree.CreateKey(RootKey::LocalMachine, path), kSuccess);
    EXPECT_EQ(RegistryTree::IdOf(RootKey::LocalMachine, path, id), kSuccess);
    tree.SetValue(id, text, ValueType::String, text + '\0');
    tree.SetValue(id, "unterminated", ValueType::String, text);
    tree.SetValue(id, "b" + text, ValueType::Binary, text);
    tree.SetValue(id, "odd", ValueType::Dword, text.substr(0, 3));
    tree.SetValue(id, "d", ValueType::Dword, std::string("\xFF\0\x01\x80", 4));
    tree.SetValue(id, "t", static_cast<ValueType>(4294967295u), text);
  }
  EXPECT_EQ(tree.CreateKey(RootKey::Users, "Empty\\Leaf"), kSuccess);
  tree.SetValue("1", "at the root", ValueType::String, std::string("x\0", 2));
  return tree;
}

TEST(RegistryText, RoundTripsHostileContentAndNoPartOfItIsTakenForTheWhole) {
  const RegistryTree tree = HostileTree();
  const std::string text = FormatRegistry(tree);
  EXPECT_THAT(text, HasSubstr("\\xc0\\xaf \\xed\\xa0\\x80 \\xf5\\x80"));
  EXPECT_THAT(text, HasSubstr("Grüße Ж € 𝄞"));
  EXPECT_THAT(FormatRegistry(RegistryTree()), Not(HasSubstr("[")));
  for (std::size_t size = 0; size <= text.size(); size += size + 99 < text.size() ? 29 : 1) {
    RegistryTree back;
    const bool damaged = ParseRegistry(text.substr(0, size), back).has_value();
    // Only the last line end may be missing.
    ASSERT_EQ(damaged, size + 1 < text.size()) << size;
    EXPECT_TRUE(damaged || back == tree);
  }
}

TEST(RegistryText, ReadsWhatAPersonWrites) {
  RegistryTree tree;
  const auto error = ParseRegistry(
      "\xEF\xBB\xBFOrvanto registry 1\r\n; note\r\n\r\n  [hkey_current_user\\Software\\A%5b]  \r\n"
      "\t\"n\" = \"first\"\r\n\"N\"=\"sec\\x6fnd\"\r\n\"d\"=dword:a\r\n\"h\"=hex: 01, FF\r\n"
      "# end of registry\r\n\r\n",
      tree);
  ASSERT_FALSE(error) << error->line << ": " << error->reason;
  const std::string id = "1\\software\\a[";
  ASSERT_NE(tree.Find(id), nullptr);
  EXPECT_EQ(tree.FindValue(id, "n")->data, std::string("second\0", 7));
  EXPECT_EQ(tree.FindValue(id, "d")->data, std::string("\x0A\0\0\0", 4));
  EXPECT_EQ(tree.FindValue(id, "h")->data, "\x01\xFF");
  EXPECT_EQ(tree.CreateKey(RootKey::CurrentUser, "SOFTWARE\\a[\\b"), kSuccess);
  EXPECT_EQ(tree.Find(id + "\\b")->path, "Software\\A[\\b");
  EXPECT_EQ(tree.DeleteKey("2"), kAccessDenied) << "a root";
}

TEST(RegistryText, NamesTheLineAndTheReasonOfDamage) {
  const std::string begin = "Orvanto registry 1\n[HKEY_USERS]\n";
  const std::pair<std::string, const char*> cases[] = {
      {begin + "[HKEY_CURRENT_USER\\A", "3: the key has no closing bracket"},
      {begin + "[HKEY_NOWHERE\\A]", "3: the key must begin with one of HKEY_CURRENT_USER"},
      {begin + "[HKEY_CURRENT_USER\\\\A]", "3: a part of the key is empty or longer"},
      {begin + "[HKEY_CURRENT_USER\\100%]", "3: in a key, %"},
      {begin + "Name=\"x\"", "3: a line must be"},
      {begin + "\"n\" \"x\"", "3: after the name of a value an = is missing"},
      {begin + "\"n\"=\"x", "3: the closing quote is missing"},
      {begin + "\"n\"=\"x\" y", "3: something follows the closing quote"},
      {begin + "\"n\"=\"C:\\dir\"", "3: in quotes, a backslash must be followed"},
      {begin + "\"n\"=dword:00000000a", "3: after dword: up to eight hexadecimal digits"},
      {begin + "\"n\"=hex:1", "3: hex: must be followed"},
      {begin + "\"n\"=hex:01,", "3: hex: must be followed"},
      {begin + "\"n\"=hex(x):01", "3: a value must be a \"text\""},
      {begin + "\"n\"=text", "3: a value must be a \"text\""},
      {begin + "# end of registry\nmore", "4: something follows the line"},
      {"Orvanto registry 2", "1: the format is of another version"},
      {"\"n\"=\"x\"", "1: the first line"},
      {"Orvanto registry 1\n\"n\"=\"x\"", "2: a value stands before the first"}};
  for (const auto& [text, expected] : cases) {
    RegistryTree tree;
    const auto error = ParseRegistry(text + "\n# end of registry\n", tree);
    ASSERT_TRUE(error) << text;
    EXPECT_THAT(std::to_string(error->line) + ": " + error->reason, StartsWith(expected)) << text;
  }
}

// With short ways to one key of it.
class Store : public FileRegistry {
 public:
  using FileRegistry::FileRegistry;
  Status Put(const std::string& text, const std::string& name = "n") {
    Key key = 0;
    if (Status status = CreateKey(RootKey::CurrentUser, "A", kSetValue, key)) return status;
    const auto size = static_cast<std::uint32_t>(text.size() + 1);
    const Status status = SetValue(key, name, ValueType::String, text.c_str(), size);
    CloseKey(key);
    return status;
  }
  std::string Get(const std::string& name = "n") {
    Key key = 0;
    if (OpenKey(RootKey::CurrentUser, "A", kQueryValue, key) != kSuccess) return "no key";
    char text[64] = "no value";
    std::uint32_t size = sizeof text;
    ValueType type = ValueType::None;
    QueryValue(key, name, type, text, size);
    CloseKey(key);
    return text;
  }
  // What it shows once it may have noticed a change of the file, and a bit later at most.
  std::string Soon(const std::string& expected, const std::string& name = "n") {
    std::string text;
    for (int i = 0; i < 50 && (i == 0 || text != expected); ++i) {
      ::usleep(11'000);
      text = Get(name);
    }
    return text;
  }
};

class FileRegistryTest : public testing::Test {
 protected:
  FileRegistry::Report Reporter() {
    return [this](const std::string& message) { said_.push_back(message); };
  }
  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "registry";
  const std::string new_ = path_ + ".new";
  const std::string damaged_ = path_ + ".damaged-";
  std::vector<std::string> said_;
};

TEST_F(FileRegistryTest, KeepsWhatWasWrittenAndLeavesNothingBeside) {
  const std::string deep = directory_ / "new/dir/registry";
  ASSERT_EQ(Store(deep, Reporter()).Put("x"), kSuccess);
  Store again(deep, Reporter());
  EXPECT_EQ(again.Get(), "x");
  // What may lie there from before: a file, another one's name, something else.
  const std::string other = directory_ / "other";
  WriteFile(other, "other");
  const std::function<void()> leftovers[] = {
      [&] { WriteFile(deep + ".new", "left behind by a killed process"); },
      [&] { fs::create_hard_link(other, deep + ".new"); },
      [&] { fs::create_symlink(other, deep + ".new"); }};
  for (const auto& leave : leftovers) {
    leave();
    EXPECT_EQ(again.Put(std::to_string(&leave - leftovers)), kSuccess);
    EXPECT_FALSE(fs::exists(fs::symlink_status(deep + ".new")));
  }
  EXPECT_EQ(ReadFile(other), "other");
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(entry, gone) != deep) continue;
    const int flags = ::fcntl(std::stoi(entry.path().filename()), F_GETFL);
    EXPECT_EQ(flags & O_ACCMODE, O_RDONLY);
  }
  const fs::perms own = fs::perms::owner_read | fs::perms::owner_write;
  EXPECT_EQ(fs::status(deep).permissions(), own);
  fs::permissions(deep, own | fs::perms::group_read);
  EXPECT_EQ(again.Put("y"), kSuccess);
  EXPECT_EQ(fs::status(deep).permissions(), own | fs::perms::group_read) << "as it was";
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(FileRegistryTest, AChangeIsOneReplacementUnderALockOrNone) {
  Store registry(path_, Reporter());
  ASSERT_EQ(registry.Put("0"), kSuccess);
  const std::string before = ReadFile(path_);
  const Descriptor lock(::open((path_ + ".lock").c_str(), O_RDWR | O_CLOEXEC));
  {
    RegistryChange change(registry);
    for (const char* text : {"1", "2", "3"}) {
      EXPECT_NE(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
      ASSERT_EQ(registry.Put(text), kSuccess);
    }
    EXPECT_NE(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(ReadFile(path_), before);
    WriteFile(path_, before + "\n");
    EXPECT_EQ(registry.Soon("3"), "3") << "nobody comes between";
    EXPECT_EQ(change.Commit(), kSuccess);
  }
  EXPECT_EQ(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
  ::flock(lock.Get(), LOCK_UN);
  EXPECT_THAT(ReadFile(path_), HasSubstr("\"n\"=\"3\""));

  // One that changes nothing leaves the file alone.
  WriteFile(path_, ReadFile(path_) + "\n");
  EXPECT_EQ(registry.Put("3"), kSuccess);
  EXPECT_TRUE(ReadFile(path_).ends_with("\n\n"));

  // One with a failed write is undone as a whole.
  const std::string kept = ReadFile(path_);
  RegistryChange change(registry);
  EXPECT_EQ(registry.Put("new"), kSuccess);
  Registry::Key key = 0;
  EXPECT_EQ(registry.CreateKey(RootKey::CurrentUser, "a\\\\b", kSetValue, key), kBadPathname);
  EXPECT_EQ(registry.Put("new", "more"), kSuccess);
  EXPECT_EQ(change.Commit(), kBadPathname);
  EXPECT_EQ(registry.Get(), "3");
  EXPECT_EQ(ReadFile(path_), kept);
}

TEST_F(FileRegistryTest, TwoOnOneFileLoseNoUpdateAndSeeEachOther) {
  Store one(path_, Reporter());
  Store two(path_, Reporter());
  // Texts of one length, so that only the file's identity and time tell the difference.
  for (const char* text : {"aa", "bb", "cc", "dd"}) {
    ASSERT_EQ(one.Put(text, text), kSuccess);
    ASSERT_EQ(two.Put(text), kSuccess);
    EXPECT_EQ(one.Soon(text), text);
    EXPECT_EQ(two.Soon(text, text), text);
  }
  EXPECT_EQ(one.Get("aa") + two.Get("bb"), "aabb");
  EXPECT_THAT(said_, IsEmpty());
  fs::remove(path_);
  EXPECT_EQ(one.Soon("no key"), "no key");
  EXPECT_EQ(one.Soon("no key"), "no key");
  EXPECT_THAT(said_, ElementsAre(HasSubstr("is gone")));
}

TEST_F(FileRegistryTest, ADamagedFileIsSetAsideAtTheStart) {
  WriteFile(damaged_ + "1", "older");
  WriteFile(path_, "Orvanto registry 1\nrubbish\n");
  Store registry(path_, Reporter());
  EXPECT_EQ(registry.Get(), "no key");
  EXPECT_EQ(ReadFile(damaged_ + "1"), "older");
  EXPECT_EQ(ReadFile(damaged_ + "2"), "Orvanto registry 1\nrubbish\n");
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_THAT(said_, ElementsAre(AllOf(HasSubstr("line 2: "), HasSubstr(damaged_ + "2"))));
}

TEST_F(FileRegistryTest, DamageWhileRunningIsSaidOnceAndSetAsideByTheNextWrite) {
  Store registry(path_, Reporter());
  ASSERT_EQ(registry.Put("good"), kSuccess);
  for (const char* damage : {"half", "half an edit"}) {
    WriteFile(path_, damage);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Soon("good"), "good");
  }
  ASSERT_EQ(said_.size(), 2u);
  EXPECT_EQ(ReadFile(path_), "half an edit");

  // A write that fails sets it aside no more than once.
  fs::create_directory(new_);
  EXPECT_EQ(registry.Put("better"), kWriteFault);
  fs::remove(new_);
  EXPECT_EQ(registry.Put("better"), kSuccess);
  EXPECT_EQ(ReadFile(damaged_ + "1"), "half an edit");
  EXPECT_FALSE(fs::exists(damaged_ + "2"));
  EXPECT_EQ(said_.size(), 4u) << said_.back();
  Store again(path_, Reporter());
  EXPECT_EQ(again.Get(), "better");
}

TEST_F(FileRegistryTest, WhoOnlyLooksInLeavesADamagedFileAlone) {
  for (const bool damagedBefore : {true, false}) {
    SCOPED_TRACE(damagedBefore);
    said_.clear();
    fs::remove(path_);
    ASSERT_EQ(Store(path_, nullptr).Put("good"), kSuccess);
    const std::string good = ReadFile(path_);
    if (damagedBefore) WriteFile(path_, "half");
    Store registry(path_, Reporter(), FileRegistry::OnDamage::Refuse);
    if (!damagedBefore) WriteFile(path_, "half");
    EXPECT_EQ(registry.Put("x"), kAccessDenied);
    EXPECT_EQ(RegistryChange(registry).Commit(), kAccessDenied);
    EXPECT_EQ(registry.Get(), damagedBefore ? "no key" : "good");
    EXPECT_THAT(said_, ElementsAre(HasSubstr("line 1: ")));
    EXPECT_EQ(ReadFile(path_), "half");
    EXPECT_FALSE(fs::exists(damaged_ + "1"));
    WriteFile(path_, good);
    EXPECT_EQ(registry.Soon("good"), "good");
    EXPECT_EQ(registry.Put("better"), kSuccess);
  }
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
  const Descriptor lock(::open((path_ + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  Store registry(path_, [&](const std::string& message) {
    said_.push_back(message);
    EXPECT_NE(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0) << "until it is done";
  });
  ASSERT_EQ(registry.Put("old"), kSuccess);
  const std::string before = ReadFile(path_);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  {
    const Limit full(RLIMIT_FSIZE, before.size());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Put("a longer text"), kDiskFull);
  }
  std::signal(SIGXFSZ, handler);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be written")));
  EXPECT_EQ(registry.Get(), "old");
  EXPECT_EQ(ReadFile(path_), before);

  fs::create_directory(new_);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Put("new"), kWriteFault);
  fs::remove(new_);
  EXPECT_EQ(registry.Put("young"), kSuccess);
  EXPECT_EQ(registry.Put("old"), kSuccess);
  EXPECT_EQ(said_.size(), 2U);
  fs::create_directory(new_);
  RegistryChange change(registry);
  EXPECT_EQ(registry.Put("new"), kSuccess);
  EXPECT_EQ(change.Commit(), kWriteFault);
  EXPECT_EQ(said_.size(), 3U) << "again after a success";
  EXPECT_EQ(registry.Get(), "old");
  EXPECT_EQ(ReadFile(path_), before);
}

TEST_F(FileRegistryTest, WhatCannotBeReadIsTriedAgainAndNotOverwritten) {
  fs::create_directory(path_);
  {
    Store registry(path_, Reporter());
    EXPECT_EQ(registry.Put("x"), kAccessDenied);
    EXPECT_TRUE(fs::is_directory(path_));
    EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
  }
  fs::remove(path_);
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(Store(path_, nullptr).Put("x"), kSuccess);
  fs::remove(path_);
  said_.clear();
  ASSERT_EQ(Store(path_, nullptr).Put("x"), kSuccess);
  std::optional<Limit> noDescriptors(std::in_place, RLIMIT_NOFILE, 0);
  Store registry(path_, Reporter());
  for (int i = 0; i < 2; ++i) EXPECT_EQ(registry.Soon("no key"), "no key");
  noDescriptors.reset();
  EXPECT_EQ(registry.Soon("x"), "x");
  EXPECT_EQ(registry.Put("y"), kSuccess);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(FileRegistryTest, FollowsSymbolicLinksAndMeansTheDirectoryOfTheStart) {
  fs::create_directory(directory_ / "dir");
  fs::create_symlink("dir/second", path_);
  fs::create_symlink("../target", directory_ / "dir/second");
  for (const char* text : {"made", "replaced"}) {
    ASSERT_EQ(Store(path_, nullptr).Put(text), kSuccess);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_TRUE(fs::is_symlink(directory_ / "dir/second"));
    EXPECT_THAT(ReadFile(directory_ / "target"), HasSubstr(text));
  }
  const fs::path before = fs::current_path();
  fs::current_path(directory_ / "dir");
  Store registry("relative", Reporter());
  fs::current_path(before);
  EXPECT_EQ(registry.Put("x"), kSuccess);
  EXPECT_TRUE(fs::exists(directory_ / "dir/relative"));
}

}  // namespace
}  // namespace orvanto::posix
