#include "app/console/Commands.h"

#include <array>
#include <functional>

#include "app/Program.h"
#include "app/console/ConsoleDownloads.h"
#include "app/console/TaskArguments.h"
#include "app/console/TaskLists.h"
#include "core/Convert.h"
#include "core/ProgramSettings.h"
#include "core/Sched.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "download/Downloads.h"
#include "platform/text/PrintableLine.h"
#include "platform/text/WholeNumber.h"

namespace orvanto {
namespace {

using Words = std::vector<std::string>;

int Refuse(const CommandContext& context, const std::string& message) {
  context.err << message << "\n";
  return kExitRefused;
}

int Finish(const CommandContext& context, RegistryChange& change) {
  const Status status = change.Commit();
  if (status == kSuccess) return 0;
  return Refuse(context, "The registry could not be written (error " + std::to_string(status) +
                             "). Nothing was changed.");
}

int Get(const Words& words, const CommandContext& context) {
  Settings& settings = context.program.GetSettings();
  const Setting* const known = FindSetting(words[1], words[2]);
  // Two defaults tell a missing value from an empty one.
  const auto read = [&](const char* missing) {
    return known != nullptr ? known->Text(settings, missing)
                            : settings.ReadSetting(words[1], words[2], missing);
  };
  const std::string text = read("");
  if (text.empty() && read("missing") == "missing") {
    return Refuse(context, "There is no value \"" + words[2] + "\" in \"" + words[1] + "\".");
  }
  context.out << text << "\n";
  return 0;
}

int Set(const Words& words, const CommandContext& context) {
  Settings& settings = context.program.GetSettings();
  RegistryChange change(settings.Store());
  if (const Setting* const known = FindSetting(words[1], words[2]); known != nullptr) {
    known->Store(settings, words[3]);
    if (settings.StorageMode() != 0 && known->kept == Setting::Kept::ByMode &&
        known->read == Setting::Read::Early) {
      context.err << "Note: settings are shared. This one is kept for all users of this computer, "
                     "but each start reads it from the user's own settings.\n";
    }
  } else {
    settings.WriteSetting(words[1], words[2], words[3]);
  }
  return Finish(context, change);
}

int ListSettings(const Words&, const CommandContext& context) {
  const auto column = [&](const std::string& text, std::size_t width) {
    context.out << text << std::string(text.size() < width ? width - text.size() : 0, ' ') << "  ";
  };
  constexpr const char* kPassword = SettingOf("Inet_Passwd").name;
  for (const Setting& setting : kSettings) {
    const std::string text = setting.Text(context.program.GetSettings());
    column(setting.section, 8);
    column(setting.name, 20);
    column(setting.name == kPassword && !text.empty() ? "(set)" : "\"" + PrintableLine(text) + "\"",
           8);
    column("default \"" + std::string(setting.defaultValue) + "\"", 14);
    context.out << setting.meaning << "\n";
  }
  return 0;
}

int List(const Words& words, const CommandContext& context) {
  if (words.size() > 1 && words[1] != "--json") {
    throw UsageError("The list is printed as it is, or with --json.");
  }
  words.size() > 1 ? PrintTasksAsJson(context.program, context.out)
                   : PrintTasks(context.program, context.out);
  return 0;
}

int Next(const Words& words, const CommandContext& context) {
  const auto most = WholeNumber<std::size_t>(words.size() > 1 ? words[1] : "100");
  if (!most) throw UsageError("\"" + words[1] + "\" is no number of tasks.");
  PrintNextDue(context.program, *most, context.out);
  return 0;
}

// Says what was stored, and what will not come of it. An empty name stands for a new task.
int StoreTask(const TaskEntry& entry, const std::string& name, RegistryChange& change,
              const CommandContext& context) {
  TaskStore& store = context.program.Store();
  const std::int16_t slot = store.StoreEntry(entry, name);
  if (slot == 0) return Refuse(context, store.TaskValidationMessage);
  if (const int status = Finish(context, change); status != 0) return status;
  if (entry.timeType == kTimeRecurring && entry.every > kEveryCodesThatFire &&
      entry.every <= kEveryCodes) {
    context.err << "Note: a task with the rule \"" << EveryName(entry.every)
                << "\" is kept but never comes due.\n";
  }
  context.out << slot << ") " << PrintableLine(context.program.GetSched().DescribeTask(slot))
              << "\n";
  return 0;
}

int Add(const Words& words, const CommandContext& context) {
  TaskStore& store = context.program.Store();
  const TaskEntry entry = ParseAddArguments({words.begin() + 1, words.end()},
                                            store.DateOrderMonthFirst != 0, context.taskPath);
  // One change from the look at the list to the last write: two of us at once do not collide.
  RegistryChange change(context.program.GetSettings().Store());
  return StoreTask(entry, "", change, context);
}

// The slot that a word names, or 0 with the refusal written.
std::int16_t SlotOf(const std::string& word, const CommandContext& context) {
  if (word.empty() || word.find_first_not_of("0123456789") != std::string::npos) {
    throw UsageError("\"" + word + "\" is no task number.");
  }
  const std::int16_t slot = ToInt16Or(word, 0);
  if (slot >= 1 && slot <= context.program.Store().NoTasks()) return slot;
  Refuse(context, "There is no task " + word + ".");
  return 0;
}

int Edit(const Words& words, const CommandContext& context) {
  TaskStore& store = context.program.Store();
  RegistryChange change(context.program.GetSettings().Store());
  const std::int16_t slot = SlotOf(words[1], context);
  if (slot == 0) return kExitRefused;
  store.LoadTask(slot);
  const std::string name = store.CurrentTask.name;
  TaskEntry entry = EntryOf(store.CurrentTask, store.DateOrderMonthFirst);
  ParseEditArguments({words.begin() + 2, words.end()}, store.DateOrderMonthFirst != 0,
                     context.taskPath, entry);
  return StoreTask(entry, name, change, context);
}

int Delete(const Words& words, const CommandContext& context) {
  RegistryChange change(context.program.GetSettings().Store());
  const std::int16_t slot = SlotOf(words[1], context);
  if (slot == 0) return kExitRefused;
  context.program.Store().DeleteTask(slot);
  return Finish(context, change);
}

// Calls `start` and runs what that has started to its end.
int RunToTheEnd(const CommandContext& context, const std::function<void()>& start) {
  ConsoleDownloads downloads(context.program.GetDownloads(), context.clock, context.out,
                             context.err, context.terminal);
  start();
  context.program.RunUntilIdle();
  return downloads.AllWell() ? 0 : kExitRefused;
}

int Download(const Words& words, const CommandContext& context) {
  return RunToTheEnd(context, [&] { context.program.GetDownloads().BeginDownload(words[1]); });
}

int Run(const Words& words, const CommandContext& context) {
  const std::int16_t slot = SlotOf(words[1], context);
  if (slot == 0) return kExitRefused;
  bool failed = false;
  context.program.onScriptFailure = [&](const std::string& message) {
    failed = true;
    Refuse(context, PrintableLine(message));
  };
  const int status = RunToTheEnd(context, [&] {
    try {
      context.program.Execution().RunTask(slot);
    } catch (const Error&) {
      if (!failed) throw;
    }
  });
  context.program.onScriptFailure = nullptr;
  return failed ? kExitRefused : status;
}

int Check(const Words& words, const CommandContext& context) {
  int status = 0;
  context.program.CheckScript(context.taskPath(words[1], kRunScript),
                              [&](int line, const std::string& reason) {
                                context.out << words[1] << ":" << line << ": " << reason << "\n";
                                status = kExitRefused;
                              });
  return status;
}

struct Command {
  const char* name;
  std::size_t leastWords;  // the command itself included
  std::size_t mostWords;
  int (*run)(const Words&, const CommandContext&);
  const char* usage;
};

constexpr std::size_t kAnyNumber = 1000;

constexpr std::array<Command, 11> kCommands{{
    {"settings", 1, 1, ListSettings, "settings                      list all settings"},
    {"get", 3, 3, Get, "get SECTION NAME              print a setting"},
    {"set", 4, 4, Set, "set SECTION NAME TEXT         store a setting"},
    {"list", 1, 2, List, "list [--json]                 print the tasks with their numbers"},
    {"next", 1, 2, Next, "next [N]                      print when tasks are due next, N of them"},
    {"add", 2, kAnyNumber, Add,
     "add NAME --at HH:MM WHEN WHAT [--group G]\n"
     "      WHEN  --once DATE | --every TEXT [--in TEXT] | --day N\n"
     "      WHAT  --script F | --program F [--params T] [--window N] | --print F |\n"
     "            --reset | --shutdown | --message T | --sound F"},
    {"edit", 3, kAnyNumber, Edit,
     "edit N [NAME] [--at ...]      change of task N what these words say, as those of add"},
    {"delete", 2, 2, Delete, "delete N                      delete task N"},
    {"run", 2, 2, Run, "run N                         run task N now, in this process"},
    {"check", 2, 2, Check, "check SCRIPT                  print the lines that would fail"},
    {"download", 2, 2, Download, "download URL                  fetch a file into the home"},
}};

const Command* FindCommand(const std::string& word) {
  for (const Command& command : kCommands) {
    if (word == command.name) return &command;
  }
  return nullptr;
}

}  // namespace

void PrintUsage(std::ostream& out) {
  out << "Usage: orvanto [--home DIR] [--ftp-port N] [invisible]   run the scheduler\n"
         "       orvanto [--home DIR] COMMAND\n"
         "Commands:\n";
  for (const Command& command : kCommands) out << "  " << command.usage << "\n";
  out << "Dates are in the system's order; rules are texts like \"Every Weekday\" and \"March\".\n";
}

bool IsCommand(const std::string& word) { return FindCommand(word) != nullptr; }

int RunCommand(const std::vector<std::string>& words, const CommandContext& context) {
  try {
    const Command* command = words.empty() ? nullptr : FindCommand(words[0]);
    if (command == nullptr) throw UsageError("There is no such command.");
    if (words.size() < command->leastWords || words.size() > command->mostWords) {
      throw UsageError("The command " + words[0] + " is used differently.");
    }
    const std::int16_t mode = context.program.GetSettings().StorageMode();
    const Setting* const known = words.size() > 2 ? FindSetting(words[1], words[2]) : nullptr;
    const bool mends = known != nullptr && known->kept != Setting::Kept::ByMode;
    if (mode != 0 && mode != 1 && !mends) {
      return Refuse(context, "Users_Share is " + std::to_string(mode) +
                                 ", so nothing is read or stored. Set it to 0 or 1 first.");
    }
    return command->run(words, context);
  } catch (const UsageError& error) {
    context.err << error.what() << "\n";
    PrintUsage(context.err);
    return kExitUsage;
  } catch (const Error& error) {
    return Refuse(context, error.what());
  }
}

}  // namespace orvanto
