// A Registry over a RegistryTree: key handles, access rights and the copying of values. What a
// write means beyond the memory is left to the derived class.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_map>

#include "platform/Registry.h"
#include "platform/registry/RegistryTree.h"
#include "platform/text/Case.h"

namespace orvanto {

class TreeRegistry : public Registry {
 public:
  Status OpenKey(RootKey root, const std::string& path, std::uint32_t access, Key& key) final;
  Status CreateKey(RootKey root, const std::string& path, std::uint32_t access, Key& key) final;
  Status QueryValue(Key key, const std::string& name, ValueType& type, void* data,
                    std::uint32_t& size) final;
  Status SetValue(Key key, const std::string& name, ValueType type, const void* data,
                  std::uint32_t size) final;
  Status DeleteValue(Key key, const std::string& name) final;
  // Needs kCreateSubKey, which Windows does not insist on.
  Status DeleteKey(Key parent, const std::string& subkey) final;
  Status CloseKey(Key key) final;
  bool IsSameKey(const std::string& one, const std::string& other) const final {
    return FoldCase(one) == FoldCase(other);
  }

  std::size_t OpenKeys() const { return open_.size(); }

 protected:
  using WriteStep = std::function<Status(RegistryTree&)>;

  // Called before each reading of the tree.
  virtual void Refresh() {}
  // Carries out one write on the tree, or refuses it with a status and leaves the tree alone.
  virtual Status Write(const WriteStep& step) = 0;

  RegistryTree tree_;
  FirstFailure failure_;  // the derived class takes it at both ends of a change

 private:
  struct OpenedKey {
    std::string id;
    std::uint32_t access;
  };

  Status Check(Key key, std::uint32_t access, const OpenedKey*& opened) const;
  Status WriteKey(RootKey root, const std::string& path, std::string& id);
  Status WriteTo(Key key, std::uint32_t access,
                 const std::function<Status(RegistryTree&, const std::string& id)>& step);
  Key NewKey(std::string id, std::uint32_t access);

  std::unordered_map<Key, OpenedKey> open_;
  Key lastKey_ = 0;  // numbers are not used again, so a key used after its closing is noticed
};

}  // namespace orvanto
