// The task scheduling core on a platform of fakes, and short ways to fill its store.
#pragma once

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

  using Change = std::function<void(TaskEntry&)>;

  // A popup message each day at that time, for the slot behind the last.
  TaskEntry Entry(const std::string& name, const std::string& time, const Change& change = {}) {
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
    if (change) change(entry);
    return entry;
  }
  void Add(const std::string& name, const std::string& time, const Change& change = {}) {
    store.SaveTask(Entry(name, time, change));
  }
  // The same with other stored fields, by name.
  using Fields = std::vector<std::pair<const char*, const char*>>;
  void Add(const std::string& name, const std::string& time, const Fields& fields) {
    Add(name, time);
    Put(name, fields);
  }
  void Put(const std::string& section, const Fields& fields) {
    for (const auto& [value, text] : fields) settings.WriteSetting(section, value, text);
  }
  Texts Names() {
    Texts names;
    for (std::int16_t i = 1; i <= store.NoTasks(); ++i) names.push_back(store.TaskName(i));
    return names;
  }
};

}  // namespace orvanto
