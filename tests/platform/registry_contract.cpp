// What every registry keeps to.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "tests/platform/contracts.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using namespace std::string_literals;

std::string Below(const std::string& below) {
  return kScratchKey + (below.empty() ? "" : '\\' + below);
}

// On the host's, and on the one in memory.
class RegistryContract : public testing::TestWithParam<bool> {
 protected:
  ~RegistryContract() override {
    for (const Registry::Key key : made_) registry_->CloseKey(key);
  }
  // Makes a key and keeps it open; `below` is relative to kScratchKey.
  Registry::Key Make(const std::string& below,
                     std::uint32_t access = kQueryValue | kSetValue | kCreateSubKey) {
    Registry::Key key = 0;
    EXPECT_EQ(registry_->CreateKey(RootKey::CurrentUser, Below(below), access, key), kSuccess);
    EXPECT_NE(key, 0u);
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
      GetParam() ? std::unique_ptr<Registry>(new MemoryRegistry) : NewHostRegistry();
  std::vector<Registry::Key> made_;
};

INSTANTIATE_TEST_SUITE_P(Registries, RegistryContract, testing::Bool());

TEST_P(RegistryContract, OpensWhatExistsWhateverItsCase) {
  std::string longest = "ß";  // 255 units of UTF-16
  for (int i = 0; i < 127; ++i) longest += "𝄞";
  Make("Alpha\\Größe\\Ж");
  Make(longest);
  const std::pair<std::string, Status> cases[] = {
      {"aLPHA\\GRÖßE", kSuccess},        {"Alpha\\größe\\ж\\", kSuccess},
      {"Alph", kFileNotFound},           {"Alpha\\Größe\\Ж\\Z", kFileNotFound},
      {"Alpha\\\\Größe", kBadPathname},  {longest, kSuccess},
      {longest + 'k', kInvalidParameter}};
  for (const auto& [path, expected] : cases) {
    Registry::Key key = 77;
    EXPECT_EQ(registry_->OpenKey(RootKey::CurrentUser, Below(path), kQueryValue, key), expected);
    EXPECT_EQ(key != 0, expected == kSuccess) << path;
    if (key != 0) made_.push_back(key);
  }
  EXPECT_FALSE(registry_->IsSameKey("Größe", "GRÖSSE"));
  EXPECT_TRUE(registry_->IsSameKey("Größe", "grÖßE"));
}

TEST_P(RegistryContract, ReturnsWhatWasWrittenIfThereIsRoom) {
  const Registry::Key key = Make("Values");
  const std::tuple<std::string, ValueType, std::string> cases[] = {
      {"Name", ValueType::String, "text\0"s},
      {"", ValueType::String, "default\0"s},
      {"Übung", ValueType::String, "\"Ж\\\"\r\n\t=;#[]%\0"s},
      {"empty", ValueType::String, "\0"s},
      {"bytes", ValueType::Binary, "\0\x01\xFF\x80"s},
      {"no bytes", ValueType::Binary, ""},
      {"number", ValueType::Dword, "\x0A\0\0\x80"s},
      {"none", ValueType::None, "x"}};
  ASSERT_EQ(Put(key, "NAME", "text\0"s), kSuccess);
  for (const auto& [name, type, bytes] : cases) ASSERT_EQ(Put(key, name, bytes, type), kSuccess);
  const Registry::Key again = Make("vALUES");  // keeps its values
  for (const auto& [name, type, bytes] : cases) EXPECT_EQ(Read(again, name, type), bytes) << name;
  for (const std::uint32_t room : {0U, 3U, 4U, 6U}) {
    char buffer[] = "......";
    std::uint32_t size = room;
    ValueType type = ValueType::None;
    const Status expected = room < 4 ? kMoreData : kSuccess;
    EXPECT_EQ(registry_->QueryValue(key, "Number", type, buffer, size), expected);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(std::string(buffer, 6), room < 4 ? "......" : "\x0A\0\0\x80.."s);
  }
}

TEST_P(RegistryContract, DeletesAndRefusesInALife) {
  const Registry::Key parent = Make(""), child = Make("One\\Two");
  const Registry::Key reader = Make("One\\Two", kQueryValue);
  const Registry::Key writer = Make("One\\Two", kSetValue);
  EXPECT_EQ(Put(child, "v", "x"), kSuccess);
  EXPECT_EQ(Put(reader, "v", "y"), kAccessDenied);
  EXPECT_EQ(registry_->DeleteValue(reader, "v"), kAccessDenied);
  EXPECT_EQ(Read(writer, "v"), std::to_string(kAccessDenied));
  EXPECT_EQ(Read(reader, "v"), "x");
  EXPECT_EQ(Read(reader, "none"), std::to_string(kFileNotFound));
  EXPECT_EQ(registry_->CloseKey(reader), kSuccess);
  EXPECT_EQ(Read(reader, "v"), std::to_string(kInvalidHandle));
  EXPECT_EQ(registry_->CloseKey(reader), kInvalidHandle);
  EXPECT_EQ(registry_->DeleteKey(parent, "One"), kAccessDenied);
  EXPECT_EQ(registry_->DeleteKey(child, ""), kInvalidParameter);
  EXPECT_EQ(registry_->DeleteValue(child, "V"), kSuccess);
  EXPECT_EQ(registry_->DeleteValue(child, "v"), kFileNotFound);
  EXPECT_EQ(registry_->DeleteKey(parent, "ONE\\two"), kSuccess);
  EXPECT_EQ(Put(child, "v", "x"), kKeyDeleted);
  EXPECT_EQ(Read(child, "v"), std::to_string(kKeyDeleted));
  EXPECT_EQ(registry_->DeleteKey(parent, "one"), kSuccess);
  EXPECT_EQ(registry_->DeleteKey(parent, "one"), kFileNotFound);
}

TEST_P(RegistryContract, ChangesNestAreSeenAtOnceAndReportTheirFirstFailedWrite) {
  const Registry::Key key = Make("Parent\\Child");
  const Registry::Key parent = Make("");
  const std::string tooLong(256, 'k');
  const std::pair<std::vector<std::string>, Status> cases[] = {
      {{"Fine"}, kSuccess},
      {{"Fine", "Bad\\\\Path", tooLong}, kBadPathname},
      {{tooLong, "Bad\\\\Path"}, kInvalidParameter}};
  for (const auto& [paths, expected] : cases) {
    RegistryChange outer(*registry_);
    {
      RegistryChange inner(*registry_);
      for (const std::string& path : paths) {
        Registry::Key created = 0;
        registry_->CreateKey(RootKey::CurrentUser, Below(path), kSetValue, created);
        registry_->CloseKey(created);
      }
      EXPECT_EQ(Put(key, "v", "x"), kSuccess);
    }
    EXPECT_EQ(Read(key, "v"), "x");
    // What a deletion meets does not count.
    EXPECT_EQ(registry_->DeleteValue(key, "none"), kFileNotFound);
    EXPECT_EQ(registry_->DeleteKey(parent, "Parent"), kAccessDenied);
    EXPECT_EQ(outer.Commit(), expected);
  }
  RegistryChange refused(*registry_);
  EXPECT_EQ(Put(Make("", kQueryValue), "v", "x"), kAccessDenied);
  EXPECT_EQ(refused.Commit(), kAccessDenied);
  Put(made_.back(), "v", "x");
  EXPECT_EQ(RegistryChange(*registry_).Commit(), kSuccess);
}

}  // namespace
}  // namespace orvanto
