// The composition root: what exists, who owns it, who talks to whom.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Platform.h"

namespace orvanto {

class Downloads;
class FtpServer;
class Sched;
class Settings;
class TaskExecution;
class TaskStore;
class TelnetServer;
class frmChat;
class frmEdit;
class frmScriptcfg;
class frmSettings;
struct TaskRecord;

struct StartOptions {
  std::string commandLine;                    // what follows the program's name
  std::string programFolder;                  // where the program is installed, as a Windows path
  std::optional<std::uint16_t> ftpPort = {};  // of the FTP server, instead of its own
};

// Made once by the host's entry point, which then calls Start and runs the loop. The loop is quit
// when the main window has been unloaded; destroy the program after that, before the platform.
class Program {
 public:
  Program(Platform& platform, StartOptions options);
  ~Program();

  // Loads the main window, and shows it unless the command line says otherwise.
  void Start();

  // Instead of Start, for one command without a window: reads what the task store and downloads
  // need to know. Throws Error, last of all, for a storage mode that does not convert: it stays 0
  // then.
  void Prepare();

  // Runs the loop until no script waits for a delay and no download runs any more.
  void RunUntilIdle();

  Settings& GetSettings();
  TaskStore& Store();
  Sched& GetSched();
  TaskExecution& Execution();
  frmScriptcfg& MainWindow();
  frmEdit& Editor();
  frmSettings& SettingsWindow();
  frmChat& ChatWindow();
  TelnetServer& Telnet();
  FtpServer& Ftp();
  Downloads& GetDownloads();

  // Shows the window that the user is to see: the open dialog, or the main window, also out of the
  // tray. What a second start of the program asks of the first.
  void BringToFront();

  // Brings the main window's caption up to date where nothing else goes on.
  void ShowTime();

  // Ends the program from outside (a signal, the end of the session): unloads the main window.
  void Quit();

  // Told before a task is carried out, on whatever ground.
  std::function<void(const TaskRecord&)> onTaskRun;

  // Told of the text of a window that a script shows and does not wait for.
  std::function<void(const std::string& text)> onPopup;

  // Told in words, with the script and the line, of the failure that ends a script.
  std::function<void(const std::string& message)> onScriptFailure;

  // Every line of a script that would fail, without running it. Throws Error when the file cannot
  // be read.
  void CheckScript(const std::string& path,
                   const std::function<void(int line, const std::string& reason)>& onFault);

  // The word of the script command that is being carried out; empty for none.
  std::string ScriptCommand() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace orvanto
