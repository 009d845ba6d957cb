#include <gtest/gtest.h>

#include <sstream>

#include "core/ui/frmEdit.h"
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
  void ChooseType(int index) {
    ASSERT_TRUE(editor.optTaskType[static_cast<std::size_t>(index)].Choose());
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
  std::string Date() const {
    return editor.txtdte[0].Text() + "/" + editor.txtdte[1].Text() + "/" + editor.txtdte[2].Text();
  }
  void SaveRefused(const char* message, const forms::Control* fieldAtFault = nullptr) {
    messageBoxes.expected = {{message}};
    ASSERT_TRUE(editor.cmdSave.Press());
    EXPECT_TRUE(messageBoxes.expected.empty()) << message;
    EXPECT_EQ(editor.Focus(), fieldAtFault) << message;
    EXPECT_TRUE(editor.Visible());
    EXPECT_EQ(saved, 0);
  }

  int saved = 0;
  int closed = 0;
  frmEdit editor{forms, {store, clock, shell, messageBoxes, fileDialogs}};
};

TEST_F(EditorTest, ATypeShowsItsControlsAndKeepsWhatItDoesNotTouch) {
  // Types 3 and 4 leave the caption alone.
  const char* captions[] = {
      "Script File:", "Program or Shortcut:", "File to Print:", nullptr, nullptr,
      "Message:",     "Sound File:"};
  // The types of a walk and what each shows. Every type comes after every other at least once; the
  // order decides what of 'w' and 'W' remains.
  const Texts walks = {
      "1sbpwW 2sbW 3W 1sbpwW 3wW 2sbW 4 2sb 1sbpw 3w 0sbe 3",
      "0sbe 1sbpw 5s 6sb 5s 4 6sb 3 0sbe 2sb 6sb 1sbpw 4 5s 0sbe 5s 3",
      "4 3 6sb",
      "3wW 5s",
  };
  for (const std::string& walk : walks) {
    OpenNew();
    EXPECT_EQ(editor.Caption(), "New Task");
    EXPECT_EQ(Shown(), "sbpwW");
    std::string caption = captions[1];
    std::istringstream steps(walk);
    for (std::string step; steps >> step;) {
      const int type = step[0] - '0';
      ChooseType(type);
      if (captions[type] != nullptr) caption = captions[type];
      EXPECT_EQ(Shown(), step.substr(1)) << step << " of " << walk;
      EXPECT_EQ(editor.lbl1.Text(), caption);
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
        const bool once = timeType == kTimeOnce;
        const bool recurring = timeType == kTimeRecurring;
        const bool monthly = timeType == kTimeDayNumber;
        ASSERT_TRUE((once        ? editor.optOnce
                     : recurring ? editor.optRecurring
                                 : editor.optMonthly)
                        .Choose());
        const char* date[] = {"5", "12", "2027"};
        for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(editor.txtdte[i].Type(date[i]), once);
        EXPECT_EQ(editor.cmbRecur.Choose(9), recurring);
        EXPECT_EQ(editor.cmbMonth.Choose(12), recurring);
        EXPECT_EQ(editor.srlmnthday.Step(1), monthly);
        ASSERT_TRUE(editor.cmdSave.Press());
        EXPECT_FALSE(editor.Visible());

        store.LoadTask(slot);
        const TaskRecord& task = store.CurrentTask;
        EXPECT_EQ(task.name, name);
        EXPECT_EQ(task.index, slot);
        EXPECT_EQ(task.group, "Group of " + name);
        EXPECT_EQ(task.timeHour + ":" + task.timeMinute, "07:05");
        EXPECT_EQ(task.taskType, type + 1);
        EXPECT_EQ(task.timeType, timeType);
        EXPECT_EQ(task.dateDay, !once ? "0" : monthFirst == 0 ? "05" : "12");
        EXPECT_EQ(task.dateMonth, !once ? "0" : monthFirst == 0 ? "12" : "05");
        EXPECT_EQ(task.dateYear, once ? "2027" : "0");
        EXPECT_EQ(task.every, recurring ? 10 : 0);
        EXPECT_EQ(task.in, recurring ? 13 : 0);
        EXPECT_EQ(task.dayNo, monthly ? 2 : 0);
        const bool window = type == 1 || type == 2;
        EXPECT_EQ(task.winStyle, window ? 5 : 1);
        EXPECT_EQ(task.cmdLine, window ? "/x" : "");
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
  Add("Odd", "11:05", [](TaskEntry& entry) { entry.timeType = 0; });
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
      editor.Open(slot);
      EXPECT_EQ(editor.Caption(), "Edit Task - " + store.TaskName(slot));
      EXPECT_EQ(editor.cmbGroup.Items(), (Texts{"General", "Night"}));
      ASSERT_TRUE(editor.cmdSave.Press());
      EXPECT_TRUE(registry.Tree() == before) << slot;
    }
  }
  // A rule that never fires is offered to its own task only, which may leave it.
  OpenNew();
  EXPECT_EQ(editor.cmbRecur.Items().size(), 10U);
  EXPECT_EQ(editor.cmbMonth.Items().size(), 13U);
  editor.cmdCancel.Press();
  editor.Open(2);
  EXPECT_EQ(editor.cmbRecur.Text(), "The 2nd Tuesday");
  EXPECT_EQ(editor.cmbRecur.Items().size(), 11U);
  ASSERT_TRUE(editor.cmbRecur.Choose(8));
  ASSERT_TRUE(editor.cmdSave.Press());
  store.LoadTask(2);
  EXPECT_EQ(store.CurrentTask.every, 9);
}

TEST_F(EditorTest, ARefusalKeepsTheEntries) {
  Add("Taken", "09:00");
  OpenNew();
  editor.txtTaskName.Type("Taken");
  SaveRefused("That Task Name is already in use. Please use a different one.", &editor.txtTaskName);
  editor.txtTaskName.Type("New");
  finder.findsAll = false;
  SaveRefused("File does not exist", &editor.txt1);
  finder.findsAll = true;
  editor.txtdte[0].Type("40");
  SaveRefused("Invalid Day given for Date", &editor.txtdte[0]);
  editor.txtdte[0].Type("1");
  editor.txtdte[1].Type("13");
  SaveRefused("Invalid Month given for Date", &editor.txtdte[1]);
  editor.txtdte[2].Type("27");
  editor.txtdte[1].Type("12");
  SaveRefused("Invalid Year given for Date", &editor.txtdte[2]);
  editor.txtdte[2].Type("soon");
  SaveRefused("Invalid Date", &editor.txtdte[0]);
  editor.optMonthly.Choose();
  editor.txtmnthday.Type("x");
  SaveRefused("Invlaid Day of Month Given", &editor.txtmnthday);
  editor.txtmnthday.Type("31");
  editor.txtHour.Type("24");
  SaveRefused("Invlaid Hour given for Time", &editor.txtHour);
  editor.txtHour.Type("23");
  editor.txtMinute.Type("60");
  SaveRefused("Invalid Minute given for Time", &editor.txtMinute);
  editor.txtMinute.Type("59");
  EXPECT_EQ(editor.txtTaskName.Text(), "New");
  EXPECT_EQ(editor.txtdte[2].Text(), "soon");
  EXPECT_EQ(store.NoTasks(), 1);
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(store.NoTasks(), 2);
}

TEST_F(EditorTest, NowTodayBrowseAndEditScript) {
  const std::pair<int, const char*> offered[] = {{58, "23:59 31/12/2026"},
                                                 {59, "00:00 01/01/2027"}};
  for (const auto& [minute, next] : offered) {
    clock.Set(2026, 12, 31, 23, minute, 0);
    OpenNew();
    EXPECT_EQ(editor.txtHour.Text() + ":" + editor.txtMinute.Text() + " " + Date(), next);
  }
  clock.Set(2027, 3, 4, 5, 6, 7);
  ASSERT_TRUE(editor.cmdNow.Press());
  ASSERT_TRUE(editor.cmdToday.Press());
  EXPECT_EQ(editor.txtHour.Text() + ":" + editor.txtMinute.Text(), "05:06");
  EXPECT_EQ(Date(), "04/03/2027");
  store.DateOrderMonthFirst = 1;
  ASSERT_TRUE(editor.cmdToday.Press());
  EXPECT_EQ(Date(), "03/04/2027");

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
  editor.cmdEdit.Press();
  editor.txt1.Type("");
  editor.cmdEdit.Press();
  editor.txt1.Type("night.txt");
  editor.cmdEdit.Press();
  EXPECT_EQ(done, (Texts{"start notepad.exe C:\\a b.exe",
                         "start notepad.exe C:\\Orvanto\\scripts\\night.txt"}));
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
  editor.Open(2);
  store.DeleteTask(1);
  editor.txtTaskName.Type("Two again");
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(Names(), (Texts{"Two again"}));

  OpenNew();
  Add("Meanwhile", "09:00");
  editor.txtTaskName.Type("New");
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(Names(), (Texts{"Two again", "Meanwhile", "New"}));

  editor.Open(3);
  store.DeleteTask(3);
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(store.TaskName(3), "New");
}

TEST_F(EditorTest, ANewTaskHasNothingOfADeletedOne) {
  settings.SetStorageMode(1);
  Add("Gone", "09:00", [](TaskEntry& entry) { entry.taskType = kRunScript; });
  store.DeleteTask(1);
  OpenNew();
  EXPECT_EQ(editor.txtTaskName.Text() + editor.txt1.Text(), "");
  EXPECT_TRUE(editor.optTaskType[1].Value());
  editor.txtTaskName.Type("New");
  ASSERT_TRUE(editor.cmdSave.Press());
  EXPECT_EQ(Names(), (Texts{"New"}));
}

TEST_F(EditorTest, AFullListTakesNoTask) {
  for (int i = 1; i < kMaxTasks; ++i) Add("T" + std::to_string(i), "09:00");
  OpenNew();
  Add("The last", "09:00");
  editor.txtTaskName.Type("One too many");
  const RegistryTree before = registry.Tree();
  SaveRefused(TaskStore::kListFull);
  EXPECT_TRUE(registry.Tree() == before);
  settings.WriteSetting(kGeneral, "NoTasks", "32767");  // by no means of ours
  SaveRefused(TaskStore::kListFull);
}

}  // namespace
}  // namespace orvanto
