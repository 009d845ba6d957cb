// The content of a registry in memory: keys and their values, without handles or access rights.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "platform/Registry.h"

namespace orvanto {

// Every key is addressed by its id: the root's digit and the path, folded to one case, e.g.
// "1\software\quellmark". Ids stay meaningful when the key goes and comes back. The six roots
// always exist. Copies and comparisons take in everything, the written case included.
class RegistryTree {
 public:
  struct Value {
    std::string name;  // in the case of its first writing
    ValueType type = ValueType::None;
    std::string data;  // the bytes, of a String with its terminating NUL
    bool operator==(const Value&) const = default;
  };
  struct Node {
    RootKey root = RootKey::ClassesRoot;
    std::string
        path;  // below the root, in the case of its first writing; empty for the root itself
    std::map<std::string, Value, std::less<>> values;  // by folded name
    bool operator==(const Node&) const = default;
  };
  using Nodes = std::map<std::string, Node, std::less<>>;  // by id: a key before what is below it

  RegistryTree();

  // The id of the key at `path`, whether it exists or not. kBadPathname for an empty component,
  // kInvalidParameter for one of more than 255 UTF-16 units; then `id` is left alone.
  static Status IdOf(RootKey root, std::string_view path, std::string& id);
  static Status IdBelow(std::string_view parentId, std::string_view path, std::string& id);

  const Node* Find(std::string_view id) const;
  const Value* FindValue(std::string_view id, std::string_view name) const;
  const Nodes& Keys() const { return nodes_; }

  // Makes the key and all that is missing above it.
  Status CreateKey(RootKey root, std::string_view path);
  Status DeleteKey(const std::string& id);
  Status SetValue(std::string_view id, std::string_view name, ValueType type, std::string data);
  Status DeleteValue(std::string_view id, std::string_view name);

  // Grows with every call that changed something.
  std::uint64_t Revision() const { return revision_; }

  bool operator==(const RegistryTree& other) const { return nodes_ == other.nodes_; }

 private:
  Nodes nodes_;
  std::uint64_t revision_ = 0;
};

}  // namespace orvanto
