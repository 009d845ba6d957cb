#include <gtest/gtest.h>

#include "download/frmFetchwellOptions.h"
#include "download/frmFtpOptions.h"
#include "download/frmProxy.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

struct Dialogs : testing::Test, FakePlatform {
  DownloadOptions options{registry};
  frmFetchwellOptions general{forms, options, messageBoxes};
  frmFtpOptions ftp{forms, options, messageBoxes};
  frmProxy proxy{forms, options, messageBoxes};
};

// A store that takes every write and then cannot keep them.
struct FullRegistry : MemoryRegistry {
  Status EndChange() override { return MemoryRegistry::EndChange(), kDiskFull; }
};

// The contents of the boxes, in the tab order.
std::string Shown(const forms::Form& form) {
  std::string shown;
  for (forms::Control* control : form.Controls()) {
    if (auto* check = dynamic_cast<forms::CheckBox*>(control))
      shown += check->Value() ? "1," : "0,";
    if (auto* box = dynamic_cast<forms::TextBox*>(control)) shown += box->Text() + ",";
  }
  return shown;
}

void ChangeAll(const forms::Form& form) {
  for (forms::Control* control : form.Controls()) {
    if (auto* check = dynamic_cast<forms::CheckBox*>(control)) check->Press();
    if (auto* box = dynamic_cast<forms::TextBox*>(control)) EXPECT_TRUE(box->Press("x5"));
  }
}

TEST_F(Dialogs, ShowWhatIsStoredAndStoreAllOfItOrSayThatTheyMayNot) {
  const struct {
    OptionsDialog& dialog;
    forms::Button& save;
    forms::Button& cancel;
    std::string defaults, changed;
    Texts names;
  } cases[] = {{general,
                general.cmdSave,
                general.cmdCancel,
                "1,1024,1,1,",
                "0,10245,0,0,",
                {"Rollback", "Rollback Amount", "Clipboard", "Download Drop"}},
               {ftp, ftp.cmdSave, ftp.cmdCancel, "30,1,", "305,0,", {"FTP Timeout", "FTP PASV"}},
               {proxy,
                proxy.cmdSave,
                proxy.cmdCancel,
                "0,,,0,",
                "1,x5,x5,1,",
                {"Proxy Use", "Proxy IP", "Proxy Port", "Proxy FTP"}}};
  for (const auto& [dialog, save, cancel, defaults, changed, names] : cases) {
    for (forms::Button* button : {&cancel, &save}) {
      dialog.Open();
      EXPECT_EQ(Shown(dialog), defaults);
      ChangeAll(dialog);
      if (button == &save) {
        dialog.Open();  // again: what was typed stays
        registry.FailWrite(1, kAccessDenied);
        messageBoxes.expected.push_back(
            {"The options were not saved. They hold for everyone who uses this computer, and the "
             "system did not let you change them."});
        EXPECT_TRUE(save.Press() && dialog.Visible());
        EXPECT_EQ(Shown(dialog), changed);
      }
      EXPECT_TRUE(button->Press());
      EXPECT_FALSE(dialog.Loaded());
    }
    dialog.Open();
    EXPECT_EQ(Shown(dialog), changed);
    EXPECT_TRUE(dialog.Close());
    std::string stored;
    for (const std::string& name : names) {
      CRegister store(registry);
      const std::string key = "Software\\Orvanto\\Settings";
      stored += store.REGGetSetting("HKLM", key, name, "none") + ",";
      EXPECT_TRUE(store.REGDeleteSetting("HKLM", "\\" + key, name));
      EXPECT_EQ(store.REGGetSetting("HKLM", "\\" + key, name, "none"), "none");
    }
    EXPECT_EQ(stored, changed);
  }
}

TEST_F(Dialogs, TheProxyIsAskedForWhereOneIsUsed) {
  proxy.Open();
  EXPECT_FALSE(proxy.txtProxyIP.Enabled() || proxy.txtProxyPort.Enabled());
  EXPECT_TRUE(proxy.chkProxy.Press() && proxy.txtProxyIP.Enabled() && proxy.txtProxyPort.Enabled());
  EXPECT_TRUE(proxy.cmdSave.Press());
  proxy.Open();
  EXPECT_TRUE(proxy.txtProxyIP.Enabled() && proxy.txtProxyPort.Enabled());
}

TEST_F(Dialogs, WhatIsNoNumberCountsAsTheDefaultAndAFullStoreIsSaid) {
  for (const auto& [text, isOn] : {std::pair{"yes", true}, {"", true}, {"0", false}, {"2", true}}) {
    EXPECT_TRUE(options.Save({{DownloadOptions::kClipboard, text}}));
    EXPECT_EQ(options.IsOn(DownloadOptions::kClipboard), isOn) << text;
  }
  FullRegistry full;
  EXPECT_FALSE(DownloadOptions(full).Save({{DownloadOptions::kClipboard, "1"}}));
}

}  // namespace
}  // namespace orvanto
