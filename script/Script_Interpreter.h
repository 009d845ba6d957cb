// Runs automation scripts: text files of commands, one a line.
//
// All runs share a table of 100 slots and one timer for their delays. Every call of RunScript takes
// a fresh slot, a resume too: a script that delays starts again from its first line, in one slot
// more each time, until the table is full. This, the one text of the log, and what happens after a
// bad line are relied upon; do not mend them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "core/TaskExecution.h"
#include "platform/EventLoop.h"
#include "script/Commands.h"

namespace orvanto {

class Files;
class ProgramFolder;

struct ScriptSlot {
  bool inUse = false;
  std::string path;               // as passed to RunScript
  std::int16_t linesDone = 0;     // the resume point
  std::int16_t linesRead = 0;     // in the present pass
  std::int16_t delayElapsed = 0;  // seconds
  std::int16_t delayLength = 0;   // seconds
  bool delayPending = false;
};

class ScriptInterpreter : public ScriptRunner {
 public:
  static constexpr int kSlots = 100;
  static constexpr const char* kLogName = "ORVSCRPT.LOG";

  ScriptInterpreter(EventLoop& loop, Files& files, const ProgramFolder& folder,
                    const ScriptServices& services);

  // Returns when the script has ended, waits for a delay, or was ended by a message box or by the
  // end of the program. A path without a drive belongs to the scripts folder. Throws Error: 9 when
  // no slot is free; 53, 55, 13 and the like for a failure that follows a failure, with the slot
  // left in use. It re-enters: a command that lets other events run may start a script.
  void RunScript(const std::string& path) override;

  // Told of the failure that ends a script: its path, the number of the line, the reason. The log
  // and the failure that RunScript throws follow from it and say less.
  std::function<void(const std::string& message)> onFailure;

  // Tells of every line that would fail, with its number and the reason, and runs none. Throws
  // Error when the file cannot be read.
  void CheckScript(const std::string& path,
                   const std::function<void(int line, const std::string& reason)>& onFault) const;

  // The word of the command that is being carried out, of the innermost script; empty for none.
  std::string CommandAtWork() const;

  // Appends one line, in double quotes, to the log in the program's folder.
  void WriteScriptLog(const std::string& message);

  // Some script waits for its delay.
  bool Waiting() const;
  // No script waits for a delay any more. Raised from the timer.
  std::function<void()> onIdle;

  const ScriptSlot& Slot(int number) const {
    return slots_.at(static_cast<std::size_t>(number - 1));
  }
  bool TimerEnabled() const { return tmrDelay_->Enabled(); }

 private:
  struct Call;
  struct AtWork;
  enum class Outcome { Next, Ended, Waiting };

  void DelayTick();
  ScriptSlot& ClaimSlot(const std::string& path);
  std::string ReadText(const std::string& path) const;
  void OpenFile(Call& call);
  Outcome RunPass(Call& call);
  Outcome RunLine(Call& call, std::string_view line);
  void StartDelay(ScriptSlot& slot, std::string_view line);

  const EventLoop& loop_;
  Files& files_;
  const ProgramFolder& folder_;
  ScriptCommands commands_;
  std::array<ScriptSlot, kSlots> slots_;
  std::unique_ptr<Timer> tmrDelay_;
  const Call* atWork_ = nullptr;
};

}  // namespace orvanto
