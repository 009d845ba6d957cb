// Making and changing a task by question and answer.
#pragma once

#include <functional>
#include <string>

#include "core/TaskRecord.h"
#include "remote/Remote.h"

namespace orvanto {

class Clock;
class TaskStore;

class TaskWizard {
 public:
  TaskWizard(Conversation& conversation, TaskStore& store, const Clock& clock)
      : conversation_(conversation), store_(store), clock_(clock) {}

  // A new task; its first question has been asked by the menu.
  void BeginNew();
  // The store's CurrentTask, which is loaded; asks the first question.
  void BeginEdit();

  // A complete line in the state NewTask, and in EditTask.
  void WizardStep(const std::string& line);
  void EditStep(const std::string& line);

  // The list of tasks and the first question, again.
  std::function<void()> repeatFirstQuestion;

 private:
  enum class SubState {
    Start,
    TaskName,
    Time,
    TimeType,
    Date,
    EveryDayOption,
    InMonthOption,
    DayNo,
    TaskType,
    PathString,
    Cmdline,
    WinStyle,
    Confirm,
  };
  struct Question;
  static const Question kQuestions[];

  const Question& Asked() const;  // of the present sub-state
  void Ask(SubState next);
  void Prompt(const Question& question);

  // Put the answer into the task and return nothing, or why it is refused.
  std::string TakeName(const std::string& line);
  std::string TakeTime(const std::string& line);
  std::string TakeDate(const std::string& line);
  std::string TakePath(const std::string& line);
  std::string TakeCmdline(const std::string& line);
  // The first answer and the last one.
  void StepStart(const std::string& line);
  void StepConfirm(const std::string& line);

  Conversation& conversation_;
  TaskStore& store_;
  const Clock& clock_;
  SubState subState_ = SubState::Start;
  bool editing_ = false;
  bool changing_ = false;  // an edit's client wants another value, and is asked for it

  TaskEntry task_;     // the working task, filled field by field
  TaskRecord loaded_;  // of an edit; empty for a new task
};

}  // namespace orvanto
