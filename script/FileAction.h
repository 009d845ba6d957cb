// What scripts do with one file, chosen by a two-letter code.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/Shell.h"

namespace orvanto {

class Files;
class ProgramFolder;

enum class FileCode {
  Open,       // "SO"
  Print,      // "SP"
  LoadWait,   // "LW"
  Delete,     // "DE"
  Move,       // "MO"
  Copy,       // "CO"
  CheckOnly,  // "CH"
};

// The show state of a style number of scripts, 0 to 6; empty for any other.
std::optional<ShowCommand> ShowStyleFromCode(std::int16_t style);

// The same of the argument of a line, empty for style 0. Throws Error where it is no number.
ShowCommand ShowState(const std::string& extra);

class FileActions {
 public:
  FileActions(Files& files, Shell& shell, const ProgramFolder& folder)
      : files_(files), shell_(shell), folder_(folder) {}

  // 1 for CheckOnly on an existing file, otherwise 0. A missing file, and a path without a folder,
  // are passed over in silence. The path is lower-cased where case means nothing. `extra` is a show
  // style for Open and LoadWait and a target folder for Move and Copy; empty stands for style 0 and
  // the program's own folder. Throws Error for a style that is no number.
  std::int16_t FileAction(const std::string& path, FileCode code, const std::string& extra);

  // Starts a program and waits until it has ended. Nothing for a blank command line.
  void RunAndWait(const std::string& commandLine, ShowCommand show);

  // Told in words what went wrong with a file that is there; the script goes on.
  std::function<void(const std::string& message)> onTrouble;

 private:
  bool CopyInto(const std::string& path, const std::string& name, const std::string& folder);
  void Report(const std::string& path, const std::string& what, const std::string& reason);

  Files& files_;
  Shell& shell_;
  const ProgramFolder& folder_;
};

}  // namespace orvanto
