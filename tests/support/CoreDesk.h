// The task scheduling core on a platform of fakes, and short ways to fill its store.
#pragma once

#include <sstream>
#include <string>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "platform/text/Error.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {

// The number of the error that leaves `work`, or 0.
template <typename Work>
int ErrorOf(const Work& work) {
  try {
    work();
    return 0;
  } catch (const Error& error) {
    return error.Number();
  }
}

class FakeFinder : public FileLookup {
 public:
  explicit FakeFinder(const FakeFiles& files) : files_(files) {}
  bool FindFile(const std::string& path) override {
    asked = path;
    return findsAll || files_.Exists(path);
  }
  bool findsAll = false;
  std::string asked;

 private:
  const FakeFiles& files_;
};

class FakeScripts : public ScriptRunner {
 public:
  void RunScript(const std::string& path) override {
    ran.push_back(path);
    if (path == "bad") throw Error(kFileNotFoundError, "File not found");
  }
  Texts ran;
};

struct CoreDesk : FakePlatform {
  CoreDesk() { folder.Set("C:\\Orvanto"); }

  Settings settings{registry};
  FakeFinder finder{files};
  FakeScripts scripts;
  ProgramFolder folder;
  TaskStore store{settings, clock, finder, folder};
  Sched sched{store, clock};
  TaskExecution execution{store, shell, session, sound, messageBoxes, &scripts};
  Scheduler scheduler{loop, clock, store, sched, execution};

  // A popup message each day at that time, for the slot after the last.
  TaskEntry Entry(const std::string& name, const std::string& time) {
    TaskEntry entry;
    entry.name = name;
    entry.index = static_cast<std::int16_t>(store.NoTasks() + 1);
    entry.group = "General";
    entry.hour = time.substr(0, 2);
    entry.minute = time.substr(3);
    entry.timeType = kTimeRecurring;
    entry.every = entry.in = 1;
    entry.taskType = kPopupMessage;
    entry.path = name;
    return entry;
  }
  // The same with other stored fields: "TaskType=1 Path=x".
  void Add(const std::string& name, const std::string& time, const std::string& fields = "") {
    store.SaveTask(Entry(name, time));
    Put(name, fields);
  }
  void Put(const std::string& section, const std::string& fields) {
    std::istringstream parts(fields);
    for (std::string part; parts >> part;) {
      const std::size_t equals = part.find('=');
      settings.WriteSetting(section, part.substr(0, equals), part.substr(equals + 1));
    }
  }
  // A task in words: its line, path, parameters, window style and group.
  std::string Told(std::int16_t slot) {
    const std::string line = sched.TreeLine(slot);
    const TaskRecord& task = store.CurrentTask;
    return line + ", " + task.path + " " + task.cmdLine + " " + std::to_string(task.winStyle) +
           " " + task.group;
  }
  Texts Names() {
    Texts names;
    for (std::int16_t i = 1; i <= store.NoTasks(); ++i) names.push_back(store.TaskName(i));
    return names;
  }
};

}  // namespace orvanto
