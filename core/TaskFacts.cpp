#include "core/TaskFacts.h"

namespace orvanto {
namespace {

template <typename Table>
const typename Table::value_type* At(const Table& table, int code) {
  const bool inside = code >= 1 && code <= static_cast<int>(table.size());
  return inside ? &table[static_cast<std::size_t>(code - 1)] : nullptr;
}

}  // namespace

const std::array<TaskTypeFacts, kTaskTypes> kTaskTypeFacts{{
    {"Run Automation Script", "Run &Automation Script", " | Run Script | ", nullptr, true, false},
    {"Run Program/Shortcut", "Run &Program/Shortcut", " | Run | ", nullptr, true, true},
    {"Print File", "&Print File", " | Print File | ", nullptr, true, true},
    {"Reset Computer", "&Reset Computer", " | Reset Computer | ", "Reset Computer", false, false},
    {"Shutdown Computer", "S&hutdown Computer", " | Shutdown Computer | ", "Shutdown Computer",
     false, false},
    {"Popup Message", "Popup &Message", " | Popup Message | ", nullptr, false, false},
    {"Play Sound", "P&lay Sound", " | Play Sound | ", nullptr, true, false},
}};

const TaskTypeFacts* FactsOfTaskType(int code) { return At(kTaskTypeFacts, code); }

const std::array<WindowStyleFacts, kWindowStyles> kWindowStyleFacts{{
    {"Normal, with Focus", ShowCommand::Normal, ShowCommand::Normal},
    {"Minimized, with Focus", ShowCommand::Minimized, ShowCommand::Minimized},
    // A task starts it minimized: kept as it is.
    {"Maximized, with Focus", ShowCommand::Minimized, ShowCommand::Maximized},
    {"Normal, without Focus", ShowCommand::NoActivate, ShowCommand::NoActivate},
    {"Minimized, without Focus", ShowCommand::MinimizedNoActivate,
     ShowCommand::MinimizedNoActivate},
    {"Hidden", ShowCommand::Hide, ShowCommand::Hide},
}};

const WindowStyleFacts* FactsOfWindowStyle(int code) { return At(kWindowStyleFacts, code); }

}  // namespace orvanto
