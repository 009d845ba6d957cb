#include <gtest/gtest.h>

#include "core/modRegistry.h"
#include "tests/support/MemoryRegistry.h"

namespace orvanto {
namespace {

constexpr const char* kKey = "Software\\Quellmark\\Orvanto\\General";

class RegistryAccessTest : public testing::Test {
 protected:
  ~RegistryAccessTest() override { EXPECT_EQ(registry.OpenKeys(), 0U); }

  MemoryRegistry registry;
  RegistryAccess access{registry};
};

TEST_F(RegistryAccessTest, ResolvesTheSixRootsWithoutRegardToCase) {
  EXPECT_EQ(ResolveRoot("hkcu"), RootKey::CurrentUser);
  EXPECT_EQ(ResolveRoot("HKLM"), RootKey::LocalMachine);
  EXPECT_EQ(ResolveRoot("HKU"), RootKey::Users);
  EXPECT_EQ(ResolveRoot("HkDd"), RootKey::DynData);
  EXPECT_EQ(ResolveRoot("HKCC"), RootKey::CurrentConfig);
  EXPECT_EQ(ResolveRoot("HKCR"), RootKey::ClassesRoot);
  EXPECT_EQ(ResolveRoot("HKEY_CURRENT_USER"), std::nullopt);

  RegistryData result = std::string("before");
  EXPECT_EQ(access.RegRead("HKXX", "K", "V", "S", std::string("d"), result), kUnresolvedRoot);
  EXPECT_EQ(std::get<std::string>(result), "d");
  EXPECT_EQ(access.RegWrite("HKXX", "K", "V", "S", std::string()), kUnresolvedRoot);
  EXPECT_EQ(access.RegDeleteValueAt("HKXX", "K", "V"), kUnresolvedRoot);
  EXPECT_EQ(access.RegDeleteKeyAt("HKXX", "K", "V"), kUnresolvedRoot);
}

TEST_F(RegistryAccessTest, TextOfAnyLengthComesBackWithoutItsNul) {
  for (const std::size_t length : {0U, 1U, 254U, 255U, 256U, 257U, 70000U}) {
    const std::string text(length, 'x');
    ASSERT_EQ(access.RegWrite("HKCU", kKey, "Text", "s", text), kSuccess);
    RegistryData result;
    ASSERT_EQ(access.RegRead("HKCU", kKey, "Text", "S", std::string("d"), result), kSuccess);
    EXPECT_EQ(std::get<std::string>(result), text) << length;
  }
}

TEST_F(RegistryAccessTest, WritesBooleansAndNumbersInTheirWidths) {
  ASSERT_EQ(access.RegWrite("HKCU", kKey, "Flag", "B", true), kSuccess);
  ASSERT_EQ(access.RegWrite("HKCU", kKey, "Number", "D", std::int32_t{-2}), kSuccess);
  ASSERT_EQ(access.RegWrite("HKCU", kKey, "Cut", "D", std::int32_t{0x12345}), kSuccess);
  std::string id;
  ASSERT_EQ(RegistryTree::IdOf(RootKey::CurrentUser, kKey, id), kSuccess);
  EXPECT_EQ(registry.Tree().FindValue(id, "Flag")->data, "\xFF\xFF");
  EXPECT_EQ(registry.Tree().FindValue(id, "Number")->data, "\xFE\xFF\xFF\xFF");

  RegistryData result;
  access.RegRead("HKCU", kKey, "Flag", "B", false, result);
  EXPECT_TRUE(std::get<bool>(result));
  access.RegRead("HKCU", kKey, "Number", "D", std::int32_t{0}, result);
  EXPECT_EQ(std::get<std::int32_t>(result), -2);
  access.RegRead("HKCU", kKey, "Cut", "D", std::int32_t{0}, result);
  EXPECT_EQ(std::get<std::int32_t>(result), 0x2345);
  // A boolean's buffer holds two bytes; a text's reader takes no number.
  access.RegRead("HKCU", kKey, "Number", "B", false, result);
  EXPECT_FALSE(std::get<bool>(result));
  access.RegRead("HKCU", kKey, "Number", "S", std::string("d"), result);
  EXPECT_EQ(std::get<std::string>(result), "d");
  access.RegRead("HKCU", kKey, "Number", "Q", std::string("d"), result);
  EXPECT_EQ(std::get<std::string>(result), "d");
}

TEST_F(RegistryAccessTest, MissingThingsReadAsTheDefaultAndDeleteWithSuccess) {
  RegistryData result;
  EXPECT_EQ(access.RegRead("HKCU", kKey, "V", "S", std::string("d"), result), kFileNotFound);
  EXPECT_EQ(std::get<std::string>(result), "d");
  registry.PutText(RootKey::CurrentUser, kKey, "Other", "x");
  EXPECT_EQ(access.RegRead("HKCU", kKey, "V", "S", std::string("d"), result), kSuccess);
  EXPECT_EQ(std::get<std::string>(result), "d");
  EXPECT_EQ(access.RegDeleteValueAt("HKCU", kKey, "V"), kSuccess);
  EXPECT_EQ(access.RegDeleteValueAt("HKCU", "Nowhere", "V"), kSuccess);
  EXPECT_EQ(access.RegDeleteKeyAt("HKCU", kKey, "K"), kSuccess);
  EXPECT_EQ(access.RegDeleteKeyAt("HKCU", "Software", "Quellmark"), kAccessDenied);
}

TEST_F(RegistryAccessTest, FailedWritesReportTheirStatus) {
  registry.FailWrite(1, kAccessDenied);
  EXPECT_EQ(access.RegWrite("HKLM", kKey, "V", "S", std::string("x")), kAccessDenied);
  registry.FailWrite(2, kDiskFull);
  EXPECT_EQ(access.RegWrite("HKLM", kKey, "V", "S", std::string("x")), kDiskFull);
  EXPECT_FALSE(registry.Text(RootKey::LocalMachine, kKey, "V").has_value());
}

TEST(Settings, TheModeChoosesTheHiveAndDeletionsStayPerUser) {
  MemoryRegistry registry;
  Settings settings(registry);
  for (const RootKey root : {RootKey::CurrentUser, RootKey::LocalMachine}) {
    registry.PutText(root, kKey, "Gone", "x");
    registry.PutText(root, std::string(kProductKey) + "\\Task", "Path", "x");
  }
  settings.WriteSetting(kGeneral, "OnTop", "user");
  settings.SetStorageMode(1);
  EXPECT_EQ(settings.ReadSetting(kGeneral, "OnTop", "0"), "0");
  settings.WriteSetting(kGeneral, "OnTop", "machine");
  settings.DeleteUserSetting(kGeneral, "Gone");
  settings.DeleteUserKey("Task");

  EXPECT_EQ(registry.Text(RootKey::CurrentUser, kKey, "OnTop"), "user");
  EXPECT_EQ(registry.Text(RootKey::LocalMachine, kKey, "OnTop"), "machine");
  EXPECT_FALSE(registry.Text(RootKey::CurrentUser, kKey, "Gone").has_value());
  EXPECT_TRUE(registry.Text(RootKey::LocalMachine, kKey, "Gone").has_value());
  EXPECT_FALSE(registry.HasKey(RootKey::CurrentUser, std::string(kProductKey) + "\\Task"));
  EXPECT_TRUE(registry.HasKey(RootKey::LocalMachine, std::string(kProductKey) + "\\Task"));
}

TEST(Settings, AnUnknownModeReadsAndWritesNothing) {
  MemoryRegistry registry;
  Settings settings(registry);
  settings.WriteSetting(kGeneral, "OnTop", "1");
  settings.WriteMachineSetting(kGeneral, "Users_Share", "2");
  settings.ReadStorageMode();
  EXPECT_EQ(settings.StorageMode(), 2);

  const int writes = registry.Writes();
  settings.WriteSetting(kGeneral, "OnTop", "0");
  EXPECT_EQ(registry.Writes(), writes);
  std::string prior = "prior";
  settings.ReadSetting(kGeneral, "OnTop", "default", prior);
  EXPECT_EQ(prior, "prior");
  EXPECT_EQ(settings.ReadMachineSetting(kGeneral, "Users_Share", "0"), "2");
}

}  // namespace
}  // namespace orvanto
