// The registry as the download windows use it: texts only, and a key may be given with a backslash
// before it.
#pragma once

#include <string>

#include "core/modRegistry.h"

namespace orvanto {

class CRegister {
 public:
  // The root is named as ResolveRoot knows it; no call shows a message.
  explicit CRegister(Registry& registry) : access_(registry) {}

  // The stored text, or `defaultText` where there is none or it cannot be read.
  std::string REGGetSetting(const std::string& root, const std::string& key,
                            const std::string& name, const std::string& defaultText);
  // Creates the key when it is missing. False: it was not stored.
  bool REGSaveSetting(const std::string& root, const std::string& key, const std::string& name,
                      const std::string& text);
  // Deleting what is not there succeeds.
  bool REGDeleteSetting(const std::string& root, const std::string& key, const std::string& name);

 private:
  RegistryAccess access_;
};

}  // namespace orvanto
