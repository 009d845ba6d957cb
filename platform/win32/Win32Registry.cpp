#include "platform/win32/Win32Registry.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "platform/win32/Text.h"

namespace orvanto::win32 {

namespace {

HKEY RootHandle(RootKey root) {
  switch (root) {
    case RootKey::ClassesRoot:
      return HKEY_CLASSES_ROOT;
    case RootKey::CurrentUser:
      return HKEY_CURRENT_USER;
    case RootKey::LocalMachine:
      return HKEY_LOCAL_MACHINE;
    case RootKey::Users:
      return HKEY_USERS;
    case RootKey::CurrentConfig:
      return HKEY_CURRENT_CONFIG;
    case RootKey::DynData:
      return HKEY_DYN_DATA;
  }
  return nullptr;
}

HKEY Native(Registry::Key key) { return reinterpret_cast<HKEY>(key); }

Status ToStatus(LSTATUS status) { return static_cast<Status>(status); }

constexpr std::size_t kLongestComponent = 255;

// What is no path is refused here, with the documented codes, because versions of the system differ
// in what they answer.
Status SystemPath(const std::string& path, std::wstring& wide) {
  std::string_view text = path;
  if (text.ends_with('\\')) text.remove_suffix(1);
  if (text.starts_with('\\') || text.ends_with('\\') || text.find("\\\\") != text.npos) {
    return kBadPathname;
  }
  wide = ToWide(text);
  for (std::size_t begin = 0; begin < wide.size();) {
    const std::size_t end = std::min(wide.find(L'\\', begin), wide.size());
    if (end - begin > kLongestComponent) return kInvalidParameter;
    begin = end + 1;
  }
  return kSuccess;
}

Status ReadRaw(HKEY key, const std::wstring& name, DWORD& type, std::vector<BYTE>& bytes) {
  // The value may grow between asking for its size and reading it.
  for (DWORD size = 256;;) {
    bytes.resize(size);
    const LSTATUS status = RegQueryValueExW(key, name.c_str(), nullptr, &type, bytes.data(), &size);
    if (status == ERROR_SUCCESS) bytes.resize(size);
    if (status != ERROR_MORE_DATA) return ToStatus(status);
  }
}

std::string TextOf(const std::vector<BYTE>& bytes) {
  std::wstring wide(bytes.size() / sizeof(wchar_t), L'\0');
  std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(wchar_t));
  if (wide.ends_with(L'\0')) wide.pop_back();
  return ToUtf8(wide);
}

}  // namespace

Status Win32Registry::OpenKey(RootKey root, const std::string& path, std::uint32_t access,
                              Key& key) {
  key = 0;
  std::wstring wide;
  if (const Status status = SystemPath(path, wide)) return status;
  HKEY handle = nullptr;
  const LSTATUS status = RegOpenKeyExW(RootHandle(root), wide.c_str(), 0, access, &handle);
  if (status == ERROR_SUCCESS) key = reinterpret_cast<Key>(handle);
  return ToStatus(status);
}

Status Win32Registry::CreateKey(RootKey root, const std::string& path, std::uint32_t access,
                                Key& key) {
  key = 0;
  std::wstring wide;
  if (const Status status = SystemPath(path, wide)) return failure_.OfWrite(status);
  HKEY handle = nullptr;
  const LSTATUS status =
      RegCreateKeyExW(RootHandle(root), wide.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                      nullptr, &handle, nullptr);
  if (status == ERROR_SUCCESS) key = reinterpret_cast<Key>(handle);
  return failure_.OfWrite(ToStatus(status));
}

Status Win32Registry::QueryValue(Key key, const std::string& name, ValueType& type, void* data,
                                 std::uint32_t& size) {
  DWORD systemType = REG_NONE;
  std::vector<BYTE> bytes;
  if (const Status status = ReadRaw(Native(key), ToWide(name), systemType, bytes)) return status;
  const void* source = bytes.data();
  std::size_t length = bytes.size();
  std::string text;
  if (systemType == REG_SZ || systemType == REG_EXPAND_SZ) {
    systemType = REG_SZ;
    text = TextOf(bytes);
    source = text.c_str();
    length = text.size() + 1;
  }
  type = static_cast<ValueType>(systemType);
  const std::uint32_t room = size;
  size = static_cast<std::uint32_t>(length);
  if (room < length) return kMoreData;
  if (length > 0) std::memcpy(data, source, length);
  return kSuccess;
}

Status Win32Registry::SetValue(Key key, const std::string& name, ValueType type, const void* data,
                               std::uint32_t size) {
  std::wstring text;
  if (type == ValueType::String) {
    text = ToWide({static_cast<const char*>(data), size});
    data = text.data();
    size = static_cast<std::uint32_t>(text.size() * sizeof(wchar_t));
  }
  return failure_.OfWrite(
      ToStatus(RegSetValueExW(Native(key), ToWide(name).c_str(), 0, static_cast<DWORD>(type),
                              static_cast<const BYTE*>(data), size)));
}

Status Win32Registry::DeleteValue(Key key, const std::string& name) {
  return failure_.OfDeletion(ToStatus(RegDeleteValueW(Native(key), ToWide(name).c_str())));
}

Status Win32Registry::DeleteKey(Key parent, const std::string& subkey) {
  std::wstring wide;
  if (const Status status = SystemPath(subkey, wide)) return failure_.OfDeletion(status);
  // An empty name would delete the parent itself.
  if (wide.empty()) return failure_.OfDeletion(kInvalidParameter);
  return failure_.OfDeletion(ToStatus(RegDeleteKeyW(Native(parent), wide.c_str())));
}

Status Win32Registry::CloseKey(Key key) { return ToStatus(RegCloseKey(Native(key))); }

bool Win32Registry::IsSameKey(const std::string& one, const std::string& other) const {
  const std::wstring first = ToWide(one);
  const std::wstring second = ToWide(other);
  // By the system's own table of capitals, as the registry compares.
  return CompareStringOrdinal(first.data(), static_cast<int>(first.size()), second.data(),
                              static_cast<int>(second.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace orvanto::win32
