#include "app/Program.h"

#include <utility>

#include "app/RemoteArea.h"
#include "core/ProgramFolder.h"
#include "core/ProgramSettings.h"
#include "core/ProgramTitle.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "core/ui/frmAbout.h"
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "core/ui/frmSettings.h"
#include "core/ui/frmmsg.h"
#include "download/Downloads.h"
#include "platform/EventLoop.h"
#include "platform/text/Lines.h"
#include "remote/Internet.h"
#include "remote/frmChat.h"
#include "remote/ftpserver/frmFtpserver.h"
#include "remote/ftpserver/server_control.h"
#include "script/FileAction.h"
#include "script/FileFinder.h"
#include "script/Script_Interpreter.h"
#include "script/modWindow.h"

namespace orvanto {
namespace {

constexpr const char* kUpdateUrl = "http://www.quellmark.example/orvanto/orvanto_update.txt";

// In each of these the members stand in the order of construction: each sees what stands above it.

// The tasks, their schedule, and what carries them out.
struct Automation {
  Automation(Platform& platform, std::function<void(const std::string&)> showPopup,
             std::function<void(const std::string&)> beginDownload)
      : fileActions(platform.files, platform.shell, folder),
        search(platform.loop, platform.files, fileActions),
        settings(platform.registry),
        store(settings, platform.clock, search, folder),
        sched(store, platform.clock),
        windowActions(platform.loop, platform.desktop, platform.keyboard, platform.clipboard),
        scripts(platform.loop, platform.files, folder,
                {.shell = platform.shell,
                 .session = platform.session,
                 .sound = platform.sound,
                 .messageBoxes = platform.messageBoxes,
                 .files = fileActions,
                 .search = search,
                 .windows = windowActions,
                 .showPopup = std::move(showPopup),
                 .download = [begin = std::move(beginDownload)](
                                 const std::string& url, const std::string&) { begin(url); }}),
        execution(store, platform.shell, platform.session, platform.sound, platform.messageBoxes,
                  &scripts),
        scheduler(platform.loop, platform.clock, store, sched, execution) {}

  ProgramFolder folder;
  ProgramSettings programSettings;
  FileActions fileActions;
  FolderSearch search;
  Settings settings;
  TaskStore store;
  Sched sched;
  WindowActions windowActions;
  ScriptInterpreter scripts;
  TaskExecution execution;
  Scheduler scheduler;
};

// The windows of the core, which stand in for each other.
struct Windows {
  Windows(Platform& platform, Automation& automation, frmmsg& message)
      : editor(platform.forms, {.store = automation.store,
                                .clock = platform.clock,
                                .shell = platform.shell,
                                .messageBoxes = platform.messageBoxes,
                                .fileDialogs = platform.fileDialogs}),
        about(platform.forms, platform.shell),
        settings(platform.forms, automation.settings, automation.programSettings),
        main(platform.forms, {.settings = automation.settings,
                              .programSettings = automation.programSettings,
                              .folder = automation.folder,
                              .store = automation.store,
                              .sched = automation.sched,
                              .scheduler = automation.scheduler,
                              .execution = automation.execution,
                              .clock = platform.clock,
                              .files = platform.files,
                              .trayIcon = platform.trayIcon,
                              .messageBoxes = platform.messageBoxes,
                              .message = message}) {
    main.showEditor = [this](std::optional<std::int16_t> slot) { editor.Open(slot); };
    main.showAbout = [this] { about.Open(); };
    main.showSettings = [this] { settings.Open(); };
    editor.onSaved = [this](std::int16_t slot) { main.SelectTask(slot); };
    editor.onClosed = [this] { main.Return(); };
    about.onClosed = settings.onClosed = [this] { main.Return(); };
  }

  frmEdit editor;
  frmAbout about;
  frmSettings settings;
  frmScriptcfg main;
};

// The telnet server with its area on the main window and its chat, and the FTP server beside it.
struct RemoteControl : RemoteCommands {
  RemoteControl(Platform& platform, Automation& automation, frmScriptcfg& window)
      : area(window),
        chat(platform.forms),
        telnet({.loop = platform.loop,
                .sockets = platform.sockets,
                .settings = automation.settings,
                .store = automation.store,
                .execution = automation.execution,
                .clock = platform.clock,
                .files = platform.files,
                .messageBoxes = platform.messageBoxes,
                .area = area,
                .chat = chat},
               automation.programSettings),
        ftpWindow(platform.forms),
        ftp({.loop = platform.loop,
             .sockets = platform.sockets,
             .files = platform.files,
             .clock = platform.clock,
             .folder = automation.folder,
             .window = ftpWindow},
            automation.programSettings) {
    area.ShowLog(telnet.ServerLog());
    chat.formBehind = ftpWindow.formBehind = &window;
    switched = telnet.switched.Subscribe([this](bool on) { on ? ftp.Load() : ftp.Unload(); });
    window.remoteCommands = this;
    ticks = automation.scheduler.secondPassed.Subscribe([this, &window] {
      if (window.fraServer.ShownToUser()) telnet.RefreshCaption();
      if (ftpWindow.Visible()) ftp.RefreshClients();
    });
  }

  void SwitchServer(bool on) override { on ? telnet.ServerOn() : telnet.ServerOff(); }
  void StartChat() override { telnet.StartChat(); }
  void Kick() override { telnet.Kick(); }
  void SendTilde() override { telnet.SendTilde(); }
  void ShowFtpServer() override {
    ftp.RefreshClients();
    if (!ftpWindow.Visible()) ftpWindow.CentreOnScreen();
    ftpWindow.Activate();
  }

  RemoteArea area;
  frmChat chat;
  TelnetServer telnet;
  frmFtpserver ftpWindow;
  FtpServer ftp;
  Subscription switched;
  Subscription ticks;
};

}  // namespace

struct Program::Parts {
  Parts(const Program& program, Platform& platform, StartOptions startOptions)
      : options(std::move(startOptions)),
        loop(platform.loop),
        message(platform.forms),
        automation(
            platform,
            [this, &program](const std::string& text) {
              message.ShowText(text);
              if (program.onPopup) program.onPopup(text);
            },
            [this](const std::string& url) { Download(url); }),
        downloads(platform.forms, {.loop = platform.loop,
                                   .sockets = platform.sockets,
                                   .files = platform.files,
                                   .clock = platform.clock,
                                   .clipboard = platform.clipboard,
                                   .shell = platform.shell,
                                   .messageBoxes = platform.messageBoxes,
                                   .registry = platform.registry,
                                   .settings = automation.settings,
                                   .remoteSettings = automation.programSettings,
                                   .folder = automation.folder,
                                   .mayWait =
                                       [this] {
                                         // Of them some handle events meanwhile.
                                         return automation.scripts.CommandAtWork().empty();
                                       }}),
        windows(platform, automation, message),
        remote(platform, automation, windows.main) {
    windows.settings.onPortChanged = [this] { remote.telnet.Restart(); };
    windows.settings.onRemoteChanged = [this] {
      remote.telnet.Relisten();
      remote.ftp.Relisten();
    };
    windows.settings.onCheckNow = [this] { Download(kUpdateUrl, true); };
    platform.forms.onHelp = [this, &platform](const std::string& page) {
      ShowManual(platform, page);
    };
    windows.main.showDownload = [this] { downloads.window.Open(); };
    downloads.window.formBehind = &windows.main;
    downloads.ForEachDialog([this](forms::Form& form) { form.formBehind = &downloads.window; });
  }

  void ShowManual(Platform& platform, const std::string& page) {
    const std::string path = automation.folder.AppDir + "manual\\" + page + ".html";
    if (platform.files.Exists(path) &&
        platform.shell.Execute({"open", path, "", "", ShowCommand::Normal})) {
      return;
    }
    // F1 comes from the box, too, to the window below it.
    if (std::exchange(manualMissed, true)) return;
    platform.messageBoxes.Show("The manual could not be opened:" + std::string(kCrLf) + path,
                               kProgramTitle, Buttons::Ok, BoxIcon::None);
    manualMissed = false;
  }

  void Download(const std::string& url, bool replace = false) {
    downloads.updateCheckRequested = true;
    downloads.BeginDownload(url, replace);
  }

  StartOptions options;
  EventLoop& loop;
  frmmsg message;
  Automation automation;
  Downloads downloads;
  Windows windows;
  RemoteControl remote;
  bool manualMissed = false;  // its message is open
};

Program::Program(Platform& platform, StartOptions options)
    : parts_(std::make_unique<Parts>(*this, platform, std::move(options))) {
  Ftp().SetPort(parts_->options.ftpPort);
  parts_->automation.execution.onRun = [this](const TaskRecord& task) {
    if (onTaskRun) onTaskRun(task);
  };
  parts_->automation.scripts.onFailure = [this](const std::string& message) {
    if (onScriptFailure) onScriptFailure(message);
  };
  parts_->windows.main.onOnTop = [this](bool on) {
    // The popup message is above all others anyway.
    for (forms::Form* form :
         std::initializer_list<forms::Form*>{&Editor(), &parts_->windows.about, &SettingsWindow(),
                                             &ChatWindow(), &parts_->remote.ftpWindow}) {
      form->SetTopMost(on);
    }
    GetDownloads().window.SetTopMost(on);
    GetDownloads().ForEachDialog([on](forms::Form& form) { form.SetTopMost(on); });
  };
  parts_->windows.main.onEnded = [this] {
    Telnet().ServerOff();
    GetDownloads().Unload();
    Editor().Unload();
    parts_->windows.about.Unload();
    SettingsWindow().Unload();
    parts_->loop.Quit();
  };
}

Program::~Program() = default;

void Program::BringToFront() {
  for (forms::Form* form :
       std::initializer_list<forms::Form*>{&Editor(), &parts_->windows.about, &SettingsWindow()}) {
    if (form->Visible()) return form->Activate();
  }
  MainWindow().Return();
}

void Program::ShowTime() { MainWindow().SetCaption(parts_->automation.scheduler.Caption()); }

void Program::Start() {
  MainWindow().Start(parts_->options.commandLine, parts_->options.programFolder);
}

void Program::Prepare() {
  Store().ReadDateOrder();
  parts_->automation.folder.Set(parts_->options.programFolder);
  SettingOf("Inet_Compat").Load(GetSettings(), parts_->automation.programSettings);
  GetSettings().ReadStorageMode();
}

Settings& Program::GetSettings() { return parts_->automation.settings; }
TaskStore& Program::Store() { return parts_->automation.store; }
Sched& Program::GetSched() { return parts_->automation.sched; }
TaskExecution& Program::Execution() { return parts_->automation.execution; }
frmScriptcfg& Program::MainWindow() { return parts_->windows.main; }
frmSettings& Program::SettingsWindow() { return parts_->windows.settings; }
frmEdit& Program::Editor() { return parts_->windows.editor; }
frmChat& Program::ChatWindow() { return parts_->remote.chat; }
TelnetServer& Program::Telnet() { return parts_->remote.telnet; }
FtpServer& Program::Ftp() { return parts_->remote.ftp; }
Downloads& Program::GetDownloads() { return parts_->downloads; }

void Program::CheckScript(const std::string& path,
                          const std::function<void(int, const std::string&)>& onFault) {
  parts_->automation.scripts.CheckScript(path, onFault);
}

std::string Program::ScriptCommand() const { return parts_->automation.scripts.CommandAtWork(); }

void Program::RunUntilIdle() {
  const auto idle = [this] {
    return !parts_->automation.scripts.Waiting() && !GetDownloads().Busy();
  };
  const auto quitWhenIdle = [this, idle] {
    if (idle()) parts_->loop.Quit();
  };
  if (idle()) return;
  parts_->automation.scripts.onIdle = quitWhenIdle;
  const Subscription ended =
      GetDownloads().ended.Subscribe([quitWhenIdle](const DownloadEnd&) { quitWhenIdle(); });
  parts_->loop.Run();
}

void Program::Quit() { MainWindow().Unload(); }

}  // namespace orvanto
