#include "tests/platform/registry_contract.h"

#include <string>
#include <utility>
#include <vector>

namespace orvanto {

RegistryContract::RegistryContract() : registry_(GetParam()()) {}

namespace {

std::string Below(const std::string& below) {
  return below.empty() ? kScratchKey : std::string(kScratchKey) + '\\' + below;
}

// The value's bytes, asked for as the program does: the size first.
std::string Read(Registry& registry, Registry::Key key, const std::string& name, ValueType& type) {
  std::uint32_t size = 0;
  const Status first = registry.QueryValue(key, name, type, nullptr, size);
  if (first != kMoreData)
    return first == kSuccess && size == 0 ? "" : "status " + std::to_string(first);
  std::string bytes(size, '?');
  EXPECT_EQ(registry.QueryValue(key, name, type, bytes.data(), size), kSuccess);
  EXPECT_EQ(size, bytes.size());
  return bytes;
}

Status Put(Registry& registry, Registry::Key key, const std::string& name, const std::string& bytes,
           ValueType type = ValueType::Binary) {
  return registry.SetValue(key, name, type, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
}

}  // namespace

Status RegistryContract::Open(const std::string& below, std::uint32_t access, Registry::Key& key) {
  return registry_->OpenKey(RootKey::CurrentUser, Below(below), access, key);
}

Registry::Key RegistryContract::Make(const std::string& below, std::uint32_t access) {
  Registry::Key key = 0;
  EXPECT_EQ(registry_->CreateKey(RootKey::CurrentUser, Below(below), access, key), kSuccess);
  EXPECT_NE(key, 0u);
  return key;
}

TEST_P(RegistryContract, OpensWhatExistsWhateverItsCase) {
  registry_->CloseKey(Make("Alpha\\Größe\\Ж"));
  const std::string longest(255, 'k');
  registry_->CloseKey(Make(longest));
  const std::vector<std::pair<std::string, Status>> cases = {
      {"Alpha", kSuccess},
      {"aLPHA\\GRÖßE", kSuccess},
      {"Alpha\\größe\\ж\\", kSuccess},
      {"Alph", kFileNotFound},
      {"Alpha\\Größe\\Ж\\Z", kFileNotFound},
      {"Alpha\\\\Größe", kBadPathname},
      {longest, kSuccess},
      {longest + 'k', kInvalidParameter},
  };
  for (const auto& [path, expected] : cases) {
    SCOPED_TRACE(path);
    Registry::Key key = 77;
    ASSERT_EQ(Open(path, kQueryValue, key), expected);
    EXPECT_EQ(key != 0, expected == kSuccess);
    if (key != 0) {
      EXPECT_EQ(registry_->CloseKey(key), kSuccess);
    }
  }
}

TEST_P(RegistryContract, ReturnsWhatWasWritten) {
  const Registry::Key key = Make("Values");
  const struct {
    std::string name;
    ValueType type;
    std::string bytes;
  } cases[] = {
      {"Name", ValueType::String, std::string("text\0", 5)},
      {"", ValueType::String, std::string("default\0", 8)},
      {"Übung", ValueType::String, std::string("\"Ж\\\"\r\n\t=;#[]%\0", 15)},
      {"empty", ValueType::String, std::string(1, '\0')},
      {"bytes", ValueType::Binary, std::string("\0\x01\xFF\x80", 4)},
      {"no bytes", ValueType::Binary, ""},
      {"number", ValueType::Dword, std::string("\x0A\0\0\x80", 4)},
      {"none", ValueType::None, "x"},
      {"name", ValueType::String, std::string("over\0", 5)},
  };
  for (const auto& c : cases) ASSERT_EQ(Put(*registry_, key, c.name, c.bytes, c.type), kSuccess);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const bool overwritten = c.name == "Name";
    ValueType type = ValueType::None;
    EXPECT_EQ(Read(*registry_, key, c.name, type),
              overwritten ? std::string("over\0", 5) : c.bytes);
    EXPECT_EQ(type, c.type);
  }
  registry_->CloseKey(key);
}

TEST_P(RegistryContract, CopiesOnlyIntoABufferThatIsLargeEnough) {
  const Registry::Key key = Make("");
  ASSERT_EQ(Put(*registry_, key, "v", "abcd"), kSuccess);
  for (std::uint32_t room = 0; room <= 6; ++room) {
    SCOPED_TRACE(room);
    char buffer[] = "......";
    std::uint32_t size = room;
    ValueType type = ValueType::None;
    EXPECT_EQ(registry_->QueryValue(key, "V", type, buffer, size), room < 4 ? kMoreData : kSuccess);
    EXPECT_EQ(size, 4u);
    EXPECT_STREQ(buffer, room < 4 ? "......" : "abcd..");
  }
  registry_->CloseKey(key);
}

TEST_P(RegistryContract, RefusesWhatAKeyWasNotOpenedForAndKeysThatAreNotOpen) {
  const Registry::Key reader = Make("k", kQueryValue);
  const Registry::Key writer = Make("k", kSetValue);
  ValueType type = ValueType::None;
  std::uint32_t size = 0;
  EXPECT_EQ(Put(*registry_, reader, "v", "x"), kAccessDenied);
  EXPECT_EQ(registry_->DeleteValue(reader, "v"), kAccessDenied);
  EXPECT_EQ(registry_->QueryValue(writer, "v", type, nullptr, size), kAccessDenied);
  EXPECT_EQ(registry_->QueryValue(reader, "v", type, nullptr, size), kFileNotFound);
  EXPECT_EQ(registry_->CloseKey(reader), kSuccess);
  EXPECT_EQ(registry_->CloseKey(writer), kSuccess);
  EXPECT_EQ(registry_->QueryValue(reader, "v", type, nullptr, size), kInvalidHandle);
  EXPECT_EQ(Put(*registry_, writer, "v", "x"), kInvalidHandle);
  EXPECT_EQ(registry_->CloseKey(writer), kInvalidHandle);
}

TEST_P(RegistryContract, DeletesValuesAndKeysWithoutSubkeys) {
  const Registry::Key parent = Make("");
  const Registry::Key child = Make("One\\Two");
  ASSERT_EQ(Put(*registry_, child, "v", "x"), kSuccess);
  EXPECT_EQ(registry_->DeleteKey(parent, "One"), kAccessDenied);
  EXPECT_EQ(registry_->DeleteKey(parent, "Three"), kFileNotFound);
  EXPECT_EQ(registry_->DeleteValue(child, "V"), kSuccess);
  EXPECT_EQ(registry_->DeleteValue(child, "v"), kFileNotFound);
  EXPECT_EQ(registry_->DeleteKey(parent, "ONE\\two"), kSuccess);
  EXPECT_EQ(Put(*registry_, child, "v", "x"), kKeyDeleted);
  EXPECT_EQ(registry_->DeleteKey(parent, "one"), kSuccess);
  EXPECT_EQ(registry_->DeleteKey(parent, "one"), kFileNotFound);
  registry_->CloseKey(child);
  registry_->CloseKey(parent);
}

TEST_P(RegistryContract, CreatingAnExistingKeyKeepsItsValues) {
  const Registry::Key first = Make("K");
  ASSERT_EQ(Put(*registry_, first, "v", "x"), kSuccess);
  const Registry::Key second = Make("k");
  ValueType type = ValueType::None;
  EXPECT_EQ(Read(*registry_, second, "v", type), "x");
  registry_->CloseKey(first);
  registry_->CloseKey(second);
}

TEST_P(RegistryContract, ChangesNestAndAreSeenAtOnce) {
  const Registry::Key key = Make("K");
  ValueType type = ValueType::None;
  RegistryChange outer(*registry_);
  {
    RegistryChange inner(*registry_);
    ASSERT_EQ(Put(*registry_, key, "v", "x"), kSuccess);
    EXPECT_EQ(inner.Commit(), kSuccess);
  }
  EXPECT_EQ(Read(*registry_, key, "v", type), "x");
  EXPECT_EQ(outer.Commit(), kSuccess);
  EXPECT_EQ(Read(*registry_, key, "v", type), "x");
  registry_->CloseKey(key);
}

TEST_P(RegistryContract, AChangeReportsItsFirstFailedWrite) {
  const std::string tooLong(256, 'k');
  const struct {
    std::vector<std::string> created;  // below the scratch key
    Status expected;
  } cases[] = {
      {{"Fine"}, kSuccess},
      {{"Fine", "Bad\\\\Path", tooLong}, kBadPathname},
      {{tooLong, "Bad\\\\Path"}, kInvalidParameter},
  };
  const Registry::Key key = Make("Parent\\Child");
  const Registry::Key parent = Make("");
  const Registry::Key reader = Make("", kQueryValue);
  for (const auto& c : cases) {
    RegistryChange outer(*registry_);
    {
      RegistryChange inner(*registry_);
      for (const std::string& path : c.created) {
        Registry::Key created = 0;
        registry_->CreateKey(RootKey::CurrentUser, Below(path), kSetValue, created);
        registry_->CloseKey(created);
      }
    }
    // What a deletion meets does not count.
    EXPECT_EQ(registry_->DeleteValue(key, "none"), kFileNotFound);
    EXPECT_EQ(registry_->DeleteKey(parent, "Parent"), kAccessDenied);
    EXPECT_EQ(outer.Commit(), c.expected);
  }
  RegistryChange refused(*registry_);
  EXPECT_EQ(Put(*registry_, reader, "v", "x"), kAccessDenied);
  EXPECT_EQ(refused.Commit(), kAccessDenied);
  Put(*registry_, reader, "v", "x");
  EXPECT_EQ(RegistryChange(*registry_).Commit(), kSuccess);
  for (const Registry::Key opened : {key, parent, reader}) registry_->CloseKey(opened);
}

}  // namespace orvanto
