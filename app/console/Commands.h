// The commands of the console program: one change or question, then the end.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace orvanto {

class Clock;
class Program;

inline constexpr int kExitRefused = 1;  // understood, but not valid, or its script failed
inline constexpr int kExitUsage = 2;    // not understood

void PrintUsage(std::ostream& out);

// True when the word is the name of a command.
bool IsCommand(const std::string& word);

struct CommandContext {
  Program& program;  // prepared, not started
  std::ostream& out;
  std::ostream& err;
  const Clock& clock;
  bool terminal;  // `out` is one
  // A file as the user names it on this system, as a task of that type stores it.
  std::function<std::string(const std::string& file, std::int16_t taskType)> taskPath;
};

// Carries out `words` (the command and its arguments) and returns the exit status.
int RunCommand(const std::vector<std::string>& words, const CommandContext& context);

}  // namespace orvanto
