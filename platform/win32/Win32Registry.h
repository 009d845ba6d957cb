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
  bool IsSameKey(const std::string& one, const std::string& other) const override;

  // Each write counts at once; a failure undoes nothing.
  void BeginChange() override {
    if (depth_++ == 0) failure_.Take();
  }
  Status EndChange() override { return --depth_ == 0 ? failure_.Take() : kSuccess; }

 private:
  int depth_ = 0;
  FirstFailure failure_;
};

}  // namespace orvanto::win32
