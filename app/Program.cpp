#include "app/Program.h"

#include <utility>

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
#include "platform/Files.h"

namespace orvanto {
namespace {

// Answers the file check of validation by a plain look at the file.
class PlainFileFinder : public FileFinder {
 public:
  explicit PlainFileFinder(const Files& files) : files_(files) {}
  bool FindFile(const std::string& path) override { return files_.Exists(path); }

 private:
  const Files& files_;
};

}  // namespace

// In the order of construction: each sees only what stands above it.
struct Program::Parts {
  Parts(Platform& platform, StartOptions startOptions)
      : options(std::move(startOptions)),
        settings(platform.registry),
        finder(platform.files),
        store(settings, platform.clock, finder),
        sched(store, platform.clock),
        execution(store, platform.shell, platform.session, platform.sound, platform.messageBoxes,
                  nullptr),
        scheduler(platform.loop, platform.clock, store, sched, execution),
        message(platform.forms),
        editor(platform.forms, {store, platform.clock, platform.shell, platform.messageBoxes,
                                platform.fileDialogs}),
        about(platform.forms, platform.shell),
        mainWindow(platform.forms,
                   {settings, store, sched, scheduler, execution, platform.clock, platform.files,
                    platform.trayIcon, platform.messageBoxes, message}) {}

  StartOptions options;
  Settings settings;
  PlainFileFinder finder;
  TaskStore store;
  Sched sched;
  TaskExecution execution;
  Scheduler scheduler;
  frmmsg message;
  frmEdit editor;
  frmAbout about;
  frmScriptcfg mainWindow;
};

Program::Program(Platform& platform, StartOptions options)
    : parts_(std::make_unique<Parts>(platform, std::move(options))) {
  parts_->execution.onRun = [this](const TaskRecord& task) {
    if (onTaskRun) onTaskRun(task);
  };
  WireWindows(platform.loop);
}

Program::~Program() = default;

void Program::WireWindows(EventLoop& loop) {
  frmScriptcfg& window = parts_->mainWindow;
  window.showEditor = [this](bool newTask, std::int16_t slot) {
    parts_->editor.Open(newTask, slot);
  };
  window.showAbout = [this] { parts_->about.Open(); };
  parts_->editor.onSaved = [&window] { window.BuildTaskTree(); };
  parts_->editor.onClosed = [&window] { window.Return(); };
  parts_->about.onClosed = [&window] { window.Return(); };
  window.onEnded = [this, &loop] {
    parts_->editor.Unload();
    parts_->about.Unload();
    loop.Quit();
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

void Program::Quit() { parts_->mainWindow.Unload(); }

}  // namespace orvanto
