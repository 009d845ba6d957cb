// The words of `add` and `edit`, taken apart.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/TaskRecord.h"

namespace orvanto {

// What makes a command line unusable, in words for the user.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A file as the user names it on this system, as a task of that type stores it.
using TaskPath = std::function<std::string(const std::string& file, std::int16_t taskType)>;

// From the words after `add`: the name and the options. Fills in all but the slot. What is only
// invalid (a 31 April, a 25th hour) is left to the validation of tasks. Throws UsageError.
TaskEntry ParseAddArguments(const std::vector<std::string>& words, bool monthFirst,
                            const TaskPath& taskPath);

// The same words, any of them, after `edit N`: changes what they say and leaves the rest of the
// entry as it is. Another thing to do brings its own parameters and window.
void ParseEditArguments(const std::vector<std::string>& words, bool monthFirst,
                        const TaskPath& taskPath, TaskEntry& entry);

// The word of the option that chooses a task type, without its dashes; empty for another code.
std::string WordOfTaskType(std::int16_t type);

}  // namespace orvanto
