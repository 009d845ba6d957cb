#include <gtest/gtest.h>

#include "core/modRegistry.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

constexpr const char* kKey = "Software\\Quellmark\\Orvanto\\General";
const RegistryData kDefault = std::string("d");

class RegistryAccessTest : public testing::Test, public FakePlatform {
 protected:
  RegistryData Read(const char* value, const char* type, const RegistryData& otherwise = kDefault,
                    Status status = kSuccess) {
    RegistryData result = std::string("before");
    EXPECT_EQ(access.RegRead("HKCU", kKey, value, type, otherwise, result), status) << value;
    return result;
  }
  Status Write(const char* value, const char* type, const RegistryData& data) {
    return access.RegWrite("hkcu", kKey, value, type, data);
  }
  std::string Bytes(const char* value) {
    std::string id;
    EXPECT_EQ(RegistryTree::IdOf(RootKey::CurrentUser, kKey, id), kSuccess);
    return registry.Tree().FindValue(id, value)->data;
  }

  RegistryAccess access{registry};
};

TEST_F(RegistryAccessTest, MissingThingsReadAsTheDefaultAndDeleteWithSuccess) {
  EXPECT_EQ(ResolveRoot("HkDd"), RootKey::DynData);
  RegistryData result;
  EXPECT_EQ(access.RegRead("HKXX", "K", "V", "S", kDefault, result), kUnresolvedRoot);
  EXPECT_EQ(result, kDefault);
  EXPECT_EQ(access.RegWrite("HKXX", "K", "V", "S", kDefault), kUnresolvedRoot);
  EXPECT_EQ(access.RegDeleteValueAt("HKXX", "K", "V"), kUnresolvedRoot);
  EXPECT_EQ(access.RegDeleteKeyAt("HKXX", "K", "V"), kUnresolvedRoot);

  EXPECT_EQ(Read("V", "S", kDefault, kFileNotFound), kDefault);
  ASSERT_EQ(Write("Other", "S", kDefault), kSuccess);
  EXPECT_EQ(Read("V", "S"), kDefault);
  for (const char* key : {kKey, "Nowhere"}) {
    EXPECT_EQ(access.RegDeleteValueAt("HKCU", key, "V"), kSuccess);
    EXPECT_EQ(access.RegDeleteKeyAt("HKCU", key, "K"), kSuccess);
  }
  EXPECT_EQ(access.RegDeleteKeyAt("HKCU", "Software", "Quellmark"), kAccessDenied);
}

TEST_F(RegistryAccessTest, EachTypeIsWrittenInItsWidth) {
  for (const std::size_t length : {0U, 255U, 256U, 70000U}) {
    const RegistryData text = std::string(length, 'x');
    ASSERT_EQ(Write("Text", "s", text), kSuccess);
    EXPECT_EQ(Read("Text", "S"), text) << length;
  }
  ASSERT_EQ(Write("Flag", "B", true), kSuccess);
  ASSERT_EQ(Write("Number", "D", -2), kSuccess);
  ASSERT_EQ(Write("Cut", "D", 0x12345), kSuccess);
  EXPECT_EQ(Write("Flag", "S", true), kInvalidParameter);
  EXPECT_EQ(Write("Flag", "Q", true), kInvalidParameter);
  EXPECT_EQ(Bytes("Flag"), "\xFF\xFF");
  EXPECT_EQ(Bytes("Number"), "\xFE\xFF\xFF\xFF");
  EXPECT_EQ(Read("Flag", "B", false), RegistryData(true));
  EXPECT_EQ(Read("Number", "D", 0), RegistryData(-2));
  EXPECT_EQ(Read("Cut", "D", 0), RegistryData(0x2345));
  // A boolean's buffer holds two bytes; a text's reader takes no number.
  EXPECT_EQ(Read("Number", "B", false), RegistryData(false));
  for (const char* type : {"S", "Q"}) EXPECT_EQ(Read("Number", type), kDefault);
  for (const int write : {1, 2}) {
    registry.FailWrite(write, kDiskFull);
    EXPECT_EQ(Write("Failed", "S", kDefault), kDiskFull);
  }
  EXPECT_EQ(Read("Failed", "S", true), RegistryData(true));
}

}  // namespace
}  // namespace orvanto
