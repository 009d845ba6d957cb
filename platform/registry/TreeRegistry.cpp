#include "platform/registry/TreeRegistry.h"

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
  const Status status = failure_.OfWrite(WriteKey(root, path, id));
  if (status == kSuccess) key = NewKey(std::move(id), access);
  return status;
}

Status TreeRegistry::WriteKey(RootKey root, const std::string& path, std::string& id) {
  if (const Status status = RegistryTree::IdOf(root, path, id); status != kSuccess) return status;
  return Write([&](RegistryTree& tree) { return tree.CreateKey(root, path); });
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

Status TreeRegistry::WriteTo(
    Key key, std::uint32_t access,
    const std::function<Status(RegistryTree&, const std::string& id)>& step) {
  const OpenedKey* opened = nullptr;
  if (const Status status = Check(key, access, opened); status != kSuccess) return status;
  return Write([&](RegistryTree& tree) { return step(tree, opened->id); });
}

Status TreeRegistry::SetValue(Key key, const std::string& name, ValueType type, const void* data,
                              std::uint32_t size) {
  std::string bytes;
  if (size > 0) bytes.assign(static_cast<const char*>(data), size);
  return failure_.OfWrite(WriteTo(key, kSetValue, [&](RegistryTree& tree, const std::string& id) {
    return tree.SetValue(id, name, type, std::move(bytes));
  }));
}

Status TreeRegistry::DeleteValue(Key key, const std::string& name) {
  return failure_.OfDeletion(WriteTo(
      key, kSetValue,
      [&](RegistryTree& tree, const std::string& id) { return tree.DeleteValue(id, name); }));
}

Status TreeRegistry::DeleteKey(Key parent, const std::string& subkey) {
  // An empty name would stand for the parent itself.
  if (subkey.empty()) return failure_.OfDeletion(kInvalidParameter);
  return failure_.OfDeletion(
      WriteTo(parent, kCreateSubKey, [&](RegistryTree& tree, const std::string& parentId) {
        std::string id;
        const Status status = RegistryTree::IdBelow(parentId, subkey, id);
        return status == kSuccess ? tree.DeleteKey(id) : status;
      }));
}

Status TreeRegistry::CloseKey(Key key) { return open_.erase(key) == 1 ? kSuccess : kInvalidHandle; }

}  // namespace orvanto
