#include "app/console/TaskArguments.h"

#include <map>
#include <optional>
#include <utility>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/TaskFacts.h"
#include "platform/text/Case.h"

namespace orvanto {
namespace {

struct OptionKind {
  bool takesValue;
  TaskType type;  // the task type that it chooses, or 0
};

const std::map<std::string, OptionKind> kOptions{
    {"--at", {true, {}}},
    {"--once", {true, {}}},
    {"--every", {true, {}}},
    {"--in", {true, {}}},
    {"--day", {true, {}}},
    {"--params", {true, {}}},
    {"--window", {true, {}}},
    {"--group", {true, {}}},
    {"--script", {true, kRunScript}},
    {"--program", {true, kRunProgram}},
    {"--print", {true, kPrintFile}},
    {"--reset", {false, kResetComputer}},
    {"--shutdown", {false, kShutdownComputer}},
    {"--message", {true, kPopupMessage}},
    {"--sound", {true, kPlaySound}},
};

using Options = std::map<std::string, std::string>;

// Sets the name where one is given.
Options Collect(const std::vector<std::string>& words, std::optional<std::string>& name) {
  Options options;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const auto kind = kOptions.find(word);
    if (kind == kOptions.end()) {
      if (name || word.starts_with("--")) throw UsageError("What is \"" + word + "\"?");
      name = word;
      continue;
    }
    if (kind->second.takesValue && i + 1 == words.size()) {
      throw UsageError("The option " + word + " needs a value.");
    }
    const std::string value = kind->second.takesValue ? words[++i] : "";
    if (!options.emplace(word, value).second) {
      throw UsageError("The option " + word + " is given twice.");
    }
  }
  return options;
}

int CodeOf(const std::string& text, int codes, std::string (*nameOf)(int)) {
  for (int code = 1; code <= codes; ++code) {
    if (EqualIgnoringCase(text, nameOf(code))) return code;
  }
  throw UsageError("There is no rule \"" + text + "\".");
}

std::vector<std::string> Split(const std::string& text, const char* separators) {
  std::vector<std::string> fields{""};
  for (const char c : text) {
    if (std::string(separators).find(c) == std::string::npos) {
      fields.back() += c;
    } else {
      fields.emplace_back();
    }
  }
  return fields;
}

bool IsDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// Anything but plain digits, or too large a number, becomes one that no validation lets through.
std::int16_t NumberOrInvalid(const std::string& text) {
  return IsDigits(text) ? ToInt16Or(text, -1) : std::int16_t{-1};
}

// A part of a time or date for validation: two digits at least, and no number if it is not digits.
std::string Part(const std::string& text) { return IsDigits(text) ? TwoDigits(text) : "?"; }

void ReadTime(const Options& options, TaskEntry& entry) {
  const auto fields = Split(options.at("--at"), ":");
  if (fields.size() != 2) throw UsageError("A time is written as HH:MM.");
  entry.hour = Part(fields[0]);
  entry.minute = Part(fields[1]);
}

// In the system's order, or year, month and day where the year stands first.
void ReadDate(const std::vector<std::string>& fields, bool monthFirst, TaskEntry& entry) {
  const bool yearFirst = fields[0].size() == 4;
  const std::string& one = fields[yearFirst ? 1 : 0];
  const std::string& two = fields[yearFirst ? 2 : 1];
  // After a year the month comes first.
  const bool swapped = yearFirst && !monthFirst;
  entry.datePart1 = Part(swapped ? two : one);
  entry.datePart2 = Part(swapped ? one : two);
  entry.year = fields[yearFirst ? 0 : 2];
}

constexpr const char* kWhichDay = "On which day? Say one of --once DATE, --every TEXT and --day N.";

int DayRules(const Options& options) {
  return static_cast<int>(options.count("--once") + options.count("--every") +
                          options.count("--day"));
}

// One of the rules, or none: then the entry keeps its own.
void ReadWhen(const Options& options, bool monthFirst, TaskEntry& entry) {
  const auto has = [&](const char* option) { return options.count(option) != 0; };
  if (DayRules(options) > 1) {
    throw UsageError(kWhichDay);
  }
  if (has("--once")) {
    entry.timeType = kTimeOnce;
    const auto fields = Split(options.at("--once"), "-/.");
    if (fields.size() != 3) throw UsageError("A date has three numbers, as in 25-12-2026.");
    ReadDate(fields, monthFirst, entry);
  } else if (has("--every")) {
    entry.timeType = kTimeRecurring;
    entry.every = static_cast<std::int16_t>(CodeOf(options.at("--every"), kEveryCodes, EveryName));
    entry.in = 1;
  } else if (has("--day")) {
    entry.timeType = kTimeDayNumber;
    entry.dayNo = NumberOrInvalid(options.at("--day"));
  }
  if (!has("--in")) return;
  if (entry.timeType != kTimeRecurring) throw UsageError("The option --in goes with --every.");
  entry.in = static_cast<std::int16_t>(CodeOf(options.at("--in"), kInCodes, InName));
}

void ReadWhat(const Options& options, const TaskPath& taskPath, TaskEntry& entry) {
  bool chosen = false;
  for (const auto& [option, value] : options) {
    const std::int16_t type = kOptions.at(option).type;
    if (type == 0) continue;
    if (std::exchange(chosen, true)) {
      throw UsageError("A task does one thing: " + option + " is too much.");
    }
    entry.taskType = type;
    entry.path = FactsOfTaskType(type)->namesFile ? taskPath(value, type) : value;
    entry.cmdLine.clear();
    entry.winStyle = 1;
  }
  const TaskTypeFacts* const facts = FactsOfTaskType(entry.taskType);
  for (const char* option : {"--params", "--window"}) {
    if (options.count(option) != 0 && (facts == nullptr || !facts->startsProgram)) {
      throw UsageError(std::string("The option ") + option + " goes with --program or --print.");
    }
  }
  if (const auto params = options.find("--params"); params != options.end()) {
    entry.cmdLine = params->second;
  }
  if (const auto window = options.find("--window"); window != options.end()) {
    entry.winStyle = NumberOrInvalid(window->second);
    if (FactsOfWindowStyle(entry.winStyle) == nullptr) {
      throw UsageError("A window style is a number from 1 to 6.");
    }
  }
}

void Apply(const Options& options, bool monthFirst, const TaskPath& taskPath, TaskEntry& entry) {
  if (options.count("--at") != 0) ReadTime(options, entry);
  ReadWhen(options, monthFirst, entry);
  ReadWhat(options, taskPath, entry);
  if (const auto group = options.find("--group"); group != options.end()) {
    entry.group = group->second;
  }
}

}  // namespace

TaskEntry ParseAddArguments(const std::vector<std::string>& words, bool monthFirst,
                            const TaskPath& taskPath) {
  TaskEntry entry;
  entry.group = "General";
  std::optional<std::string> name;
  const Options options = Collect(words, name);
  if (!name) throw UsageError("The task needs a name.");
  entry.name = *name;
  if (options.count("--at") == 0) throw UsageError("When? Say --at HH:MM.");
  if (DayRules(options) == 0) {
    throw UsageError(kWhichDay);
  }
  Apply(options, monthFirst, taskPath, entry);
  if (entry.taskType == 0) {
    throw UsageError(
        "What is to be done? Say one of --script, --program, --print, --reset, --shutdown, "
        "--message and --sound.");
  }
  return entry;
}

void ParseEditArguments(const std::vector<std::string>& words, bool monthFirst,
                        const TaskPath& taskPath, TaskEntry& entry) {
  std::optional<std::string> name;
  const Options options = Collect(words, name);
  if (name) entry.name = *name;
  Apply(options, monthFirst, taskPath, entry);
}

std::string WordOfTaskType(std::int16_t type) {
  for (const auto& [option, kind] : kOptions) {
    if (kind.type != 0 && kind.type == type) return option.substr(2);
  }
  return "";
}

}  // namespace orvanto
