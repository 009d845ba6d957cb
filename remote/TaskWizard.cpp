#include "remote/TaskWizard.h"

#include <array>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/modTaskOperations.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

template <std::size_t N>
std::string TextOf(const std::array<const char*, N>& texts, int number) {
  return texts[static_cast<std::size_t>(number - 1)];
}

std::string TimeTypeText(int number) {
  constexpr std::array<const char*, 3> kTexts{"Once, on a certain date", "Recurring",
                                              "One day in every month"};
  return TextOf(kTexts, number);
}

std::string TaskTypeText(int number) {
  return number == kRunProgram ? "Run Program/Shortcut/Open File" : TaskTypeName(number);
}

std::string WinStyleText(int number) {
  constexpr std::array<const char*, 6> kTexts{
      "Normal", "Minimized", "Maximized", "Normal, Without Focus", "Minimized, Without Focus",
      "Hidden"};
  return TextOf(kTexts, number);
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

std::string TwoDigitsOf(const std::string& text) { return TwoDigits(ToInt16Or(text, 0)); }

constexpr int kTimeTypes = 3;
constexpr int kWinStyles = 6;

const char* PathQuestion(int taskType) {
  switch (taskType) {
    case kRunScript:
      return "Enter the filename of the script(if the script file is not in the home directory, it "
             "must be preceeded by a path)";
    case kRunProgram:
      return "Enter the path for the program, shortcut or file you want to open";
    case kPrintFile:
      return "Enter the path for the file you want to print";
    case kPlaySound:
      return "Enter the filename(if the sound file is not in the home directory, it must be "
             "preceeded by a path)";
    default:
      return nullptr;
  }
}

}  // namespace

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
  subState_ = SubState::Start;
}

void TaskWizard::PromptMenu(const std::string& title, int count, std::string (*textOf)(int)) {
  for (int number = 1; number <= count; ++number) {
    conversation_.MenuItem(count, number, textOf(number), title);
  }
}

void TaskWizard::Prompt(SubState question) {
  const auto send = [&](std::initializer_list<const char*> pieces) {
    for (const char* piece : pieces) conversation_.Send(piece);
  };
  mode_ = question == SubState::Confirm ? mode_ : AnswerMode::Plain;
  switch (question) {
    case SubState::Start:
      break;
    case SubState::TaskName:
      send({kCrLf, "Enter Name for New Task: "});
      break;
    case SubState::Time:
      send({"At what time would you like this task to occur?", kCrLf, kCrLf,
            "Enter in 24-hour format with a colon separating hours and minutes(xx:xx)", kCrLf,
            ">"});
      break;
    case SubState::TimeType:
      PromptMenu("On which day(s) should this task occur?", kTimeTypes, TimeTypeText);
      break;
    case SubState::Date:
      send({kCrLf, store_.DateOrderMonthFirst != 0
                       ? "On which date should the task occur(mm/dd/yyyy)?"
                       : "On which date should the task occur(dd/mm/yyyy)?"});
      break;
    case SubState::EveryDayOption:
      PromptMenu("In terms of days, when should this task recur?", kEveryCodesThatFire, EveryName);
      break;
    case SubState::InMonthOption:
      PromptMenu("In terms of months, when should this task recur?", kInCodes, InName);
      break;
    case SubState::DayNo:
      send({kCrLf, kCrLf, "On which day of the month should the task occur(1-31)?"});
      break;
    case SubState::TaskType:
      PromptMenu("What type of task will this be?", kTaskTypes, TaskTypeText);
      break;
    case SubState::PathString:
      if (const char* text = PathQuestion(task_.taskType)) send({text, kCrLf, kCrLf, ">"});
      break;
    case SubState::Cmdline:
      send({task_.taskType == kPopupMessage
                ? "Enter the message you want to popup"
                : "Enter any optional command line parameters(press Enter for none)",
            kCrLf, kCrLf, ">"});
      break;
    case SubState::WinStyle:
      PromptMenu("Select the Window Style", kWinStyles, WinStyleText);
      break;
    case SubState::Confirm:
      send({"Keep this task(y/n)?"});
      break;
  }
}

void TaskWizard::PromptChange(SubState question) {
  const auto send = [&](std::initializer_list<std::string> pieces) {
    for (const std::string& piece : pieces) conversation_.Send(piece);
  };
  switch (question) {
    case SubState::TaskName:
      send({kCrLf, "Current Task Name: " + loaded_.name, kCrLf});
      break;
    case SubState::Time:
      send({kCrLf, "Current Time for Task: " + loaded_.timeHour + ":" + loaded_.timeMinute, kCrLf});
      break;
    case SubState::TimeType: {
      const std::string when = DescribeWhen(loaded_, store_.DateOrderMonthFirst, clock_);
      const std::string line =
          loaded_.timeType == kTimeOnce ? "Occurs only on this day: " + when
          : loaded_.timeType == kTimeDayNumber
              ? "Occurs this day in every Month: " + std::to_string(loaded_.dayNo)
              : when;
      send({kCrLf, "Current Option for on what days this Task should occur:", kCrLf, kCrLf, line,
            kCrLf});
      break;
    }
    case SubState::TaskType:
      send({kCrLf, "Current Task Type: ", TaskTypeName(loaded_.taskType), kCrLf});
      break;
    default:
      send({"Keep these changes(y/n)?"});
      return;
  }
  send({kCrLf, "Do you want this option changed(y/n)?"});
  mode_ = AnswerMode::AskedWhetherChanged;
}

void TaskWizard::Ask(SubState next) {
  subState_ = next;
  const bool firstLevel = next == SubState::TaskName || next == SubState::Time ||
                          next == SubState::TimeType || next == SubState::TaskType ||
                          next == SubState::Confirm;
  if (editing_ && firstLevel) {
    PromptChange(next);
  } else {
    Prompt(next);
  }
}

void TaskWizard::Reject(const std::string& message) {
  conversation_.Send(kCrLf);
  conversation_.Send(message);
  conversation_.Send(kCrLf);
  Ask(subState_);
}

void TaskWizard::StepChoice(const std::string& line, int most, std::int16_t& stored, SubState next,
                            const char* message) {
  if (Choice(line, most, stored)) {
    Ask(next);
  } else {
    Reject(message);
  }
}

void TaskWizard::WizardStep(const std::string& line) {
  conversation_.Send(kCrLf);
  conversation_.Send(kCrLf);
  store_.TaskValidationMessage.clear();
  constexpr const char* kInvalidOption = "Invalid Option";
  switch (subState_) {
    case SubState::Start:
      return StepStart(line);
    case SubState::TaskName:
      return StepName(line);
    case SubState::Time:
      return StepTime(line);
    case SubState::TimeType:
      return StepTimeType(line);
    case SubState::Date:
      return StepDate(line);
    case SubState::EveryDayOption:
      return StepChoice(line, kEveryCodesThatFire, task_.every, SubState::InMonthOption,
                        kInvalidOption);
    case SubState::InMonthOption:
      return StepChoice(line, kInCodes, task_.in, SubState::TaskType, kInvalidOption);
    case SubState::DayNo:
      return StepChoice(line, 31, task_.dayNo, SubState::TaskType, kInvalidOption);
    case SubState::TaskType:
      return StepTaskType(line);
    case SubState::PathString:
      return StepPath(line);
    case SubState::Cmdline:
      // A popup message is its task's path.
      (task_.taskType == kPopupMessage ? task_.path : task_.cmdLine) = line;
      return Ask(task_.taskType == kPopupMessage ? SubState::Confirm : SubState::WinStyle);
    case SubState::WinStyle:
      return StepChoice(line, kWinStyles, task_.winStyle, SubState::Confirm,
                        "Invalid Option Selected");
    case SubState::Confirm:
      return StepConfirm(line);
  }
}

void TaskWizard::StepStart(const std::string& line) {
  if (line == "y") {
    task_.name.clear();
    task_.path.clear();
    task_.cmdLine.clear();
    Ask(SubState::TaskName);
  } else if (line == "n") {
    conversation_.ShowMainMenu();
  } else {
    repeatFirstQuestion();
  }
}

void TaskWizard::StepName(const std::string& line) {
  const std::int16_t slot =
      editing_ ? loaded_.index : static_cast<std::int16_t>(store_.NoTasks() + 1);
  store_.ValidateTaskName(line, slot);
  if (!store_.TaskValidationMessage.empty()) return Reject(store_.TaskValidationMessage);
  task_.name = line;
  task_.index = slot;
  Ask(SubState::Time);
}

void TaskWizard::StepTime(const std::string& line) {
  if (line.size() != 5 || line[2] != ':') return Reject("Invalid Time");
  const std::string hour = line.substr(0, 2);
  const std::string minute = line.substr(3);
  store_.ValidateTime(hour, minute);
  if (!store_.TaskValidationMessage.empty()) return Reject(store_.TaskValidationMessage);
  task_.hour = TwoDigitsOf(hour);
  task_.minute = TwoDigitsOf(minute);
  Ask(SubState::TimeType);
}

void TaskWizard::StepTimeType(const std::string& line) {
  if (!Choice(line, kTimeTypes, task_.timeType)) return Reject("Invalid Option Selected");
  Ask(task_.timeType == kTimeOnce        ? SubState::Date
      : task_.timeType == kTimeRecurring ? SubState::EveryDayOption
                                         : SubState::DayNo);
}

void TaskWizard::StepDate(const std::string& line) {
  if (line.size() != 10) return Reject("Invalid Date");
  const bool monthFirst = store_.DateOrderMonthFirst != 0;
  const std::string day = line.substr(monthFirst ? 3 : 0, 2);
  const std::string month = line.substr(monthFirst ? 0 : 3, 2);
  const std::string year = line.substr(6);
  store_.ValidateDate(day, month, year);
  if (!store_.TaskValidationMessage.empty()) return Reject(store_.TaskValidationMessage);
  SetDate(day, month, year);
  Ask(SubState::TaskType);
}

void TaskWizard::StepTaskType(const std::string& line) {
  if (!Choice(line, kTaskTypes, task_.taskType)) return Reject("Invalid Option Selected");
  switch (task_.taskType) {
    case kResetComputer:
    case kShutdownComputer:
      return Ask(SubState::Confirm);
    case kPopupMessage:
      return Ask(SubState::Cmdline);
    default:
      return Ask(SubState::PathString);
  }
}

void TaskWizard::StepPath(const std::string& line) {
  task_.path = line;
  store_.CheckTaskFile(task_.taskType, line);
  if (!store_.TaskValidationMessage.empty()) return Reject(store_.TaskValidationMessage);
  Ask(task_.taskType == kRunProgram ? SubState::Cmdline : SubState::Confirm);
}

void TaskWizard::StepConfirm(const std::string& line) {
  if (line != "y" && line != "n") return Ask(SubState::Confirm);
  if (line == "y" && store_.StoreEntry(task_, loaded_.name, TaskStore::Check::NameOnly) == 0) {
    conversation_.Send(store_.TaskValidationMessage);
    conversation_.Send(kCrLf);
  }
  if (onFinished) onFinished();
  conversation_.ShowMainMenu();
}

void TaskWizard::SetDate(const std::string& day, const std::string& month,
                         const std::string& year) {
  const bool monthFirst = store_.DateOrderMonthFirst != 0;
  task_.datePart1 = TwoDigitsOf(monthFirst ? month : day);
  task_.datePart2 = TwoDigitsOf(monthFirst ? day : month);
  task_.year = std::to_string(ToInt16Or(year, 0));
}

void TaskWizard::TakeLoaded() {
  task_.name = loaded_.name;
  task_.index = loaded_.index;
  task_.group = loaded_.group;
  task_.timeType = loaded_.timeType;
  task_.hour = TwoDigitsOf(loaded_.timeHour);
  task_.minute = TwoDigitsOf(loaded_.timeMinute);
  SetDate(loaded_.dateDay, loaded_.dateMonth, loaded_.dateYear);
  task_.every = loaded_.every;
  task_.in = loaded_.in;
  task_.dayNo = loaded_.dayNo;
  task_.taskType = loaded_.taskType;
  task_.winStyle = loaded_.winStyle;
  task_.path = loaded_.path;
  task_.cmdLine = loaded_.cmdLine;
}

void TaskWizard::EditStep(const std::string& line) {
  conversation_.Send(kCrLf);
  conversation_.Send(kCrLf);
  switch (subState_) {
    case SubState::Start:
      TakeLoaded();
      subState_ = SubState::TaskName;
      return PromptChange(subState_);
    case SubState::TaskName:
    case SubState::Time:
    case SubState::TimeType:
    case SubState::TaskType:
      break;
    default:
      return WizardStep(line);
  }
  if (mode_ == AnswerMode::AnsweringChange) return WizardStep(line);
  if (mode_ == AnswerMode::AskedWhetherChanged && line == "y") {
    Prompt(subState_);
    mode_ = AnswerMode::AnsweringChange;
  } else if (mode_ == AnswerMode::AskedWhetherChanged && line == "n") {
    KeepField();
  } else {
    PromptChange(subState_);
  }
}

void TaskWizard::KeepField() {
  switch (subState_) {
    case SubState::TaskName:
      return Ask(SubState::Time);
    case SubState::Time:
      return Ask(SubState::TimeType);
    case SubState::TimeType:
      return Ask(SubState::TaskType);
    default:
      return Ask(SubState::Confirm);
  }
}

}  // namespace orvanto
