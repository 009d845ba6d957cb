#include "script/Commands.h"

#include <algorithm>
#include <array>

#include "core/Convert.h"
#include "core/ProgramTitle.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Sound.h"
#include "script/KeySequence.h"

namespace orvanto {
namespace {

// One line at work.
struct Line {
  const ScriptServices& services;
  const std::string& arg1;
  const std::string& arg2;
  const std::function<void(const std::string&)>& onTrouble;
};

using Result = ScriptCommands::Result;

Result ToWindow(const Line& line, WindowCode code) {
  const bool typed = code == WindowCode::SendKeys || code == WindowCode::SendKeysDos;
  line.services.windows.WindowAction(line.arg1, code, typed ? line.arg2 : "");
  return Result::GoOn;
}

// `second`: whether the second argument means something to the action.
Result ToFile(const Line& line, FileCode code, bool second) {
  line.services.files.FileAction(line.arg1, code, second ? line.arg2 : "");
  return Result::GoOn;
}

Result ToFound(const Line& line, FileCode code) {
  line.services.search.FindAndAct(line.arg2, line.arg1, code);
  return Result::GoOn;
}

template <WindowCode code>
Result Window(const Line& line) {
  return ToWindow(line, code);
}
template <FileCode code, bool second>
Result File(const Line& line) {
  return ToFile(line, code, second);
}
template <FileCode code>
Result Found(const Line& line) {
  return ToFound(line, code);
}

Result MsgBox(const Line& line) {
  struct Style {
    const char* name;
    Buttons buttons;
    Answer refusal;
  };
  constexpr std::array<Style, 3> kStyles{{{"", Buttons::Ok, Answer::Cancel},
                                          {"okcancel", Buttons::OkCancel, Answer::Cancel},
                                          {"yesno", Buttons::YesNo, Answer::No}}};
  if (line.arg2 == "nostop") {
    line.services.showPopup(line.arg1);
    return Result::GoOn;
  }
  for (const Style& style : kStyles) {
    if (line.arg2 != style.name) continue;
    const Answer answer =
        line.services.messageBoxes.Show(line.arg1, kProgramTitle, style.buttons, BoxIcon::None);
    const bool refused = style.buttons != Buttons::Ok && answer == style.refusal;
    return refused ? Result::EndScript : Result::GoOn;
  }
  return Result::GoOn;
}

Result ChangeResolution(const Line& line) {
  struct Size {
    int width;
    int height;
  };
  // Any other number asks for the first mode's own size.
  constexpr std::array<Size, 4> kSizes{{{0, 0}, {640, 480}, {800, 600}, {1024, 768}}};
  const std::int16_t number = ToInt16(line.arg1);
  const bool known = number > 0 && number < static_cast<int>(kSizes.size());
  const Size size = kSizes[known ? static_cast<std::size_t>(number) : 0];
  line.services.session.ChangeResolution(size.width, size.height);
  return Result::GoOn;
}

Result EndSession(const Line& line, std::uint32_t flags) {
  line.services.session.End(flags);
  return Result::GoOn;
}

Result ShutDownAsGiven(const Line& line) {
  return EndSession(line, static_cast<std::uint32_t>(ToInt32(line.arg1)));
}
Result ShutDown(const Line& line) { return EndSession(line, kShutdown); }
Result Restart(const Line& line) { return EndSession(line, kReboot); }

Result DialOut(const Line& line) {
  line.services.shell.Start("rundll rnaui.dll,RnaDial " + line.arg1, ShowCommand::Normal);
  return Result::GoOn;
}

Result HangUp(const Line& line) {
  line.services.session.HangUp();
  return Result::GoOn;
}

Result Beep(const Line& line) {
  line.services.sound.Beep();
  return Result::GoOn;
}

Result PlaySound(const Line& line) {
  // A copy never answers 1, so the sound is copied into the program's folder and not played: kept
  // as it is.
  if (line.services.files.FileAction(line.arg1, FileCode::Copy, "") == 1) {
    line.services.sound.Play(line.arg1);
  }
  return Result::GoOn;
}

Result Download(const Line& line) {
  if (line.services.download) line.services.download(line.arg1, line.arg2);
  return Result::GoOn;
}

// Never called: the runner carries it out.
Result Delay(const Line&) { return Result::GoOn; }

constexpr bool kSecond = true;

// What a command's arguments must be.
void Number(const std::string& arg1, const std::string&) { ToInt16(arg1); }
void Flags(const std::string& arg1, const std::string&) { ToInt32(arg1); }
void Style(const std::string&, const std::string& arg2) { ShowState(arg2); }
void Keys(const std::string&, const std::string& arg2) { ParseKeySequence(arg2); }

}  // namespace

struct ScriptCommands::Command {
  std::string_view word;
  Result (*run)(const Line&);
  void (*check)(const std::string& arg1, const std::string& arg2) = nullptr;  // null: anything goes
};

namespace {

constexpr std::array<ScriptCommands::Command, 31> kCommands{{
    {"beep", Beep},
    {"changeres", ChangeResolution, Number},
    {"closewin", Window<WindowCode::Close>},
    {"copy", File<FileCode::Copy, kSecond>},
    {"delay", Delay},
    {"delete", File<FileCode::Delete, !kSecond>},
    {"dialout", DialOut},
    {"download", Download},
    {"finddelete", Found<FileCode::Delete>},
    {"findload", Found<FileCode::Open>},
    {"findloadwait", Found<FileCode::LoadWait>},
    {"findopen", Found<FileCode::Open>},
    {"findopenwait", Found<FileCode::LoadWait>},
    {"findprint", Found<FileCode::Print>},
    {"hangup", HangUp},
    {"load", File<FileCode::Open, kSecond>, Style},
    {"loadwait", File<FileCode::LoadWait, kSecond>, Style},
    {"maximize", Window<WindowCode::Maximize>},
    {"minimize", Window<WindowCode::Minimize>},
    {"move", File<FileCode::Move, kSecond>},
    {"msgbox", MsgBox},
    {"open", File<FileCode::Open, kSecond>, Style},
    {"openwait", File<FileCode::LoadWait, kSecond>, Style},
    {"playsound", PlaySound},
    {"print", File<FileCode::Print, !kSecond>},
    {"reset", Restart},
    {"sdown", ShutDownAsGiven, Flags},
    {"sendkeys", Window<WindowCode::SendKeys>, Keys},
    {"sendkeysdos", Window<WindowCode::SendKeysDos>},
    {"setfocus", Window<WindowCode::SetFocus>},
    {"shutdown", ShutDown},
}};

constexpr bool Sorted() {
  for (std::size_t i = 1; i < kCommands.size(); ++i) {
    if (kCommands[i - 1].word >= kCommands[i].word) return false;
  }
  return true;
}
static_assert(Sorted(), "the table is searched by halves");

}  // namespace

const ScriptCommands::Command* ScriptCommands::Find(std::string_view word) {
  const auto* command =
      std::lower_bound(kCommands.begin(), kCommands.end(), word,
                       [](const Command& one, std::string_view text) { return one.word < text; });
  return command != kCommands.end() && command->word == word ? &*command : nullptr;
}

bool ScriptCommands::IsDelay(const Command& command) { return command.run == Delay; }

void ScriptCommands::Check(const Command& command, const std::string& arg1,
                           const std::string& arg2) {
  if (command.check != nullptr) command.check(arg1, arg2);
}

ScriptCommands::Result ScriptCommands::Run(const Command& command, const std::string& arg1,
                                           const std::string& arg2) {
  return command.run({services_, arg1, arg2, onTrouble});
}

std::vector<std::string> ScriptCommands::Words() {
  std::vector<std::string> words;
  words.reserve(kCommands.size());
  for (const Command& command : kCommands) words.emplace_back(command.word);
  return words;
}

}  // namespace orvanto
