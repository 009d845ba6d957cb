#include "core/modRegistry.h"

#include <array>
#include <utility>
#include <vector>

#include "core/Convert.h"
#include "platform/text/Case.h"

namespace orvanto {
namespace {

constexpr std::array<std::pair<const char*, RootKey>, 6> kRoots{{
    {"HKCU", RootKey::CurrentUser},
    {"HKLM", RootKey::LocalMachine},
    {"HKU", RootKey::Users},
    {"HKDD", RootKey::DynData},
    {"HKCC", RootKey::CurrentConfig},
    {"HKCR", RootKey::ClassesRoot},
}};

// Closes on the way out; Close reports.
class OpenedKey {
 public:
  explicit OpenedKey(Registry& registry) : registry_(registry) {}
  ~OpenedKey() { Close(); }
  OpenedKey(const OpenedKey&) = delete;
  OpenedKey& operator=(const OpenedKey&) = delete;

  Registry::Key& Handle() { return key_; }
  Status Close() { return key_ != 0 ? registry_.CloseKey(std::exchange(key_, 0)) : kSuccess; }

 private:
  Registry& registry_;
  Registry::Key key_ = 0;
};

void ReadString(Registry& registry, Registry::Key key, const std::string& name, RegistryData& out) {
  ValueType type = ValueType::None;
  std::array<char, 256> brief;
  auto size = static_cast<std::uint32_t>(brief.size());
  std::string text;
  Status status = registry.QueryValue(key, name, type, brief.data(), size);
  if (status == kSuccess) {
    text.assign(brief.data(), size);
  }
  // Another program may lengthen the value between the two calls.
  while (status == kMoreData) {
    text.resize(size);
    status = registry.QueryValue(key, name, type, text.data(), size);
    if (status == kSuccess) text.resize(size);
  }
  if (status != kSuccess || type != ValueType::String) return;
  // To the terminating NUL; whatever another program has written after it is no text.
  out = text.substr(0, text.find('\0'));
}

void ReadBoolean(Registry& registry, Registry::Key key, const std::string& name,
                 RegistryData& out) {
  ValueType type = ValueType::None;
  std::uint16_t bits = 0;
  std::uint32_t size = sizeof bits;
  if (registry.QueryValue(key, name, type, &bits, size) == kSuccess) out = bits != 0;
}

void ReadInteger(Registry& registry, Registry::Key key, const std::string& name,
                 RegistryData& out) {
  ValueType type = ValueType::None;
  std::array<unsigned char, 32> buffer{};
  auto size = static_cast<std::uint32_t>(buffer.size());
  if (registry.QueryValue(key, name, type, buffer.data(), size) != kSuccess) return;
  std::uint32_t number = 0;
  for (std::size_t i = 4; i-- > 0;) number = number << 8 | buffer[i];
  out = static_cast<std::int32_t>(number);
}

Status WriteTyped(Registry& registry, Registry::Key key, const std::string& name, char type,
                  const RegistryData& value) {
  switch (type) {
    case 's': {
      const auto& text = std::get<std::string>(value);
      return registry.SetValue(key, name, ValueType::String, text.c_str(),
                               static_cast<std::uint32_t>(text.size() + 1));
    }
    case 'b': {
      const std::uint16_t bits = std::get<bool>(value) ? 0xFFFF : 0;
      return registry.SetValue(key, name, ValueType::Binary, &bits, sizeof bits);
    }
    default: {
      const auto number = static_cast<std::int16_t>(std::get<std::int32_t>(value));
      const auto wide = static_cast<std::uint32_t>(std::int32_t{number});
      const std::array<unsigned char, 4> bytes{
          static_cast<unsigned char>(wide), static_cast<unsigned char>(wide >> 8),
          static_cast<unsigned char>(wide >> 16), static_cast<unsigned char>(wide >> 24)};
      return registry.SetValue(key, name, ValueType::Dword, bytes.data(), 4);
    }
  }
}

// 's', 'b', 'd', or NUL for a letter that is none of them.
char TypeLetter(const std::string& type) {
  const std::string lower = LowerCase(type);
  return lower == "s" || lower == "b" || lower == "d" ? lower[0] : '\0';
}

// Whether the value is of the kind that the letter stands for.
bool Holds(const RegistryData& value, char letter) {
  switch (letter) {
    case 's':
      return std::holds_alternative<std::string>(value);
    case 'b':
      return std::holds_alternative<bool>(value);
    case 'd':
      return std::holds_alternative<std::int32_t>(value);
    default:
      return false;
  }
}

std::string SectionPath(const std::string& section) {
  return std::string(kProductKey) + "\\" + section;
}

}  // namespace

std::optional<RootKey> ResolveRoot(const std::string& rootName) {
  for (const auto& [name, root] : kRoots) {
    if (EqualIgnoringCase(rootName, name)) return root;
  }
  return std::nullopt;
}

Status RegistryAccess::RegRead(const std::string& rootName, const std::string& keyPath,
                               const std::string& valueName, const std::string& type,
                               const RegistryData& defaultValue, RegistryData& result) {
  result = defaultValue;
  const auto root = ResolveRoot(rootName);
  if (!root) return kUnresolvedRoot;
  OpenedKey key(registry_);
  if (const Status status = registry_.OpenKey(*root, keyPath, kQueryValue, key.Handle())) {
    return status;
  }
  switch (TypeLetter(type)) {
    case 's':
      ReadString(registry_, key.Handle(), valueName, result);
      break;
    case 'b':
      ReadBoolean(registry_, key.Handle(), valueName, result);
      break;
    case 'd':
      ReadInteger(registry_, key.Handle(), valueName, result);
      break;
    default:
      break;
  }
  return key.Close();
}

Status RegistryAccess::RegWrite(const std::string& rootName, const std::string& keyPath,
                                const std::string& valueName, const std::string& type,
                                const RegistryData& value) {
  const auto root = ResolveRoot(rootName);
  if (!root) return kUnresolvedRoot;
  const char letter = TypeLetter(type);
  if (!Holds(value, letter)) return kInvalidParameter;
  OpenedKey key(registry_);
  if (const Status status =
          registry_.CreateKey(*root, keyPath, kSetValue | kCreateSubKey, key.Handle())) {
    return status;
  }
  if (const Status status = WriteTyped(registry_, key.Handle(), valueName, letter, value)) {
    return status;
  }
  return key.Close();
}

Status RegistryAccess::RegDeleteValueAt(const std::string& rootName, const std::string& keyPath,
                                        const std::string& valueName) {
  const auto root = ResolveRoot(rootName);
  if (!root) return kUnresolvedRoot;
  OpenedKey key(registry_);
  Status status = registry_.OpenKey(*root, keyPath, kSetValue, key.Handle());
  if (status == kSuccess) status = registry_.DeleteValue(key.Handle(), valueName);
  return status == kFileNotFound ? kSuccess : status;
}

Status RegistryAccess::RegDeleteKeyAt(const std::string& rootName, const std::string& parentKeyPath,
                                      const std::string& subkeyName) {
  const auto root = ResolveRoot(rootName);
  if (!root) return kUnresolvedRoot;
  OpenedKey key(registry_);
  Status status = registry_.OpenKey(*root, parentKeyPath, kCreateSubKey, key.Handle());
  if (status == kSuccess) status = registry_.DeleteKey(key.Handle(), subkeyName);
  return status == kFileNotFound ? kSuccess : status;
}

void Settings::ReadStorageMode() {
  storageMode_ = ToInt16(ReadMachineSetting(kGeneral, "Users_Share", "0"));
}

const char* Settings::Root() const {
  switch (storageMode_) {
    case 0:
      return "HKCU";
    case 1:
      return "HKLM";
    default:
      return nullptr;
  }
}

Settings::Section::Section(Settings& settings, const std::string& section)
    : registry_(settings.registry_), storing_(settings.Root() != nullptr) {
  if (!storing_) return;
  registry_.OpenKey(*ResolveRoot(settings.Root()), SectionPath(section), kQueryValue, key_);
}

Settings::Section::~Section() {
  if (key_ != 0) registry_.CloseKey(key_);
}

void Settings::Section::Read(const std::string& valueName, const std::string& defaultValue,
                             std::string& result) const {
  if (!storing_) return;
  RegistryData data = defaultValue;
  if (key_ != 0) ReadString(registry_, key_, valueName, data);
  result = std::move(std::get<std::string>(data));
}

std::string Settings::Section::Read(const std::string& valueName,
                                    const std::string& defaultValue) const {
  std::string result;
  Read(valueName, defaultValue, result);
  return result;
}

void Settings::ReadSetting(const std::string& section, const std::string& valueName,
                           const std::string& defaultValue, std::string& result) {
  Section(*this, section).Read(valueName, defaultValue, result);
}

std::string Settings::ReadSetting(const std::string& section, const std::string& valueName,
                                  const std::string& defaultValue) {
  return Section(*this, section).Read(valueName, defaultValue);
}

std::int16_t Settings::ReadNumber(const std::string& section, const std::string& valueName,
                                  std::int16_t defaultValue) {
  return ToInt16Or(ReadSetting(section, valueName, std::to_string(defaultValue)), defaultValue);
}

void Settings::WriteSetting(const std::string& section, const std::string& valueName,
                            const std::string& value) {
  const char* root = Root();
  if (root == nullptr) return;
  access_.RegWrite(root, SectionPath(section), valueName, "S", value);
}

std::string Settings::Read(const char* root, const std::string& section,
                           const std::string& valueName, const std::string& defaultValue) {
  RegistryData data;
  access_.RegRead(root, SectionPath(section), valueName, "S", defaultValue, data);
  return std::get<std::string>(data);
}

std::string Settings::ReadMachineSetting(const std::string& section, const std::string& valueName,
                                         const std::string& defaultValue) {
  return Read("HKLM", section, valueName, defaultValue);
}

void Settings::WriteMachineSetting(const std::string& section, const std::string& valueName,
                                   const std::string& value) {
  access_.RegWrite("HKLM", SectionPath(section), valueName, "S", value);
}

std::string Settings::ReadUserSetting(const std::string& section, const std::string& valueName,
                                      const std::string& defaultValue) {
  return Read("HKCU", section, valueName, defaultValue);
}

void Settings::WriteUserSetting(const std::string& section, const std::string& valueName,
                                const std::string& value) {
  access_.RegWrite("HKCU", SectionPath(section), valueName, "S", value);
}

void Settings::DeleteUserSetting(const std::string& section, const std::string& valueName) {
  access_.RegDeleteValueAt("HKCU", SectionPath(section), valueName);
}

void Settings::DeleteUserKey(const std::string& subkeyName) {
  access_.RegDeleteKeyAt("HKCU", kProductKey, subkeyName);
}

}  // namespace orvanto
