#include <gtest/gtest.h>

#include <sstream>

#include "core/ui/frmEdit.h"
#include "core/ui/frmSettings.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

class EditorTest : public testing::Test, public CoreDesk {
 protected:
  EditorTest() {
    finder.findsAll = true;
    editor.onSaved = [this](std::int16_t) { ++saved; };
    editor.onClosed = [this] { ++closed; };
  }
  void OpenNew() { editor.Open(std::nullopt); }
  void ChooseType(int index) { editor.optTaskType[static_cast<std::size_t>(index)].Choose(); }
  // What a user sees: s for lbl1 and txt1, b Browse, e Edit Script, p Parameters, w the window
  // style's label, W its list.
  std::string Shown() const {
    const std::pair<char, const forms::Control*> controls[] = {
        {'s', &editor.lbl1}, {'b', &editor.cmdBrowse}, {'e', &editor.cmdEdit},
        {'p', &editor.lbl2}, {'w', &editor.lblWindow}, {'W', &editor.cmbWindow}};
    std::string shown;
    for (const auto& [mark, control] : controls) {
      if (control->ShownToUser()) shown += mark;
    }
    EXPECT_EQ(editor.txt1.ShownToUser(), editor.lbl1.ShownToUser());
    EXPECT_EQ(editor.txt2.ShownToUser(), editor.lbl2.ShownToUser());
    return shown;
  }
  std::string When() const {
    return editor.txtHour.Text() + ":" + editor.txtMinute.Text() + " " + editor.txtdte[0].Text() +
           "/" + editor.txtdte[1].Text() + "/" + editor.txtdte[2].Text();
  }
  void SaveRefused(const char* message, const forms::Control* fieldAtFault) {
    messageBoxes.expected = {{message}};
    ASSERT_TRUE(editor.cmdSave.Press());
    EXPECT_TRUE(messageBoxes.expected.empty() && editor.Visible() && saved == 0) << message;
    EXPECT_EQ(editor.Focus(), fieldAtFault) << message;
  }

  int saved = 0;
  int closed = 0;
  frmEdit editor{forms, {store, clock, shell, messageBoxes, fileDialogs}};
};

TEST_F(EditorTest, ATypeShowsItsControlsAndKeepsWhatItDoesNotTouch) {
  // The types of a walk and what each shows; the order decides what of 'w' and 'W' remains.
  const Texts walks = {"0sbe 1sbpw 3w 2sb 0sbe 3 2sb 0sbe 2sb", "3wW 4 0sbe 4 5s 1sbpw 4",
                       "5s 0sbe 5s 4 6sb 1sbpw 5s", "6sb 0sbe 6sb 5s 1sbpw 6sb",
                       "2sbW 3W 1sbpwW 0sbe"};
  const Texts captions = {"Script File:", "Program or Shortcut:", "File to Print:", "", "",
                          "Message:",     "Sound File:"};
  for (const std::string& walk : walks) {
    OpenNew();
    EXPECT_EQ(Shown(), "sbpwW");
    std::istringstream steps(walk);
    for (std::string step; steps >> step;) {
      const std::string before = editor.lbl1.Text();
      ChooseType(step[0] - '0');
      EXPECT_EQ(Shown(), step.substr(1)) << step << " of " << walk;
      const std::string& caption = captions.at(static_cast<std::size_t>(step[0] - '0'));
      EXPECT_EQ(editor.lbl1.Text(), caption.empty() ? before : caption);
    }
    editor.cmdCancel.Press();
  }
  EXPECT_EQ(closed, static_cast<int>(walks.size()));
  EXPECT_EQ(saved, 0);
}

TEST_F(EditorTest, EveryTaskAndTimeTypeIsStoredAsEntered) {
  // When it occurs, and what is stored; one row for each type.
  const std::pair<forms::OptionButton*, const char*> cases[] = {
      {&editor.optOnce, " | Run Script | 07:05 on 05-12-2027, C:\\x.txt  1"},
      {&editor.optRecurring, " | Run | 07:05 on Every Weekend Day In December, C:\\x.txt /x 5"},
      {&editor.optMonthly, " | Print File | 07:05 on Day Number: 2, C:\\x.txt /x 5"},
      {&editor.optOnce, " | Reset Computer | 07:05 on 05-12-2027, Reset Computer  1"},
      {&editor.optRecurring,
       " | Shutdown Computer | 07:05 on Every Weekend Day In December, Shutdown Computer  1"},
      {&editor.optMonthly, " | Popup Message | 07:05 on Day Number: 2, C:\\x.txt  1"},
      {&editor.optOnce, " | Play Sound | 07:05 on 05-12-2027, C:\\x.txt  1"}};
  std::int16_t slot = 0;
  for (const auto& [rule, expected] : cases) {
    store.DateOrderMonthFirst = ++slot > 3 ? 1 : 0;
    OpenNew();
    EXPECT_EQ(editor.Caption() + editor.txtTaskName.Text(), "New Task");
    const std::string name = "Task " + std::to_string(slot);
    editor.txtTaskName.Type(name);
    editor.cmbGroup.Type("Group of " + name);
    editor.cmbWindow.Choose(4);
    editor.txt2.Type("/x");
    ChooseType(slot - 1);
    editor.txt1.Type("C:\\x.txt");
    editor.txtHour.Type("7");
    editor.txtMinute.Type("5");
    rule->Choose();
    const char* date[] = {"5", "12", "2027"};
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_EQ(editor.txtdte[i].Type(date[i]), rule == &editor.optOnce);
    EXPECT_EQ(editor.cmbRecur.Choose(9), rule == &editor.optRecurring);
    EXPECT_EQ(editor.cmbMonth.Choose(12), rule == &editor.optRecurring);
    EXPECT_EQ(editor.srlmnthday.Step(1), rule == &editor.optMonthly);
    ASSERT_TRUE(editor.cmdSave.Press());
    EXPECT_FALSE(editor.Visible());
    EXPECT_EQ(Told(slot), name + expected + " Group of " + name);
  }
  EXPECT_EQ(saved, slot);
  EXPECT_EQ(closed, slot);
}

TEST_F(EditorTest, OpenedAndSavedATaskStaysAsItWas) {
  Add("Once", "08:05", "TimeType=1 DateDay=25 DateMonth=12 DateYear=2027");
  Add("Never", "09:05", "Every=20 In=5 Group=Night TaskType=2 WinStyle=6 CmdLine=/q");
  Add("Rent", "10:05", "TimeType=3 DayNo=15 TaskType=7");
  Add("Odd", "11:05", "TimeType=0");
  Add("Unknown rule", "12:05", "Every=77 In=14 TaskType=3 WinStyle=9 CmdLine=");
  Add("Unknown type", "13:05", "TaskType=9");
  for (const int monthFirst : {0, 1}) {
    store.DateOrderMonthFirst = monthFirst;
    const RegistryTree before = registry.Tree();
    for (std::int16_t slot = 1; slot <= 6; ++slot) {
      editor.Open(slot);
      EXPECT_EQ(editor.Caption(), "Edit Task - " + store.TaskName(slot));
      EXPECT_EQ(std::count_if(editor.optTaskType.begin(), editor.optTaskType.end(),
                              [](const auto& option) { return option.Value(); }),
                slot != 6);
      EXPECT_EQ(editor.cmbGroup.Items(), (Texts{"General", "Night"}));
      EXPECT_EQ(editor.cmbMonth.Items().size(), 13U);
      // A rule that never fires is offered to its own task only, which may leave it.
      EXPECT_EQ(editor.cmbRecur.Items().size(), slot == 2 ? 11U : 10U);
      ASSERT_TRUE(editor.cmdSave.Press());
      EXPECT_TRUE(registry.Tree() == before) << slot;
    }
  }
  editor.Open(2);
  EXPECT_EQ(When(), "09:05 11/21/2026") << "a date, should it become one";
  EXPECT_EQ(editor.cmbRecur.Text(), "The 2nd Tuesday");
  ASSERT_TRUE(editor.cmbRecur.Choose(8));
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(Told(2), "Never | Run | 09:05 on Every Weekday In April, Never /q 6 Night");
}

TEST_F(EditorTest, ARefusalKeepsTheEntriesAndShowsTheFieldAtFault) {
  Add("Taken", "09:00");
  for (const std::size_t monthFirst : {0U, 1U}) {
    store.DateOrderMonthFirst = static_cast<int>(monthFirst);
    forms::TextBox& day = editor.txtdte[monthFirst];
    forms::TextBox& month = editor.txtdte[1 - monthFirst];
    const std::tuple<forms::TextBox*, const char*, const char*> entries[] = {
        {&editor.txtTaskName, "Taken",
         "That Task Name is already in use. Please use a different one."},
        {&editor.txtdte[2], "27", "Invalid Year given for Date"},
        {&day, "40", "Invalid Day given for Date"},
        {&month, "13", "Invalid Month given for Date"},
        {&editor.txtmnthday, "32", "Invlaid Day of Month Given"},
        {&editor.txtHour, "24", "Invlaid Hour given for Time"},
        {&editor.txtMinute, "60", "Invalid Minute given for Time"},
        {&editor.txt1, "gone.txt", "File does not exist"}};
    OpenNew();
    // None is corrected: the last failure speaks.
    for (const auto& [field, typed, message] : entries) {
      finder.findsAll = field != &editor.txt1;
      (field == &editor.txtmnthday ? editor.optMonthly : editor.optOnce).Choose();
      ASSERT_TRUE(field->Type(typed));
      SaveRefused(message, field);
    }
    for (const auto& [field, typed, message] : entries) EXPECT_EQ(field->Text(), typed);
    finder.findsAll = true;
    editor.txtHour.Type("23");
    editor.txtMinute.Type("59");
    month.Type("soon");
    SaveRefused("Invalid Date", &editor.txtdte[0]);
    editor.cmdCancel.Press();
  }
  EXPECT_EQ(store.NoTasks(), 1);
}

TEST_F(EditorTest, NowTodayBrowseAndEditScript) {
  const std::pair<int, const char*> offered[] = {{58, "23:59 31/12/2026"},
                                                 {59, "00:00 01/01/2027"}};
  for (const auto& [minute, next] : offered) {
    clock.Set(2026, 12, 31, 23, minute, 0);
    OpenNew();
    EXPECT_EQ(When(), next);
  }
  clock.Set(2027, 3, 4, 5, 6, 7);
  ASSERT_TRUE(editor.cmdNow.Press());
  for (const char* today : {"05:06 04/03/2027", "05:06 03/04/2027"}) {
    ASSERT_TRUE(editor.cmdToday.Press());
    EXPECT_EQ(When(), today);
    store.DateOrderMonthFirst = 1;
  }

  fileDialogs.chosen = std::string("C:\\a b.exe\0rest", 15);
  const std::pair<int, const char*> asked[] = {
      {1, "|Executables (*.exe)=*.exe|Shortcuts (*.lnk)=*.lnk|All Files=*.*"},
      {0, "C:\\Orvanto\\scripts\\|Text Files (*.txt)=*.txt|All Files=*.*"},
      {2, "|All Files=*.*"},
      {6, "|Sound Files (*.wav)=*.wav|All Files=*.*"}};
  for (const auto& [type, question] : asked) {
    ChooseType(type);
    ASSERT_TRUE(editor.cmdBrowse.Press());
    EXPECT_EQ(fileDialogs.asked, std::string("Select File|") + question);
    EXPECT_EQ(editor.txt1.Text(), "C:\\a b.exe");
    fileDialogs.chosen.reset();
  }
  ChooseType(0);
  for (const char* script : {"C:\\a b.exe", "", "night.txt"}) {
    editor.txt1.Type(script);
    editor.cmdEdit.Press();
  }
  EXPECT_EQ(done, (Texts{"start notepad.exe C:\\a b.exe",
                         "start notepad.exe C:\\Orvanto\\scripts\\night.txt"}));
}

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
  EXPECT_EQ(Saved("Check_Auto_Update"), "0 ");
  dialog.cmdDefaults.Press();
  EXPECT_EQ(Stored("Check_Auto_Update"), "0 ");
  EXPECT_EQ(Saved("Check_Auto_Update Use_Proxy Inet_Passwd"), "1 none none ");
  EXPECT_TRUE(dialog.cmdCheckNow.Press());
  EXPECT_EQ(checks, 1);
  Open(3);
  EXPECT_TRUE(dialog.chkAutoUpdate.Value() && dialog.optUsersDontShare.Value());
  dialog.cmdSave.Press();
  dialog.cmdDefaults.Press();
  EXPECT_TRUE(dialog.optUsersShare.Value() && dialog.cmdClose.Press());
  EXPECT_EQ(shared(), "0");
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
  EXPECT_EQ(Saved("Inet_ServerOn") + dialog.txtServerPort.Text() + dialog.txtFTPPort.Text(),
            "0 60021");
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
  EXPECT_TRUE(dialog.lblShared.ShownToUser() && dialog.optUsersShare.Value());
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
