// Carrying out one task. Results are not examined: what cannot be started simply has no effect.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "core/TaskRecord.h"
#include "platform/Shell.h"

namespace orvanto {

class MessageBoxes;
class Session;
class Sound;
class TaskStore;

// What runs the automation scripts.
class ScriptRunner {
 public:
  virtual ~ScriptRunner() = default;
  // Starts a script; returns when it has ended or waits for its delay. Throws Error.
  virtual void RunScript(const std::string& path) = 0;
};

class TaskExecution {
 public:
  // Without a script runner, script tasks do nothing.
  TaskExecution(TaskStore& store, Shell& shell, Session& session, Sound& sound,
                MessageBoxes& messageBoxes, ScriptRunner* scripts)
      : store_(store),
        shell_(shell),
        session_(session),
        sound_(sound),
        messageBoxes_(messageBoxes),
        scripts_(scripts) {}

  // Loads the slot and does its thing, due or not. A popup message blocks until it is closed; a
  // script may throw Error; everything else returns at once.
  void RunTask(std::int16_t index);

  // Told of a loaded task of a known type before it is carried out.
  std::function<void(const TaskRecord&)> onRun;

 private:
  void Execute(const TaskRecord& task, const char* operation);

  TaskStore& store_;
  Shell& shell_;
  Session& session_;
  Sound& sound_;
  MessageBoxes& messageBoxes_;
  ScriptRunner* scripts_;
};

}  // namespace orvanto
