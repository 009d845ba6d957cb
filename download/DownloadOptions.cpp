#include "download/DownloadOptions.h"

#include "core/Convert.h"
#include "core/ProgramTitle.h"

namespace orvanto {
namespace {

constexpr const char* kRoot = "HKLM";
const std::string kKey = std::string("\\Software\\") + kProgramTitle + "\\Settings";

}  // namespace

std::string DownloadOptions::Text(const Option& option) {
  return register_.REGGetSetting(kRoot, kKey, option.name, option.defaultText);
}

bool DownloadOptions::IsOn(const Option& option) {
  return ToInt16Or(Text(option), ToInt16Or(option.defaultText, 0)) != 0;
}

bool DownloadOptions::Save(const std::vector<std::pair<Option, std::string>>& texts) {
  RegistryChange change(registry_);
  for (const auto& [option, text] : texts) {
    if (!register_.REGSaveSetting(kRoot, kKey, option.name, text)) break;
  }
  return change.Commit() == kSuccess;  // tells the first write that failed
}

}  // namespace orvanto
