#include <gtest/gtest.h>

#include "core/ui/frmScriptcfg.h"
#include "core/ui/frmmsg.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

struct MainWindowTest : testing::Test, CoreDesk {
  MainWindowTest() {
    window.onEnded = [this] { loop.Quit(); };
  }
  void Start(const std::string& commandLine = "") { window.Start(commandLine, "C:\\Orvanto"); }
  void InGroup(const std::string& group, const Texts& names) {
    for (const std::string& name : names) {
      TaskEntry entry = Entry(name, "10:00");
      entry.group = group;
      store.SaveTask(entry);
    }
  }
  // The tree, one line a node, indented below its parent.
  Texts Lines() const {
    Texts lines;
    for (const auto& node : window.treTasks.Nodes()) {
      lines.push_back((node.parent ? window.treTasks.Nodes()[*node.parent].text + "/" : "") +
                      node.text.substr(0, node.text.find(" | ")));
    }
    return lines;
  }
  std::string Selected() const {
    const auto selected = window.treTasks.Selected();
    EXPECT_EQ(window.cmdDelete.Enabled(), selected.has_value());
    return selected ? Lines()[*selected] : "";
  }

  ProgramSettings programSettings;
  frmmsg message{forms};
  frmScriptcfg window{forms,
                      {settings, programSettings, folder, store, sched, scheduler, execution, clock,
                       files, trayIcon, messageBoxes, message}};
};

TEST_F(MainWindowTest, CommandsAreOfferedWhenANodeIsSelected) {
  InGroup("One | Popup Message | of many", {"One", "Odd"});  // which names no task
  Put("Odd", "TaskType=9");
  Start();
  const auto& nodes = window.treTasks.Nodes();
  EXPECT_TRUE(nodes[0].expanded && nodes[0].image != nodes[1].image);
  EXPECT_FALSE(window.cmdDelete.Press() || window.cmdRun.Press() || window.mnuRun.Choose());
  EXPECT_FALSE(window.cmdNew.Press() || window.mnuSettings.Choose()) << "there is no editor";
  EXPECT_TRUE(window.treTasks.ClickNode(1) && !window.cmdEdit.Press());
  messageBoxes.expected = {{"One"}, {"One"}};
  EXPECT_TRUE(window.cmdRun.Press() && window.mnuRun.Choose());
  EXPECT_TRUE(window.treTasks.ClickNode(0) && window.cmdRun.Press() && window.cmdDelete.Press());
  EXPECT_EQ(Names(), (Texts{"One", "Odd"}));
  InGroup(nodes[1].text, {"Any node of that text will do"});
  EXPECT_EQ(nodes[3].parent, 1U);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(window.treTasks.ClickNode(1) && window.mnuDelete.Choose());
  }
  EXPECT_TRUE(Lines().empty() && !window.cmdDelete.Press());
}

TEST_F(MainWindowTest, TheListAnswersToKeysAndTellsOfItsTasks) {
  Add("Once", "14:05", "TimeType=1 DateDay=21 DateMonth=11 DateYear=2026");
  Add("Gone", "14:04", "TimeType=1 DateDay=21 DateMonth=11 DateYear=2026");
  std::string edited;
  window.showEditor = [&](auto slot) { edited += std::to_string(slot.value_or(0)); };
  Start();
  auto& tree = window.treTasks;
  EXPECT_FALSE(tree.PressDelete() || window.mnuListDuplicate.Choose()) << "nothing is selected";
  const auto faded = [&](std::size_t node) { return tree.Nodes()[node].faded; };
  EXPECT_TRUE(!faded(1) && faded(2) && tree.onTip(0).empty());
  EXPECT_EQ(tree.onTip(1), tree.Nodes()[1].text + "\r\nnext: Saturday 21 November 14:05");
  EXPECT_EQ(tree.onTip(2), tree.Nodes()[2].text + "\r\nnever again");
  messageBoxes.answersAll = true;
  loop.Advance(30'000);
  EXPECT_TRUE(faded(1)) << "its minute has come";
  messageBoxes.answersAll = false;

  tree.ClickNode(0);
  EXPECT_FALSE(window.mnuListEdit.Choose() || window.mnuListDuplicate.Choose()) << "on a group";
  EXPECT_TRUE(tree.PressDelete() && tree.Activate());
  EXPECT_EQ(edited, "");
  tree.ClickNode(1);
  for (const char* copy : {"Once (2)", "Once (2) (2)", "Once (3)"}) {
    if (copy == std::string("Once (3)")) tree.ClickNode(1);
    EXPECT_TRUE(window.mnuListDuplicate.Choose());
    EXPECT_EQ(Selected(), std::string("General/") + copy);
  }
  EXPECT_EQ(Told(5).substr(8), Told(1).substr(4));
  for (const auto answer : {Answer::No, Answer::Yes}) {
    messageBoxes.expected = {{"Delete the task \"Once (3)\"?", answer}};
    EXPECT_TRUE(tree.PressDelete());
    EXPECT_EQ(messageBoxes.buttonsShown, Buttons::NoUnlessYes);
    EXPECT_EQ(store.NoTasks(), answer == Answer::No ? 5 : 4);
  }
  EXPECT_TRUE(tree.Activate());
  EXPECT_EQ(edited, "4");
}

TEST_F(MainWindowTest, TheSelectionStaysOrGoesToTheNeighbour) {
  InGroup("A", {"One"});
  InGroup("B", {"Other"});
  InGroup("A", {"Three", "Four"});
  Start();
  ASSERT_TRUE(window.treTasks.ClickNode(4));
  for (const char* next : {"A/Four", "A/One", "B/Other", ""}) {
    EXPECT_TRUE(window.cmdDelete.Press());
    EXPECT_TRUE(Selected() == next && window.Focus() == &window.treTasks) << Selected();
  }
  InGroup("A", {"First", "Second"});
  window.SelectTask(2);
  EXPECT_EQ(Selected(), "A/Second") << "as the editor saved it";
  store.DeleteTask(1);
  EXPECT_EQ(Selected(), "A/Second") << "others have deleted the one above";
}

TEST_F(MainWindowTest, ThePopupMessageGrowsWithItsText) {
  forms::Size last;
  for (const std::size_t length : {10U, 300U, 1000U, 5000U, 100000U}) {
    message.ShowText(std::string(length, 'x'));
    const forms::Size size = message.ClientSize();
    EXPECT_TRUE(size.width > last.width || size.height > last.height) << length;
    EXPECT_TRUE(size.width > size.height || length > 1000) << "wider before it is a column";
    EXPECT_TRUE(size.width < 1280 * 15 && size.height < 800 * 15) << length;
    const bool scrolls = length == 100000;
    EXPECT_TRUE(message.txtMsg.ShownToUser() == scrolls && message.lblMsg.ShownToUser() != scrolls);
    EXPECT_EQ((scrolls ? message.txtMsg.Text() : message.lblMsg.Text()).size(), length);
    EXPECT_TRUE(message.cmdOK.Press() && !message.Loaded());
    last = size;
  }
}

TEST_F(MainWindowTest, TheTrayTakesTheWindowAndGivesItBack) {
  const auto shown = [&] {
    return std::string(window.Visible() ? "window " : "") + trayIcon.shownTip;
  };
  Add("In the tray", "14:05", "TaskType=5");
  Add("Hidden", "14:06");
  Start();
  EXPECT_TRUE(window.cmdSystemTray.Press());
  for (const int ignored : {kMouseMove, kLeftDown, kLeftUp, kRightUp}) trayIcon.onMouse(ignored);
  EXPECT_EQ(shown() + window.Caption(), "OrvantoOrvanto - 14:04") << "before the first tick";
  loop.Advance(31000);
  EXPECT_EQ(done, (Texts{"end 1"}));
  EXPECT_EQ(window.Caption(), "Orvanto - 14:05");
  trayIcon.onMouse(kLeftDoubleClick);
  EXPECT_EQ(shown(), "window ");
  EXPECT_EQ(window.Focus(), &window.treTasks);

  EXPECT_TRUE(window.mnuSystemTray.Choose());
  trayIcon.menu.at(0).onChosen();
  EXPECT_TRUE(window.mnuOnTop.Choose() && window.cmdSystemTray.Press());
  trayIcon.menu.at(1).onChosen();
  EXPECT_FALSE(message.Loaded() || scheduler.tmrSched.Enabled() || !loop.QuitRequested());
  trayIcon.onMouse(kLeftDoubleClick);
  EXPECT_EQ(shown(), "") << "it has ended";
  Start("INVisible");
  EXPECT_TRUE(window.TopMost() && window.mnuOnTop.Checked()) << "as it was chosen the last time";
  messageBoxes.expected = {{"Hidden"}};
  loop.Advance(60000);
  EXPECT_EQ(shown(), "");
}

TEST_F(MainWindowTest, ItComesBackWhereItWasLeft) {
  const auto stored = [&] { return SettingOf("Window").Text(settings); };
  const forms::Bounds tree = window.treTasks.GetBounds();
  Start();
  window.cmdExit.Press();
  EXPECT_EQ(stored() + SettingOf("OnTop").Text(settings, ""), "0") << "nobody has moved it";
  settings.WriteUserSetting(kGeneral, "Window", "-150 300 9940 5350");
  Start();
  EXPECT_EQ(window.treTasks.GetBounds(),
            (forms::Bounds{tree.left, tree.top, tree.width + 1000, tree.height + 1000}));
  EXPECT_EQ(window.cmdExit.GetBounds().left + window.fraInet.GetBounds().top, 8260 + 4600);
  window.ShowServerArea(true);
  EXPECT_EQ(window.fraServer.GetBounds(), (forms::Bounds{120, 2650, 8020, 1845}));
  EXPECT_TRUE(window.Resize({}));
  EXPECT_EQ(window.treTasks.GetBounds().height, 1425) << "not below its first size";
  window.Unload();
  EXPECT_EQ(stored(), "-150 300 8940 4350");
  for (const std::string bad : {"0 0 9999", "0 0 9999 1e4", "0 0 9999 99999999", ""}) {
    settings.WriteUserSetting(kGeneral, "Window", bad);
    Start();
    EXPECT_EQ(window.Left(), (1280 * 15 - 8940) / 2) << bad;
    window.Unload();
  }
}

TEST_F(MainWindowTest, RemoteSettingsAreReadBeforeTheStorageMode) {
  settings.SetStorageMode(1);
  Put(kGeneral, "Inet_Passwd=machine OnTop=1 Proxy= ProxyPort=8");
  settings.SetStorageMode(0);
  Put(kGeneral, "Inet_Passwd=user Inet_Passwd_Required=1 Inet_Chat_Auto=yes");
  settings.WriteMachineSetting(kGeneral, "Users_Share", "1");
  settings.WriteUserSetting(kGeneral, "Inet_Strict", "1");
  Start();
  EXPECT_EQ(programSettings.password, "user");
  EXPECT_TRUE(programSettings.passwordRequired && programSettings.strict);
  EXPECT_FALSE(programSettings.chatAutoAccept);
  EXPECT_TRUE(window.TopMost() && message.TopMost());
  EXPECT_EQ(programSettings.proxyPort, 0) << "of no proxy";
}

TEST_F(MainWindowTest, AFailedStepIsLoggedAndTheNextOnesFollow) {
  settings.WriteMachineSetting(kGeneral, "Users_Share", "both");
  Put(kGeneral, "ProxyPort=70000 NoTasks=101");
  files.contents["ORVTASK.LOG"] = "\"Error Code:53\"\r\n";
  store.DateOrderMonthFirst = 1;
  clock.shortDateOrder = "58-m-d";
  Start();
  EXPECT_EQ(files.contents["ORVTASK.LOG"],
            "\"Error Code:53\"\r\n\"Error Code:13\"\r\n\"Error Code:6\"\r\n\"Error Code:9\"\r\n");
  EXPECT_EQ(store.DateOrderMonthFirst, 0) << "the year stands first";
  EXPECT_TRUE(window.Visible() && scheduler.tmrSched.Enabled());
  // The first hundred are shown all the same: their one group and themselves.
  EXPECT_EQ(Lines().size(), 101U);
}

}  // namespace
}  // namespace orvanto
