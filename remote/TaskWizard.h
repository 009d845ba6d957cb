// Making and changing a task by question and answer.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/TaskRecord.h"
#include "remote/Remote.h"

namespace orvanto {

class Clock;
class TaskStore;

class TaskWizard {
 public:
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

  TaskWizard(Conversation& conversation, TaskStore& store, const Clock& clock)
      : conversation_(conversation), store_(store), clock_(clock) {}

  // Sets the sub-state to Start; the questions come with the first step.
  void BeginNew();
  void BeginEdit();

  // A complete line in the state NewTask, and in EditTask; EditStep is also called once, with an
  // empty line, when an edit begins: CurrentTask of the store is loaded then.
  void WizardStep(const std::string& line);
  void EditStep(const std::string& line);

  // The list of tasks and the first question, again.
  std::function<void()> repeatFirstQuestion;
  // The list has changed, or may have.
  std::function<void()> onFinished;

 private:
  enum class AnswerMode { Plain, AskedWhetherChanged, AnsweringChange };

  void Prompt(SubState question);
  void PromptChange(SubState question);
  void PromptMenu(const std::string& title, int count, std::string (*textOf)(int));
  void Ask(SubState next);
  void Reject(const std::string& message);

  void StepStart(const std::string& line);
  void StepName(const std::string& line);
  void StepTime(const std::string& line);
  void StepTimeType(const std::string& line);
  void StepDate(const std::string& line);
  void StepTaskType(const std::string& line);
  void StepPath(const std::string& line);
  void StepConfirm(const std::string& line);
  void StepChoice(const std::string& line, int most, std::int16_t& stored, SubState next,
                  const char* message);
  void KeepField();
  void SetDate(const std::string& day, const std::string& month, const std::string& year);
  void TakeLoaded();

  Conversation& conversation_;
  TaskStore& store_;
  const Clock& clock_;
  SubState subState_ = SubState::Start;
  AnswerMode mode_ = AnswerMode::Plain;
  bool editing_ = false;

  TaskEntry task_;     // the working task, filled field by field
  TaskRecord loaded_;  // of an edit; empty for a new task
};

}  // namespace orvanto
