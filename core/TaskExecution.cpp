#include "core/TaskExecution.h"
#include "core/ProgramTitle.h"

#include "core/Sched.h"
#include "core/modTaskOperations.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Sound.h"

namespace orvanto {

ShowCommand ShowCommandOfWinStyle(int winStyle) {
  switch (winStyle) {
    case 1:
      return ShowCommand::Normal;
    case 2:
    case 3:  // "Maximized" starts minimized: kept as it is.
      return ShowCommand::Minimized;
    case 4:
      return ShowCommand::NoActivate;
    case 5:
      return ShowCommand::MinimizedNoActivate;
    default:
      return ShowCommand::Hide;
  }
}

void TaskExecution::RunTask(std::int16_t index) {
  store_.LoadTask(index);
  // A copy: a message box or a script may load other tasks before this call is done.
  const TaskRecord task = store_.CurrentTask;
  if (onRun && !TaskTypeName(task.taskType).empty()) onRun(task);
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
  request.show = ShowCommandOfWinStyle(task.winStyle);
  shell_.Execute(request);
}

}  // namespace orvanto
