#include "platform/posix/PosixShell.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "platform/posix/Paths.h"
#include "platform/posix/Process.h"
#include "platform/registry/RegistryTree.h"
#include "platform/text/Case.h"

namespace orvanto::posix {
namespace {

constexpr std::string_view kBlanks = " \t";

std::vector<std::string> Split(std::string_view text) {
  std::vector<std::string> words;
  bool quoted = false;
  bool inWord = false;
  for (const char c : text) {
    if (!quoted && kBlanks.find(c) != std::string_view::npos) {
      inWord = false;
      continue;
    }
    if (!inWord) words.emplace_back();
    inWord = true;
    if (c == '"') {
      quoted = !quoted;
    } else {
      words.back() += c;
    }
  }
  for (std::string& word : words) {
    if (word.starts_with("Z:\\") || word.starts_with("z:\\")) word = ToNative(word);
  }
  return words;
}

// The absolute path of an existing file; empty when there is none.
std::string ExistingFile(const std::string& text, bool directories) {
  if (text.empty()) return "";
  const std::string path = ToNative(text);
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) return "";
  if (S_ISDIR(status.st_mode) && !directories) return "";
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.string();
}

std::string FileOrProgram(const std::string& text) {
  const std::string file = ExistingFile(text, false);
  return file.empty() ? FindProgram(text) : file;
}

bool IsExecutable(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::optional<ShellTarget> FindShellTarget(const std::string& text) {
  if (std::string whole = ExistingFile(text, true); !whole.empty()) {
    return ShellTarget{std::move(whole), {}};
  }
  if (text.starts_with('"')) {
    const std::size_t end = std::min(text.find('"', 1), text.size());
    std::string path = FileOrProgram(text.substr(1, end - 1));
    if (path.empty()) return std::nullopt;
    return ShellTarget{std::move(path), Split(text.substr(std::min(end + 1, text.size())))};
  }
  for (std::size_t end = 0; end < text.size();) {
    end = std::min(text.find_first_of(kBlanks, end + 1), text.size());
    std::string path = FileOrProgram(text.substr(0, end));
    if (!path.empty()) return ShellTarget{std::move(path), Split(text.substr(end))};
  }
  return std::nullopt;
}

bool PosixShell::Execute(const ShellRequest& request) {
  std::optional<ShellTarget> target = FindShellTarget(request.file);
  if (!target) return false;
  std::string directory = request.directory.empty() ? "" : ToNative(request.directory);
  std::error_code error;
  // A working folder that is none does not keep a program from starting.
  if (!std::filesystem::is_directory(directory, error)) directory.clear();
  const std::string operation = FoldCase(request.operation);
  if (operation == "print") {
    std::string printer = FindProgram("lp");
    if (printer.empty()) printer = FindProgram("lpr");
    if (printer.empty()) return Refuse("nothing is printed: neither lp nor lpr is on PATH");
    return StartDetached(printer, {target->path}, directory, Output::Discard);
  }
  if (operation != "open") return false;
  if (IsExecutable(target->path)) {
    for (std::string& word : Split(request.parameters)) {
      target->arguments.push_back(std::move(word));
    }
    return StartDetached(target->path, target->arguments, directory, Output::Inherit);
  }
  const std::string opener = FindProgram("xdg-open");
  if (opener.empty()) return Refuse("documents are not opened: xdg-open is not on PATH");
  return StartDetached(opener, {target->path}, directory, Output::Inherit);
}

bool PosixShell::Start(const std::string& commandLine, ShowCommand) {
  const std::optional<ShellTarget> target = FindShellTarget(commandLine);
  if (!target || !IsExecutable(target->path)) return Refuse("there is no such program here");
  return StartDetached(target->path, target->arguments, "", Output::Inherit);
}

bool PosixShell::StartAndWait(const std::string& commandLine, ShowCommand) {
  const std::optional<ShellTarget> target = FindShellTarget(commandLine);
  if (!target || !IsExecutable(target->path)) return false;
  const bool executed = RunToEnd(target->path, target->arguments);
  loop_.DeliverSignals();
  return executed;
}

bool PosixShell::Refuse(const char* why) {
  notices_.Say(why);
  return false;
}

}  // namespace orvanto::posix
