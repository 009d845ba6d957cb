// Access to the registry in root names, key paths, value names and one-letter value types, and on
// top of it the program's settings. Nothing here shows a message: statuses are returned, and the
// settings ignore them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "platform/Registry.h"

namespace orvanto {

inline constexpr Status kUnresolvedRoot = 99;
inline constexpr const char* kProductKey = "Software\\Quellmark\\Orvanto";
inline constexpr const char* kGeneral = "General";
inline constexpr const char* kInternet = "Internet";

// "HKCU", "HKLM", "HKU", "HKDD", "HKCC", "HKCR", without regard to case; anything else is none.
std::optional<RootKey> ResolveRoot(const std::string& rootName);

// A value by type letter: "S" a string, "B" a boolean of 16 bits, "D" an integer of 32.
using RegistryData = std::variant<std::string, bool, std::int32_t>;

class RegistryAccess {
 public:
  explicit RegistryAccess(Registry& registry) : registry_(registry) {}

  // `result` becomes `defaultValue`, then what was read, if anything was. Statuses: 0,
  // kUnresolvedRoot or what opening the key gave; a missing value in an existing key is no failure.
  Status RegRead(const std::string& rootName, const std::string& keyPath,
                 const std::string& valueName, const std::string& type,
                 const RegistryData& defaultValue, RegistryData& result);
  // Creates the key when it is missing. "D" takes its number as 16 bits. kInvalidParameter for an
  // unknown letter, and for a value of another kind than it.
  Status RegWrite(const std::string& rootName, const std::string& keyPath,
                  const std::string& valueName, const std::string& type, const RegistryData& value);
  // Deleting what is not there succeeds.
  Status RegDeleteValueAt(const std::string& rootName, const std::string& keyPath,
                          const std::string& valueName);
  Status RegDeleteKeyAt(const std::string& rootName, const std::string& parentKeyPath,
                        const std::string& subkeyName);

 private:
  Registry& registry_;
};

class Settings {
 public:
  explicit Settings(Registry& registry) : registry_(registry), access_(registry) {}

  // 0: per user; 1: shared by all users of the machine. Any other number: nothing is read (the
  // result stays as it was) and nothing is written.
  std::int16_t StorageMode() const { return storageMode_; }
  void SetStorageMode(std::int16_t mode) { storageMode_ = mode; }
  bool IsStoring() const { return Root() != nullptr; }
  // Takes it from the machine-wide `Users_Share`. Throws what ToInt16 throws; then it stays.
  void ReadStorageMode();

  // Reads several values of one section, which is opened once. Must not outlive the settings.
  class Section {
   public:
    Section(Settings& settings, const std::string& section);
    ~Section();
    Section(const Section&) = delete;
    Section& operator=(const Section&) = delete;
    void Read(const std::string& valueName, const std::string& defaultValue,
              std::string& result) const;
    std::string Read(const std::string& valueName, const std::string& defaultValue) const;

   private:
    Registry& registry_;
    const bool storing_;  // the mode names a hive
    Registry::Key key_ = 0;
  };
  void ReadSetting(const std::string& section, const std::string& valueName,
                   const std::string& defaultValue, std::string& result);
  // The same into a fresh text.
  std::string ReadSetting(const std::string& section, const std::string& valueName,
                          const std::string& defaultValue);
  // A number of 16 bits; what is none counts as the default.
  std::int16_t ReadNumber(const std::string& section, const std::string& valueName,
                          std::int16_t defaultValue);
  void WriteSetting(const std::string& section, const std::string& valueName,
                    const std::string& value);

  // Machine-wide whatever the mode: only for `Users_Share`.
  std::string ReadMachineSetting(const std::string& section, const std::string& valueName,
                                 const std::string& defaultValue);
  void WriteMachineSetting(const std::string& section, const std::string& valueName,
                           const std::string& value);

  // Per user whatever the mode: for what is always the user's own. What is deleted in shared mode
  // stays machine-wide and is only hidden by the lowered task count.
  std::string ReadUserSetting(const std::string& section, const std::string& valueName,
                              const std::string& defaultValue);
  void WriteUserSetting(const std::string& section, const std::string& valueName,
                        const std::string& value);
  void DeleteUserSetting(const std::string& section, const std::string& valueName);
  void DeleteUserKey(const std::string& subkeyName);

  // For a scope around writes that belong together.
  Registry& Store() { return registry_; }

 private:
  const char* Root() const;  // null when the mode names none
  std::string Read(const char* root, const std::string& section, const std::string& valueName,
                   const std::string& defaultValue);

  Registry& registry_;
  RegistryAccess access_;
  std::int16_t storageMode_ = 0;
};

}  // namespace orvanto
