// What the user has chosen for downloads: machine-wide texts under a key of their own, apart from
// the program's settings.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "download/CRegister.h"

namespace orvanto {

class DownloadOptions {
 public:
  struct Option {
    const char* name;
    const char* defaultText;  // a number for what is switched on and off; none means off
  };
  static constexpr Option kRollback{"Rollback", "1"};
  static constexpr Option kRollbackAmount{"Rollback Amount", "1024"};  // bytes
  static constexpr Option kClipboard{"Clipboard", "1"};
  static constexpr Option kDownloadDrop{"Download Drop", "1"};
  static constexpr Option kFtpTimeout{"FTP Timeout", "30"};  // seconds
  static constexpr Option kFtpPasv{"FTP PASV", "1"};
  static constexpr Option kProxyIP{"Proxy IP", ""};
  static constexpr Option kProxyPort{"Proxy Port", ""};
  static constexpr Option kProxyUse{"Proxy Use", ""};
  static constexpr Option kProxyFtp{"Proxy FTP", ""};

  explicit DownloadOptions(Registry& registry) : registry_(registry), register_(registry) {}

  std::string Text(const Option& option);
  // Not 0; a text that is no number counts as the default.
  bool IsOn(const Option& option);

  // False: not stored, because the system keeps this user from it or for another reason. Where each
  // write counts at once, the first ones may be.
  bool Save(const std::vector<std::pair<Option, std::string>>& texts);

 private:
  Registry& registry_;
  CRegister register_;
};

}  // namespace orvanto
