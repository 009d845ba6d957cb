#include "download/CRegister.h"

namespace orvanto {
namespace {

// The system opens no key whose path begins with a backslash.
std::string PathOf(const std::string& key) { return key.substr(key.starts_with('\\') ? 1 : 0); }

}  // namespace

std::string CRegister::REGGetSetting(const std::string& root, const std::string& key,
                                     const std::string& name, const std::string& defaultText) {
  RegistryData text;
  access_.RegRead(root, PathOf(key), name, "S", defaultText, text);
  return std::get<std::string>(text);
}

bool CRegister::REGSaveSetting(const std::string& root, const std::string& key,
                               const std::string& name, const std::string& text) {
  return access_.RegWrite(root, PathOf(key), name, "S", text) == kSuccess;
}

bool CRegister::REGDeleteSetting(const std::string& root, const std::string& key,
                                 const std::string& name) {
  return access_.RegDeleteValueAt(root, PathOf(key), name) == kSuccess;
}

}  // namespace orvanto
