// One full tick of the scheduler, the one at second 00, over a list of tasks in a registry file.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <iostream>

#include "core/ProgramFolder.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Sound.h"
#include "platform/posix/FileRegistry.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixLoop.h"

namespace orvanto {
namespace {

// The system's clock, always at the beginning of a minute: of the next one for each tick, because a
// minute is looked at once.
class FullMinute : public posix::PosixClock {
 public:
  DateTime Now() const override {
    ++looks;
    DateTime now = PosixClock::Now();
    now.second = 0;
    return now;
  }
  std::int64_t UnixMilliseconds() const override { return minute * 60'000; }

  std::int64_t minute = 1;
  mutable std::int64_t looks = 0;
};

class NoFinder : public FileLookup {
 public:
  bool FindFile(const std::string&) override { return true; }
};

// Counts; nothing is due, so nothing may come here.
struct NoWay : Shell, Session, Sound, MessageBoxes {
  bool Execute(const ShellRequest&) override { return Called(); }
  bool StartAndWait(const std::string&, ShowCommand) override { return Called(); }
  void ChangeResolution(int, int) override { Called(); }
  void HangUp() override { Called(); }
  void Beep() override { Called(); }
  bool Start(const std::string&, ShowCommand) override { return Called(); }
  bool End(std::uint32_t) override { return Called(); }
  bool Play(const std::string&) override { return Called(); }
  Answer Show(const std::string&, const std::string&, Buttons, BoxIcon) override {
    Called();
    return Answer::Ok;
  }
  bool Called() {
    ++calls;
    return false;
  }
  int calls = 0;
};

void FullTick(benchmark::State& state) {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() / ("orvanto-tick-" + std::to_string(::getpid()));
  std::filesystem::create_directory(folder);
  {
    posix::FileRegistry registry(folder / "registry.txt",
                                 [](const std::string& message) { std::cerr << message << "\n"; });
    posix::PosixLoop loop;
    FullMinute clock;
    Settings settings(registry);
    NoFinder finder;
    NoWay nothing;
    const ProgramFolder programFolder;
    TaskStore store(settings, clock, finder, programFolder);
    Sched sched(store, clock);
    TaskExecution execution(store, nothing, nothing, nothing, nothing, nullptr);
    Scheduler scheduler(loop, clock, store, sched, execution);
    {
      RegistryChange change(registry);
      for (std::int16_t slot = 1; slot <= state.range(0); ++slot) {
        TaskEntry entry;
        entry.name = "Task number " + std::to_string(slot);
        entry.index = slot;
        entry.group = "General";
        entry.timeType = kTimeRecurring;
        entry.every = 20;  // a rule that never comes due
        entry.in = 1;
        entry.hour = "10";
        entry.minute = "30";
        entry.taskType = kRunProgram;
        entry.path = "C:\\Program Files\\Tool\\tool.exe";
        entry.cmdLine = "/quiet";
        store.SaveTask(entry);
      }
    }
    scheduler.tmrSched.Start();
    std::int64_t looks = 0;
    for (auto _ : state) {
      clock.looks = 0;
      ++clock.minute;
      scheduler.Tick();
      looks = clock.looks;
    }
    if (nothing.calls != 0) state.SkipWithError("a task ran");
    // Loading a task and asking for its hour are a look each.
    if (looks < 2 * state.range(0)) state.SkipWithError("the tasks were not looked at");
  }
  std::filesystem::remove_all(folder);
}
BENCHMARK(FullTick)->Arg(0)->Arg(100)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace orvanto

BENCHMARK_MAIN();
