// The program's settings, on tabs. What a button does it does to the tab in sight alone.
#pragma once

#include <functional>

#include "core/ProgramSettings.h"
#include "platform/forms/forms.h"

namespace orvanto {

class Settings;

class frmSettings : public forms::Form {
 public:
  // The program's settings in memory change with those that are stored.
  frmSettings(forms::FormHost& host, Settings& settings, ProgramSettings& programSettings);

  void Open();  // centred

  // Set before it is opened.
  std::function<void()> onCheckNow;     // fetches what tells of updates
  std::function<void()> onPortChanged;  // the telnet port that is stored
  // What the servers take for what begins from then on.
  std::function<void()> onRemoteChanged;
  std::function<void()> onClosed;

  forms::TabStrip tabSettings;
  forms::TabPage pagUpdate;
  forms::CheckBox chkAutoUpdate;
  forms::Button cmdCheckNow;
  forms::TabPage pagProxy;
  forms::CheckBox chkProxy;
  forms::Label lblProxy;
  forms::TextBox txtProxy;
  forms::Label lblPort;
  forms::TextBox txtPort;
  forms::CheckBox chkFTPthroughHTTP;
  forms::TabPage pagRemote;
  forms::CheckBox chkServeron, chkPwd;
  forms::TextBox txtPwd;
  forms::CheckBox chkChat;
  forms::Label lblServerPort;
  forms::TextBox txtServerPort;
  forms::Label lblFTPPort;
  forms::TextBox txtFTPPort;
  forms::Label lblShared;
  forms::TabPage pagUsers;
  forms::OptionButton optUsersShare, optUsersDontShare;
  forms::TabPage pagCompatibility;
  forms::CheckBox chkCompat;
  forms::Label lblCompat;
  forms::CheckBox chkStrict;
  forms::Label lblStrict;
  forms::Button cmdSave, cmdDefaults, cmdClose;

 private:
  struct Tab {
    void (frmSettings::*load)();  // what holds now
    void (frmSettings::*save)();
    void (frmSettings::*check)();  // shows what is stored: a refused write is seen
    void (frmSettings::*reset)();  // the controls, to the defaults
  };
  static const Tab kTabs[];

  const Tab& TabInSight() const;
  bool IsOn(const Setting& setting);
  void LoadUpdate();
  void SaveUpdate();
  void ResetUpdate();
  void LoadProxy();
  void SaveProxy();
  void CheckProxy();
  void ResetProxy();
  void ShowProxy(bool on, const std::string& host);
  void LoadRemote();
  void SaveRemote();
  bool SavePort(const Setting& setting, const forms::TextBox& box);
  void CheckRemote();
  void ResetRemote();
  void ShowRemote(bool required, bool chat);
  void LoadUsers();
  void SaveUsers();
  void CheckUsers();
  void ResetUsers();
  void ShowUsers(bool share);
  void LoadCompatibility();
  void SaveCompatibility();
  void CheckCompatibility();
  void ResetCompatibility();
  void ShowCompatibility(bool compat, bool strict);

  Settings& settings_;
  ProgramSettings& values_;
};

}  // namespace orvanto
