#include "app/console/AddArguments.h"

#include <map>
#include <set>

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

Options Collect(const std::vector<std::string>& words, std::string& name) {
  Options options;
  bool named = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const auto kind = kOptions.find(word);
    if (kind == kOptions.end()) {
      if (named || word.substr(0, 2) == "--") throw UsageError("What is \"" + word + "\"?");
      name = word;
      named = true;
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
  if (!named) throw UsageError("The task needs a name.");
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
  if (options.count("--at") == 0) throw UsageError("When? Say --at HH:MM.");
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

void ReadWhen(const Options& options, bool monthFirst, TaskEntry& entry) {
  const auto has = [&](const char* option) { return options.count(option) != 0; };
  if (int{has("--once")} + int{has("--every")} + int{has("--day")} != 1) {
    throw UsageError("On which day? Say one of --once DATE, --every TEXT and --day N.");
  }
  if (has("--in") && !has("--every")) throw UsageError("The option --in goes with --every.");
  if (has("--once")) {
    entry.timeType = kTimeOnce;
    const auto fields = Split(options.at("--once"), "-/.");
    if (fields.size() != 3) throw UsageError("A date has three numbers, as in 25-12-2026.");
    ReadDate(fields, monthFirst, entry);
  } else if (has("--every")) {
    entry.timeType = kTimeRecurring;
    const auto in = options.find("--in");
    entry.every = static_cast<std::int16_t>(CodeOf(options.at("--every"), kEveryCodes, EveryName));
    entry.in =
        static_cast<std::int16_t>(in == options.end() ? 1 : CodeOf(in->second, kInCodes, InName));
  } else {
    entry.timeType = kTimeDayNumber;
    entry.dayNo = NumberOrInvalid(options.at("--day"));
  }
}

void ReadWhat(const Options& options, const TaskPath& taskPath, TaskEntry& entry) {
  for (const auto& [option, value] : options) {
    const std::int16_t type = kOptions.at(option).type;
    if (type == 0) continue;
    if (entry.taskType != 0) throw UsageError("A task does one thing: " + option + " is too much.");
    entry.taskType = type;
    if (!kOptions.at(option).takesValue) continue;
    entry.path = FactsOfTaskType(type)->namesFile ? taskPath(value, type) : value;
  }
  if (entry.taskType == 0) {
    throw UsageError(
        "What is to be done? Say one of --script, --program, --print, --reset, --shutdown, "
        "--message and --sound.");
  }
  entry.winStyle = 1;
  for (const char* option : {"--params", "--window"}) {
    if (options.count(option) != 0 && !FactsOfTaskType(entry.taskType)->startsProgram) {
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

}  // namespace

TaskEntry ParseAddArguments(const std::vector<std::string>& words, bool monthFirst,
                            const TaskPath& taskPath) {
  TaskEntry entry;
  const Options options = Collect(words, entry.name);
  ReadTime(options, entry);
  ReadWhen(options, monthFirst, entry);
  ReadWhat(options, taskPath, entry);
  const auto group = options.find("--group");
  entry.group = group == options.end() ? "General" : group->second;
  return entry;
}

}  // namespace orvanto
