// Starting other programs.
#pragma once

#include <string>
#include <vector>

namespace orvanto::posix {

// The path of a program in one of the directories of PATH; empty when there is none.
std::string FindProgram(const std::string& name);

enum class Output { Inherit, Discard };

// Starts `program` (a path) on its own: a session of its own, no standard input, no descriptor but
// the standard ones, all signals at their defaults; it never becomes a zombie of ours. `directory`
// is its working directory, empty for the present one. False when it could not be executed.
bool StartDetached(const std::string& program, const std::vector<std::string>& arguments,
                   const std::string& directory, Output output);

// Starts `program` as above, but as a child in this session, and waits until it has ended. False
// when it could not be executed.
bool RunToEnd(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace orvanto::posix
