// The main window: the tree of tasks and the commands on them, the caption clock, the tray, and the
// area of the remote control, whose handlers belong to its server.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/ProgramSettings.h"
#include "platform/Clock.h"
#include "platform/Event.h"
#include "platform/forms/forms.h"

namespace orvanto {

class Files;
class MessageBoxes;
class ProgramFolder;
class Sched;
class Scheduler;
class Settings;
class TaskExecution;
class TaskStore;
class TrayIcon;
class frmmsg;

// What the main window has for the remote control.
class RemoteCommands {
 public:
  virtual ~RemoteCommands() = default;
  virtual void SwitchServer(bool on) = 0;
  virtual void StartChat() = 0;
  virtual void Kick() = 0;
  virtual void SendTilde() = 0;
  virtual void ShowFtpServer() = 0;
};

class frmScriptcfg : public forms::Form {
 public:
  struct Services {
    Settings& settings;
    ProgramSettings& programSettings;
    ProgramFolder& folder;
    TaskStore& store;
    Sched& sched;
    Scheduler& scheduler;
    TaskExecution& execution;
    const Clock& clock;
    Files& files;
    TrayIcon& trayIcon;
    MessageBoxes& messageBoxes;
    frmmsg& message;
  };
  frmScriptcfg(forms::FormHost& host, const Services& services);

  // The windows that commands open in place of this one, which is hidden first; Return brings it
  // back. A command without its window is disabled. Set before Start. The editor makes a new task
  // where it gets no slot.
  std::function<void(std::optional<std::int16_t> slot)> showEditor;
  std::function<void()> showAbout;
  std::function<void()> showSettings;
  // Opened beside this one.
  std::function<void()> showDownload;

  // "Always on Top", as it was stored and whenever it is switched: for the windows beside this one.
  std::function<void(bool on)> onOnTop;

  // Without it the commands of the remote control are disabled. Set before Start.
  RemoteCommands* remoteCommands = nullptr;

  // The window has been unloaded: the program ends.
  std::function<void()> onEnded;

  // Loads the program's state and the window, in the order that start-up is defined in, and shows
  // it unless the command line is "invisible". A step that fails is logged in ORVTASK.LOG and the
  // next one follows.
  void Start(const std::string& commandLine, const std::string& programFolder);

  // Shows the window, on top of the others and out of the tray, with the keyboard in the tree; does
  // nothing when it has been unloaded.
  void Return();

  // Selects a slot's task and brings it into sight.
  void SelectTask(std::int16_t slot);

  // The area of the remote control, below a smaller tree; and the option buttons for it.
  void ShowServerArea(bool on);

  forms::TreeView treTasks;
  // Created column by column: the order is the tab order.
  forms::Button cmdNew, cmdDelete, cmdEdit, cmdRun, cmdSystemTray, cmdAbout, cmdExit;
  forms::Frame fraServer;
  forms::Label lblConnectionFrom, lblIpclient, lblNoConnection;
  forms::Lamp shpServeryes, shpServerno;
  forms::TextBox txtServer;
  forms::Button cmdChat, cmdKick;
  forms::Frame fraInet;
  forms::OptionButton optIneton, optInetoff;

  forms::MenuItem mnuScheduler, mnuSettings, mnuOnTop, mnuSystemTray, mnuSeparator, mnuAbout,
      mnuExit;
  forms::MenuItem mnuTasks, mnuNew, mnuDelete, mnuEdit, mnuRun;
  // Of the tree.
  forms::MenuItem mnuList, mnuListNew, mnuListDelete, mnuListEdit, mnuListRun, mnuListDuplicate;
  forms::MenuItem mnuInternet, mnuServer, mnuServeron, mnuServeroff, mnuServersetup, mnuInetchat,
      mnuInetsendfile, mnuInetseparator, mnuInetftpserver, mnuInetdownload;

 private:
  enum Command { kNew, kDelete, kEdit, kRun, kTray, kAbout, kExit };
  void WireCommands();
  void WireRemoteControl();
  void OnCommand(Command command);
  void NewTask();
  void DeleteSelectedTask();
  void DeleteIfWanted();
  void DuplicateSelectedTask();
  std::string TipOf(forms::TreeView::NodeId node);
  void FadeWhatHasPassed();
  void SetOnTop(bool on);
  void LayOut();
  void RestorePlace();
  void SavePlace();
  void OnUnload();
  void LoadSetting(const Setting& setting);
  void Step(const std::function<void()>& step);
  void BuildTaskTree();
  void EnableTaskCommands(bool selected);
  std::int16_t SelectedSlot();
  std::string SelectedKey() const;
  std::string NeighbourOfSelected() const;
  void SelectKey(const std::string& key);

  Services services_;
  std::vector<forms::TreeView::NodeId> nodeOfSlot_;                     // from slot 1 on
  std::vector<std::pair<DateTime, forms::TreeView::NodeId>> comeOnce_;  // and have not yet
  std::optional<forms::Bounds> placeAtFirst_;                           // when it was first shown
  Subscription ticks_;
  Subscription listChanges_;
};

}  // namespace orvanto
