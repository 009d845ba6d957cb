#include "platform/TreeRegistry.h"

#include <cstring>
#include <utility>

namespace orvanto {

Status TreeRegistry::Check(Key key, std::uint32_t access, const OpenedKey*& opened) const {
  const auto found = open_.find(key);
  if (found == open_.end()) return kInvalidHandle;
  if ((found->second.access & access) != access) return kAccessDenied;
  opened = &found->second;
  return kSuccess;
}

Registry::Key TreeRegistry::NewKey(std::string id, std::uint32_t access) {
  open_.try_emplace(++lastKey_, OpenedKey{std::move(id), access});
  return lastKey_;
}

Status TreeRegistry::OpenKey(RootKey root, const std::string& path, std::uint32_t access,
                             Key& key) {
  key = 0;
  std::string id;
  if (const Status status = RegistryTree::IdOf(root, path, id); status != kSuccess) return status;
  Refresh();
  if (tree_.Find(id) == nullptr) return kFileNotFound;
  key = NewKey(std::move(id), access);
  return kSuccess;
}

Status TreeRegistry::CreateKey(RootKey root, const std::string& path, std::uint32_t access,
                               Key& key) {
  key = 0;
  std::string id;
  if (const Status status = RegistryTree::IdOf(root, path, id); status != kSuccess) return status;
  const Status status = Write([&](RegistryTree& tree) { return tree.CreateKey(root, path); });
  if (status == kSuccess) key = NewKey(std::move(id), access);
  return status;
}

Status TreeRegistry::QueryValue(Key key, const std::string& name, ValueType& type, void* data,
                                std::uint32_t& size) {
  const OpenedKey* opened = nullptr;
  if (const Status status = Check(key, kQueryValue, opened); status != kSuccess) return status;
  Refresh();
  const RegistryTree::Value* value = tree_.FindValue(opened->id, name);
  if (value == nullptr) return tree_.Find(opened->id) == nullptr ? kKeyDeleted : kFileNotFound;
  type = value->type;
  const std::uint32_t room = std::exchange(size, static_cast<std::uint32_t>(value->data.size()));
  if (room < size) return kMoreData;
  if (size > 0) std::memcpy(data, value->data.data(), size);
  return kSuccess;
}

Status TreeRegistry::SetValue(Key key, const std::string& name, ValueType type, const void* data,
                              std::uint32_t size) {
  const OpenedKey* opened = nullptr;
  if (const Status status = Check(key, kSetValue, opened); status != kSuccess) return status;
  std::string bytes;
  if (size > 0) bytes.assign(static_cast<const char*>(data), size);
  return Write(
      [&](RegistryTree& tree) { return tree.SetValue(opened->id, name, type, std::move(bytes)); });
}

Status TreeRegistry::DeleteValue(Key key, const std::string& name) {
  const OpenedKey* opened = nullptr;
  if (const Status status = Check(key, kSetValue, opened); status != kSuccess) return status;
  return Write([&](RegistryTree& tree) { return tree.DeleteValue(opened->id, name); });
}

Status TreeRegistry::DeleteKey(Key parent, const std::string& subkey) {
  const OpenedKey* opened = nullptr;
  if (const Status status = Check(parent, kCreateSubKey, opened); status != kSuccess) return status;
  std::string id;
  if (const Status status = RegistryTree::IdBelow(opened->id, subkey, id); status != kSuccess) {
    return status;
  }
  return Write([&](RegistryTree& tree) { return tree.DeleteKey(id); });
}

Status TreeRegistry::CloseKey(Key key) { return open_.erase(key) == 1 ? kSuccess : kInvalidHandle; }

}  // namespace orvanto
