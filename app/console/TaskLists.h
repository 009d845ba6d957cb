// The tasks, as lists for people and for programs.
#pragma once

#include <cstddef>
#include <ostream>

namespace orvanto {

class Program;

// The lines of the main window's list, each after its number.
void PrintTasks(Program& program, std::ostream& out);

// The same as one JSON array of an object for each task. What a task does not have, or what is
// stored in a way that means nothing, is null.
void PrintTasksAsJson(Program& program, std::ostream& out);

// When tasks are due next, the soonest first, `most` of them; those that never are do not appear.
void PrintNextDue(Program& program, std::size_t most, std::ostream& out);

}  // namespace orvanto
