#include "script/Script_Interpreter.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "platform/Files.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"
#include "platform/text/Utf8.h"
#include "script/ScriptLine.h"

namespace orvanto {
namespace {

using namespace std::chrono_literals;

// The counters of a slot have 16 bits.
void Increase(std::int16_t& counter) {
  if (counter == std::numeric_limits<std::int16_t>::max()) throw Error(kOverflow, "Overflow");
  ++counter;
}

// The text of a script as UTF-8, by its byte order mark; without one, what is no UTF-8 is taken for
// the system's code page.
std::string Decoded(std::string bytes, const Files& files) {
  constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
  constexpr std::string_view kLowFirstMark = "\xFF\xFE";
  constexpr std::string_view kHighFirstMark = "\xFE\xFF";
  const std::string_view text = bytes;
  if (text.starts_with(kLowFirstMark)) return FromUtf16(text.substr(2), false);
  if (text.starts_with(kHighFirstMark)) return FromUtf16(text.substr(2), true);
  if (text.starts_with(kUtf8Mark)) bytes.erase(0, kUtf8Mark.size());
  return IsUtf8(bytes) ? std::move(bytes) : files.FromCodePage(bytes);
}

// The seconds of a delay, from the line itself, whatever the arguments are: after "delay(", up to
// the last character.
std::int16_t DelaySeconds(std::string_view line) {
  constexpr std::size_t kAfterWord = 6;
  std::string_view seconds = line.size() > kAfterWord ? line.substr(kAfterWord) : "";
  if (!seconds.empty()) seconds.remove_suffix(1);
  return ToInt16(seconds);
}

// What lines give, one after the other. Empty at the start; a line that does not set them leaves
// them as they are.
struct Reading {
  std::string word = {};
  std::string arg1 = {};
  std::string arg2 = {};

  // The command of the next line; null for a comment. Throws Error for what is neither.
  const ScriptCommands::Command* Read(std::string_view line) {
    ReadCommandWord(line, word);
    SplitArguments(word, line, arg1, arg2);
    const ScriptCommands::Command* command = ScriptCommands::Find(word);
    if (command == nullptr && !line.starts_with('*')) throw Error(kIllegalCall, "Not a command");
    return command;
  }
};

}  // namespace

// One call of RunScript.
struct ScriptInterpreter::Call {
  ScriptSlot& slot;
  bool fileOpen = false;
  std::string text = {};  // of the file
  int line = 0;           // the one at work; 0 before the first
  Reading reading = {};
  // A failure has been handled, and no line has been completed since.
  bool handling = false;

  std::string Where() const {
    return slot.path + (line > 0 ? ", line " + std::to_string(line) : "") + ": ";
  }
};

// Inside one of its lines another script may run.
struct ScriptInterpreter::AtWork {
  AtWork(ScriptInterpreter& scripts, const Call& call)
      : scripts_(scripts), outer_(std::exchange(scripts.atWork_, &call)) {}
  ~AtWork() { scripts_.atWork_ = outer_; }
  AtWork(const AtWork&) = delete;
  AtWork& operator=(const AtWork&) = delete;

 private:
  ScriptInterpreter& scripts_;
  const Call* const outer_;
};

ScriptInterpreter::ScriptInterpreter(EventLoop& loop, Files& files, const ProgramFolder& folder,
                                     const ScriptServices& services)
    : loop_(loop),
      files_(files),
      folder_(folder),
      commands_(services),
      tmrDelay_(loop.NewTimer([this] { DelayTick(); })) {
  const auto log = [this](const std::string& message) {
    WriteScriptLog((atWork_ != nullptr ? atWork_->Where() : "") + message);
  };
  commands_.onTrouble = log;
  services.files.onTrouble = log;
  services.windows.onTrouble = log;
}

std::string ScriptInterpreter::CommandAtWork() const {
  return atWork_ != nullptr ? atWork_->reading.word : "";
}

bool ScriptInterpreter::Waiting() const {
  for (const ScriptSlot& slot : slots_) {
    if (slot.inUse && slot.delayPending) return true;
  }
  return false;
}

ScriptSlot& ScriptInterpreter::ClaimSlot(const std::string& path) {
  for (ScriptSlot& slot : slots_) {
    if (slot.inUse) continue;
    slot.path = path;
    slot.inUse = true;
    return slot;
  }
  if (onFailure) onFailure(path + ": all " + std::to_string(kSlots) + " places are taken");
  throw Error(kSubscriptOutOfRange, "Subscript out of range");
}

void ScriptInterpreter::RunScript(const std::string& path) {
  Call call{ClaimSlot(path)};
  const AtWork atWork(*this, call);
  for (;;) {
    try {
      tmrDelay_->Stop();
      OpenFile(call);
      if (RunPass(call) == Outcome::Ended) call.slot.inUse = false;
      return;
    } catch (const Error& error) {
      WriteScriptLog("File: " + call.slot.path + " not found or file empty");
      if (call.handling) throw;
      if (onFailure) onFailure(call.Where() + error.what());
      call.handling = true;
      call.slot.linesRead = 0;
      Increase(call.slot.linesDone);
    }
  }
}

void ScriptInterpreter::OpenFile(Call& call) {
  // After a failed line the file is still open, and opening it again is the next failure.
  if (call.fileOpen) throw Error(kFileAlreadyOpen, "File already open");
  call.text = ReadText(call.slot.path);
  call.fileOpen = true;
  call.line = 0;
}

std::string ScriptInterpreter::ReadText(const std::string& path) const {
  const std::string file = folder_.TaskFile(files_.TellsCaseApart() ? path : LowerCase(path));
  std::string bytes;
  if (!files_.Read(file, bytes)) throw Error(kFileNotFoundError, "File not found");
  return Decoded(std::move(bytes), files_);
}

void ScriptInterpreter::CheckScript(
    const std::string& path,
    const std::function<void(int line, const std::string& reason)>& onFault) const {
  const std::string text = ReadText(path);
  LineReader reader(text);
  Reading reading;
  bool faulty = false;
  for (int number = 1; const auto next = reader.Next(); ++number) {
    const std::string_view line = TrimBlanks(*next);
    // A blank line does once more what the last one does, which has been told.
    if (faulty && line.empty()) continue;
    faulty = false;
    try {
      const ScriptCommands::Command* const command = reading.Read(line);
      if (command == nullptr) continue;
      if (ScriptCommands::IsDelay(*command)) DelaySeconds(line);
      ScriptCommands::Check(*command, reading.arg1, reading.arg2);
    } catch (const Error& error) {
      faulty = true;
      onFault(number, error.what());
    }
  }
}

ScriptInterpreter::Outcome ScriptInterpreter::RunPass(Call& call) {
  ScriptSlot& slot = call.slot;
  LineReader reader(call.text);
  for (;;) {
    slot.delayPending = false;
    const auto next = reader.Next();
    // The program may have been told to end while a line let other events through.
    if (!next || loop_.QuitRequested()) return Outcome::Ended;
    const std::string_view line = TrimBlanks(*next);
    ++call.line;
    if (slot.linesRead < slot.linesDone) {
      // Carried out in an earlier pass.
      Increase(slot.linesRead);
      continue;
    }
    if (slot.linesRead > slot.linesDone) return Outcome::Ended;
    Increase(slot.linesDone);
    Increase(slot.linesRead);
    const Outcome outcome = RunLine(call, line);
    if (outcome != Outcome::Next) return outcome;
    call.handling = false;
  }
}

ScriptInterpreter::Outcome ScriptInterpreter::RunLine(Call& call, std::string_view line) {
  const ScriptCommands::Command* const command = call.reading.Read(line);
  if (command == nullptr) return Outcome::Next;
  if (ScriptCommands::IsDelay(*command)) {
    StartDelay(call.slot, line);
    return Outcome::Waiting;
  }
  const bool ended = commands_.Run(*command, call.reading.arg1, call.reading.arg2) ==
                     ScriptCommands::Result::EndScript;
  return ended ? Outcome::Ended : Outcome::Next;
}

void ScriptInterpreter::StartDelay(ScriptSlot& slot, std::string_view line) {
  slot.delayLength = DelaySeconds(line);
  slot.delayElapsed = 1;
  slot.delayPending = true;
  tmrDelay_->Start(1s);
}

void ScriptInterpreter::DelayTick() {
  struct TellWhenIdle {
    explicit TellWhenIdle(ScriptInterpreter& scripts) : scripts_(scripts) {}
    ~TellWhenIdle() {
      if (!scripts_.Waiting() && scripts_.onIdle) scripts_.onIdle();
    }
    ScriptInterpreter& scripts_;
  } tell(*this);
  for (ScriptSlot& slot : slots_) {
    if (!slot.delayPending) continue;
    if (slot.delayElapsed != slot.delayLength) {
      Increase(slot.delayElapsed);
      return;
    }
    Increase(slot.linesDone);
    tmrDelay_->Stop();
    slot.linesRead = 0;
    slot.delayPending = false;
    // A copy: the path must not move while it runs.
    const std::string path = slot.path;
    try {
      RunScript(path);
    } catch (const Error&) {
      // It has been told, and nobody stands above the timer.
    }
    return;
  }
}

void ScriptInterpreter::WriteScriptLog(const std::string& message) {
  files_.Append(folder_.AppDir + kLogName, "\"" + message + "\"" + kCrLf);
}

}  // namespace orvanto
