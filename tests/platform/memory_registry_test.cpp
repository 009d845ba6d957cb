#include "tests/support/MemoryRegistry.h"

#include "tests/platform/registry_contract.h"

namespace orvanto {
namespace {

INSTANTIATE_TEST_SUITE_P(Memory, RegistryContract, testing::Values(MakeRegistry([] {
                           return std::make_unique<MemoryRegistry>();
                         })));

TEST(RegistryTree, FoldsThePairsOfLatinGreekAndCyrillic) {
  const struct {
    const char* upper;
    const char* lower;
  } cases[] = {{"ABCXYZ_09[", "abcxyz_09["}, {"ÀÉÖ×ØÞß", "àéö×øþß"},     {"ĀĲĹŇŊŶŸŹŽ", "āĳĺňŋŷÿźž"},
               {"ΆΈΊΌΎΏΑΡΣΫ", "άέίόύώαρσϋ"}, {"ЀЏАЯѢҐӀӁӐ", "ѐџаяѣґӏӂӑ"}, {"\xC3", "\xC3"},
               {"\xFF\x80Q", "\xFF\x80q"}};
  for (const auto& c : cases) {
    EXPECT_EQ(RegistryTree::Fold(c.upper), c.lower);
    EXPECT_EQ(RegistryTree::Fold(c.lower), c.lower);
  }
}

TEST(MemoryRegistry, FailsTheChosenWriteAndChangesNothing) {
  MemoryRegistry registry;
  Registry::Key key = 0;
  ASSERT_EQ(registry.CreateKey(RootKey::CurrentUser, "A", kSetValue, key), kSuccess);
  registry.FailWrite(2, kDiskFull);
  EXPECT_EQ(registry.SetValue(key, "x", ValueType::String, "1", 2), kSuccess);
  EXPECT_EQ(registry.SetValue(key, "x", ValueType::String, "2", 2), kDiskFull);
  EXPECT_EQ(registry.Text(RootKey::CurrentUser, "a", "X"), "1");
  EXPECT_EQ(registry.DeleteValue(key, "x"), kSuccess);
  EXPECT_EQ(registry.OpenKeys(), 1u);
  EXPECT_EQ(registry.CloseKey(key), kSuccess);
  EXPECT_EQ(registry.OpenKeys(), 0u);
}

}  // namespace
}  // namespace orvanto
