#include <gtest/gtest.h>

#include "core/ui/frmSettings.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

struct SettingsDialogTest : testing::Test, CoreDesk {
  SettingsDialogTest() {
    dialog.onPortChanged = [this] { ++portChanges; };
    dialog.onCheckNow = [this] { ++checks; };
    dialog.onRemoteChanged = [this] { told = values.ftpPort + (values.strict ? " strict" : ""); };
  }
  // Opened anew, with that tab in sight.
  void Open(int tab) {
    dialog.Unload();
    dialog.Open();
    dialog.tabSettings.Choose(tab);
  }
  std::string Stored(const std::string& names) {
    std::string texts;
    std::istringstream each(names);
    for (std::string name; each >> name;) {
      texts += settings.ReadSetting("General", name, "none") + " ";
    }
    return texts;
  }
  std::string Saved(const std::string& names) {
    dialog.cmdSave.Press();
    return Stored(names);
  }

  ProgramSettings values;
  frmSettings dialog{forms, settings, values};
  int portChanges = 0;
  int checks = 0;
  std::string told;
};

TEST_F(SettingsDialogTest, UpdatesAndUsers) {
  const auto shared = [&] { return settings.ReadMachineSetting("General", "Users_Share", "none"); };
  Open(0);
  EXPECT_FALSE(dialog.chkAutoUpdate.Value());
  dialog.cmdDefaults.Press();
  EXPECT_EQ(Stored("Check_Auto_Update"), "none ");
  EXPECT_EQ(Saved("Check_Auto_Update Use_Proxy Inet_Passwd"), "1 none none ");
  EXPECT_TRUE(dialog.cmdCheckNow.Press());
  EXPECT_EQ(checks, 1);
  Open(3);
  EXPECT_TRUE(dialog.chkAutoUpdate.Value() && dialog.optUsersDontShare.Value());
  dialog.cmdDefaults.Press();
  dialog.cmdClose.Press();
  EXPECT_EQ(shared(), "none");
  Open(3);
  dialog.optUsersShare.Choose();
  dialog.cmdSave.Press();
  EXPECT_EQ(shared() + std::to_string(settings.StorageMode()), "10") << "from the next start on";
  dialog.optUsersDontShare.Choose();
  registry.FailWrite(1, kAccessDenied);
  dialog.cmdSave.Press();
  EXPECT_TRUE(dialog.optUsersShare.Value()) << "what is stored still";
}

TEST_F(SettingsDialogTest, TheProxysPortLastsAsLongAsTheProgram) {
  values.proxyHost = "0";
  Open(1);
  EXPECT_EQ(dialog.txtProxy.Text() + dialog.txtPort.Text(), "00");
  dialog.txtProxy.Type("proxy");
  dialog.txtPort.Press("8x0");
  EXPECT_EQ(Saved("Use_Proxy Proxy ProxyPort"), "1 proxy none ");
  EXPECT_EQ(values.proxyHost + std::to_string(values.proxyPort), "proxy80");
  dialog.txtPort.Type("99999");
  dialog.cmdSave.Press();
  EXPECT_EQ(values.proxyPort, 80);
  dialog.cmdDefaults.Press();
  EXPECT_FALSE(dialog.txtProxy.Usable() || dialog.txtPort.Usable());
  EXPECT_EQ(Saved("Use_Proxy Proxy") + values.proxyHost, "0 proxy ");
}

TEST_F(SettingsDialogTest, RemoteAccess) {
  Open(2);
  EXPECT_EQ(dialog.txtServerPort.Text() + dialog.txtFTPPort.Text(), "60021");
  EXPECT_FALSE(dialog.txtPwd.Usable() || dialog.lblShared.ShownToUser());
  dialog.chkPwd.Press();
  dialog.txtPwd.Type("secret");
  dialog.chkChat.Press();
  dialog.chkServeron.Press();
  const char* const kNames = "Inet_Passwd_Required Inet_Passwd Inet_Chat_Auto Inet_ServerOn";
  EXPECT_EQ(Saved(kNames), "1 secret 1 1 ");
  EXPECT_TRUE(values.passwordRequired && values.chatAutoAccept && values.password == "secret");
  for (const char* typed : {"0601", ""}) {
    dialog.txtServerPort.Type(typed);
    EXPECT_EQ(Saved("Inet_ServerPort") + dialog.txtServerPort.Text(), "601 601");
  }
  dialog.txtFTPPort.Type("2121");
  dialog.cmdSave.Press();
  EXPECT_EQ(told + std::to_string(portChanges), "21211");
  Open(2);
  EXPECT_EQ(dialog.txtFTPPort.Text() + dialog.txtPwd.Text(), "2121secret");
  dialog.cmdDefaults.Press();
  EXPECT_EQ(Saved(kNames), "0  0 1 ");
  EXPECT_EQ(Stored("Inet_ServerPort"), "600 ");
  EXPECT_FALSE(values.passwordRequired || values.chatAutoAccept || !values.password.empty());
  EXPECT_EQ(portChanges, 2);
  settings.SetStorageMode(1);
  Open(2);
  EXPECT_TRUE(dialog.lblShared.ShownToUser());
}

TEST_F(SettingsDialogTest, TheSwitchesAreTheUsersOwn) {
  settings.SetStorageMode(1);
  Open(4);
  dialog.chkCompat.Press();
  dialog.chkStrict.Press();
  registry.FailWrite(1, kAccessDenied);
  dialog.cmdSave.Press();
  EXPECT_FALSE(dialog.chkCompat.Value()) << "what is stored";
  EXPECT_EQ(told, " strict");
  settings.SetStorageMode(0);
  EXPECT_EQ(Stored("Inet_Compat Inet_Strict"), "none 1 ");
  EXPECT_TRUE(values.compat && values.strict);
  Open(4);
  EXPECT_TRUE(dialog.chkCompat.Value()) << "what holds until the program ends";
  dialog.cmdDefaults.Press();
  EXPECT_EQ(Saved("Inet_Compat Inet_Strict"), "0 0 ");
  EXPECT_FALSE(values.compat || values.strict);
}

}  // namespace
}  // namespace orvanto
