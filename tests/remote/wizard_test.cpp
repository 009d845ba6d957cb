// The task wizard, question by question and byte for byte.
#include "tests/remote/RemoteDesk.h"

namespace orvanto {
namespace {

const std::string kStep = "\r\n\r\n";  // what every step begins with
const std::string kChanged = "\r\n\r\nDo you want this option changed(y/n)?";

class WizardTest : public testing::Test, public RemoteDesk {
 protected:
  WizardTest() {
    files.contents = {{"C:\\Orvanto\\scripts\\Night.txt", ""}, {"C:\\x.exe", ""}};
    Connect();
  }
  // What the last of the lines brings, after the step's beginning.
  std::string Talk(const std::string& lines) {
    const std::string reply = Lines(lines);
    return reply.starts_with(kStep) ? reply.substr(kStep.size()) : "no step: " + reply;
  }
};

TEST_F(WizardTest, AsksAndRejectsAndAsksAgain) {
  AddMessages({"Taken"});
  store.DateOrderMonthFirst = 1;
  EXPECT_EQ(Talk("1|Y"),
            "\r\n\r\nTask List\r\n---------\r\n\r\n1) Taken\r\n"
            "\r\nCreate a new task(y/n)?");
  EXPECT_EQ(Talk("y"), "\r\nEnter Name for New Task: ");
  EXPECT_EQ(Talk("A|00:00"),
            "\r\n\r\nOn which day(s) should this task occur?\r\n\r\n1) Once, on a certain date\r\n"
            "2) Recurring\r\n3) One day in every month\r\n>");
  Line("q");
  const char* const kSelected = "Invalid Option Selected";
  const char* const kInvalid = "Invalid Option";
  const char* const kNoFile = "File does not exist";
  // What leads to a question, a piece of it, an answer that it does not take, and what is said
  // before it comes again.
  const std::array<const char*, 4> cases[] = {
      {"", "Name", "", "No task name given"},
      {"", "Name", "TAKEN", TaskStore::kSameSection},
      {"|A", "24-hour", "09.30", "Invalid Time"},
      {"|A", "(xx:xx)", "12:3", "Invalid Time"},
      {"|A", "(xx:xx)", "00:60", "Invalid Minute selected for execution time"},
      {"|A|00:00", "3) One", "01", kSelected},
      {"|A|00:00|1", "(mm/dd/yyyy)", "12/31/26", "Invalid Date"},
      {"|A|00:00|1", "(mm/dd/yyyy)", "31/12/2026", "Invalid Month given for Date"},
      {"|A|00:00|2", "10) Every Weekend Day\r\n>", "11", kInvalid},
      {"|A|00:00|2|10", "13) December\r\n>", "14", kInvalid},
      {"|A|00:00|3", "(1-31)", "32", kInvalid},
      {"|A|00:00|1|12/31/2026", "2) Run Program/Shortcut/Open File", "8", kSelected},
      {"|A|00:00|3|1|1", "script file is not in the home directory", "none.txt", kNoFile},
      {"|A|00:00|3|1|2", "program, shortcut or file", "", kNoFile},
      {"|A|00:00|3|1|3", "print", "z", kNoFile},
      {"|A|00:00|3|1|7", "it must be preceeded by a path)", "none.wav", kNoFile},
      {"|A|00:00|3|1|2|c:\\x.exe|", "6) Hidden\r\n>", "7", kSelected}};
  for (const auto& [answers, piece, refused, message] : cases) {
    const std::string question = Talk(std::string("1|y") + answers);
    EXPECT_NE(question.find(piece), std::string::npos) << question;
    EXPECT_EQ(Talk(refused), "\r\n" + std::string(message) + "\r\n" + question) << refused;
    Line("q");
  }
  EXPECT_TRUE(Talk("1|y|A|00:00|3|1|6").starts_with("Enter the message"));
  store.DateOrderMonthFirst = 0;
  EXPECT_TRUE(Talk("q|1|y|A|00:00|1").ends_with("(dd/mm/yyyy)?"));
  EXPECT_EQ(Talk("q|1|y|A|00:00|3|1|4|maybe"), "Keep this task(y/n)?");
  for (const char* lines : {"n", "1|n"}) EXPECT_EQ(Talk(lines), kMenu);
  EXPECT_EQ(store.NoTasks(), 1);
}

TEST_F(WizardTest, MakesATaskOfEveryKind) {
  const std::pair<std::string, std::string> times[] = {{"1|31/12/2026", "31-12-2026"},
                                                       {"2|9|13", "Every Weekday In December"},
                                                       {"3|31", "Day Number: 31"}};
  const std::array<std::string, 3> types[] = {{"1|night.TXT", "Run Script", "night.TXT  1"},
                                              {"2|C:\\X.exe|-a|6", "Run", "C:\\X.exe -a 6"},
                                              {"3|c:\\x.exe", "Print File", "c:\\x.exe  1"},
                                              {"4", "Reset Computer", "Reset Computer  1"},
                                              {"5", "Shutdown Computer", "Shutdown Computer  1"},
                                              {"6|Hello", "Popup Message", "Hello  1"},
                                              {"7|C:\\x.exe", "Play Sound", "C:\\x.exe  1"}};
  std::int16_t slot = 0;
  for (const auto& [time, when] : times) {
    for (const auto& [answers, type, what] : types) {
      const std::string name = "Task " + std::to_string(++slot);
      EXPECT_EQ(Talk("1|y|" + name + "|09:30|" + time + "|" + answers + "|y"), kMenu);
      EXPECT_EQ(Told(slot), name + " | " + type + " | 09:30 on " + when + ", " + what + " General");
    }
  }
}

TEST_F(WizardTest, AnEditThatChangesNothingStoresTheSame) {
  AddMessages({"Old"});
  EXPECT_EQ(Talk("1|y|Date|23:59|1|31/12/2026|2|c:\\x.exe|-a|2|y"), kMenu);
  EXPECT_EQ(Talk("1|y|N|08:05|3|7|5|y"), kMenu);
  const RegistryTree before = registry.Tree();
  const std::string days = "\r\nCurrent Option for on what days this Task should occur:\r\n\r\n";
  const std::string name = "\r\nCurrent Task Name: ";
  const std::pair<const char*, std::string> talk[] = {
      {"4|1", name + "Old" + kChanged},
      {"maybe", name + "Old" + kChanged},
      {"n", "\r\nCurrent Time for Task: 08:05" + kChanged},
      {"n", days + "Every Day In Every Month" + kChanged},
      {"n", "\r\nCurrent Task Type: Popup Message" + kChanged},
      {"n", "Keep these changes(y/n)?"},
      {"what", kStep + "Keep these changes(y/n)?"},
      {"y", kStep + kMenu}};
  for (const auto& [answer, reply] : talk) EXPECT_EQ(Talk(answer), reply) << answer;
  EXPECT_EQ(Talk("4|2|n|n"), days + "Occurs only on this day: 31-12-2026" + kChanged);
  EXPECT_EQ(Talk("n|n|y"), kStep + kMenu);
  EXPECT_EQ(Talk("4|3|n|n"), days + "Occurs this day in every Month: 7" + kChanged);
  EXPECT_EQ(Talk("n|n|y"), kStep + kMenu);
  // A slot that is none is edited as well, and cannot be kept.
  EXPECT_EQ(Talk("4|9"), name + kChanged);
  EXPECT_EQ(Talk("n|n|n|n|y"), kStep + "No task name given\r\n" + kMenu);
  EXPECT_TRUE(registry.Tree() == before);
}

TEST_F(WizardTest, AnEditChangesWhatItIsToldTo) {
  AddMessages({"Old"});
  EXPECT_EQ(Talk("4|1|y"), "\r\nEnter Name for New Task: ");
  const std::string time = "\r\nCurrent Time for Task: 08:05" + kChanged;
  EXPECT_EQ(Talk("Old"), kStep + time);
  EXPECT_EQ(Talk("y|24:00"), kStep + "\r\nInvalid Hour selected for execution time\r\n" + time);
  EXPECT_EQ(Talk("n|y|3|15"), kStep + "\r\nCurrent Task Type: Popup Message" + kChanged);
  EXPECT_EQ(Talk("y|6|New text|y"), kStep + kMenu);
  EXPECT_EQ(Told(1), "Old | Popup Message | 08:05 on Day Number: 15, New text  1 G");
  // A new task has nothing to do with it.
  EXPECT_EQ(Talk("1|y|New|00:00|3|1|5"), "Keep this task(y/n)?");
  EXPECT_EQ(Talk("y"), kMenu);
  EXPECT_EQ(Names(), (Texts{"Old", "New"}));
}

}  // namespace
}  // namespace orvanto
