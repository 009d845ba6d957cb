// The script engine on a platform of fakes.
#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "script/Script_Interpreter.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {

struct ScriptDesk : CoreDesk {
  ScriptDesk() {
    scripts.onFailure = [this](const std::string& message) { failures.push_back(message); };
  }

  FileActions fileActions{files, shell, folder};
  FolderSearch search{loop, files, fileActions};
  WindowActions windows{loop, desktop, keyboard, clipboard};
  Texts popups;
  Texts failures;
  ScriptInterpreter scripts{loop,
                            files,
                            folder,
                            {shell, session, sound, messageBoxes, fileActions, search, windows,
                             [this](const std::string& text) { popups.push_back(text); },
                             [this](const std::string& url, const std::string& second) {
                               done.push_back("download " + url + " " + second);
                             }}};

  void Script(const std::string& name, const std::string& text) {
    files.contents["C:\\Orvanto\\scripts\\" + name] = text;
  }
  // Runs a script of that text; the number of the error that reached the caller, or 0.
  int RunText(const std::string& text) {
    Script("s.txt", text);
    return RunByPath("s.txt");
  }
  int RunByPath(const std::string& path) {
    return ErrorOf([&] { scripts.RunScript(path); });
  }
  // What a check of that script tells.
  std::string Faults() const {
    std::string faults;
    scripts.CheckScript("s.txt", [&](int line, const std::string& reason) {
      faults += std::to_string(line) + ": " + reason + "\n";
    });
    return faults;
  }
  // The files with their texts, but for the script.
  Texts Files() {
    files.contents.erase("C:\\Orvanto\\scripts\\s.txt");
    Texts paths;
    for (const auto& [path, text] : files.contents) paths.push_back(path + " " + text);
    return paths;
  }
  // What has been done since the last call.
  Texts Done() { return std::exchange(done, {}); }
  std::ptrdiff_t Beeps() const { return std::count(done.begin(), done.end(), "beep"); }
  std::string Log() { return files.contents["C:\\Orvanto\\ORVSCRPT.LOG"]; }
  // What the log holds after a line or an opening failed and the failure behind it.
  static std::string Twice(const std::string& path) {
    const std::string line = "\"File: " + path + " not found or file empty\"\r\n";
    return line + line;
  }
};

}  // namespace orvanto
