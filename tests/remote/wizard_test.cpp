// The task wizard, question by question.
#include <gtest/gtest.h>

#include "tests/remote/RemoteDesk.h"

namespace orvanto {
namespace {

const std::string kStep = "\r\n\r\n";  // what every step begins with
const std::string kName = "\r\nEnter Name for New Task: ";
const std::string kTime =
    "At what time would you like this task to occur?\r\n\r\nEnter in 24-hour format with a colon "
    "separating hours and minutes(xx:xx)\r\n>";
const std::string kTimeType =
    "\r\n\r\nOn which day(s) should this task occur?\r\n\r\n1) Once, on a certain date\r\n2) "
    "Recurring\r\n3) One day in every month\r\n>";
const std::string kEvery =
    "\r\n\r\nIn terms of days, when should this task recur?\r\n\r\n1) Every Day\r\n2) Every Sunday"
    "\r\n3) Every Monday\r\n4) Every Tuesday\r\n5) Every Wednesday\r\n6) Every Thursday\r\n7) "
    "Every "
    "Friday\r\n8) Every Saturday\r\n9) Every Weekday\r\n10) Every Weekend Day\r\n>";
const std::string kIn =
    "\r\n\r\nIn terms of months, when should this task recur?\r\n\r\n1) Every Month\r\n2) January"
    "\r\n3) February\r\n4) March\r\n5) April\r\n6) May\r\n7) June\r\n8) July\r\n9) August\r\n10) "
    "September\r\n11) October\r\n12) November\r\n13) December\r\n>";
const std::string kDayNo = "\r\n\r\nOn which day of the month should the task occur(1-31)?";
const std::string kType =
    "\r\n\r\nWhat type of task will this be?\r\n\r\n1) Run Automation Script\r\n2) Run "
    "Program/Shortcut/Open File\r\n3) Print File\r\n4) Reset Computer\r\n5) Shutdown "
    "Computer\r\n6) "
    "Popup Message\r\n7) Play Sound\r\n>";
const std::string kStyle =
    "\r\n\r\nSelect the Window Style\r\n\r\n1) Normal\r\n2) Minimized\r\n3) Maximized\r\n4) "
    "Normal, "
    "Without Focus\r\n5) Minimized, Without Focus\r\n6) Hidden\r\n>";
const std::string kKeep = "Keep this task(y/n)?";
const std::string kChanged = "\r\nDo you want this option changed(y/n)?";

std::string Path(int type) {
  const char* texts[] = {"",
                         "Enter the filename of the script(if the script file is not in the home "
                         "directory, it must be "
                         "preceeded by a path)",
                         "Enter the path for the program, shortcut or file you want to open",
                         "Enter the path for the file you want to print",
                         "",
                         "",
                         "",
                         "Enter the filename(if the sound file is not in the home directory, it "
                         "must be preceeded by a "
                         "path)"};
  return std::string(texts[type]) + "\r\n\r\n>";
}

struct Exchange {
  std::string line;
  std::string reply;
};

void Talk(RemoteDesk& desk, const std::vector<Exchange>& exchanges) {
  for (const Exchange& one : exchanges) EXPECT_EQ(desk.Line(one.line), one.reply) << one.line;
}

class WizardTest : public testing::Test {
 protected:
  WizardTest() {
    desk.files.contents = {{"C:\\Orvanto\\scripts\\Night.txt", ""}, {"C:\\x.exe", ""}};
    desk.Connect();
  }
  RemoteDesk desk;
};

TEST_F(WizardTest, MakesATaskOfEveryKind) {
  const std::vector<std::vector<Exchange>> times{
      {{"1", kStep + "\r\nOn which date should the task occur(dd/mm/yyyy)?"},
       {"31/12/2026", kStep + kType}},
      {{"2", kStep + kEvery}, {"9", kStep + kIn}, {"13", kStep + kType}},
      {{"3", kStep + kDayNo}, {"31", kStep + kType}}};
  const std::vector<std::vector<Exchange>> types{
      {{"1", kStep + Path(1)}, {"night.TXT", kStep + kKeep}},
      {{"2", kStep + Path(2)},
       {"C:\\X.exe",
        kStep + "Enter any optional command line parameters(press Enter for none)\r\n\r\n>"},
       {"", kStep + kStyle},
       {"6", kStep + kKeep}},
      {{"3", kStep + Path(3)}, {"c:\\x.exe", kStep + kKeep}},
      {{"4", kStep + kKeep}},
      {{"5", kStep + kKeep}},
      {{"6", kStep + "Enter the message you want to popup\r\n\r\n>"}, {"Hello", kStep + kKeep}},
      {{"7", kStep + Path(7)}, {"C:\\x.exe", kStep + kKeep}}};
  std::int16_t slot = 0;
  for (std::size_t time = 0; time < times.size(); ++time) {
    for (std::size_t type = 0; type < types.size(); ++type) {
      const std::string name = "Task " + std::to_string(++slot);
      desk.Line("1");
      Talk(desk, {{"y", kStep + kName}, {name, kStep + kTime}, {"09:30", kStep + kTimeType}});
      Talk(desk, times[time]);
      Talk(desk, types[type]);
      Talk(desk, {{"maybe", kStep + kKeep}, {"y", kStep + kMenu}});

      desk.store.LoadTask(slot);
      const TaskRecord& task = desk.store.CurrentTask;
      EXPECT_EQ(task.name, name);
      EXPECT_EQ(task.group, "General");
      EXPECT_EQ(task.timeHour + task.timeMinute, "0930");
      EXPECT_EQ(task.timeType, static_cast<int>(time) + 1);
      EXPECT_EQ(task.taskType, static_cast<int>(type) + 1);
      const std::string when = DescribeWhen(task, 0, desk.clock);
      EXPECT_EQ(when, time == 0   ? "31-12-2026"
                      : time == 1 ? "Every Weekday In December"
                                  : "Day Number: 31");
      const char* paths[] = {"night.TXT",         "C:\\X.exe", "c:\\x.exe", "Reset Computer",
                             "Shutdown Computer", "Hello",     "C:\\x.exe"};
      EXPECT_EQ(task.path, paths[type]);
      EXPECT_EQ(task.winStyle, type == 1 ? 6 : 1);
    }
  }
  EXPECT_EQ(desk.area.listChanges, slot);
}

TEST_F(WizardTest, RejectsAndAsksAgain) {
  desk.AddMessage("Taken");
  const auto no = [](const std::string& message, const std::string& question) {
    return kStep + "\r\n" + message + "\r\n" + question;
  };
  const std::string invalid = "Invalid Option";
  const std::string selected = "Invalid Option Selected";
  const std::string date = "\r\nOn which date should the task occur(mm/dd/yyyy)?";
  const std::string list = "\r\n\r\nTask List\r\n---------\r\n\r\n1) Taken\r\n";
  desk.store.DateOrderMonthFirst = 1;
  desk.Line("1");
  Talk(desk,
       {{"x", kStep + list + "\r\nCreate a new task(y/n)?"},
        {"y", kStep + kName},
        {"", no("No task name given", kName)},
        {"Taken", no("That Task Name is already in use. Please use a different one.", kName)},
        {"general", no("That Task Name is already in use. Please use a different one.", kName)},
        {"Fine", kStep + kTime},
        {"9:30", no("Invalid Time", kTime)},
        {"09.30", no("Invalid Time", kTime)},
        {"24:00", no("Invalid Hour selected for execution time", kTime)},
        {"00:60", no("Invalid Minute selected for execution time", kTime)},
        {"ab:cd", no("Invalid Time", kTime)},
        {"00:00", kStep + kTimeType},
        {"0", no(selected, kTimeType)},
        {"4", no(selected, kTimeType)},
        {"01", no(selected, kTimeType)},
        {"1", kStep + date},
        {"1/2/2026", no("Invalid Date", date)},
        {"31/12/2026", no("Invalid Month given for Date", date)},
        {"04/31/2026", no("Invalid Day given for Date", date)},
        {"2026-12-31", no("Invalid Date", date)},
        {"12/31/2026", kStep + kType},
        {"8", no(selected, kType)},
        {" 1", no(selected, kType)},
        {"1", kStep + Path(1)},
        {"none.txt", no("File does not exist", Path(1))},
        {"night.txt", kStep + kKeep},
        {"n", kStep + kMenu}});
  EXPECT_EQ(desk.store.NoTasks(), 1);
  desk.Line("1");
  Talk(desk, {{"y", kStep + kName},
              {"Fine", kStep + kTime},
              {"00:00", kStep + kTimeType},
              {"2", kStep + kEvery},
              {"11", no(invalid, kEvery)},
              {"10", kStep + kIn},
              {"14", no(invalid, kIn)},
              {"1", kStep + kType},
              {"2", kStep + Path(2)},
              {"c:\\x.exe",
               kStep + "Enter any optional command line parameters(press Enter for none)\r\n\r\n>"},
              {"-a", kStep + kStyle},
              {"7", no(selected, kStyle)},
              {"q", kMenu}});
  desk.Line("1");
  Talk(desk, {{"y", kStep + kName},
              {"Fine", kStep + kTime},
              {"00:00", kStep + kTimeType},
              {"3", kStep + kDayNo},
              {"32", no(invalid, kDayNo)},
              {"q", kMenu}});
  desk.Line("1");
  Talk(desk, {{"n", kStep + kMenu}});
  EXPECT_EQ(desk.store.NoTasks(), 1);
}

const std::string kAskName = "\r\nCurrent Task Name: Old\r\n" + kChanged;
const std::string kAskTime = "\r\nCurrent Time for Task: 08:05\r\n" + kChanged;
const std::string kAskDays =
    "\r\nCurrent Option for on what days this Task should occur:\r\n\r\nEvery Monday In January"
    "\r\n" +
    kChanged;
const std::string kAskType = "\r\nCurrent Task Type: Popup Message\r\n" + kChanged;
const std::string kKeepChanges = "Keep these changes(y/n)?";

TEST_F(WizardTest, AnEditThatChangesNothingStoresTheSame) {
  desk.AddMessage("Other");
  desk.AddMessage("Old");
  const RegistryTree before = desk.registry.Tree();
  desk.Line("4");
  Talk(desk, {{"2", kStep + kAskName},
              {"maybe", kStep + kAskName},
              {"n", kStep + kAskTime},
              {"n", kStep + kAskDays},
              {"n", kStep + kAskType},
              {"n", kStep + kKeepChanges},
              {"what", kStep + kStep + kKeepChanges},
              {"y", kStep + kStep + kMenu}});
  EXPECT_TRUE(desk.registry.Tree() == before);
}

TEST_F(WizardTest, AnEditChangesWhatItIsToldTo) {
  desk.AddMessage("Old");
  desk.Line("4");
  Talk(desk,
       {{"1", kStep + kAskName},
        {"y", kStep + kName},
        {"Old", kStep + kStep + kAskTime},
        {"y", kStep + kTime},
        {"25:00", kStep + kStep + "\r\nInvalid Hour selected for execution time\r\n" + kAskTime},
        {"y", kStep + kTime},
        {"23:59", kStep + kStep + kAskDays},
        {"y", kStep + kTimeType},
        {"3", kStep + kStep + kDayNo},
        {"15", kStep + kStep + kAskType},
        {"y", kStep + kType},
        {"6", kStep + kStep + "Enter the message you want to popup\r\n\r\n>"},
        {"New text", kStep + kStep + kKeepChanges},
        {"y", kStep + kStep + kMenu}});
  desk.store.LoadTask(1);
  EXPECT_EQ(desk.store.NoTasks(), 1);
  EXPECT_EQ(desk.store.CurrentTask.timeHour, "23");
  EXPECT_EQ(desk.store.CurrentTask.dayNo, 15);
  EXPECT_EQ(desk.store.CurrentTask.path, "New text");
  EXPECT_EQ(desk.store.CurrentTask.group, "G");
}

TEST_F(WizardTest, SlotsThatNeverWereAndListsThatChangeLoseNoTask) {
  desk.AddMessage("Old");
  for (const char* slot : {"0", "-3", "9"}) {
    desk.Line("4");
    desk.Lines({slot, "n", "n", "n", "n", "y"});
    EXPECT_EQ(desk.store.NoTasks(), 1) << slot;
    EXPECT_EQ(desk.store.TaskName(1), "Old");
  }
  desk.Line("4");
  desk.Lines({"1", "y", "Renamed"});
  desk.store.DeleteTask(1);
  desk.AddMessage("Stranger");
  desk.Lines({"n", "n", "n", "y"});
  EXPECT_EQ(desk.store.TaskName(1), "Stranger");
  EXPECT_EQ(desk.store.TaskName(2), "Renamed");
}

}  // namespace
}  // namespace orvanto
