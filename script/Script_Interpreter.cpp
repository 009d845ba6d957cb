#include "script/Script_Interpreter.h"

#include <limits>
#include <optional>

#include "core/Convert.h"
#include "core/modTaskOperations.h"
#include "platform/Files.h"
#include "platform/Utf8.h"
#include "script/ScriptLine.h"

namespace orvanto {
namespace {

using namespace std::chrono_literals;

// The counters of a slot have 16 bits.
void Increase(std::int16_t& counter) {
  if (counter == std::numeric_limits<std::int16_t>::max()) throw Error(kOverflow, "Overflow");
  ++counter;
}

// Cuts a text into lines that end in CR LF, LF or with the text.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : rest_(text) {}

  std::optional<std::string_view> Next() {
    if (rest_.empty()) return std::nullopt;
    const std::size_t end = rest_.find('\n');
    std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return line;
  }

 private:
  std::string_view rest_;
};

}  // namespace

// One call of RunScript.
struct ScriptInterpreter::Call {
  ScriptSlot& slot;
  bool fileOpen = false;
  std::string text = {};  // of the file
  // Empty at the start; a line that does not set them leaves them as they are.
  std::string word = {};
  std::string arg1 = {};
  std::string arg2 = {};
  // A failure has been handled, and no line has been completed since.
  bool handling = false;
};

ScriptInterpreter::ScriptInterpreter(EventLoop& loop, Files& files, const TaskStore& store,
                                     const ScriptServices& services)
    : loop_(loop),
      files_(files),
      store_(store),
      commands_(services),
      tmrDelay_(loop.NewTimer([this] { DelayTick(); })) {
  const auto log = [this](const std::string& message) { WriteScriptLog(message); };
  commands_.onTrouble = log;
  services.files.onTrouble = log;
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
  throw Error(kSubscriptOutOfRange, "Subscript out of range");
}

void ScriptInterpreter::RunScript(const std::string& path) {
  Call call{ClaimSlot(path)};
  for (;;) {
    try {
      tmrDelay_->Stop();
      OpenFile(call);
      if (RunPass(call) == Outcome::Ended) call.slot.inUse = false;
      return;
    } catch (const Error&) {
      WriteScriptLog("File: " + call.slot.path + " not found or file empty");
      if (call.handling) throw;
      call.handling = true;
      call.slot.linesRead = 0;
      Increase(call.slot.linesDone);
    }
  }
}

void ScriptInterpreter::OpenFile(Call& call) {
  // After a failed line the file is still open, and opening it again is the next failure.
  if (call.fileOpen) throw Error(kFileAlreadyOpen, "File already open");
  const std::string file = store_.TaskFile(LowerCase(call.slot.path));
  if (!files_.Read(file, call.text)) throw Error(kFileNotFoundError, "File not found");
  call.fileOpen = true;
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (call.text.starts_with(kByteOrderMark)) call.text.erase(0, kByteOrderMark.size());
  if (!IsUtf8(call.text)) call.text = files_.FromCodePage(call.text);
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
  ReadCommandWord(line, call.word);
  SplitArguments(call.word, line, call.arg1, call.arg2);
  const ScriptCommands::Command* command = ScriptCommands::Find(call.word);
  if (command == nullptr) {
    if (!line.empty() && line.front() == '*') return Outcome::Next;
    throw Error(kIllegalCall, "Not a command");
  }
  if (ScriptCommands::IsDelay(*command)) {
    StartDelay(call.slot, line);
    return Outcome::Waiting;
  }
  const bool ended =
      commands_.Run(*command, call.arg1, call.arg2) == ScriptCommands::Result::EndScript;
  return ended ? Outcome::Ended : Outcome::Next;
}

void ScriptInterpreter::StartDelay(ScriptSlot& slot, std::string_view line) {
  // From the line itself, whatever the arguments are: behind "delay(", before the last character.
  constexpr std::size_t kBehindWord = 6;
  std::string_view seconds = line.size() > kBehindWord ? line.substr(kBehindWord) : "";
  if (!seconds.empty()) seconds.remove_suffix(1);
  slot.delayLength = ToInt16(seconds);
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
    RunScript(path);
    return;
  }
}

void ScriptInterpreter::WriteScriptLog(const std::string& message) {
  files_.Append(store_.AppDir + kLogName, "\"" + message + "\"" + kCrLf);
}

}  // namespace orvanto
