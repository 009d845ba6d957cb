#include "remote/TaskWizard.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/modTaskOperations.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr const char* kInvalidOption = "Invalid Option";
constexpr const char* kInvalidSelection = "Invalid Option Selected";

std::string TimeTypeText(int number) {
  constexpr std::array<const char*, 3> kTexts{"Once, on a certain date", "Recurring",
                                              "One day in every month"};
  return kTexts.at(static_cast<std::size_t>(number - 1));
}

std::string TaskTypeText(int number) {
  return number == kRunProgram ? "Run Program/Shortcut/Open File" : TaskTypeName(number);
}

std::string WinStyleText(int number) {
  constexpr std::array<const char*, 6> kTexts{
      "Normal", "Minimized", "Maximized", "Normal, Without Focus", "Minimized, Without Focus",
      "Hidden"};
  return kTexts.at(static_cast<std::size_t>(number - 1));
}

std::string PathText(int taskType) {
  switch (taskType) {
    case kRunScript:
      return "Enter the filename of the script(if the script file is not in the home directory, it "
             "must be preceeded by a path)";
    case kRunProgram:
      return "Enter the path for the program, shortcut or file you want to open";
    case kPrintFile:
      return "Enter the path for the file you want to print";
    default:
      return "Enter the filename(if the sound file is not in the home directory, it must be "
             "preceeded by a path)";
  }
}

std::string DaysText(const TaskRecord& task, int dateOrderMonthFirst, const Clock& clock) {
  if (task.timeType == kTimeDayNumber) {
    return "Occurs this day in every Month: " + std::to_string(task.dayNo);
  }
  const std::string when = DescribeWhen(task, dateOrderMonthFirst, clock);
  return task.timeType == kTimeOnce ? "Occurs only on this day: " + when : when;
}

// Takes a number of a menu, to the letter; false leaves what was stored.
bool Choice(const std::string& line, int most, std::int16_t& stored) {
  for (int number = 1; number <= most; ++number) {
    if (line != std::to_string(number)) continue;
    stored = static_cast<std::int16_t>(number);
    return true;
  }
  return false;
}

}  // namespace

struct TaskWizard::Question {
  SubState state;
  int most = 0;  // the largest number that is an answer

  // What is sent: a text, one that depends on the task, or the title of a menu.
  const char* text = "";
  std::string (*textOf)(const TaskWizard&) = nullptr;
  std::string (*item)(int number) = nullptr;

  // How the answer is taken: as a number, or by a function; two answers are a step of their own.
  std::int16_t TaskEntry::*choice = nullptr;
  const char* refusal = nullptr;  // of another number
  std::string (TaskWizard::*take)(const std::string& line) = nullptr;
  void (TaskWizard::*step)(const std::string& line) = nullptr;

  // What comes next: in general, when an edit keeps what there is, or for the task as it is now.
  SubState next = SubState::Confirm;
  SubState kept = SubState::Confirm;
  SubState (*nextOf)(const TaskEntry&) = nullptr;

  // What an edit tells of the task as it was loaded; where it does, it asks first whether to change
  // that.
  std::string (*current)(const TaskWizard&) = nullptr;
};

constinit const TaskWizard::Question TaskWizard::kQuestions[] = {
    {.state = SubState::Start, .step = &TaskWizard::StepStart},
    {.state = SubState::TaskName,
     .text = "\r\nEnter Name for New Task: ",
     .take = &TaskWizard::TakeName,
     .next = SubState::Time,
     .kept = SubState::Time,
     .current = [](const TaskWizard& w) { return "Current Task Name: " + w.loaded_.name; }},
    {.state = SubState::Time,
     .text = "At what time would you like this task to occur?\r\n\r\n"
             "Enter in 24-hour format with a colon separating hours and minutes(xx:xx)\r\n>",
     .take = &TaskWizard::TakeTime,
     .next = SubState::TimeType,
     .kept = SubState::TimeType,
     .current =
         [](const TaskWizard& w) {
           return "Current Time for Task: " + w.loaded_.timeHour + ":" + w.loaded_.timeMinute;
         }},
    {.state = SubState::TimeType,
     .most = 3,
     .text = "On which day(s) should this task occur?",
     .item = TimeTypeText,
     .choice = &TaskEntry::timeType,
     .refusal = kInvalidSelection,
     .kept = SubState::TaskType,
     .nextOf =
         [](const TaskEntry& task) {
           return task.timeType == kTimeOnce        ? SubState::Date
                  : task.timeType == kTimeRecurring ? SubState::EveryDayOption
                                                    : SubState::DayNo;
         },
     .current =
         [](const TaskWizard& w) {
           return "Current Option for on what days this Task should occur:\r\n\r\n" +
                  DaysText(w.loaded_, w.store_.DateOrderMonthFirst, w.clock_);
         }},
    {.state = SubState::Date,
     .textOf =
         [](const TaskWizard& w) {
           return "\r\nOn which date should the task occur(" +
                  std::string(w.store_.DateOrderMonthFirst != 0 ? "mm/dd" : "dd/mm") + "/yyyy)?";
         },
     .take = &TaskWizard::TakeDate,
     .next = SubState::TaskType},
    {.state = SubState::EveryDayOption,
     .most = kEveryCodesThatFire,
     .text = "In terms of days, when should this task recur?",
     .item = EveryName,
     .choice = &TaskEntry::every,
     .refusal = kInvalidOption,
     .next = SubState::InMonthOption},
    {.state = SubState::InMonthOption,
     .most = kInCodes,
     .text = "In terms of months, when should this task recur?",
     .item = InName,
     .choice = &TaskEntry::in,
     .refusal = kInvalidOption,
     .next = SubState::TaskType},
    {.state = SubState::DayNo,
     .most = 31,
     .text = "\r\n\r\nOn which day of the month should the task occur(1-31)?",
     .choice = &TaskEntry::dayNo,
     .refusal = kInvalidOption,
     .next = SubState::TaskType},
    {.state = SubState::TaskType,
     .most = kTaskTypes,
     .text = "What type of task will this be?",
     .item = TaskTypeText,
     .choice = &TaskEntry::taskType,
     .refusal = kInvalidSelection,
     .kept = SubState::Confirm,
     .nextOf =
         [](const TaskEntry& task) {
           const bool plain = task.taskType == kResetComputer || task.taskType == kShutdownComputer;
           return plain                            ? SubState::Confirm
                  : task.taskType == kPopupMessage ? SubState::Cmdline
                                                   : SubState::PathString;
         },
     .current =
         [](const TaskWizard& w) {
           return "Current Task Type: " + TaskTypeName(w.loaded_.taskType);
         }},
    {.state = SubState::PathString,
     .textOf = [](const TaskWizard& w) { return PathText(w.task_.taskType) + "\r\n\r\n>"; },
     .take = &TaskWizard::TakePath,
     .nextOf =
         [](const TaskEntry& task) {
           return task.taskType == kRunProgram ? SubState::Cmdline : SubState::Confirm;
         }},
    {.state = SubState::Cmdline,
     .textOf =
         [](const TaskWizard& w) {
           return std::string(w.task_.taskType == kPopupMessage
                                  ? "Enter the message you want to popup"
                                  : "Enter any optional command line parameters(press Enter for "
                                    "none)") +
                  "\r\n\r\n>";
         },
     .take = &TaskWizard::TakeCmdline,
     .nextOf =
         [](const TaskEntry& task) {
           return task.taskType == kPopupMessage ? SubState::Confirm : SubState::WinStyle;
         }},
    {.state = SubState::WinStyle,
     .most = 6,
     .text = "Select the Window Style",
     .item = WinStyleText,
     .choice = &TaskEntry::winStyle,
     .refusal = kInvalidSelection},
    {.state = SubState::Confirm,
     .textOf =
         [](const TaskWizard& w) {
           return std::string(w.editing_ ? "Keep these changes(y/n)?" : "Keep this task(y/n)?");
         },
     .step = &TaskWizard::StepConfirm},
};

void TaskWizard::BeginNew() {
  editing_ = false;
  loaded_ = {};
  task_ = {};
  task_.group = "General";
  task_.winStyle = 1;
  subState_ = SubState::Start;
}

void TaskWizard::BeginEdit() {
  editing_ = true;
  loaded_ = store_.CurrentTask;
  task_ = EntryOf(loaded_, store_.DateOrderMonthFirst);
  conversation_.Send("\r\n\r\n");
  Ask(SubState::TaskName);
}

const TaskWizard::Question& TaskWizard::Asked() const {
  return *std::find_if(std::begin(kQuestions), std::end(kQuestions),
                       [this](const Question& each) { return each.state == subState_; });
}

void TaskWizard::Ask(SubState next) {
  subState_ = next;
  changing_ = false;
  const Question& question = Asked();
  if (!editing_ || question.current == nullptr) return Prompt(question);
  conversation_.Send(kCrLf + question.current(*this) +
                     "\r\n\r\nDo you want this option changed(y/n)?");
}

void TaskWizard::Prompt(const Question& question) {
  if (question.item == nullptr) {
    conversation_.Send(question.textOf != nullptr ? question.textOf(*this) : question.text);
    return;
  }
  for (int number = 1; number <= question.most; ++number) {
    conversation_.MenuItem(question.most, number, question.item(number), question.text);
  }
}

void TaskWizard::WizardStep(const std::string& line) {
  conversation_.Send("\r\n\r\n");
  store_.TaskValidationMessage.clear();
  const Question& question = Asked();
  if (question.step != nullptr) return (this->*question.step)(line);
  std::string refusal;
  if (question.take != nullptr) {
    refusal = (this->*question.take)(line);
  } else if (!Choice(line, question.most, task_.*(question.choice))) {
    refusal = question.refusal;
  }
  if (!refusal.empty()) {
    conversation_.Send(kCrLf + refusal + kCrLf);
    return Ask(subState_);
  }
  Ask(question.nextOf != nullptr ? question.nextOf(task_) : question.next);
}

void TaskWizard::EditStep(const std::string& line) {
  conversation_.Send("\r\n\r\n");
  const Question& question = Asked();
  if (question.current == nullptr || changing_) return WizardStep(line);
  if (line == "y") {
    changing_ = true;
    Prompt(question);
  } else {
    Ask(line == "n" ? question.kept : subState_);
  }
}

void TaskWizard::StepStart(const std::string& line) {
  if (line == "y") {
    Ask(SubState::TaskName);
  } else if (line == "n") {
    conversation_.ShowMainMenu();
  } else {
    repeatFirstQuestion();
  }
}

std::string TaskWizard::TakeName(const std::string& line) {
  const std::int16_t slot =
      editing_ ? loaded_.index : static_cast<std::int16_t>(store_.NoTasks() + 1);
  store_.ValidateTaskName(line, slot);
  if (!store_.TaskValidationMessage.empty()) return store_.TaskValidationMessage;
  if (store_.BelongsToAnother(line, slot)) return TaskStore::kSameSection;
  task_.name = line;
  return "";
}

std::string TaskWizard::TakeTime(const std::string& line) {
  if (line.size() != 5 || line[2] != ':') return "Invalid Time";
  const std::string hour = line.substr(0, 2);
  const std::string minute = line.substr(3);
  store_.ValidateTime(hour, minute);
  if (!store_.TaskValidationMessage.empty()) return store_.TaskValidationMessage;
  task_.hour = hour;
  task_.minute = minute;
  return "";
}

std::string TaskWizard::TakeDate(const std::string& line) {
  if (line.size() != 10) return "Invalid Date";
  const std::string part1 = line.substr(0, 2);
  const std::string part2 = line.substr(3, 2);
  const std::string year = line.substr(6);
  const bool monthFirst = store_.DateOrderMonthFirst != 0;
  store_.ValidateDate(monthFirst ? part2 : part1, monthFirst ? part1 : part2, year);
  if (!store_.TaskValidationMessage.empty()) return store_.TaskValidationMessage;
  task_.datePart1 = part1;
  task_.datePart2 = part2;
  task_.year = std::to_string(ToInt16Or(year, 0));
  return "";
}

// A path that is refused stays stored, too.
std::string TaskWizard::TakePath(const std::string& line) {
  task_.path = line;
  store_.CheckTaskFile(task_.taskType, line);
  return store_.TaskValidationMessage;
}

std::string TaskWizard::TakeCmdline(const std::string& line) {
  // A popup message is its task's path.
  (task_.taskType == kPopupMessage ? task_.path : task_.cmdLine) = line;
  return "";
}

void TaskWizard::StepConfirm(const std::string& line) {
  if (line != "y" && line != "n") return Ask(SubState::Confirm);
  if (line == "n") {
    // The tree is built anew in either case.
    store_.listChanged.Raise();
  } else if (store_.StoreEntry(task_, loaded_.name, TaskStore::Check::NameOnly) == 0) {
    conversation_.Send(store_.TaskValidationMessage);
    conversation_.Send(kCrLf);
  }
  conversation_.ShowMainMenu();
}

}  // namespace orvanto
