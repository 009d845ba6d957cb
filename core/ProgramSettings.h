// Settings that are read at start-up and then live in memory, where the dialogs change them: one
// row for each stored value.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include "core/modRegistry.h"

namespace orvanto {

struct RemoteSettings {
  std::string password;
  bool passwordRequired = false;  // a login needs the password
  bool chatAutoAccept = false;    // a chat request is not asked about
  std::string serverPort;         // as read at start, mostly empty
  bool serverOn = false;          // switch the server on at start
  // The servers take these for what begins from then on.
  bool compat = false;      // behave as today's clients expect; downloads, too
  bool strict = false;      // let nobody do more than he has to
  std::string ftpPort;      // of the FTP server while `compat` is on
  std::string bindAddress;  // that the servers listen on while `strict` is on; empty: all
};

struct ProxySettings {
  std::string proxyHost;  // empty: no proxy
  std::int16_t proxyPort = 0;
  std::int16_t ftpThroughProxy = 0;
};

struct ProgramSettings : RemoteSettings, ProxySettings {
  bool onTop = false;
  std::int16_t checkAutoUpdate = 0;
};

struct Setting {
  const char* section;
  const char* name;
  const char* defaultValue;
  // A flag is on for "1" only; a number has 16 bits.
  std::variant<std::string ProgramSettings::*, bool ProgramSettings::*,
               std::int16_t ProgramSettings::*>
      member;

  // A storage mode that reads nothing leaves the member as it is. Throws what ToInt16 throws for a
  // number; then it stays, too.
  void Load(Settings& settings, ProgramSettings& values) const;
  void Save(Settings& settings, const ProgramSettings& values) const;
};

inline constexpr std::array<Setting, 9> kRemoteSettings{{
    {kGeneral, "Inet_Passwd", "", &ProgramSettings::password},
    {kGeneral, "Inet_Passwd_Required", "", &ProgramSettings::passwordRequired},
    {kGeneral, "Inet_Chat_Auto", "", &ProgramSettings::chatAutoAccept},
    {kGeneral, "Inet_ServerPort", "", &ProgramSettings::serverPort},
    {kGeneral, "Inet_ServerOn", "", &ProgramSettings::serverOn},
    {kGeneral, "Inet_Compat", "0", &ProgramSettings::compat},
    {kGeneral, "Inet_Strict", "0", &ProgramSettings::strict},
    {kGeneral, "Inet_FtpPort", "21", &ProgramSettings::ftpPort},
    {kGeneral, "Inet_Bind", "", &ProgramSettings::bindAddress},
}};
inline constexpr Setting kOnTop{kGeneral, "OnTop", "0", &ProgramSettings::onTop};
inline constexpr Setting kProxyHost{kGeneral, "Proxy", "0", &ProgramSettings::proxyHost};
// Of a proxy that there is.
inline constexpr std::array<Setting, 2> kProxySettings{{
    {kGeneral, "ProxyPort", "0", &ProgramSettings::proxyPort},
    {kInternet, "Proxy FTP", "0", &ProgramSettings::ftpThroughProxy},
}};
inline constexpr Setting kCheckAutoUpdate{kGeneral, "Check_Auto_Update", "0",
                                          &ProgramSettings::checkAutoUpdate};

}  // namespace orvanto
