// What there is to know of the types of tasks and of window styles, in one table each.
#pragma once

#include <array>

#include "core/TaskRecord.h"
#include "platform/Shell.h"

namespace orvanto {

// Ends the name in a task's line.
inline constexpr const char* kNameEnd = " | ";

// Positions are codes less one.
struct TaskTypeFacts {
  const char* name;
  const char* caption;    // of the editor's option
  const char* separator;  // between the task's name and its time, in its line
  const char* path;       // what is stored as the path; null: what was entered
  bool namesFile;         // the path is that of a file, which must exist
  bool startsProgram;     // command line and window style count
};
extern const std::array<TaskTypeFacts, kTaskTypes> kTaskTypeFacts;

// Null for a code outside the table.
const TaskTypeFacts* FactsOfTaskType(int code);

inline constexpr int kWindowStyles = 6;

struct WindowStyleFacts {
  const char* name;
  ShowCommand ofTasks;
  ShowCommand ofScripts;
};
extern const std::array<WindowStyleFacts, kWindowStyles> kWindowStyleFacts;
const WindowStyleFacts* FactsOfWindowStyle(int code);

}  // namespace orvanto
