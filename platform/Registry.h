// The registry in the system's own terms: predefined roots, key paths, value names, value types and
// Win32 status codes. Key paths and value names are compared without regard to case and keep the
// case of their first writing. All text is UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace orvanto {

using Status = std::uint32_t;  // 0 or a Win32 error code
inline constexpr Status kSuccess = 0;
inline constexpr Status kFileNotFound = 2;   // no such key or value
inline constexpr Status kAccessDenied = 5;   // missing access right, or a key that has subkeys
inline constexpr Status kInvalidHandle = 6;  // a key that is not open
inline constexpr Status kInvalidParameter = 87;
inline constexpr Status kDiskFull = 112;
inline constexpr Status kBadPathname = 161;  // a key path with an empty component
inline constexpr Status kMoreData = 234;     // the caller's buffer is too small
inline constexpr Status kWriteFault = 29;
inline constexpr Status kKeyDeleted = 1018;  // the open key has been deleted meanwhile

enum class RootKey { ClassesRoot, CurrentUser, LocalMachine, Users, CurrentConfig, DynData };

enum class ValueType : std::uint32_t { None = 0, String = 1, Binary = 3, Dword = 4 };

// Access rights of an open key, as bits.
inline constexpr std::uint32_t kQueryValue = 1;
inline constexpr std::uint32_t kSetValue = 2;
inline constexpr std::uint32_t kCreateSubKey = 4;

class Registry {
 public:
  using Key = std::uintptr_t;  // 0 is no key; every opened or created key must be closed

  virtual ~Registry() = default;

  // `path` is relative to the root, components parted by one backslash; a trailing backslash is
  // ignored. On failure `key` is 0.
  virtual Status OpenKey(RootKey root, const std::string& path, std::uint32_t access, Key& key) = 0;
  // Opens, creating the key and all that is missing above it.
  virtual Status CreateKey(RootKey root, const std::string& path, std::uint32_t access,
                           Key& key) = 0;

  // Copies up to `size` bytes into `data` and sets `size` to the value's full size. With a buffer
  // that is too small nothing is copied and kMoreData is returned. A String's bytes include its
  // terminating NUL; a Dword's are little-endian.
  virtual Status QueryValue(Key key, const std::string& name, ValueType& type, void* data,
                            std::uint32_t& size) = 0;
  virtual Status SetValue(Key key, const std::string& name, ValueType type, const void* data,
                          std::uint32_t size) = 0;
  virtual Status DeleteValue(Key key, const std::string& name) = 0;
  // A key with subkeys is not deleted: kAccessDenied. An empty name is kInvalidParameter.
  virtual Status DeleteKey(Key parent, const std::string& subkey) = 0;
  virtual Status CloseKey(Key key) = 0;

  // Whether the two name the same key, in whatever case they are written.
  virtual bool IsSameKey(const std::string& one, const std::string& other) const = 0;

  // Everything written between the two belongs together. Changes nest; the outermost end decides
  // and reports the first write that failed, also one that failed for its arguments. That a
  // deletion found nothing, or a key that has subkeys, is no failure of the change. The file-backed
  // registry makes the change visible and durable as one step, shut off against other processes,
  // and keeps the state from before when any of it fails. Windows has no such step: there each
  // write counts at once, and what was written before a failure stays.
  virtual void BeginChange() = 0;
  virtual Status EndChange() = 0;
};

// For the makers of registries: the first failed write of a change.
class FirstFailure {
 public:
  // Both pass on what they are given.
  Status OfWrite(Status status) {
    if (first_ == kSuccess) first_ = status;
    return status;
  }
  Status OfDeletion(Status status) {
    return status == kFileNotFound || status == kAccessDenied ? status : OfWrite(status);
  }
  Status Take() { return std::exchange(first_, kSuccess); }

 private:
  Status first_ = kSuccess;
};

// Scope of one change. Commit ends it and reports; without Commit the destructor ends it.
class RegistryChange {
 public:
  explicit RegistryChange(Registry& registry) : registry_(&registry) { registry.BeginChange(); }
  ~RegistryChange() { Commit(); }
  RegistryChange(const RegistryChange&) = delete;
  RegistryChange& operator=(const RegistryChange&) = delete;

  Status Commit() {
    Registry* registry = registry_;
    registry_ = nullptr;
    return registry != nullptr ? registry->EndChange() : kSuccess;
  }

 private:
  Registry* registry_;
};

}  // namespace orvanto
