#include "core/TaskExecution.h"
#include "core/ProgramTitle.h"

#include "core/TaskFacts.h"
#include "core/modTaskOperations.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Sound.h"

namespace orvanto {

void TaskExecution::RunTask(std::int16_t index) {
  store_.LoadTask(index);
  // A copy: a message box or a script may load other tasks before this call is done.
  const TaskRecord task = store_.CurrentTask;
  if (onRun && FactsOfTaskType(task.taskType) != nullptr) onRun(task);
  switch (task.taskType) {
    case kRunScript:
      if (scripts_ != nullptr) scripts_->RunScript(task.path);
      break;
    case kRunProgram:
      Execute(task, "open");
      break;
    case kPrintFile:
      Execute(task, "print");
      break;
    case kResetComputer:
      session_.End(kReboot);
      break;
    case kShutdownComputer:
      session_.End(kShutdown);
      break;
    case kPopupMessage:
      messageBoxes_.Show(task.path, kProgramTitle, Buttons::Ok, BoxIcon::None);
      break;
    case kPlaySound:
      sound_.Play(task.path);
      break;
    default:
      break;
  }
}

void TaskExecution::Execute(const TaskRecord& task, const char* operation) {
  // The shell would take an empty file for the present folder and open that.
  if (task.path.empty() && task.cmdLine.empty()) return;
  ShellRequest request;
  request.operation = operation;
  // The command line travels inside the file argument.
  request.file = task.cmdLine.empty() ? task.path : task.path + " " + task.cmdLine;
  const WindowStyleFacts* style = FactsOfWindowStyle(task.winStyle);
  request.show = style != nullptr ? style->ofTasks : ShowCommand::Hide;
  shell_.Execute(request);
}

}  // namespace orvanto
