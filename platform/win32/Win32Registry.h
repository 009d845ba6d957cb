// The registry of Windows.
#pragma once

#include "platform/Registry.h"

namespace orvanto::win32 {

class Win32Registry : public Registry {
 public:
  Status OpenKey(RootKey root, const std::string& path, std::uint32_t access, Key& key) override;
  Status CreateKey(RootKey root, const std::string& path, std::uint32_t access, Key& key) override;
  // An expandable string comes back as a String, not expanded. A string that somebody stored
  // without its NUL gets one.
  Status QueryValue(Key key, const std::string& name, ValueType& type, void* data,
                    std::uint32_t& size) override;
  Status SetValue(Key key, const std::string& name, ValueType type, const void* data,
                  std::uint32_t size) override;
  Status DeleteValue(Key key, const std::string& name) override;
  Status DeleteKey(Key parent, const std::string& subkey) override;
  Status CloseKey(Key key) override;

  // Each write counts at once.
  void BeginChange() override {}
  Status EndChange() override { return kSuccess; }
};

}  // namespace orvanto::win32
