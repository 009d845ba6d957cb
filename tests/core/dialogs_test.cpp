#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "core/ui/frmEdit.h"
#include "core/ui/frmSettings.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

struct EditorTest : testing::Test, CoreDesk {
  EditorTest() {
    finder.findsAll = true;
    editor.onSaved = [this](std::int16_t) { ++saved; };
    editor.onClosed = [this] { ++closed; };
  }
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
    EXPECT_TRUE(editor.cmdSave.Press() && editor.Visible() && saved == 0) << message;
    EXPECT_EQ(editor.Focus(), fieldAtFault) << message;
  }

  int saved = 0;
  int closed = 0;
  frmEdit editor{forms, {store, clock, shell, messageBoxes, fileDialogs}};
};

TEST_F(EditorTest, ATypeShowsItsControlsAndKeepsWhatItDoesNotTouch) {
  // The types of a walk and what each shows; the order decides what of 'w' and 'W' remains.
  const char* const walks[] = {"0sbe 1sbpw 3w 2sb 0sbe 3 2sb 0sbe 2sb", "3wW 4 0sbe 4 5s 1sbpw 4",
                               "5s 0sbe 5s 4 6sb 1sbpw 5s", "6sb 0sbe 6sb 5s 1sbpw 6sb",
                               "2sbW 3W 1sbpwW 0sbe"};
  const char* const captions[] = {
      "Script File:", "Program or Shortcut:", "File to Print:", nullptr, nullptr,
      "Message:",     "Sound File:"};
  for (const std::string walk : walks) {
    editor.Open(std::nullopt);
    EXPECT_EQ(Shown(), "sbpwW");
    std::string caption = editor.lbl1.Text();
    std::istringstream steps(walk);
    for (std::string step; steps >> step;) {
      const auto type = static_cast<std::size_t>(step[0] - '0');
      editor.optTaskType.at(type).Choose();
      EXPECT_EQ(Shown(), step.substr(1)) << step << " of " << walk;
      if (captions[type] != nullptr) caption = captions[type];
      EXPECT_EQ(editor.lbl1.Text(), caption);
    }
    editor.cmdCancel.Press();
  }
}

TEST_F(EditorTest, OpenedAndSavedATaskStaysAsItWas) {
  Add("Once", "08:05", "TimeType=1 DateDay=25 DateMonth=12 DateYear=2027");
  Add("Never", "09:05", "Every=20 In=5 Group=Night TaskType=2 WinStyle=6 CmdLine=/q");
  Add("Rent", "10:05", "TimeType=3 DayNo=15 TaskType=7");
  Add("Odd", "11:05", "TimeType=0");
  Add("Unknown rule", "12:05", "Every=77 In=14 TaskType=3 WinStyle=9 CmdLine=");
  Add("Unknown type", "13:05", "TaskType=9");
  const RegistryTree before = registry.Tree();
  for (const auto slot : std::initializer_list<std::int16_t>{1, 2, 3, 4, 5, 6, 1}) {
    editor.Open(slot);
    EXPECT_EQ(editor.cmbGroup.Items(), (Texts{"General", "Night"}));
    // A rule that never fires is offered to its own task only, which may leave it.
    EXPECT_EQ(editor.cmbRecur.Items().size(), slot == 2 ? 11U : 10U);
    EXPECT_EQ(editor.srlmnthday.Usable(), slot == 3);
    ASSERT_TRUE(editor.cmdSave.Press());
    EXPECT_TRUE(registry.Tree() == before) << slot;
    store.DateOrderMonthFirst = slot == 6 ? 1 : 0;
  }
  EXPECT_EQ(saved, 7);
  store.DateOrderMonthFirst = 1;
  editor.Open(2);
  EXPECT_EQ(When(), "09:05 11/21/2026") << "a date, should it become one";
  EXPECT_EQ(editor.cmbRecur.Text(), "The 2nd Tuesday");
  ASSERT_TRUE(editor.cmbRecur.Choose(8) && editor.cmdSave.Press());
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
    editor.Open(std::nullopt);
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
  clock.Set(2026, 12, 31, 23, 58, 0);
  for (const char* next : {"23:59 31/12/2026", "00:00 01/01/2027"}) {
    editor.Open(std::nullopt);
    EXPECT_EQ(When(), next);
    clock.Move(60'000);
  }
  clock.Set(2027, 3, 4, 5, 6, 7);
  ASSERT_TRUE(editor.cmdNow.Press());
  for (const char* today : {"05:06 04/03/2027", "05:06 03/04/2027"}) {
    ASSERT_TRUE(editor.cmdToday.Press());
    EXPECT_EQ(When(), today);
    store.DateOrderMonthFirst = 1;
  }

  fileDialogs.chosen = std::string("C:\\a b.exe\0rest", 15);
  const std::pair<std::size_t, const char*> asked[] = {
      {1, "|Executables (*.exe)=*.exe|Shortcuts (*.lnk)=*.lnk|All Files=*.*"},
      {0, "C:\\Orvanto\\scripts\\|Text Files (*.txt)=*.txt|All Files=*.*"},
      {2, "|All Files=*.*"},
      {6, "|Sound Files (*.wav)=*.wav|All Files=*.*"}};
  for (const auto& [type, question] : asked) {
    editor.optTaskType[type].Choose();
    ASSERT_TRUE(editor.cmdBrowse.Press());
    EXPECT_EQ(fileDialogs.asked, std::string("Select File|") + question);
    EXPECT_EQ(editor.txt1.Text(), "C:\\a b.exe");
    fileDialogs.chosen.reset();
  }
  editor.optTaskType[0].Choose();
  for (const char* script : {"C:\\a b.exe", "", "night.txt"}) {
    editor.txt1.Type(script);
    editor.cmdEdit.Press();
  }
  EXPECT_EQ(done, (Texts{"start notepad.exe C:\\a b.exe",
                         "start notepad.exe C:\\Orvanto\\scripts\\night.txt"}));
}

struct SettingsDialogTest : testing::Test, CoreDesk {
  SettingsDialogTest() {
    dialog.onPortChanged = [this] { told += "port "; };
    dialog.onCheckNow = [this] { told += "check "; };
    dialog.onRemoteChanged = [this] {
      servers = values.ftpPort + (values.compat ? "C" : "") + (values.strict ? "S" : "");
    };
    Changed();
  }
  void Save(int tab, const std::function<void()>& act) {
    dialog.Unload();
    dialog.Open();
    dialog.tabSettings.Choose(tab);
    act();
    dialog.cmdSave.Press();
  }
  // What has changed since the last call: in the store (of the machine: "all"), and what holds.
  std::string Changed() {
    std::map<std::string, std::string> now{{"servers", servers}};
    now["holds"] = values.password + (values.passwordRequired ? "!" : "") +
                   (values.chatAutoAccept ? ",chat," : ",") + values.proxyHost + ":" +
                   std::to_string(values.proxyPort);
    for (const auto& [id, node] : registry.Tree().Keys()) {
      const std::string who = node.root == RootKey::LocalMachine ? "all " : "";
      for (const auto& [key, value] : node.values) now[who + value.name] = value.data.c_str();
    }
    std::string changed = std::exchange(told, {});
    for (const auto& [name, text] : now) {
      if (std::exchange(known[name], text) != text) changed += name + "=" + text + " ";
    }
    return changed;
  }

  ProgramSettings values;
  frmSettings dialog{forms, settings, values};
  std::string told, servers;
  std::map<std::string, std::string> known;
};

TEST_F(SettingsDialogTest, EachTabStoresWhatItShowsAndShowsWhatIsStored) {
  // The tab, what is done there before it is saved, and what changes by it and by saving again.
  const auto nothing = [] {};
  const auto defaults = [&] { dialog.cmdDefaults.Press(); };
  const std::tuple<int, std::function<void()>, const char*> steps[] = {
      {0, nothing, "Check_Auto_Update=0 "},
      {0, defaults, "Check_Auto_Update=1 "},
      {0, [&] { dialog.cmdCheckNow.Press(); }, "check "},
      {1, [&] { dialog.chkProxy.Press(), dialog.txtProxy.Type("x"), dialog.txtPort.Press("8k0"); },
       "Proxy=x Use_Proxy=1 holds=,x:80 "},
      {1, [&] { dialog.txtPort.Type("99999"); }, ""},
      {1, defaults, "Proxy= Use_Proxy=0 holds=,:80 "},
      {2, nothing, "Inet_Chat_Auto=0 Inet_Passwd_Required=0 Inet_ServerOn=0 "},
      {2, [&] { dialog.chkPwd.Press(), dialog.txtPwd.Type("secret"); },
       "Inet_Passwd=secret Inet_Passwd_Required=1 holds=secret!,:80 "},
      {2, [&] { dialog.chkChat.Press(), dialog.chkServeron.Press(); },
       "Inet_Chat_Auto=1 Inet_ServerOn=1 holds=secret!,chat,:80 "},
      {2, [&] { dialog.txtServerPort.Type("0601"); }, "port Inet_ServerPort=601 "},
      {2, [&] { dialog.txtServerPort.Type(""); }, ""},
      {2, [&] { dialog.txtFTPPort.Type("2121"); }, "Inet_FtpPort=2121 servers=2121 "},
      {2, defaults,
       "port Inet_Chat_Auto=0 Inet_FtpPort=21 Inet_Passwd= Inet_Passwd_Required=0 "
       "Inet_ServerPort=600 holds=,:80 servers=21 "},
      {3, [&] { dialog.optUsersDontShare.Choose(); }, "all Users_Share=0 "},
      {3, defaults, "all Users_Share=1 "},
      {4, [&] { dialog.chkCompat.Press(), dialog.chkStrict.Press(); },
       "Inet_Compat=1 Inet_Strict=1 servers=21CS "},
      {4, defaults, "Inet_Compat=0 Inet_Strict=0 servers=21 "}};
  for (const auto& [tab, act, changed] : steps) {
    settings.SetStorageMode(tab == 4 ? 1 : 0);  // these are the user's own all the same
    Save(tab, act);
    EXPECT_EQ(dialog.lblShared.Visible(), tab == 4);
    EXPECT_TRUE(tab != 2 ||
                SettingOf("Inet_ServerPort").Text(settings) == dialog.txtServerPort.Text());
    EXPECT_EQ(dialog.txtProxy.Enabled(), dialog.chkProxy.Value());
    EXPECT_EQ(dialog.txtPwd.Enabled(), dialog.chkPwd.Value());
    if (tab != 3) Save(tab, nothing);
    EXPECT_EQ(Changed(), changed);
  }
  EXPECT_TRUE(dialog.optUsersShare.Value()) << "from this start on";
  // What cannot be stored is shown as it is.
  const auto fails = [&] { registry.FailWrite(1, kAccessDenied); };
  Save(3, [&] {
    dialog.optUsersDontShare.Choose();
    fails();
  });
  EXPECT_TRUE(dialog.optUsersShare.Value());
  Save(4, [&] {
    dialog.chkCompat.Press();
    fails();
  });
  EXPECT_FALSE(dialog.chkCompat.Value());
  Save(4, [] {});
  EXPECT_EQ(Changed(), "Inet_Compat=1 servers=21C ") << "it holds until the program ends";
}

}  // namespace
}  // namespace orvanto
