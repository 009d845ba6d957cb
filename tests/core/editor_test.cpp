#include <gtest/gtest.h>

#include "core/ui/frmAbout.h"
#include "core/ui/frmEdit.h"
#include "tests/core/CoreDesk.h"

namespace orvanto {
namespace {

class EditorTest : public testing::Test, public CoreDesk {
 protected:
  EditorTest() {
    store.SetProgramFolder("C:\\Orvanto");
    editor.onSaved = [this] { ++saved; };
    editor.onClosed = [this] { ++closed; };
  }
  void OpenNew() { editor.Open(true, static_cast<std::int16_t>(store.NoTasks() + 1)); }
  void OpenSlot(std::int16_t slot) { editor.Open(false, slot); }
  void ChooseType(int index) {
    ASSERT_TRUE(editor.optTaskType[static_cast<std::size_t>(index)].Choose());
  }
  // What a user sees: s for lbl1 and txt1, b Browse, e Edit Script, p Parameters, w the window
  // style's label, W its list.
  std::string Shown() const {
    std::string shown;
    const auto add = [&](char mark, const forms::Control& control) {
      if (control.ShownToUser()) shown += mark;
    };
    add('s', editor.lbl1);
    EXPECT_EQ(editor.txt1.ShownToUser(), editor.lbl1.ShownToUser());
    add('b', editor.cmdBrowse);
    add('e', editor.cmdEdit);
    add('p', editor.lbl2);
    EXPECT_EQ(editor.txt2.ShownToUser(), editor.lbl2.ShownToUser());
    add('w', editor.lblWindow);
    add('W', editor.cmbWindow);
    return shown;
  }
  void SaveRefused(const char* message) {
    messageBoxes.expected = {{message}};
    ASSERT_TRUE(editor.cmdSave.Press());
    EXPECT_TRUE(messageBoxes.expected.empty()) << message;
    EXPECT_TRUE(editor.Visible());
    EXPECT_EQ(saved, 0);
  }

  int saved = 0;
  int closed = 0;
  frmEdit editor{forms, {store, clock, shell, messageBoxes, fileDialogs}};
};

TEST_F(EditorTest, ATypeShowsItsControlsAndKeepsWhatItDoesNotTouch) {
  struct Step {
    int type;
    const char* caption;
    const char* shown;
  };
  // Every type after every other at least once; the order decides what of 'w' and 'W' remains.
  const std::vector<std::vector<Step>> walks{
      {{1, "Program or Shortcut:", "sbpwW"},
       {2, "File to Print:", "sbW"},
       {3, "File to Print:", "W"},
       {1, "Program or Shortcut:", "sbpwW"},
       {3, "Program or Shortcut:", "wW"},
       {2, "File to Print:", "sbW"},
       {4, "File to Print:", ""},
       {2, "File to Print:", "sb"},
       {1, "Program or Shortcut:", "sbpw"},
       {3, "Program or Shortcut:", "w"},
       {0, "Script File:", "sbe"},
       {3, "Script File:", ""}},
      {{0, "Script File:", "sbe"},
       {1, "Program or Shortcut:", "sbpw"},
       {5, "Message:", "s"},
       {6, "Sound File:", "sb"},
       {5, "Message:", "s"},
       {4, "Message:", ""},
       {6, "Sound File:", "sb"},
       {3, "Sound File:", ""},
       {0, "Script File:", "sbe"},
       {2, "File to Print:", "sb"},
       {6, "Sound File:", "sb"},
       {1, "Program or Shortcut:", "sbpw"},
       {4, "Program or Shortcut:", ""},
       {5, "Message:", "s"},
       {0, "Script File:", "sbe"},
       {5, "Message:", "s"},
       {3, "Message:", ""}},
      {{4, "Program or Shortcut:", ""}, {3, "Program or Shortcut:", ""}, {6, "Sound File:", "sb"}},
      {{3, "Program or Shortcut:", "wW"}, {5, "Message:", "s"}}};
  for (const auto& walk : walks) {
    OpenNew();
    EXPECT_EQ(editor.Caption(), "New Task");
    EXPECT_EQ(Shown(), "sbpwW");
    int before = 1;
    for (const Step& step : walk) {
      ChooseType(step.type);
      EXPECT_EQ(Shown(), step.shown) << before << " to " << step.type;
      EXPECT_EQ(editor.lbl1.Text(), step.caption) << before << " to " << step.type;
      before = step.type;
    }
    editor.cmdCancel.Press();
  }
  EXPECT_EQ(closed, static_cast<int>(walks.size()));
  EXPECT_EQ(store.NoTasks(), 0);
}

TEST_F(EditorTest, EveryTaskAndTimeTypeIsStoredAsEntered) {
  std::int16_t slot = 0;
  for (const int monthFirst : {0, 1}) {
    store.DateOrderMonthFirst = monthFirst;
    for (int timeType = 1; timeType <= 3; ++timeType) {
      for (int type = 0; type < kTaskTypes; ++type) {
        OpenNew();
        const std::string name = "Task " + std::to_string(++slot);
        ASSERT_TRUE(editor.txtTaskName.Type(name));
        ASSERT_TRUE(editor.cmbGroup.Type("Group of " + name));
        ASSERT_TRUE(editor.cmbWindow.Choose(4));
        ASSERT_TRUE(editor.txt2.Type("/x"));
        ChooseType(type);
        if (editor.txt1.Usable()) editor.txt1.Type("C:\\x.txt");
        editor.txtHour.Type("7");
        editor.txtMinute.Type("05");
        if (timeType == kTimeOnce) {
          ASSERT_TRUE(editor.optOnce.Choose());
          ASSERT_TRUE(editor.txtdte[0].Type("5"));
          ASSERT_TRUE(editor.txtdte[1].Type("12"));
          ASSERT_TRUE(editor.txtdte[2].Type("2027"));
          EXPECT_FALSE(editor.cmbRecur.Choose(0));
        } else if (timeType == kTimeRecurring) {
          ASSERT_TRUE(editor.optRecurring.Choose());
          ASSERT_TRUE(editor.cmbRecur.Choose(9));
          ASSERT_TRUE(editor.cmbMonth.Choose(12));
          EXPECT_FALSE(editor.srlmnthday.Step(1));
        } else {
          ASSERT_TRUE(editor.optMonthly.Choose());
          ASSERT_TRUE(editor.srlmnthday.Step(1));
          EXPECT_FALSE(editor.cmdToday.Press());
        }
        ASSERT_TRUE(editor.cmdSave.Press());
        EXPECT_FALSE(editor.Visible());

        store.LoadTask(slot);
        const TaskRecord& task = store.CurrentTask;
        EXPECT_EQ(task.name, name);
        EXPECT_EQ(task.group, "Group of " + name);
        EXPECT_EQ(task.timeHour + ":" + task.timeMinute, "07:05");
        EXPECT_EQ(task.taskType, type + 1);
        EXPECT_EQ(task.timeType, timeType);
        if (timeType == kTimeOnce) {
          EXPECT_EQ(task.dateDay, monthFirst == 0 ? "05" : "12");
          EXPECT_EQ(task.dateMonth, monthFirst == 0 ? "12" : "05");
          EXPECT_EQ(task.dateYear, "2027");
        } else if (timeType == kTimeRecurring) {
          EXPECT_EQ(task.every, 10);
          EXPECT_EQ(task.in, 13);
        } else {
          EXPECT_EQ(task.dayNo, 2);
        }
        if (type == 1 || type == 2) {
          EXPECT_EQ(task.winStyle, 5);
          EXPECT_EQ(task.cmdLine, "/x");
        }
        EXPECT_EQ(task.path, type == 3   ? "Reset Computer"
                             : type == 4 ? "Shutdown Computer"
                                         : "C:\\x.txt");
      }
    }
  }
  EXPECT_EQ(saved, slot);
  EXPECT_EQ(closed, slot);
}

TEST_F(EditorTest, OpenedAndSavedATaskStaysAsItWas) {
  Add("Once", "08:05", [](TaskEntry& entry) {
    entry.timeType = kTimeOnce;
    entry.datePart1 = "25";
    entry.datePart2 = "12";
    entry.year = "2027";
  });
  Add("Never", "09:05", [](TaskEntry& entry) {
    entry.every = 20;
    entry.in = 5;
    entry.taskType = kRunProgram;
    entry.winStyle = 6;
    entry.cmdLine = "/q";
    entry.group = "Night";
  });
  Add("Rent", "10:05", [](TaskEntry& entry) {
    entry.timeType = kTimeDayNumber;
    entry.dayNo = 15;
    entry.taskType = kPlaySound;
  });
  Add("Odd", "11:05", [](TaskEntry& entry) {
    entry.timeType = 0;
    entry.every = 77;
  });
  Add("Unknown rule", "12:05", [](TaskEntry& entry) {
    entry.every = 77;
    entry.in = 14;
    entry.taskType = kPrintFile;
    entry.winStyle = 9;
  });
  for (const int monthFirst : {0, 1}) {
    store.DateOrderMonthFirst = monthFirst;
    const RegistryTree before = registry.Tree();
    for (std::int16_t slot = 1; slot <= 5; ++slot) {
      OpenSlot(slot);
      EXPECT_EQ(editor.Caption(), "Edit Task - " + store.TaskName(slot));
      EXPECT_EQ(editor.cmbGroup.Items(), (std::vector<std::string>{"General", "Night"}));
      ASSERT_TRUE(editor.cmdSave.Press());
      EXPECT_TRUE(registry.Tree() == before) << slot;
    }
  }
  EXPECT_EQ(saved, 10);
}

TEST_F(EditorTest, ARuleThatNeverFiresIsShownToItsTaskAndKeptUnlessChanged) {
  Add("Never", "09:05", [](TaskEntry& entry) { entry.every = 20; });
  OpenNew();
  EXPECT_EQ(editor.cmbRecur.Items().size(), 10U);
  EXPECT_EQ(editor.cmbMonth.Items().size(), 13U);
  editor.cmdCancel.Press();
  OpenSlot(1);
  EXPECT_EQ(editor.cmbRecur.Text(), "The 2nd Tuesday");
  EXPECT_EQ(editor.cmbRecur.Items().size(), 11U);
  ASSERT_TRUE(editor.cmbRecur.Choose(8));
  ASSERT_TRUE(editor.cmdSave.Press());
  store.LoadTask(1);
  EXPECT_EQ(store.CurrentTask.every, 9);
}

TEST_F(EditorTest, ARefusalKeepsTheEntries) {
  Add("Taken", "09:00");
  OpenNew();
  SaveRefused("No task name given");
  editor.txtTaskName.Type("Taken");
  SaveRefused("That Task Name is already in use. Please use a different one.");
  editor.txtTaskName.Type("New");
  editor.txtdte[0].Type("31");
  editor.txtdte[1].Type("04");
  SaveRefused("Invalid Day given for Date");
  EXPECT_EQ(editor.txtdte[0].Text(), "31");
  editor.txtdte[1].Type("13");
  SaveRefused("Invalid Month given for Date");
  editor.txtdte[1].Type("12");
  editor.txtdte[2].Type("27");
  SaveRefused("Invalid Year given for Date");
  editor.txtdte[2].Type("soon");
  SaveRefused("Invalid Date");
  editor.optMonthly.Choose();
  editor.txtmnthday.Type("x");
  SaveRefused("Invlaid Day of Month Given");
  editor.txtmnthday.Type("31");
  editor.txtHour.Type("24");
  SaveRefused("Invlaid Hour given for Time");
  editor.txtHour.Type("23");
  editor.txtMinute.Type("");
  SaveRefused("Invalid Minute given for Time");
  editor.txtMinute.Type("59");
  EXPECT_EQ(editor.txtTaskName.Text(), "New");
  EXPECT_EQ(store.NoTasks(), 1);
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(store.NoTasks(), 2);
}

TEST_F(EditorTest, NowTodayBrowseAndEditScript) {
  clock.Set(2026, 2, 3, 4, 5, 6);
  OpenNew();
  clock.Set(2027, 3, 4, 5, 6, 7);
  ASSERT_TRUE(editor.cmdNow.Press());
  ASSERT_TRUE(editor.cmdToday.Press());
  const auto date = [&] {
    return editor.txtdte[0].Text() + "/" + editor.txtdte[1].Text() + "/" + editor.txtdte[2].Text();
  };
  EXPECT_EQ(editor.txtHour.Text() + ":" + editor.txtMinute.Text(), "05:06");
  EXPECT_EQ(date(), "04/03/2027");
  store.DateOrderMonthFirst = 1;
  ASSERT_TRUE(editor.cmdToday.Press());
  EXPECT_EQ(date(), "03/04/2027");

  fileDialogs.chosen = std::string("C:\\a b.exe\0rest", 15);
  ASSERT_TRUE(editor.cmdBrowse.Press());
  EXPECT_EQ(editor.txt1.Text(), "C:\\a b.exe");
  EXPECT_EQ(fileDialogs.asked,
            "Select File||Executables (*.exe)=*.exe|Shortcuts (*.lnk)=*.lnk|All Files=*.*");
  fileDialogs.chosen.reset();
  const std::pair<int, const char*> others[] = {
      {0, "Select File|C:\\Orvanto\\scripts\\|Text Files (*.txt)=*.txt|All Files=*.*"},
      {2, "Select File||All Files=*.*"},
      {6, "Select File||Sound Files (*.wav)=*.wav|All Files=*.*"}};
  for (const auto& [type, asked] : others) {
    ChooseType(type);
    ASSERT_TRUE(editor.cmdBrowse.Press());
    EXPECT_EQ(fileDialogs.asked, asked);
    EXPECT_EQ(editor.txt1.Text(), "C:\\a b.exe");
  }
  ChooseType(0);
  editor.cmdEdit.Press();
  editor.txt1.Type("night.txt");
  editor.cmdEdit.Press();
  EXPECT_EQ(shell.started,
            (std::vector<std::string>{"notepad.exe C:\\a b.exe",
                                      "notepad.exe C:\\Orvanto\\scripts\\night.txt"}));
}

TEST_F(EditorTest, TheArrowsStayWithinTheMonth) {
  OpenNew();
  editor.optMonthly.Choose();
  const auto step = [&](const char* from, int by) {
    editor.txtmnthday.Type(from);
    EXPECT_TRUE(editor.srlmnthday.Step(by));
    return editor.txtmnthday.Text();
  };
  EXPECT_EQ(step("30", 1), "31");
  EXPECT_EQ(step("31", 1), "31");
  EXPECT_EQ(step("1", -1), "1");
  EXPECT_EQ(step("99", -1), "31");
  EXPECT_EQ(step("", 1), "1");
  EXPECT_EQ(step("5x", -1), "1");
}

TEST_F(EditorTest, AListThatChangesUnderTheEditorLosesNoTask) {
  Add("One", "09:00");
  Add("Two", "09:00");
  OpenSlot(2);
  store.DeleteTask(1);
  editor.txtTaskName.Type("Two again");
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(store.NoTasks(), 1);
  EXPECT_EQ(store.TaskName(1), "Two again");

  OpenNew();
  Add("Meanwhile", "09:00");
  editor.txtTaskName.Type("New");
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(store.TaskName(2), "Meanwhile");
  EXPECT_EQ(store.TaskName(3), "New");

  OpenSlot(3);
  store.DeleteTask(3);
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(store.TaskName(3), "New");
}

TEST_F(EditorTest, AFullListTakesNoTask) {
  for (int i = 1; i < kMaxTasks; ++i) Add("T" + std::to_string(i), "09:00");
  OpenNew();
  Add("The last", "09:00");
  editor.txtTaskName.Type("One too many");
  const RegistryTree before = registry.Tree();
  SaveRefused(TaskStore::kListFull);
  EXPECT_TRUE(registry.Tree() == before);
}

TEST(About, StartsTheSystemsInformation) {
  FakePlatform fake;
  frmAbout about(fake.forms, fake.shell);
  int closed = 0;
  about.onClosed = [&] { ++closed; };
  about.Open();
  EXPECT_EQ(about.lblVersion.Text(), "Version 1.3");
  EXPECT_TRUE(about.cmdSysInfo.Press());
  EXPECT_EQ(fake.shell.started, (std::vector<std::string>{"msinfo32.exe"}));
  EXPECT_TRUE(about.cmdOK.Press());
  EXPECT_EQ(closed, 1);
}

}  // namespace
}  // namespace orvanto
