#include "platform/posix/FileRegistry.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <thread>

#include "platform/registry/RegistryText.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::posix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

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
  struct Case {
    int line;
    std::string text;
    const char* reason;
  };
  for (const Case& c :
       {Case{3, begin + "[HKEY_CURRENT_USER\\A", "no closing bracket"},
        {3, begin + "[HKEY_NOWHERE\\A]", "must begin with one of HKEY_CURRENT_USER"},
        {3, begin + "[HKEY_CURRENT_USER\\\\A]", "empty or longer"},
        {3, begin + "[HKEY_CURRENT_USER\\100%]", "%25 is a %"},
        {3, begin + "Name=\"x\"", "a line must be"},
        {3, begin + "\"n\" \"x\"", "an = is missing"},
        {3, begin + "\"n\"=\"x", "closing quote is missing"},
        {3, begin + "\"n\"=\"x\" y", "something follows the closing quote"},
        {3, begin + "\"n\"=\"C:\\dir\"", "a backslash must be followed"},
        {3, begin + "\"n\"=dword:123456789", "eight hexadecimal digits"},
        {3, begin + "\"n\"=hex:1", "two digits each"},
        {3, begin + "\"n\"=hex:01,", "two digits each"},
        {3, begin + "\"n\"=hex(x):01", "must be a \"text\""},
        {3, begin + "\"n\"=text", "must be a \"text\""},
        {4, begin + "# end of registry\nmore", "something follows the line"},
        {1, "Orvanto registry 2", "another version"},
        {1, "\"n\"=\"x\"", "the first line"},
        {2, "Orvanto registry 1\n\"n\"=\"x\"", "before the first"}}) {
    RegistryTree tree;
    const auto error = ParseRegistry(c.text + "\n# end of registry\n", tree);
    ASSERT_TRUE(error) << c.text;
    EXPECT_EQ(error->line, c.line) << c.text;
    EXPECT_THAT(error->reason, HasSubstr(c.reason));
  }
}

Status PutText(Registry& registry, const std::string& name, const std::string& text) {
  Registry::Key key = 0;
  Status status = registry.CreateKey(RootKey::CurrentUser, "Software\\Test", kSetValue, key);
  if (status != kSuccess) return status;
  status = registry.SetValue(key, name, ValueType::String, text.c_str(),
                             static_cast<std::uint32_t>(text.size() + 1));
  registry.CloseKey(key);
  return status;
}

std::string Text(Registry& registry, const std::string& name) {
  Registry::Key key = 0;
  if (registry.OpenKey(RootKey::CurrentUser, "Software\\Test", kQueryValue, key) != kSuccess) {
    return "no key";
  }
  char buffer[64] = "";
  std::uint32_t size = sizeof buffer;
  ValueType type = ValueType::None;
  const Status status = registry.QueryValue(key, name, type, buffer, size);
  registry.CloseKey(key);
  return status == kSuccess ? buffer : "no value";
}

// What the registry shows once it may have noticed a change of the file, and a bit later at most.
std::string TextSoon(Registry& registry, const std::string& expected, const char* name = "n") {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  std::string text;
  do {
    std::this_thread::sleep_for(std::chrono::milliseconds(11));
    text = Text(registry, name);
  } while (text != expected && std::chrono::steady_clock::now() < deadline);
  return text;
}

class FileRegistryTest : public testing::Test {
 protected:
  FileRegistry::Report Reporter() {
    return [this](const std::string& message) { said_.push_back(message); };
  }
  // By a registry that goes again.
  Status Store(const std::string& text) const {
    FileRegistry registry(path_, nullptr);
    return PutText(registry, "n", text);
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "registry";
  const std::string new_ = path_ + ".new";
  const std::string damaged_ = path_ + ".damaged-";
  std::vector<std::string> said_;
};

TEST_F(FileRegistryTest, KeepsWhatWasWrittenAndLeavesNothingBeside) {
  const std::string deep = directory_ / "new/dir/registry";
  ASSERT_EQ(PutText(*std::make_unique<FileRegistry>(deep, Reporter()), "n", "x"), kSuccess);
  FileRegistry again(deep, Reporter());
  EXPECT_EQ(Text(again, "n"), "x");
  // What may lie there from before: a file, another one's name, something else.
  const std::string other = directory_ / "other";
  WriteFile(other, "other");
  const std::function<void()> leftovers[] = {
      [&] { WriteFile(deep + ".new", "left behind by a killed process"); },
      [&] { fs::create_hard_link(other, deep + ".new"); },
      [&] { fs::create_symlink(other, deep + ".new"); }};
  for (const auto& leave : leftovers) {
    leave();
    EXPECT_EQ(PutText(again, "n", std::to_string(&leave - leftovers)), kSuccess);
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
  EXPECT_EQ(PutText(again, "n", "y"), kSuccess);
  EXPECT_EQ(fs::status(deep).permissions(), own | fs::perms::group_read) << "as it was";
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(FileRegistryTest, AChangeIsOneReplacementUnderALockOrNone) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "0"), kSuccess);
  const std::string before = ReadFile(path_);
  const Descriptor lock(::open((path_ + ".lock").c_str(), O_RDWR | O_CLOEXEC));
  {
    RegistryChange change(registry);
    for (const char* text : {"1", "2", "3"}) {
      EXPECT_NE(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
      ASSERT_EQ(PutText(registry, "n", text), kSuccess);
    }
    EXPECT_NE(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(ReadFile(path_), before);
    WriteFile(path_, before + "\n");
    EXPECT_EQ(TextSoon(registry, "3"), "3") << "nobody comes between";
    EXPECT_EQ(change.Commit(), kSuccess);
  }
  EXPECT_EQ(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0);
  ::flock(lock.Get(), LOCK_UN);
  EXPECT_THAT(ReadFile(path_), HasSubstr("\"n\"=\"3\""));

  // One that changes nothing leaves the file alone.
  WriteFile(path_, ReadFile(path_) + "\n");
  EXPECT_EQ(PutText(registry, "n", "3"), kSuccess);
  EXPECT_TRUE(ReadFile(path_).ends_with("\n\n"));

  // One with a failed write is undone as a whole.
  const std::string kept = ReadFile(path_);
  RegistryChange change(registry);
  EXPECT_EQ(PutText(registry, "n", "new"), kSuccess);
  Registry::Key key = 0;
  EXPECT_EQ(registry.CreateKey(RootKey::CurrentUser, "a\\\\b", kSetValue, key), kBadPathname);
  EXPECT_EQ(PutText(registry, "more", "new"), kSuccess);
  EXPECT_EQ(change.Commit(), kBadPathname);
  EXPECT_EQ(Text(registry, "n"), "3");
  EXPECT_EQ(ReadFile(path_), kept);
}

TEST_F(FileRegistryTest, TwoOnOneFileLoseNoUpdateAndSeeEachOther) {
  FileRegistry one(path_, Reporter());
  FileRegistry two(path_, Reporter());
  // Texts of one length, so that only the file's identity and time tell the difference.
  for (const char* text : {"aa", "bb", "cc", "dd"}) {
    ASSERT_EQ(PutText(one, text, text), kSuccess);
    ASSERT_EQ(PutText(two, "n", text), kSuccess);
    EXPECT_EQ(TextSoon(one, text), text);
    EXPECT_EQ(TextSoon(two, text, text), text);
  }
  EXPECT_EQ(Text(one, "aa") + Text(two, "bb"), "aabb");
  EXPECT_THAT(said_, IsEmpty());
  fs::remove(path_);
  EXPECT_EQ(TextSoon(one, "no key"), "no key");
  EXPECT_EQ(TextSoon(one, "no key"), "no key");
  EXPECT_THAT(said_, ElementsAre(HasSubstr("is gone")));
}

TEST_F(FileRegistryTest, ADamagedFileIsSetAsideAtTheStart) {
  WriteFile(damaged_ + "1", "older");
  WriteFile(path_, "Orvanto registry 1\nrubbish\n");
  FileRegistry registry(path_, Reporter());
  EXPECT_EQ(Text(registry, "n"), "no key");
  EXPECT_EQ(ReadFile(damaged_ + "1"), "older");
  EXPECT_EQ(ReadFile(damaged_ + "2"), "Orvanto registry 1\nrubbish\n");
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_THAT(said_, ElementsAre(AllOf(HasSubstr("line 2: "), HasSubstr(damaged_ + "2"))));
}

TEST_F(FileRegistryTest, DamageWhileRunningIsSaidOnceAndSetAsideByTheNextWrite) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "good"), kSuccess);
  for (const char* damage : {"half", "half an edit"}) {
    WriteFile(path_, damage);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(TextSoon(registry, "good"), "good");
  }
  ASSERT_EQ(said_.size(), 2u);
  EXPECT_EQ(ReadFile(path_), "half an edit");

  // A write that fails sets it aside no more than once.
  fs::create_directory(new_);
  EXPECT_EQ(PutText(registry, "n", "better"), kWriteFault);
  fs::remove(new_);
  EXPECT_EQ(PutText(registry, "n", "better"), kSuccess);
  EXPECT_EQ(ReadFile(damaged_ + "1"), "half an edit");
  EXPECT_FALSE(fs::exists(damaged_ + "2"));
  EXPECT_EQ(said_.size(), 4u) << said_.back();
  FileRegistry again(path_, Reporter());
  EXPECT_EQ(Text(again, "n"), "better");
}

TEST_F(FileRegistryTest, WhoOnlyLooksInLeavesADamagedFileAlone) {
  for (const bool damagedBefore : {true, false}) {
    SCOPED_TRACE(damagedBefore);
    said_.clear();
    fs::remove(path_);
    ASSERT_EQ(Store("good"), kSuccess);
    const std::string good = ReadFile(path_);
    if (damagedBefore) WriteFile(path_, "half");
    FileRegistry registry(path_, Reporter(), FileRegistry::OnDamage::Refuse);
    if (!damagedBefore) WriteFile(path_, "half");
    EXPECT_EQ(PutText(registry, "n", "x"), kAccessDenied);
    EXPECT_EQ(RegistryChange(registry).Commit(), kAccessDenied);
    EXPECT_EQ(Text(registry, "n"), damagedBefore ? "no key" : "good");
    EXPECT_THAT(said_, ElementsAre(HasSubstr("line 1: ")));
    EXPECT_EQ(ReadFile(path_), "half");
    EXPECT_FALSE(fs::exists(damaged_ + "1"));
    WriteFile(path_, good);
    EXPECT_EQ(TextSoon(registry, "good"), "good");
    EXPECT_EQ(PutText(registry, "n", "better"), kSuccess);
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
  FileRegistry registry(path_, [&](const std::string& message) {
    said_.push_back(message);
    EXPECT_NE(::flock(lock.Get(), LOCK_EX | LOCK_NB), 0) << "until it is done";
  });
  ASSERT_EQ(PutText(registry, "n", "old"), kSuccess);
  const std::string before = ReadFile(path_);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  {
    const Limit full(RLIMIT_FSIZE, before.size());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(PutText(registry, "n", "a longer text"), kDiskFull);
  }
  std::signal(SIGXFSZ, handler);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be written")));
  EXPECT_EQ(Text(registry, "n"), "old");
  EXPECT_EQ(ReadFile(path_), before);

  fs::create_directory(new_);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(PutText(registry, "n", "new"), kWriteFault);
  fs::remove(new_);
  EXPECT_EQ(PutText(registry, "n", "young"), kSuccess);
  EXPECT_EQ(PutText(registry, "n", "old"), kSuccess);
  EXPECT_EQ(said_.size(), 2U);
  fs::create_directory(new_);
  RegistryChange change(registry);
  EXPECT_EQ(PutText(registry, "n", "new"), kSuccess);
  EXPECT_EQ(change.Commit(), kWriteFault);
  EXPECT_EQ(said_.size(), 3U) << "again after a success";
  EXPECT_EQ(Text(registry, "n"), "old");
  EXPECT_EQ(ReadFile(path_), before);
}

TEST_F(FileRegistryTest, WhatCannotBeReadIsTriedAgainAndNotOverwritten) {
  fs::create_directory(path_);
  {
    FileRegistry registry(path_, Reporter());
    EXPECT_EQ(PutText(registry, "n", "x"), kAccessDenied);
    EXPECT_TRUE(fs::is_directory(path_));
    EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
  }
  fs::remove(path_);
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  EXPECT_EQ(PutText(*std::make_unique<FileRegistry>(path_, nullptr), "n", "x"), kSuccess);
  fs::remove(path_);
  said_.clear();
  ASSERT_EQ(Store("x"), kSuccess);
  std::optional<Limit> noDescriptors(std::in_place, RLIMIT_NOFILE, 0);
  FileRegistry registry(path_, Reporter());
  for (int i = 0; i < 2; ++i) EXPECT_EQ(TextSoon(registry, "no key"), "no key");
  noDescriptors.reset();
  EXPECT_EQ(TextSoon(registry, "x"), "x");
  EXPECT_EQ(PutText(registry, "n", "y"), kSuccess);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(FileRegistryTest, FollowsSymbolicLinksAndMeansTheDirectoryOfTheStart) {
  fs::create_directory(directory_ / "dir");
  fs::create_symlink("dir/second", path_);
  fs::create_symlink("../target", directory_ / "dir/second");
  for (const char* text : {"made", "replaced"}) {
    ASSERT_EQ(Store(text), kSuccess);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_TRUE(fs::is_symlink(directory_ / "dir/second"));
    EXPECT_THAT(ReadFile(directory_ / "target"), HasSubstr(text));
  }
  const fs::path before = fs::current_path();
  fs::current_path(directory_ / "dir");
  FileRegistry registry("relative", Reporter());
  fs::current_path(before);
  EXPECT_EQ(PutText(registry, "n", "x"), kSuccess);
  EXPECT_TRUE(fs::exists(directory_ / "dir/relative"));
}

}  // namespace
}  // namespace orvanto::posix
