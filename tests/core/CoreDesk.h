// The task scheduling core on a platform of fakes, and short ways to fill its store.
#pragma once

#include <string>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {

// Finds every file.
class WillingFinder : public FileFinder {
 public:
  bool FindFile(const std::string&) override { return true; }
};

class FakeScripts : public ScriptRunner {
 public:
  void RunScript(const std::string& path) override {
    ran.push_back(path);
    if (path == "bad") throw Error(kFileNotFoundError, "File not found");
  }
  std::vector<std::string> ran;
};

struct CoreDesk : FakePlatform {
  Settings settings{registry};
  WillingFinder finder;
  FakeScripts scripts;
  TaskStore store{settings, clock, finder};
  Sched sched{store, clock};
  TaskExecution execution{store, shell, session, sound, messageBoxes, &scripts};
  Scheduler scheduler{loop, clock, store, sched, execution};

  // A popup message each day at that time; `change` alters it before it is saved.
  void Add(const std::string& name, const std::string& time,
           const std::function<void(TaskEntry&)>& change = {}) {
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
    store.SaveTask(entry);
  }
};

}  // namespace orvanto
