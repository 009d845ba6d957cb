// The commands that a script line may carry, all in one table.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "script/FileAction.h"
#include "script/FileFinder.h"
#include "script/modWindow.h"

namespace orvanto {

class MessageBoxes;
class Session;
class Sound;

// What the commands act through.
struct ScriptServices {
  Shell& shell;
  Session& session;
  Sound& sound;
  MessageBoxes& messageBoxes;
  FileActions& files;
  FolderSearch& search;
  WindowActions& windows;
  // Shows a text without waiting for an answer.
  std::function<void(const std::string& text)> showPopup;
  // Opens a download window for a URL and a second value, and does not wait. Null: there is none.
  std::function<void(const std::string& url, const std::string& second)> download;
};

class ScriptCommands {
 public:
  enum class Result { GoOn, EndScript };

  explicit ScriptCommands(const ScriptServices& services) : services_(services) {}

  // A command by its lower-case word; null when there is none. `delay` is the runner's own.
  struct Command;
  static const Command* Find(std::string_view word);
  static bool IsDelay(const Command& command);

  // Throws what Run would throw for arguments that cannot be used, whatever files and windows there
  // are; does nothing else.
  static void Check(const Command& command, const std::string& arg1, const std::string& arg2);
  // Throws Error for an argument that does not convert.
  Result Run(const Command& command, const std::string& arg1, const std::string& arg2);

  // The words of all commands, in the order of the table.
  static std::vector<std::string> Words();

  // Told of what could not be done, in words; the script goes on.
  std::function<void(const std::string& message)> onTrouble;

 private:
  ScriptServices services_;
};

}  // namespace orvanto
