// The program's settings: one row for each value that is stored. The dialogs, the console and the
// servers take names and defaults from here.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "core/modRegistry.h"

namespace orvanto {

// Those that are read at the start live in memory, where the dialogs change them.
struct RemoteSettings {
  std::string password;
  bool passwordRequired = false;  // a login needs the password
  bool chatAutoAccept = false;    // a chat request is not asked about
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
  // Whose it is. ByMode: the user's own, or everybody's, as the storage mode has it.
  enum class Kept { ByMode, ForUser, ForMachine };
  // Early: before the storage mode is known, and before a server can be switched on.
  enum class Read { Later, Early };
  // A flag is on for "1" only; a number has 16 bits.
  using Member = std::variant<std::monostate, std::string ProgramSettings::*,
                              bool ProgramSettings::*, std::int16_t ProgramSettings::*>;

  const char* section;
  const char* name;
  const char* defaultValue;
  const char* meaning;  // one line, for people
  Kept kept = Kept::ByMode;
  Read read = Read::Later;
  Member member = {};

  // What is stored; where nothing is, `otherwise`.
  std::string Text(Settings& settings, const std::string& otherwise) const;
  std::string Text(Settings& settings) const { return Text(settings, defaultValue); }
  void Store(Settings& settings, const std::string& text) const;

  // A storage mode that reads nothing leaves the member as it is. Throws what ToInt16 throws for a
  // number; then it stays, too.
  void Load(Settings& settings, ProgramSettings& values) const;
  void Save(Settings& settings, const ProgramSettings& values) const;
};

inline constexpr Setting kSettings[] = {
    {kGeneral, "OnTop", "0", "1: the main window stays above all others", Setting::Kept::ByMode,
     Setting::Read::Later, &ProgramSettings::onTop},
    {kGeneral, "Window", "", "place and size of the main window, in twips", Setting::Kept::ForUser},
    {kGeneral, "Users_Share", "0", "1: the users of the computer share tasks and settings",
     Setting::Kept::ForMachine},
    {kGeneral, "Check_Auto_Update", "0", "1: look for an update at the start (not done yet)",
     Setting::Kept::ByMode, Setting::Read::Later, &ProgramSettings::checkAutoUpdate},
    {kGeneral, "Inet_ServerOn", "0", "1: the telnet and FTP servers are on from the start",
     Setting::Kept::ByMode, Setting::Read::Early, &ProgramSettings::serverOn},
    {kGeneral, "Inet_ServerPort", "600", "port of the telnet server", Setting::Kept::ByMode,
     Setting::Read::Early},
    {kGeneral, "Inet_FtpPort", "21", "port of the FTP server with Inet_Compat; 22 without",
     Setting::Kept::ForUser, Setting::Read::Early, &ProgramSettings::ftpPort},
    {kGeneral, "Inet_Passwd_Required", "0", "1: a login by telnet or FTP needs the password",
     Setting::Kept::ByMode, Setting::Read::Early, &ProgramSettings::passwordRequired},
    {kGeneral, "Inet_Passwd", "", "the password", Setting::Kept::ByMode, Setting::Read::Early,
     &ProgramSettings::password},
    {kGeneral, "Inet_Chat_Auto", "0", "1: a chat that a telnet client asks for begins at once",
     Setting::Kept::ByMode, Setting::Read::Early, &ProgramSettings::chatAutoAccept},
    {kGeneral, "Inet_Compat", "0", "1: servers and downloads work with the programs of today",
     Setting::Kept::ForUser, Setting::Read::Early, &ProgramSettings::compat},
    {kGeneral, "Inet_Strict", "0", "1: the servers guard this computer more closely",
     Setting::Kept::ForUser, Setting::Read::Early, &ProgramSettings::strict},
    {kGeneral, "Inet_Bind", "", "with Inet_Strict: the address that the servers listen on",
     Setting::Kept::ForUser, Setting::Read::Early, &ProgramSettings::bindAddress},
    {kGeneral, "Use_Proxy", "0", "1: the proxy's box in the settings is checked"},
    {kGeneral, "Proxy", "0", "host of an HTTP proxy (downloads go direct)", Setting::Kept::ByMode,
     Setting::Read::Later, &ProgramSettings::proxyHost},
    {kGeneral, "ProxyPort", "0", "its port", Setting::Kept::ByMode, Setting::Read::Later,
     &ProgramSettings::proxyPort},
    {kInternet, "Proxy FTP", "0", "1: FTP through the proxy (downloads go direct)",
     Setting::Kept::ByMode, Setting::Read::Later, &ProgramSettings::ftpThroughProxy},
    {kInternet, "Rollback", "0", "1: a partial download goes back a little before it goes on"},
    {kInternet, "Rollback Amount", "1024", "by so many bytes"},
    {kInternet, "FTP Timeout", "30", "seconds that a download waits for an FTP server"},
    {kInternet, "FTP PASV", "0", "1: downloads by FTP use passive mode"},
};

// A name that there is none of is an error of compilation.
consteval const Setting& SettingOf(std::string_view name) {
  for (const Setting& setting : kSettings) {
    if (setting.name == name) return setting;
  }
  throw "there is no such setting";
}

// Without regard to case; null for a value that is none of the program's.
const Setting* FindSetting(const std::string& section, const std::string& name);

}  // namespace orvanto
