#include <gtest/gtest.h>

#include "download/frmFetchwellOptions.h"
#include "download/frmFtpOptions.h"
#include "download/frmProxy.h"
#include "download/frmSave.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

struct Dialogs : testing::Test, FakePlatform {
  DownloadOptions options{registry};
  frmFetchwellOptions general{forms, options, messageBoxes};
  frmFtpOptions ftp{forms, options, messageBoxes};
  frmProxy proxy{forms, options, messageBoxes};
};

// The contents of the boxes in the tab order, in brackets those that are disabled.
std::string Shown(const forms::Form& form) {
  std::string shown;
  for (forms::Control* control : form.Controls()) {
    const auto* check = dynamic_cast<forms::CheckBox*>(control);
    if (check == nullptr && dynamic_cast<forms::TextBox*>(control) == nullptr) continue;
    const std::string text = check == nullptr ? control->Text() : check->Value() ? "1" : "0";
    shown += (control->Enabled() ? text : "(" + text + ")") + ",";
  }
  return shown;
}

void ChangeAll(const forms::Form& form) {
  for (forms::Control* control : form.Controls()) {
    if (auto* check = dynamic_cast<forms::CheckBox*>(control)) check->Press();
    auto* box = dynamic_cast<forms::TextBox*>(control);
    EXPECT_TRUE(box == nullptr || box->Press("x5"));
  }
}

TEST_F(Dialogs, ShowWhatIsStoredAndStoreAllOfItOrSayThatTheyMayNot) {
  const struct {
    OptionsDialog& dialog;
    std::string defaults, changed;
    Texts names;
  } cases[] = {
      {general,
       "1,1024,1,1,",
       "0,10245,0,0,",
       {"Rollback", "Rollback Amount", "Clipboard", "Download Drop"}},
      {ftp, "30,1,", "305,0,", {"FTP Timeout", "FTP PASV"}},
      {proxy, "0,(),(),0,", "1,x5,x5,1,", {"Proxy Use", "Proxy IP", "Proxy Port", "Proxy FTP"}}};
  for (const auto& [dialog, defaults, changed, names] : cases) {
    for (forms::Button* button : {dialog.cancelButton, dialog.defaultButton}) {
      dialog.Open();
      EXPECT_EQ(Shown(dialog), defaults);
      ChangeAll(dialog);
      dialog.Open();  // what was typed stays
      if (button == dialog.defaultButton) {
        registry.FailWrite(1, kAccessDenied);
        messageBoxes.expected.push_back(
            {"The options were not saved. They hold for everyone who uses this computer, and the "
             "system did not let you change them."});
        EXPECT_TRUE(button->Press() && dialog.Visible());
      }
      EXPECT_EQ(Shown(dialog), changed);
      EXPECT_TRUE(button->Press() && !dialog.Loaded());
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

TEST_F(Dialogs, WhatIsNoNumberCountsAsTheDefault) {
  for (const auto& [text, isOn] : {std::pair{"yes", true}, {"", true}, {"0", false}, {"2", true}}) {
    EXPECT_TRUE(options.Save({{DownloadOptions::kClipboard, text}}));
    EXPECT_EQ(options.IsOn(DownloadOptions::kClipboard), isOn) << text;
  }
  for (const char32_t key : {U'0', U'9', U'\b', U'\r'}) EXPECT_TRUE(ftp.txtTimeout.takesKey(key));
}

// Each step is one act of a user and the path that is shown then.
TEST_F(Dialogs, SaveAsWalksThroughDrivesAndFoldersToAPath) {
  files.listings = {{"C:\\", {"b.txt", "Zoo\\", "a@", "A.txt", "h*"}},
                    {"C:\\Zoo\\", {"z.txt", "In\\"}},
                    {"C:\\Zoo\\In\\", {}}};
  frmSave save(forms, files);
  Texts told;
  save.onPicked = [&](const auto& path) { told.push_back(path.value_or("nothing")); };
  save.Open("c:\\Zoo\\new.txt");
  EXPECT_EQ(save.cmbDrive.Text(), "C:\\");
  const auto enter = [&](int index) {
    return save.lstFolders.Choose(index) && save.lstFolders.PressEnter();
  };
  const auto ok = [&](const char* typed) { return save.txtPath.Type(typed) && save.cmdOK.Press(); };
  const std::pair<std::function<bool()>, const char*> steps[] = {
      {[&] { return true; }, "c:\\Zoo\\new.txt"},
      {[&] { return save.cmbDrive.Choose(1); }, "D:\\new.txt"},
      {[&] { return save.cmbDrive.Choose(0); }, "C:\\new.txt"},
      {[&] { return save.lstFiles.Choose(1); }, "C:\\b.txt"},
      {[&] { return enter(1); }, "C:\\Zoo\\b.txt"},
      {[&] { return enter(1); }, "C:\\Zoo\\In\\b.txt"},
      {[&] { return enter(0); }, "C:\\Zoo\\b.txt"},
      {[&] { return save.lstFolders.SelectedIndex() == 1; }, "C:\\Zoo\\b.txt"},
      {[&] { return enter(0); }, "C:\\b.txt"},
      {[&] { return ok("zoo\\"); }, "C:\\zoo\\"},
      {[&] { return ok("\\\\server\\share\\"); }, "\\\\server\\share\\"},
      {[&] { return !enter(0) && ok("C:"); }, "C:\\"},
      {[&] { return ok(" "); }, "C:\\"}};
  for (const auto& [act, path] : steps) {
    EXPECT_TRUE(act()) << path;
    EXPECT_EQ(save.txtPath.Text(), path);
  }
  EXPECT_EQ(save.lstFolders.Items(), (Texts{"a", "Zoo"}));
  EXPECT_EQ(save.lstFiles.Items(), (Texts{"A.txt", "b.txt"}));
  for (const char* typed :
       {"d.txt", "\\d.txt", "D:d.txt", "D:\\d.txt", "\\\\server\\share\\d.txt"}) {
    save.Open("");
    EXPECT_TRUE(ok(typed));
  }
  save.Open("C:\\");
  EXPECT_TRUE(save.lstFiles.Choose(0) && save.txtPath.Type("d") && save.lstFiles.PressEnter());
  save.Open("");
  EXPECT_TRUE(!save.lstFiles.PressEnter() && save.cmdCancel.Press() && !save.Loaded());
  EXPECT_EQ(told, (Texts{"C:\\d.txt", "C:\\d.txt", "D:\\d.txt", "D:\\d.txt",
                         "\\\\server\\share\\d.txt", "C:\\A.txt", "nothing"}));
}

}  // namespace
}  // namespace orvanto
