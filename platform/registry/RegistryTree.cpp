#include "platform/registry/RegistryTree.h"

#include <utility>

#include "platform/text/Case.h"
#include "platform/text/Utf8.h"

namespace orvanto {
namespace {

constexpr std::size_t kMaxComponent = 255;

// Strips the trailing backslash and checks each component.
Status CheckPath(std::string_view& path) {
  if (path.size() > 1 && path.back() == '\\') path.remove_suffix(1);
  if (path.empty()) return kSuccess;
  for (std::string_view rest = path;;) {
    const std::size_t end = rest.find('\\');
    const std::string_view component = rest.substr(0, end);
    if (component.empty()) return kBadPathname;
    if (component.size() > kMaxComponent && Utf16Length(component) > kMaxComponent) {
      return kInvalidParameter;
    }
    if (end == std::string_view::npos) return kSuccess;
    rest.remove_prefix(end + 1);
  }
}

std::string RootId(RootKey root) { return std::string(1, static_cast<char>('0' + int(root))); }

}  // namespace

RegistryTree::RegistryTree() {
  for (int i = 0; i <= static_cast<int>(RootKey::DynData); ++i) {
    const auto root = static_cast<RootKey>(i);
    nodes_[RootId(root)].root = root;
  }
}

Status RegistryTree::IdOf(RootKey root, std::string_view path, std::string& id) {
  return IdBelow(RootId(root), path, id);
}

Status RegistryTree::IdBelow(std::string_view parentId, std::string_view path, std::string& id) {
  if (const Status status = CheckPath(path); status != kSuccess) return status;
  std::string result;
  result.reserve(parentId.size() + 1 + path.size());
  result += parentId;
  if (!path.empty()) {
    result += '\\';
    AppendFoldedCase(path, result);
  }
  id = std::move(result);
  return kSuccess;
}

const RegistryTree::Node* RegistryTree::Find(std::string_view id) const {
  const auto found = nodes_.find(id);
  return found == nodes_.end() ? nullptr : &found->second;
}

const RegistryTree::Value* RegistryTree::FindValue(std::string_view id,
                                                   std::string_view name) const {
  const Node* node = Find(id);
  if (node == nullptr) return nullptr;
  const auto found = node->values.find(FoldCase(name));
  return found == node->values.end() ? nullptr : &found->second;
}

Status RegistryTree::CreateKey(RootKey root, std::string_view path) {
  if (const Status status = CheckPath(path); status != kSuccess) return status;
  std::string id = RootId(root);
  std::string written;  // the path so far, as the keys on it are written
  while (!path.empty()) {
    const std::size_t end = path.find('\\');
    const std::string_view component = path.substr(0, end);
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    id += '\\';
    AppendFoldedCase(component, id);
    const auto [node, made] = nodes_.try_emplace(id);
    if (made) {
      if (!written.empty()) written += '\\';
      written += component;
      node->second.root = root;
      node->second.path = written;
      ++revision_;
    } else {
      written = node->second.path;
    }
  }
  return kSuccess;
}

Status RegistryTree::DeleteKey(const std::string& id) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return kFileNotFound;
  if (found->second.path.empty()) return kAccessDenied;
  const std::string below = id + '\\';
  const auto next = nodes_.lower_bound(below);
  if (next != nodes_.end() && next->first.starts_with(below)) return kAccessDenied;
  nodes_.erase(found);
  ++revision_;
  return kSuccess;
}

Status RegistryTree::SetValue(std::string_view id, std::string_view name, ValueType type,
                              std::string data) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return kKeyDeleted;
  const auto [entry, made] = found->second.values.try_emplace(FoldCase(name));
  Value& value = entry->second;
  if (made) value.name = name;
  if (!made && value.type == type && value.data == data) return kSuccess;
  value.type = type;
  value.data = std::move(data);
  ++revision_;
  return kSuccess;
}

Status RegistryTree::DeleteValue(std::string_view id, std::string_view name) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return kKeyDeleted;
  if (found->second.values.erase(FoldCase(name)) == 0) return kFileNotFound;
  ++revision_;
  return kSuccess;
}

}  // namespace orvanto
