// The task wizard, question by question and byte for byte.
#include <gtest/gtest.h>

#include "tests/remote/RemoteDesk.h"

namespace orvanto {
namespace {

std::string Menu(const std::string& title, const Texts& choices) {
  std::string text = "\r\n\r\n" + title + "\r\n";
  for (std::size_t i = 0; i < choices.size(); ++i) {
    text += "\r\n" + std::to_string(i + 1) + ") " + choices[i];
  }
  return text + "\r\n>";
}

const std::string kStep = "\r\n\r\n";  // what every step begins with
const std::string kName = "\r\nEnter Name for New Task: ";
const std::string kTime =
    "At what time would you like this task to occur?\r\n\r\nEnter in 24-hour format with a colon "
    "separating hours and minutes(xx:xx)\r\n>";
const std::string kTimeType =
    Menu("On which day(s) should this task occur?",
         {"Once, on a certain date", "Recurring", "One day in every month"});
const std::string kEvery = Menu(
    "In terms of days, when should this task recur?",
    {"Every Day", "Every Sunday", "Every Monday", "Every Tuesday", "Every Wednesday",
     "Every Thursday", "Every Friday", "Every Saturday", "Every Weekday", "Every Weekend Day"});
const std::string kIn = Menu("In terms of months, when should this task recur?",
                             {"Every Month", "January", "February", "March", "April", "May", "June",
                              "July", "August", "September", "October", "November", "December"});
const std::string kDayNo = "\r\n\r\nOn which day of the month should the task occur(1-31)?";
const std::string kType =
    Menu("What type of task will this be?",
         {"Run Automation Script", "Run Program/Shortcut/Open File", "Print File", "Reset Computer",
          "Shutdown Computer", "Popup Message", "Play Sound"});
const std::string kStyle =
    Menu("Select the Window Style", {"Normal", "Minimized", "Maximized", "Normal, Without Focus",
                                     "Minimized, Without Focus", "Hidden"});
const std::string kScript =
    "Enter the filename of the script(if the script file is not in the home directory, it must be "
    "preceeded by a path)\r\n\r\n>";
const std::string kProgram =
    "Enter the path for the program, shortcut or file you want to open\r\n\r\n>";
const std::string kParameters =
    "Enter any optional command line parameters(press Enter for none)\r\n\r\n>";
const std::string kFile = "Enter the path for the file you want to print\r\n\r\n>";
const std::string kMessage = "Enter the message you want to popup\r\n\r\n>";
const std::string kSound =
    "Enter the filename(if the sound file is not in the home directory, it must be preceeded by a "
    "path)\r\n\r\n>";
const std::string kKeep = "Keep this task(y/n)?";

struct Exchange {
  std::string line;
  std::string reply;  // behind the step's beginning
};
using Exchanges = std::vector<Exchange>;

class WizardTest : public testing::Test, public RemoteDesk {
 protected:
  WizardTest() {
    files.contents = {{"C:\\Orvanto\\scripts\\Night.txt", ""}, {"C:\\x.exe", ""}};
    Connect();
  }
  void Talk(const Exchanges& exchanges) {
    for (const Exchange& one : exchanges) EXPECT_EQ(Line(one.line), kStep + one.reply) << one.line;
  }
};

TEST_F(WizardTest, MakesATaskOfEveryKind) {
  const struct {
    Exchanges talk;
    const char* when;
  } times[] = {
      {{{"1", "\r\nOn which date should the task occur(dd/mm/yyyy)?"}, {"31/12/2026", kType}},
       "31-12-2026"},
      {{{"2", kEvery}, {"9", kIn}, {"13", kType}}, "Every Weekday In December"},
      {{{"3", kDayNo}, {"31", kType}}, "Day Number: 31"}};
  const struct {
    Exchanges talk;
    const char* path;
  } types[] = {
      {{{"1", kScript}, {"night.TXT", kKeep}}, "night.TXT"},
      {{{"2", kProgram}, {"C:\\X.exe", kParameters}, {"-a", kStyle}, {"6", kKeep}}, "C:\\X.exe"},
      {{{"3", kFile}, {"c:\\x.exe", kKeep}}, "c:\\x.exe"},
      {{{"4", kKeep}}, "Reset Computer"},
      {{{"5", kKeep}}, "Shutdown Computer"},
      {{{"6", kMessage}, {"Hello", kKeep}}, "Hello"},
      {{{"7", kSound}, {"C:\\x.exe", kKeep}}, "C:\\x.exe"}};
  std::int16_t slot = 0;
  for (const auto& time : times) {
    for (const auto& type : types) {
      const std::string name = "Task " + std::to_string(++slot);
      Line("1");
      Talk({{"y", kName}, {name, kTime}, {"09:30", kTimeType}});
      Talk(time.talk);
      Talk(type.talk);
      Talk({{"maybe", kKeep}, {"y", kMenu}});

      store.LoadTask(slot);
      const TaskRecord& task = store.CurrentTask;
      EXPECT_EQ(task.name, name);
      EXPECT_EQ(task.group, "General");
      EXPECT_EQ(task.timeHour + task.timeMinute, "0930");
      EXPECT_EQ(task.taskType, &type - types + 1);
      EXPECT_EQ(DescribeWhen(task, 0, clock), time.when);
      EXPECT_EQ(task.path, type.path);
      EXPECT_EQ(task.cmdLine, task.taskType == kRunProgram ? "-a" : "") << name;
      EXPECT_EQ(task.winStyle, task.taskType == kRunProgram ? 6 : 1);
    }
  }
  EXPECT_EQ(area.listChanges, slot);
}

TEST_F(WizardTest, RejectsAndAsksAgain) {
  AddMessages({"Taken"});
  const auto no = [](const std::string& message, const std::string& question) {
    return "\r\n" + message + "\r\n" + question;
  };
  const std::string inUse = "That Task Name is already in use. Please use a different one.";
  const std::string invalid = "Invalid Option";
  const std::string selected = "Invalid Option Selected";
  const std::string date = "\r\nOn which date should the task occur(mm/dd/yyyy)?";
  const Exchanges begin = {{"y", kName}, {"Fine", kTime}, {"00:00", kTimeType}};
  store.DateOrderMonthFirst = 1;
  Line("1");
  Talk({{"x", "\r\n\r\nTask List\r\n---------\r\n\r\n1) Taken\r\n\r\nCreate a new task(y/n)?"},
        {"y", kName},
        {"", no("No task name given", kName)},
        {"Taken", no(inUse, kName)},
        {"general", no(inUse, kName)},
        {"TAKEN", no(TaskStore::kSameSection, kName)},
        {"Fine", kTime},
        {"9:30", no("Invalid Time", kTime)},
        {"09.30", no("Invalid Time", kTime)},
        {"09:300", no("Invalid Time", kTime)},
        {"24:00", no("Invalid Hour selected for execution time", kTime)},
        {"00:60", no("Invalid Minute selected for execution time", kTime)},
        {"ab:cd", no("Invalid Time", kTime)},
        {"00:00", kTimeType},
        {"0", no(selected, kTimeType)},
        {"4", no(selected, kTimeType)},
        {"01", no(selected, kTimeType)},
        {"1", date},
        {"1/2/2026", no("Invalid Date", date)},
        {"31/12/2026", no("Invalid Month given for Date", date)},
        {"04/31/2026", no("Invalid Day given for Date", date)},
        {"2026-12-31", no("Invalid Date", date)},
        {"12/31/2026", kType},
        {"8", no(selected, kType)},
        {" 1", no(selected, kType)},
        {"1", kScript},
        {"none.txt", no("File does not exist", kScript)},
        {"night.txt", kKeep},
        {"n", kMenu}});
  Line("1");
  Talk(begin);
  Talk({{"2", kEvery},
        {"11", no(invalid, kEvery)},
        {"10", kIn},
        {"14", no(invalid, kIn)},
        {"1", kType},
        {"2", kProgram},
        {"c:\\x.exe", kParameters},
        {"-a", kStyle},
        {"7", no(selected, kStyle)}});
  EXPECT_EQ(Line("q"), kMenu);
  Line("1");
  Talk(begin);
  Talk({{"3", kDayNo}, {"32", no(invalid, kDayNo)}});
  EXPECT_EQ(Line("q"), kMenu);
  Line("1");
  Talk({{"n", kMenu}});
  EXPECT_EQ(store.NoTasks(), 1);
}

const std::string kChanged = "\r\nDo you want this option changed(y/n)?";
const std::string kAskName = "\r\nCurrent Task Name: Old\r\n" + kChanged;
const std::string kAskTime = "\r\nCurrent Time for Task: 08:05\r\n" + kChanged;
const std::string kAskDays =
    "\r\nCurrent Option for on what days this Task should occur:\r\n\r\nEvery Monday In January"
    "\r\n" +
    kChanged;
const std::string kAskType = "\r\nCurrent Task Type: Popup Message\r\n" + kChanged;
const std::string kKeepChanges = "Keep these changes(y/n)?";

TEST_F(WizardTest, AnEditThatChangesNothingStoresTheSame) {
  AddMessages({"Other", "Old"});
  const RegistryTree before = registry.Tree();
  Line("4");
  Talk({{"2", kAskName},
        {"maybe", kAskName},
        {"n", kAskTime},
        {"n", kAskDays},
        {"n", kAskType},
        {"n", kKeepChanges},
        {"what", kStep + kKeepChanges},
        {"y", kStep + kMenu}});
  EXPECT_TRUE(registry.Tree() == before);
}

TEST_F(WizardTest, AnEditChangesWhatItIsToldTo) {
  AddMessages({"Old"});
  Line("4");
  Talk({{"1", kAskName},
        {"y", kName},
        {"Old", kStep + kAskTime},
        {"y", kTime},
        {"25:00", kStep + "\r\nInvalid Hour selected for execution time\r\n" + kAskTime},
        {"y", kTime},
        {"23:59", kStep + kAskDays},
        {"y", kTimeType},
        {"3", kStep + kDayNo},
        {"15", kStep + kAskType},
        {"y", kType},
        {"6", kStep + kMessage},
        {"New text", kStep + kKeepChanges},
        {"y", kStep + kMenu}});
  EXPECT_EQ(sched.DescribeTask(1), "Old | Popup Message | 23:59 on Day Number: 15");
  EXPECT_EQ(store.CurrentTask.path, "New text");
  EXPECT_EQ(store.CurrentTask.group, "G");
  EXPECT_EQ(store.NoTasks(), 1);
}

TEST_F(WizardTest, AnEditTellsOfEveryKindOfDay) {
  Add("Date", "08:05", [](TaskEntry& entry) {
    entry.timeType = kTimeOnce;
    entry.datePart1 = "31";
    entry.datePart2 = "12";
    entry.year = "2026";
  });
  Add("Number", "08:05", [](TaskEntry& entry) {
    entry.timeType = kTimeDayNumber;
    entry.dayNo = 7;
  });
  const std::pair<const char*, const char*> tasks[] = {{"1", "Occurs only on this day: 31-12-2026"},
                                                       {"2", "Occurs this day in every Month: 7"}};
  for (const auto& [slot, text] : tasks) {
    Line("4");
    EXPECT_NE(Lines({slot, "n", "n"}).find("\r\n\r\n" + std::string(text) + "\r\n\r\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(Line("q"), kMenu);
  }
}

TEST_F(WizardTest, AMessageWithoutEndIsCutAndAFullListStaysAsItIs) {
  Line("1");
  Lines({"y", "Long", "00:00", "3", "1", "6"});
  const std::string chunk(16384, 'x');
  for (int i = 0; i < 10; ++i) socket.PeerSends(chunk);
  Lines({"", "y"});
  store.LoadTask(1);
  EXPECT_EQ(store.CurrentTask.path.size(), 64U << 10);

  Line("1");
  Lines({"y", "Too many", "00:00", "3", "1", "5"});
  for (int i = 2; i <= kMaxTasks; ++i) AddMessages({"Task " + std::to_string(i)});
  EXPECT_EQ(Line("y"), kStep + TaskStore::kListFull + "\r\n" + kMenu);
  EXPECT_EQ(store.NoTasks(), kMaxTasks);
}

TEST_F(WizardTest, SlotsThatNeverWereAndListsThatChangeLoseNoTask) {
  AddMessages({"Old"});
  for (const char* slot : {"0", "-3", "9"}) {
    Line("4");
    Lines({slot, "n", "n", "n", "n", "y"});
    EXPECT_EQ(Names(), (Texts{"Old"})) << slot;
  }
  Line("4");
  Lines({"1", "y", "Renamed"});
  store.DeleteTask(1);
  AddMessages({"Stranger"});
  Lines({"n", "n", "n", "y"});
  EXPECT_EQ(Names(), (Texts{"Stranger", "Renamed"}));
}

}  // namespace
}  // namespace orvanto
