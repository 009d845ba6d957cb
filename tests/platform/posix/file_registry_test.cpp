#include "platform/posix/FileRegistry.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/posix/RegistryText.h"
#include "tests/platform/registry_contract.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::posix {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ScratchFileRegistry : private TemporaryDirectory, public FileRegistry {
 public:
  ScratchFileRegistry() : FileRegistry(*this / "registry", nullptr) {}
};

std::string ReadFile(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
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

// Waits until the other registry shows the text, for as long as the contract allows and a bit.
std::string TextSoon(Registry& registry, const std::string& name, const std::string& expected) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  std::string text = Text(registry, name);
  while (text != expected && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    text = Text(registry, name);
  }
  return text;
}

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

TEST(RegistryText, RoundTripsHostileContent) {
  const RegistryTree tree = HostileTree();
  RegistryTree back;
  const std::string text = FormatRegistry(tree);
  const auto error = ParseRegistry(text, back);
  EXPECT_FALSE(error) << error->line << ": " << error->reason;
  EXPECT_TRUE(back == tree);
  EXPECT_THAT(text, HasSubstr("\\xc0\\xaf \\xed\\xa0\\x80 \\xf5\\x80"));
  EXPECT_THAT(text, HasSubstr("Grüße Ж € 𝄞"));
}

TEST(RegistryText, ATruncatedTextIsNeverTakenForAWholeOne) {
  const RegistryTree tree = HostileTree();
  const std::string text = FormatRegistry(tree);
  for (std::size_t size = 0; size < text.size(); ++size) {
    RegistryTree back;
    const bool damaged = ParseRegistry(text.substr(0, size), back).has_value();
    // Only the last line end may be missing.
    ASSERT_EQ(damaged, size + 1 != text.size()) << size;
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
}

TEST(RegistryText, NamesTheLineAndTheReasonOfDamage) {
  const struct {
    const char* line;
    const char* reason;
  } cases[] = {
      {"[HKEY_CURRENT_USER\\A", "no closing bracket"},
      {"[HKEY_NOWHERE\\A]", "must begin with one of HKEY_CURRENT_USER"},
      {"[HKEY_CURRENT_USER\\\\A]", "empty or longer"},
      {"[HKEY_CURRENT_USER\\100%]", "%25 is a %"},
      {"Name=\"x\"", "a line must be"},
      {"\"n\" \"x\"", "an = is missing"},
      {"\"n\"=\"x", "closing quote is missing"},
      {"\"n\"=\"x\" y", "something follows the closing quote"},
      {"\"n\"=\"C:\\dir\"", "a backslash must be followed"},
      {"\"n\"=dword:123456789", "eight hexadecimal digits"},
      {"\"n\"=hex:1", "two digits each"},
      {"\"n\"=hex:01,", "two digits each"},
      {"\"n\"=hex(x):01", "must be a \"text\""},
      {"\"n\"=text", "must be a \"text\""},
      {"# end of registry\nmore", "something follows the line"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    RegistryTree tree;
    const auto error = ParseRegistry(
        std::string("Orvanto registry 1\n[HKEY_USERS]\n") + c.line + "\n# end of registry\n", tree);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->line, std::string_view(c.line).find('\n') == std::string_view::npos ? 3 : 4);
    EXPECT_THAT(error->reason, HasSubstr(c.reason));
  }
  RegistryTree tree;
  EXPECT_THAT(ParseRegistry("Orvanto registry 2\n", tree)->reason, HasSubstr("another version"));
  EXPECT_THAT(ParseRegistry("\"n\"=\"x\"\n", tree)->reason, HasSubstr("the first line"));
  EXPECT_THAT(ParseRegistry("Orvanto registry 1\n\"n\"=\"x\"\n", tree)->reason,
              HasSubstr("before the first"));
}

INSTANTIATE_TEST_SUITE_P(File, RegistryContract, testing::Values(MakeRegistry([] {
                           return std::make_unique<ScratchFileRegistry>();
                         })));

class FileRegistryTest : public testing::Test {
 protected:
  FileRegistry::Report Reporter() {
    return [this](const std::string& message) { said_.push_back(message); };
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "registry";
  std::vector<std::string> said_;
};

TEST_F(FileRegistryTest, KeepsWhatWasWrittenAndLeavesNothingBeside) {
  const std::string deep = directory_ / "new/dir/registry";
  ASSERT_EQ(PutText(*std::make_unique<FileRegistry>(deep, Reporter()), "n", "x"), kSuccess);
  FileRegistry again(deep, Reporter());
  EXPECT_EQ(Text(again, "n"), "x");
  // What may lie there from before: a file, another one's name, something else.
  WriteFile(directory_ / "other", "other");
  const std::function<void()> leftovers[] = {
      [&] { WriteFile(deep + ".new", "left behind by a killed process"); },
      [&] { fs::create_hard_link(directory_ / "other", deep + ".new"); },
      [&] { fs::create_symlink(directory_ / "other", deep + ".new"); },
  };
  for (const auto& leave : leftovers) {
    leave();
    EXPECT_EQ(PutText(again, "n", std::to_string(&leave - leftovers)), kSuccess);
    EXPECT_FALSE(fs::exists(fs::symlink_status(deep + ".new")));
  }
  EXPECT_EQ(ReadFile(directory_ / "other"), "other");
  for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (fs::read_symlink(entry, gone) != deep) continue;
    const int flags = ::fcntl(std::stoi(entry.path().filename()), F_GETFL);
    EXPECT_EQ(flags & O_ACCMODE, O_RDONLY);
  }
  EXPECT_EQ(fs::status(deep).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_THAT(said_, IsEmpty());
}

TEST_F(FileRegistryTest, AChangeIsOneReplacementAndNothingIsReplacedWithoutOne) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "0"), kSuccess);
  const std::string before = ReadFile(path_);
  {
    RegistryChange change(registry);
    for (const char* text : {"1", "2", "3"}) ASSERT_EQ(PutText(registry, "n", text), kSuccess);
    EXPECT_EQ(ReadFile(path_), before);
    EXPECT_EQ(change.Commit(), kSuccess);
  }
  EXPECT_THAT(ReadFile(path_), HasSubstr("\"n\"=\"3\""));
  WriteFile(path_, ReadFile(path_) + "\n");
  EXPECT_EQ(PutText(registry, "n", "3"), kSuccess);
  EXPECT_TRUE(ReadFile(path_).ends_with("\n\n"));
}

TEST_F(FileRegistryTest, AChangeWithAFailedWriteIsUndoneAsAWhole) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "old"), kSuccess);
  const std::string before = ReadFile(path_);
  RegistryChange change(registry);
  EXPECT_EQ(PutText(registry, "n", "new"), kSuccess);
  Registry::Key key = 0;
  EXPECT_EQ(registry.CreateKey(RootKey::CurrentUser, "a\\\\b", kSetValue, key), kBadPathname);
  EXPECT_EQ(PutText(registry, "more", "new"), kSuccess);
  EXPECT_EQ(change.Commit(), kBadPathname);
  EXPECT_EQ(Text(registry, "n"), "old");
  EXPECT_EQ(ReadFile(path_), before);
}

TEST_F(FileRegistryTest, TwoOnOneFileLoseNoUpdateAndSeeEachOther) {
  FileRegistry one(path_, Reporter());
  FileRegistry two(path_, Reporter());
  for (int i = 0; i < 20; ++i) {
    const std::string name = std::to_string(i);
    ASSERT_EQ(PutText(i % 2 == 0 ? one : two, name, "v" + name), kSuccess);
  }
  for (int i = 0; i < 20; ++i) {
    const std::string name = std::to_string(i);
    EXPECT_EQ(TextSoon(one, name, "v" + name), "v" + name);
    EXPECT_EQ(TextSoon(two, name, "v" + name), "v" + name);
  }
  // Texts of one length, so that only the file's identity and time tell the difference.
  for (const char* text : {"aa", "bb", "cc", "dd"}) {
    ASSERT_EQ(PutText(one, "same", text), kSuccess);
    EXPECT_EQ(TextSoon(two, "same", text), text);
  }
}

TEST_F(FileRegistryTest, AChangeIsShutOffAgainstOthers) {
  FileRegistry registry(path_, Reporter());
  const Descriptor other(::open((path_ + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  {
    RegistryChange change(registry);
    EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
    ASSERT_EQ(PutText(registry, "n", "x"), kSuccess);
    EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
  }
  EXPECT_EQ(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(FileRegistryTest, ADamagedFileIsSetAsideAtTheStart) {
  WriteFile(path_ + ".damaged-1", "older");
  WriteFile(path_, "Orvanto registry 1\nrubbish\n");
  FileRegistry registry(path_, Reporter());
  EXPECT_EQ(Text(registry, "n"), "no key");
  EXPECT_EQ(ReadFile(path_ + ".damaged-1"), "older");
  EXPECT_EQ(ReadFile(path_ + ".damaged-2"), "Orvanto registry 1\nrubbish\n");
  EXPECT_FALSE(fs::exists(path_));
  ASSERT_EQ(said_.size(), 1u);
  EXPECT_THAT(said_[0], HasSubstr("line 2: "));
  EXPECT_THAT(said_[0], HasSubstr(path_ + ".damaged-2"));
}

TEST_F(FileRegistryTest, DamageWhileRunningIsSaidOnceAndSetAsideByTheNextWrite) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "good"), kSuccess);
  const auto waitForWord = [&](std::size_t count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (said_.size() < count && std::chrono::steady_clock::now() < deadline) {
      EXPECT_EQ(Text(registry, "n"), "good");
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  };
  WriteFile(path_, "half");
  waitForWord(1);
  WriteFile(path_, "half an edit");
  waitForWord(2);
  std::this_thread::sleep_for(std::chrono::milliseconds(11));
  EXPECT_EQ(Text(registry, "n"), "good");
  ASSERT_EQ(said_.size(), 2u);
  EXPECT_EQ(ReadFile(path_), "half an edit");

  // A write that fails sets it aside no more than once.
  fs::create_directory(path_ + ".new");
  EXPECT_EQ(PutText(registry, "n", "better"), kWriteFault);
  fs::remove(path_ + ".new");
  EXPECT_EQ(PutText(registry, "n", "better"), kSuccess);
  EXPECT_EQ(ReadFile(path_ + ".damaged-1"), "half an edit");
  EXPECT_FALSE(fs::exists(path_ + ".damaged-2"));
  EXPECT_EQ(said_.size(), 4u) << said_.back();
  FileRegistry again(path_, Reporter());
  EXPECT_EQ(Text(again, "n"), "better");
}

TEST_F(FileRegistryTest, WhoOnlyLooksInLeavesADamagedFileAlone) {
  FileRegistry keeper(path_, nullptr);
  for (const bool damagedBefore : {true, false}) {
    SCOPED_TRACE(damagedBefore);
    said_.clear();
    fs::remove(path_);
    ASSERT_EQ(PutText(keeper, "n", "good"), kSuccess);
    const std::string good = ReadFile(path_);
    if (damagedBefore) WriteFile(path_, "half");
    FileRegistry registry(path_, Reporter(), FileRegistry::OnDamage::Refuse);
    if (!damagedBefore) WriteFile(path_, "half");
    EXPECT_EQ(PutText(registry, "n", "x"), kAccessDenied);
    EXPECT_EQ(RegistryChange(registry).Commit(), kAccessDenied);
    EXPECT_EQ(Text(registry, "n"), damagedBefore ? "no key" : "good");
    EXPECT_THAT(said_, ElementsAre(HasSubstr("line 1: ")));
    EXPECT_EQ(ReadFile(path_), "half");
    EXPECT_FALSE(fs::exists(path_ + ".damaged-1"));
    WriteFile(path_, good);
    EXPECT_EQ(TextSoon(registry, "n", "good"), "good");
    EXPECT_EQ(PutText(registry, "n", "better"), kSuccess);
  }
}

TEST_F(FileRegistryTest, AMissingFileIsAnEmptyRegistryAndSaidOnce) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "x"), kSuccess);
  EXPECT_THAT(said_, IsEmpty());
  fs::remove(path_);
  EXPECT_EQ(TextSoon(registry, "n", "no key"), "no key");
  std::this_thread::sleep_for(std::chrono::milliseconds(11));
  EXPECT_EQ(Text(registry, "n"), "no key");
  EXPECT_THAT(said_, ElementsAre(HasSubstr("is gone")));
}

TEST_F(FileRegistryTest, AFailedWriteKeepsTheOldFileAndTheOldContent) {
  FileRegistry registry(path_, Reporter());
  ASSERT_EQ(PutText(registry, "n", "old"), kSuccess);
  const std::string before = ReadFile(path_);

  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const rlimit small{before.size(), old.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  const Status full = PutText(registry, "n", "a longer text");
  const Status fullAgain = PutText(registry, "n", "a longer text");
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);

  EXPECT_EQ(full, kDiskFull);
  EXPECT_EQ(fullAgain, kDiskFull);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be written")));
  EXPECT_EQ(Text(registry, "n"), "old");
  EXPECT_EQ(ReadFile(path_), before);

  fs::create_directory(path_ + ".new");
  {
    RegistryChange change(registry);
    EXPECT_EQ(PutText(registry, "n", "new"), kSuccess);
    EXPECT_EQ(change.Commit(), kWriteFault);
  }
  EXPECT_EQ(Text(registry, "n"), "old");
  EXPECT_EQ(ReadFile(path_), before);
}

TEST_F(FileRegistryTest, WhatCannotBeReadIsNotOverwritten) {
  fs::create_directory(path_);
  FileRegistry registry(path_, Reporter());
  EXPECT_EQ(PutText(registry, "n", "x"), kAccessDenied);
  EXPECT_TRUE(fs::is_directory(path_));
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(FileRegistryTest, AReadingThatFailedIsTriedAgain) {
  ASSERT_EQ(PutText(*std::make_unique<FileRegistry>(path_, nullptr), "n", "x"), kSuccess);
  rlimit old{};
  ::getrlimit(RLIMIT_NOFILE, &old);
  const rlimit none{0, old.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  FileRegistry registry(path_, Reporter());
  for (int i = 0; i < 2; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(11));
    EXPECT_EQ(Text(registry, "n"), "no key");
  }
  ::setrlimit(RLIMIT_NOFILE, &old);
  EXPECT_EQ(TextSoon(registry, "n", "x"), "x");
  EXPECT_EQ(PutText(registry, "n", "y"), kSuccess);
  EXPECT_THAT(said_, ElementsAre(HasSubstr("cannot be read")));
}

TEST_F(FileRegistryTest, FollowsSymbolicLinks) {
  fs::create_directory(directory_ / "dir");
  fs::create_symlink("dir/second", path_);
  fs::create_symlink("../target", directory_ / "dir/second");
  for (const char* text : {"made", "replaced"}) {
    ASSERT_EQ(PutText(*std::make_unique<FileRegistry>(path_, Reporter()), "n", text), kSuccess);
    EXPECT_TRUE(fs::is_symlink(path_));
    EXPECT_TRUE(fs::is_symlink(directory_ / "dir/second"));
    EXPECT_THAT(ReadFile(directory_ / "target"), HasSubstr(text));
  }
}

TEST_F(FileRegistryTest, ARelativePathMeansTheDirectoryOfTheStart) {
  const fs::path before = fs::current_path();
  fs::create_directory(directory_ / "home");
  fs::current_path(directory_ / "home");
  FileRegistry registry("registry", Reporter());
  fs::current_path(before);
  EXPECT_EQ(PutText(registry, "n", "x"), kSuccess);
  EXPECT_TRUE(fs::exists(directory_ / "home/registry"));
}

}  // namespace
}  // namespace orvanto::posix
