// A registry in memory for tests, with writes that fail on demand.
#pragma once

#include <optional>
#include <string>

#include "platform/TreeRegistry.h"

namespace orvanto {

class MemoryRegistry : public TreeRegistry {
 public:
  // What was written before a failure stays, as on Windows.
  void BeginChange() override;
  Status EndChange() override;

  // Lets the `count`th call from now on (1 is the next) of CreateKey, SetValue, DeleteValue or
  // DeleteKey fail with `status` and change nothing. Calls with a bad handle or path do not count.
  void FailWrite(int count, Status status);
  int Writes() const { return writes_; }      // calls so far, failed ones included
  int ChangeDepth() const { return depth_; }  // 0 when every change has been ended

  // Past the interface: what a test prepares and looks up.
  void PutText(RootKey root, const std::string& path, const std::string& name,
               const std::string& text);
  std::optional<std::string> Text(RootKey root, const std::string& path,
                                  const std::string& name) const;
  bool HasKey(RootKey root, const std::string& path) const;
  RegistryTree& Tree() { return tree_; }

 protected:
  Status Write(const WriteStep& step) override;

 private:
  int depth_ = 0;
  int writes_ = 0;
  int failingWrite_ = 0;
  Status failingStatus_ = kSuccess;
};

}  // namespace orvanto
