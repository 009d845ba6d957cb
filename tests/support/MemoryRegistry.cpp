#include "tests/support/MemoryRegistry.h"

#include <cassert>

namespace orvanto {

void MemoryRegistry::BeginChange() {
  if (depth_++ == 0) failure_.Take();
}

Status MemoryRegistry::EndChange() {
  assert(depth_ > 0);
  return --depth_ == 0 ? failure_.Take() : kSuccess;
}

void MemoryRegistry::FailWrite(int count, Status status) {
  failingWrite_ = writes_ + count;
  failingStatus_ = status;
}

Status MemoryRegistry::Write(const WriteStep& step) {
  if (++writes_ == failingWrite_) return failingStatus_;
  return step(tree_);
}

void MemoryRegistry::PutText(RootKey root, const std::string& path, const std::string& name,
                             const std::string& text) {
  std::string id;
  [[maybe_unused]] Status status = tree_.CreateKey(root, path);
  assert(status == kSuccess);
  status = RegistryTree::IdOf(root, path, id);
  assert(status == kSuccess);
  tree_.SetValue(id, name, ValueType::String, text + '\0');
}

std::optional<std::string> MemoryRegistry::Text(RootKey root, const std::string& path,
                                                const std::string& name) const {
  std::string id;
  if (RegistryTree::IdOf(root, path, id) != kSuccess) return std::nullopt;
  const RegistryTree::Value* value = tree_.FindValue(id, name);
  if (value == nullptr || value->type != ValueType::String) return std::nullopt;
  return value->data.substr(0, value->data.find_last_not_of('\0') + 1);
}

bool MemoryRegistry::HasKey(RootKey root, const std::string& path) const {
  std::string id;
  return RegistryTree::IdOf(root, path, id) == kSuccess && tree_.Find(id) != nullptr;
}

}  // namespace orvanto
