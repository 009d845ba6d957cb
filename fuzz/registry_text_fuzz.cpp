// Any bytes as a registry file: what is read can be written, and reads as the same again.
#include <cstdint>
#include <cstdlib>

#include "platform/registry/RegistryText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvanto;
  RegistryTree tree;
  if (ParseRegistry({reinterpret_cast<const char*>(data), size}, tree)) return 0;
  RegistryTree again;
  if (ParseRegistry(FormatRegistry(tree), again) || !(again == tree)) std::abort();
  return 0;
}
