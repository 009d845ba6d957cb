// What every registry keeps to. A test program links registry_contract.cpp and instantiates the
// suite with what makes its registry:
//
//   INSTANTIATE_TEST_SUITE_P(Memory, RegistryContract, testing::Values(MakeRegistry(...)));
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "platform/Registry.h"

namespace orvanto {

// The key below HKEY_CURRENT_USER that the tests write into.
inline constexpr const char* kScratchKey = "Software\\OrvantoTest";

// Yields a registry in which kScratchKey does not exist, for the time of one test.
using MakeRegistry = std::function<std::unique_ptr<Registry>()>;

class RegistryContract : public testing::TestWithParam<MakeRegistry> {
 protected:
  RegistryContract();

  Status Open(const std::string& below, std::uint32_t access, Registry::Key& key);
  // Makes a key and returns it open; `below` is relative to kScratchKey.
  Registry::Key Make(const std::string& below,
                     std::uint32_t access = kQueryValue | kSetValue | kCreateSubKey);

  std::unique_ptr<Registry> registry_;
};

}  // namespace orvanto
