// A registry in memory for tests, with writes that fail on demand.
#pragma once

#include <cassert>
#include <string>

#include "platform/registry/TreeRegistry.h"

namespace orvanto {

class MemoryRegistry : public TreeRegistry {
 public:
  // What was written before a failure stays, as on Windows.
  void BeginChange() override {
    if (depth_++ == 0) failure_.Take();
  }
  Status EndChange() override {
    assert(depth_ > 0);
    return --depth_ == 0 ? failure_.Take() : kSuccess;
  }

  // Lets the `count`th call from now on (1 is the next) of CreateKey, SetValue, DeleteValue or
  // DeleteKey fail with `status` and change nothing. Calls with a bad handle or path do not count.
  void FailWrite(int count, Status status) {
    failingWrite_ = writes_ + count;
    failingStatus_ = status;
  }
  int Writes() const { return writes_; }      // calls so far, failed ones included
  int ChangeDepth() const { return depth_; }  // 0 when every change has been ended

  // Past the interface.
  RegistryTree& Tree() { return tree_; }
  bool HasKey(RootKey root, const std::string& path) const {
    std::string id;
    return RegistryTree::IdOf(root, path, id) == kSuccess && tree_.Find(id) != nullptr;
  }

 protected:
  Status Write(const WriteStep& step) override {
    return ++writes_ == failingWrite_ ? failingStatus_ : step(tree_);
  }

 private:
  int depth_ = 0;
  int writes_ = 0;
  int failingWrite_ = 0;
  Status failingStatus_ = kSuccess;
};

}  // namespace orvanto
