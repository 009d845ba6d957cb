#include "app/Program.h"

#include <utility>

#include "app/RemoteArea.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "core/ui/frmAbout.h"
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "core/ui/frmmsg.h"
#include "platform/EventLoop.h"
#include "remote/Internet.h"
#include "remote/frmChat.h"
#include "script/FileAction.h"
#include "script/FileFinder.h"
#include "script/Script_Interpreter.h"
#include "script/modWindow.h"

namespace orvanto {
// In the order of construction: each sees what stands above it, but for the task store's finder,
// which is bound before it is made.
struct Program::Parts {
  Parts(const Program& program, Platform& platform, StartOptions startOptions)
      : options(std::move(startOptions)),
        loop(platform.loop),
        settings(platform.registry),
        store(settings, platform.clock, search),
        sched(store, platform.clock),
        fileActions(platform.files, platform.shell, store),
        search(platform.loop, platform.files, fileActions),
        windowActions(platform.loop, platform.desktop, platform.keyboard, platform.clipboard),
        message(platform.forms),
        scripts(platform.loop, platform.files, store,
                {platform.shell, platform.session, platform.sound, platform.messageBoxes,
                 fileActions, search, windowActions,
                 [this, &program](const std::string& text) {
                   message.ShowText(text);
                   if (program.onPopup) program.onPopup(text);
                 },
                 nullptr}),
        execution(store, platform.shell, platform.session, platform.sound, platform.messageBoxes,
                  &scripts),
        scheduler(platform.loop, platform.clock, store, sched, execution),
        editor(platform.forms, {store, platform.clock, platform.shell, platform.messageBoxes,
                                platform.fileDialogs}),
        about(platform.forms, platform.shell),
        mainWindow(platform.forms,
                   {settings, store, sched, scheduler, execution, platform.clock, platform.files,
                    platform.trayIcon, platform.messageBoxes, message}),
        remoteArea(mainWindow),
        chat(platform.forms),
        telnet({platform.loop, platform.sockets, settings, store, execution, platform.clock,
                platform.files, platform.messageBoxes, remoteArea, chat},
               mainWindow.programSettings.remote) {}

  StartOptions options;
  EventLoop& loop;
  Settings settings;
  TaskStore store;
  Sched sched;
  FileActions fileActions;
  FolderSearch search;
  WindowActions windowActions;
  frmmsg message;
  ScriptInterpreter scripts;
  TaskExecution execution;
  Scheduler scheduler;
  frmEdit editor;
  frmAbout about;
  frmScriptcfg mainWindow;
  RemoteArea remoteArea;
  frmChat chat;
  TelnetServer telnet;
};

Program::Program(Platform& platform, StartOptions options)
    : parts_(std::make_unique<Parts>(*this, platform, std::move(options))) {
  parts_->execution.onRun = [this](const TaskRecord& task) {
    if (onTaskRun) onTaskRun(task);
  };
  parts_->scripts.onFailure = [this](const std::string& message) {
    if (onScriptFailure) onScriptFailure(message);
  };
  WireWindows();
}

Program::~Program() = default;

void Program::WireWindows() {
  frmScriptcfg& window = parts_->mainWindow;
  window.showEditor = [this](std::optional<std::int16_t> slot) { parts_->editor.Open(slot); };
  window.showAbout = [this] { parts_->about.Open(); };
  window.onOnTop = [this](bool on) {
    // The popup message is above all others anyway.
    for (forms::Form* form :
         std::initializer_list<forms::Form*>{&parts_->editor, &parts_->about, &parts_->chat}) {
      form->SetTopMost(on);
    }
  };
  parts_->chat.formBehind = &window;
  parts_->editor.onSaved = [&window](std::int16_t slot) { window.BuildTaskTree(slot); };
  parts_->editor.onClosed = [&window] { window.Return(); };
  parts_->about.onClosed = [&window] { window.Return(); };
  TelnetServer& telnet = parts_->telnet;
  parts_->remoteArea.ShowLog(telnet.ServerLog());
  window.switchServer = [&telnet](bool on) { on ? telnet.ServerOn() : telnet.ServerOff(); };
  window.startChat = [&telnet] { telnet.StartChat(); };
  window.kickClient = [&telnet] { telnet.Kick(); };
  window.sendTilde = [&telnet] { telnet.SendTilde(); };
  window.refreshServerCaption = [&telnet] { telnet.RefreshCaption(); };
  window.onEnded = [this] {
    parts_->telnet.ServerOff();
    parts_->editor.Unload();
    parts_->about.Unload();
    parts_->loop.Quit();
  };
}

void Program::BringToFront() {
  for (forms::Form* form : std::initializer_list<forms::Form*>{&parts_->editor, &parts_->about}) {
    if (form->Visible()) return form->Activate();
  }
  parts_->mainWindow.Return();
}

void Program::Start() {
  parts_->mainWindow.Start(parts_->options.commandLine, parts_->options.programFolder);
}

void Program::Prepare() {
  parts_->store.ReadDateOrder();
  parts_->store.SetProgramFolder(parts_->options.programFolder);
  parts_->settings.ReadStorageMode();
}

Settings& Program::GetSettings() { return parts_->settings; }
TaskStore& Program::Store() { return parts_->store; }
Sched& Program::GetSched() { return parts_->sched; }
TaskExecution& Program::Execution() { return parts_->execution; }
frmScriptcfg& Program::MainWindow() { return parts_->mainWindow; }
frmEdit& Program::Editor() { return parts_->editor; }
frmChat& Program::ChatWindow() { return parts_->chat; }
TelnetServer& Program::Telnet() { return parts_->telnet; }

std::string Program::ScriptCommand() const { return parts_->scripts.CommandAtWork(); }

void Program::RunUntilIdle() {
  if (!parts_->scripts.Waiting()) return;
  parts_->scripts.onIdle = [this] { parts_->loop.Quit(); };
  parts_->loop.Run();
}

void Program::Quit() { parts_->mainWindow.Unload(); }

}  // namespace orvanto
