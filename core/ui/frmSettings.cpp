#include "core/ui/frmSettings.h"

#include <optional>

#include "core/Convert.h"
#include "core/modRegistry.h"

namespace orvanto {
namespace {

constexpr int kHeight = 240;
constexpr const Setting& kServerPort = SettingOf("Inet_ServerPort");
constexpr const Setting& kFtpPort = SettingOf("Inet_FtpPort");
constexpr const Setting& kUsersShare = SettingOf("Users_Share");

constexpr forms::TextBox::Style kPassword{.password = true};
constexpr forms::TextBox::Style kPort{.maxLength = 5};

const char* Flag(bool on) { return on ? "1" : "0"; }

// Nothing for what is no number.
std::optional<std::int32_t> Number(const std::string& text) {
  try {
    return ToInt32(text);
  } catch (const Error&) {
    return std::nullopt;
  }
}

}  // namespace

// In the order of the pages.
const frmSettings::Tab frmSettings::kTabs[] = {
    {&frmSettings::LoadUpdate, &frmSettings::SaveUpdate, &frmSettings::LoadUpdate,
     &frmSettings::ResetUpdate},
    {&frmSettings::LoadProxy, &frmSettings::SaveProxy, &frmSettings::CheckProxy,
     &frmSettings::ResetProxy},
    {&frmSettings::LoadRemote, &frmSettings::SaveRemote, &frmSettings::CheckRemote,
     &frmSettings::ResetRemote},
    {&frmSettings::LoadUsers, &frmSettings::SaveUsers, &frmSettings::CheckUsers,
     &frmSettings::ResetUsers},
    {&frmSettings::LoadCompatibility, &frmSettings::SaveCompatibility,
     &frmSettings::CheckCompatibility, &frmSettings::ResetCompatibility},
};

frmSettings::frmSettings(forms::FormHost& host, Settings& settings,
                         ProgramSettings& programSettings)
    : Form(host, "Settings", {6840, 4320}),
      tabSettings(*this, nullptr, {120, 120, 6600, 3540}),
      pagUpdate(*this, tabSettings, "Update"),
      chkAutoUpdate(*this, &pagUpdate, "Check for &Update when Orvanto starts",
                    {240, 240, 6000, 270}),
      cmdCheckNow(*this, &pagUpdate, "Check &Now...", {240, 660, 1560, 375}),
      pagProxy(*this, tabSettings, "Proxy"),
      chkProxy(*this, &pagProxy, "Use an HTTP &proxy for downloading :", {240, 240, 6000, 270}),
      lblProxy(*this, &pagProxy, "Address :", {525, 660, 1200, kHeight}),
      txtProxy(*this, &pagProxy, {}, {1740, 615, 4500, 300}),
      lblPort(*this, &pagProxy, "Port :", {525, 1110, 1200, kHeight}),
      txtPort(*this, &pagProxy, kPort, {1740, 1065, 1200, 300}),
      chkFTPthroughHTTP(*this, &pagProxy, "Access &FTP through this Proxy", {240, 1575, 6000, 270}),
      pagRemote(*this, tabSettings, "Remote Access"),
      chkServeron(*this, &pagRemote, "Ser&ver is On at Orvanto Startup", {240, 180, 6000, 270}),
      chkPwd(*this, &pagRemote,
             "Password &Required (for FTP and Telnet Access) :", {240, 525, 6000, 270}),
      txtPwd(*this, &pagRemote, kPassword, {525, 840, 3000, 300}),
      chkChat(*this, &pagRemote, "&Auto-Accept Chat Request", {240, 1290, 6000, 270}),
      lblServerPort(*this, &pagRemote, "Telnet Port :", {240, 1755, 1260, kHeight}),
      txtServerPort(*this, &pagRemote, kPort, {1560, 1710, 1200, 300}),
      lblFTPPort(*this, &pagRemote, "FTP Port :", {3240, 1755, 1260, kHeight}),
      txtFTPPort(*this, &pagRemote, kPort, {4560, 1710, 1200, 300}),
      lblShared(*this, &pagRemote,
                "Settings are shared: what is saved here, but for the FTP port, is kept for all "
                "users of this computer, but each start reads it from the user's own settings.",
                {240, 2220, 6000, 3 * kHeight}),
      pagUsers(*this, tabSettings, "Users"),
      optUsersShare(*this, &pagUsers, "Windows Users S&hare Tasks and Settings",
                    {240, 240, 6000, 270}),
      optUsersDontShare(*this, &pagUsers, "Windows Users Have &Individual Tasks and Settings",
                        {240, 600, 6000, 270}),
      pagCompatibility(*this, tabSettings, "Compatibility"),
      chkCompat(*this, &pagCompatibility, "&Today's clients", {240, 240, 6000, 270}),
      lblCompat(*this, &pagCompatibility,
                "The telnet and FTP servers and the downloads behave as the programs of today "
                "expect, so that these work without being set up for Orvanto.",
                {525, 540, 5700, 3 * kHeight}),
      chkStrict(*this, &pagCompatibility, "Str&ict", {240, 1440, 6000, 270}),
      lblStrict(*this, &pagCompatibility,
                "The servers do nothing without a login, nothing outside the scripts folder, and "
                "nothing for other computers unless a password is required.",
                {525, 1740, 5700, 3 * kHeight}),
      cmdSave(*this, nullptr, "&Save", {2640, 3795, 1290, 375}),
      cmdDefaults(*this, nullptr, "&Defaults", {4020, 3795, 1290, 375}),
      cmdClose(*this, nullptr, "&Close", {5430, 3795, 1290, 375}),
      settings_(settings),
      values_(programSettings) {
  helpPage = "settings";
  for (forms::TextBox* box : {&txtPort, &txtServerPort, &txtFTPPort}) {
    box->takesKey = [](char32_t key) { return (key >= '0' && key <= '9') || key < ' '; };
  }
  txtPwd.spokenName = "Password";
  chkProxy.onClick = [this] {
    txtProxy.SetEnabled(chkProxy.Value());
    txtPort.SetEnabled(chkProxy.Value());
  };
  chkPwd.onClick = [this] { txtPwd.SetEnabled(chkPwd.Value()); };
  cmdCheckNow.onClick = [this] {
    if (onCheckNow) onCheckNow();
  };
  cmdSave.onClick = [this] {
    const Tab& tab = TabInSight();
    (this->*tab.save)();
    (this->*tab.check)();
  };
  cmdDefaults.onClick = [this] { (this->*TabInSight().reset)(); };
  cmdClose.onClick = [this] { Unload(); };
  defaultButton = &cmdSave;
  cancelButton = &cmdClose;
  onUnload = [this] {
    if (onClosed) onClosed();
  };
}

const frmSettings::Tab& frmSettings::TabInSight() const { return kTabs[tabSettings.Selected()]; }

void frmSettings::Open() {
  if (!Loaded()) {
    for (const Tab& tab : kTabs) (this->*tab.load)();
    lblShared.SetVisible(settings_.StorageMode() != 0);
    CentreOnScreen();
  }
  Activate();
}

bool frmSettings::IsOn(const Setting& setting) { return setting.Text(settings_) == "1"; }

void frmSettings::LoadUpdate() { chkAutoUpdate.SetValue(IsOn(SettingOf("Check_Auto_Update"))); }

void frmSettings::SaveUpdate() {
  SettingOf("Check_Auto_Update").Store(settings_, Flag(chkAutoUpdate.Value()));
}

void frmSettings::ResetUpdate() { chkAutoUpdate.SetValue(true); }

void frmSettings::LoadProxy() {
  ShowProxy(!values_.proxyHost.empty(), values_.proxyHost);
  txtPort.SetText(values_.proxyHost.empty() ? "" : std::to_string(values_.proxyPort));
  chkFTPthroughHTTP.SetValue(values_.ftpThroughProxy != 0);
}

// The port is not stored; it lasts as long as the program runs.
void frmSettings::SaveProxy() {
  const bool on = chkProxy.Value();
  SettingOf("Use_Proxy").Store(settings_, Flag(on));
  SettingOf("Proxy").Store(settings_, txtProxy.Text());
  values_.proxyHost = on ? txtProxy.Text() : "";
  if (on) values_.proxyPort = ToInt16Or(txtPort.Text(), values_.proxyPort);
}

void frmSettings::CheckProxy() {
  ShowProxy(IsOn(SettingOf("Use_Proxy")), SettingOf("Proxy").Text(settings_, ""));
}

void frmSettings::ShowProxy(bool on, const std::string& host) {
  chkProxy.SetValue(on);
  chkProxy.onClick();
  txtProxy.SetText(host);
}

void frmSettings::ResetProxy() {
  chkProxy.SetValue(false);
  chkProxy.onClick();
  chkFTPthroughHTTP.SetValue(false);
}

void frmSettings::LoadRemote() { ShowRemote(values_.passwordRequired, values_.chatAutoAccept); }

void frmSettings::CheckRemote() {
  ShowRemote(IsOn(SettingOf("Inet_Passwd_Required")), IsOn(SettingOf("Inet_Chat_Auto")));
}

void frmSettings::ShowRemote(bool required, bool chat) {
  chkPwd.SetValue(required);
  chkPwd.onClick();
  txtPwd.SetText(required ? SettingOf("Inet_Passwd").Text(settings_) : "");
  chkChat.SetValue(chat);
  chkServeron.SetValue(IsOn(SettingOf("Inet_ServerOn")));
  txtServerPort.SetText(kServerPort.Text(settings_));
  txtFTPPort.SetText(kFtpPort.Text(settings_));
}

void frmSettings::SaveRemote() {
  values_.passwordRequired = chkPwd.Value();
  values_.password = chkPwd.Value() ? txtPwd.Text() : "";
  values_.chatAutoAccept = chkChat.Value();
  SettingOf("Inet_Passwd_Required").Save(settings_, values_);
  SettingOf("Inet_Passwd").Save(settings_, values_);
  SettingOf("Inet_Chat_Auto").Save(settings_, values_);
  SettingOf("Inet_ServerOn").Store(settings_, Flag(chkServeron.Value()));
  if (SavePort(kServerPort, txtServerPort) && onPortChanged) onPortChanged();
  if (SavePort(kFtpPort, txtFTPPort)) values_.ftpPort = kFtpPort.Text(settings_);
  if (onRemoteChanged) onRemoteChanged();
}

bool frmSettings::SavePort(const Setting& setting, const forms::TextBox& box) {
  const auto port = Number(box.Text());
  if (!port || box.Text() == setting.Text(settings_)) return false;
  setting.Store(settings_, std::to_string(*port));
  return true;
}

void frmSettings::ResetRemote() {
  chkPwd.SetValue(false);
  chkPwd.onClick();
  chkChat.SetValue(false);
  chkServeron.SetValue(true);
  txtServerPort.SetText(kServerPort.defaultValue);
  txtFTPPort.SetText(kFtpPort.defaultValue);
}

void frmSettings::LoadUsers() { ShowUsers(settings_.StorageMode() != 0); }

// Holds from the next start on.
void frmSettings::SaveUsers() { kUsersShare.Store(settings_, Flag(optUsersShare.Value())); }

void frmSettings::CheckUsers() { ShowUsers(kUsersShare.Text(settings_) != "0"); }

void frmSettings::ResetUsers() { ShowUsers(true); }

void frmSettings::ShowUsers(bool share) {
  (share ? optUsersShare : optUsersDontShare).SetValue(true);
}

void frmSettings::LoadCompatibility() { ShowCompatibility(values_.compat, values_.strict); }

void frmSettings::SaveCompatibility() {
  values_.compat = chkCompat.Value();
  values_.strict = chkStrict.Value();
  SettingOf("Inet_Compat").Save(settings_, values_);
  SettingOf("Inet_Strict").Save(settings_, values_);
  if (onRemoteChanged) onRemoteChanged();
}

void frmSettings::CheckCompatibility() {
  ShowCompatibility(IsOn(SettingOf("Inet_Compat")), IsOn(SettingOf("Inet_Strict")));
}

void frmSettings::ResetCompatibility() { ShowCompatibility(false, false); }

void frmSettings::ShowCompatibility(bool compat, bool strict) {
  chkCompat.SetValue(compat);
  chkStrict.SetValue(strict);
}

}  // namespace orvanto
