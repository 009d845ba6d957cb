#include "script/FileAction.h"

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/TaskFacts.h"
#include "platform/Files.h"
#include "platform/text/Case.h"

namespace orvanto {
namespace {

// A path as one word of a command line. Only a host that takes a whole text for a path before it
// parts it has quotes in its names.
std::string Quoted(const std::string& path) {
  return path.find('"') == std::string::npos ? '"' + path + '"' : path;
}

}  // namespace

std::optional<ShowCommand> ShowStyleFromCode(std::int16_t style) {
  const WindowStyleFacts* facts = FactsOfWindowStyle(style == 0 ? 1 : style);
  if (facts == nullptr) return std::nullopt;
  return facts->ofScripts;
}

// An empty show state reaches the system as 0.
ShowCommand ShowState(const std::string& extra) {
  return ShowStyleFromCode(ToInt16(extra.empty() ? "0" : extra)).value_or(ShowCommand::Hide);
}

std::int16_t FileActions::FileAction(const std::string& givenPath, FileCode code,
                                     const std::string& extra) {
  std::string path(TrimBlanks(givenPath));
  if (!files_.TellsCaseApart()) path = LowerCase(path);
  const std::size_t slash = path.rfind('\\');
  if (slash == std::string_view::npos || slash + 1 == path.size() || !files_.Exists(path)) return 0;
  const std::string name = path.substr(slash + 1);
  // The working folder "0" is what the program has always passed.
  switch (code) {
    case FileCode::Open:
      shell_.Execute({"open", path, "", "0", ShowState(extra)});
      break;
    case FileCode::Print:
      shell_.Execute({"print", path, "", "0", ShowCommand::Normal});
      break;
    case FileCode::LoadWait:
      RunAndWait(Quoted(path), ShowState(extra));
      break;
    case FileCode::Delete:
      Report(path, "deleted", files_.Remove(path));
      break;
    case FileCode::Move:
      if (CopyInto(path, name, extra)) Report(path, "deleted", files_.Remove(path));
      break;
    case FileCode::Copy:
      CopyInto(path, name, extra);
      break;
    case FileCode::CheckOnly:
      return 1;
  }
  return 0;
}

bool FileActions::CopyInto(const std::string& path, const std::string& name,
                           const std::string& folder) {
  const std::string start = (folder.empty() ? folder_.AppDir : folder) + "\\";
  // Where it replaces a file, that of its own spelling first.
  const std::string target = start + (files_.Exists(start + name) ? name : LowerCase(name));
  const std::string reason = files_.Copy(path, target);
  Report(path, "copied to " + target, reason);
  return reason.empty();
}

void FileActions::Report(const std::string& path, const std::string& what,
                         const std::string& reason) {
  if (reason.empty() || !onTrouble) return;
  onTrouble("File: " + path + " could not be " + what + ": " + reason);
}

void FileActions::RunAndWait(const std::string& commandLine, ShowCommand show) {
  if (!TrimBlanks(commandLine).empty()) shell_.StartAndWait(commandLine, show);
}

}  // namespace orvanto
