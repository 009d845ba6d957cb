#include "core/ui/frmScriptcfg.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <tuple>
#include <utility>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/ProgramTitle.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "core/ui/frmmsg.h"
#include "platform/Files.h"
#include "platform/MessageBoxes.h"
#include "platform/TrayIcon.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"
#include "platform/text/WholeNumber.h"

namespace orvanto {
namespace {

constexpr const char* kStartupLog = "ORVTASK.LOG";

// At the window's first size, in twips. Heights of the task tree: above the server's area, and
// alone.
constexpr forms::Size kFirstSize{8940, 4350};
constexpr int kTreeAboveServer = 1425;
constexpr int kTreeAlone = 3375;
constexpr forms::Bounds kTree{120, 120, 7020, kTreeAlone};
constexpr forms::Column kCommands{{7260, 120, 1560, 375}, 465};
constexpr forms::Bounds kServer{120, 1650, 7020, 1845};
constexpr forms::Bounds kServerLog{180, 630, 5280, 1050};
constexpr forms::Column kServerCommands{{5610, 630, 1230, 375}, 465};
constexpr forms::Bounds kServerSwitch{120, 3600, 7020, 630};

// "left top width height" in twips; nothing when it is anything else.
std::optional<forms::Bounds> ParsePlace(std::string_view text) {
  constexpr int kMost = 1'000'000;
  std::array<int, 4> numbers{};
  for (int& number : numbers) {
    const std::size_t length = std::min(text.find(' '), text.size());
    number = WholeNumber<int>(text.substr(0, length)).value_or(kMost);
    if (number <= -kMost || number >= kMost) return std::nullopt;
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return forms::Bounds{numbers[0], numbers[1], numbers[2], numbers[3]};
}

std::string PlaceText(const forms::Bounds& place) {
  return std::to_string(place.left) + " " + std::to_string(place.top) + " " +
         std::to_string(place.width) + " " + std::to_string(place.height);
}

// Redraws once, after all changes of the tree.
class TreeUpdate {
 public:
  explicit TreeUpdate(forms::TreeView& tree) : tree_(tree) { tree_.BeginUpdate(); }
  ~TreeUpdate() { tree_.EndUpdate(); }
  TreeUpdate(const TreeUpdate&) = delete;
  TreeUpdate& operator=(const TreeUpdate&) = delete;

 private:
  forms::TreeView& tree_;
};

}  // namespace

frmScriptcfg::frmScriptcfg(forms::FormHost& host, const Services& services)
    : Form(host, kProgramTitle, kFirstSize),
      treTasks(*this, nullptr, kTree),
      cmdNew(*this, nullptr, "&New Task", kCommands[0]),
      cmdDelete(*this, nullptr, "&Delete Task", kCommands[1]),
      cmdEdit(*this, nullptr, "&Edit Task", kCommands[2]),
      cmdRun(*this, nullptr, "&Run Task", kCommands[3]),
      cmdSystemTray(*this, nullptr, "&System Tray", kCommands[4]),
      cmdAbout(*this, nullptr, "&About", kCommands[5]),
      cmdExit(*this, nullptr, "E&xit", kCommands[6]),
      fraServer(*this, nullptr, "", kServer),
      lblConnectionFrom(*this, &fraServer, "Connection From:", {465, 285, 1500, 240}),
      lblIpclient(*this, &fraServer, "0.0.0.0", {2010, 285, 1680, 240}),
      lblNoConnection(*this, &fraServer, "No Connection", {4245, 285, 1440, 240}),
      shpServeryes(*this, &fraServer, {180, 300, 195, 195}),
      shpServerno(*this, &fraServer, {3960, 300, 195, 195}),
      txtServer(*this, &fraServer, {.multiLine = true, .readOnly = true}, kServerLog),
      cmdChat(*this, &fraServer, "&Chat", kServerCommands[0]),
      cmdKick(*this, &fraServer, "&Kick", kServerCommands[1]),
      fraInet(*this, nullptr, "Internet Server:", kServerSwitch),
      optIneton(*this, &fraInet, "&On", {180, 270, 1200, 270}),
      optInetoff(*this, &fraInet, "O&ff", {1560, 270, 1200, 270}),
      mnuScheduler(*this, "&Scheduler"),
      mnuSettings(mnuScheduler, "Settings"),
      mnuOnTop(mnuScheduler, "Always on Top"),
      mnuSystemTray(mnuScheduler, "Show in System Tray"),
      mnuSeparator(mnuScheduler, "-"),
      mnuAbout(mnuScheduler, "About"),
      mnuExit(mnuScheduler, "Exit"),
      mnuTasks(*this, "&Tasks"),
      mnuNew(mnuTasks, "New"),
      mnuDelete(mnuTasks, "Delete"),
      mnuEdit(mnuTasks, "Edit"),
      mnuRun(mnuTasks, "Run"),
      mnuList(treTasks),
      mnuListNew(mnuList, "New"),
      mnuListDelete(mnuList, "Delete"),
      mnuListEdit(mnuList, "Edit"),
      mnuListRun(mnuList, "Run"),
      mnuListDuplicate(mnuList, "Duplicate"),
      mnuInternet(*this, "&Internet"),
      mnuServer(mnuInternet, "Server"),
      mnuServeron(mnuServer, "On"),
      mnuServeroff(mnuServer, "Off"),
      mnuServersetup(mnuServer, "Setup"),
      mnuInetchat(mnuInternet, "Chat"),
      mnuInetsendfile(mnuInternet, "Send File"),
      mnuInetseparator(mnuInternet, "-"),
      mnuInetftpserver(mnuInternet, "FTP Server"),
      mnuInetdownload(mnuInternet, "Download..."),
      services_(services) {
  helpPage = "the-main-window";
  minimizeButton = resizable = true;
  onResize = [this] { LayOut(); };
  treTasks.spokenName = "Tasks";
  txtServer.spokenName = "Server log";
  fraInet.SetVisible(false);
  fraServer.SetVisible(false);
  optInetoff.SetValue(true);
  WireCommands();
}

void frmScriptcfg::WireCommands() {
  const std::initializer_list<std::pair<forms::Button*, Command>> buttons{
      {&cmdNew, kNew},         {&cmdDelete, kDelete}, {&cmdEdit, kEdit}, {&cmdRun, kRun},
      {&cmdSystemTray, kTray}, {&cmdAbout, kAbout},   {&cmdExit, kExit}};
  for (const auto& [button, command] : buttons) {
    button->onClick = [this, command = command] { OnCommand(command); };
  }
  const std::initializer_list<std::pair<forms::MenuItem*, Command>> items{
      {&mnuNew, kNew},         {&mnuDelete, kDelete}, {&mnuEdit, kEdit}, {&mnuRun, kRun},
      {&mnuSystemTray, kTray}, {&mnuAbout, kAbout},   {&mnuExit, kExit}, {&mnuListNew, kNew},
      {&mnuListEdit, kEdit},   {&mnuListRun, kRun}};
  for (const auto& [item, command] : items) {
    item->onClick = [this, command = command] { OnCommand(command); };
  }
  mnuSettings.onClick = [this] {
    Hide();
    showSettings();
  };
  mnuOnTop.onClick = [this] {
    mnuOnTop.SetChecked(!mnuOnTop.Checked());
    SetOnTop(mnuOnTop.Checked());
  };
  treTasks.onNodeClick = [this] { EnableTaskCommands(!treTasks.Nodes().empty()); };
  treTasks.onActivate = [this] { OnCommand(kEdit); };
  treTasks.onDelete = mnuListDelete.onClick = [this] { DeleteIfWanted(); };
  treTasks.onTip = [this](forms::TreeView::NodeId node) { return TipOf(node); };
  mnuListDuplicate.onClick = [this] { DuplicateSelectedTask(); };
  services_.trayIcon.onMouse = [this](int mouseMessage) {
    if (mouseMessage == kLeftDoubleClick) Return();
  };
  services_.trayIcon.menu = {{"&Open", [this] { Return(); }},
                             {"E&xit", [this] { OnCommand(kExit); }}};
  ticks_ = services_.scheduler.secondPassed.Subscribe([this] {
    SetCaption(services_.scheduler.Caption());
    FadeWhatHasPassed();
  });
  listChanges_ = services_.store.listChanged.Subscribe([this] {
    if (Loaded()) BuildTaskTree();
  });
  onUnload = [this] { OnUnload(); };
}

void frmScriptcfg::OnCommand(Command command) {
  switch (command) {
    case kNew:
      NewTask();
      break;
    case kDelete:
      DeleteSelectedTask();
      break;
    case kEdit:
      if (const std::int16_t slot = SelectedSlot(); slot > 0) {
        Hide();
        showEditor(slot);
      }
      break;
    case kRun:
      if (const std::int16_t slot = SelectedSlot(); slot > 0) services_.execution.RunTask(slot);
      break;
    case kTray:
      services_.trayIcon.Add(kProgramTitle);
      Hide();
      break;
    case kAbout:
      Hide();
      showAbout();
      break;
    case kExit:
      Unload();
      break;
  }
}

void frmScriptcfg::NewTask() {
  if (services_.store.NoTasks() >= kMaxTasks) {
    services_.messageBoxes.Show(TaskStore::kListFull, kProgramTitle, Buttons::Ok, BoxIcon::None);
    return;
  }
  Hide();
  showEditor(std::nullopt);
}

void frmScriptcfg::DeleteSelectedTask() {
  const std::string neighbour = NeighbourOfSelected();
  // Before the button is disabled: the keyboard would go to the next one, whichever that is.
  treTasks.SetFocus();
  services_.store.DeleteTask(SelectedSlot());
  if (!treTasks.Selected()) SelectKey(neighbour);
}

// Asked for by a key that is easily hit, or in a menu where the next line is near.
void frmScriptcfg::DeleteIfWanted() {
  const std::int16_t slot = SelectedSlot();
  if (slot == 0) return;
  const std::string name = services_.store.TaskName(slot);
  if (services_.messageBoxes.Show("Delete the task \"" + name + "\"?", kProgramTitle,
                                  Buttons::NoUnlessYes, BoxIcon::Question) == Answer::Yes) {
    DeleteSelectedTask();
  }
}

void frmScriptcfg::DuplicateSelectedTask() {
  TaskStore& store = services_.store;
  const std::int16_t slot = SelectedSlot();
  if (slot == 0) return;
  store.LoadTask(slot);
  TaskEntry copy = EntryOf(store.CurrentTask, store.DateOrderMonthFirst);
  const std::string name = copy.name;
  for (int number = 2; number == 2 || store.BelongsToAnother(copy.name, 0); ++number) {
    copy.name = name + " (" + std::to_string(number) + ")";
  }
  if (const std::int16_t made = store.StoreEntry(copy, "", TaskStore::Check::NameOnly); made > 0) {
    return SelectTask(made);
  }
  services_.messageBoxes.Show(store.TaskValidationMessage, kProgramTitle, Buttons::Ok,
                              BoxIcon::None);
}

std::string frmScriptcfg::TipOf(forms::TreeView::NodeId node) {
  const auto found = std::find(nodeOfSlot_.begin(), nodeOfSlot_.end(), node);
  if (found == nodeOfSlot_.end()) return "";
  services_.store.LoadTask(static_cast<std::int16_t>(found - nodeOfSlot_.begin() + 1));
  const auto due = services_.sched.NextDue(services_.store.CurrentTask);
  return treTasks.Nodes()[node].text + kCrLf +
         (due ? "next: " + DescribeDue(*due, services_.clock) : "never again");
}

void frmScriptcfg::FadeWhatHasPassed() {
  const auto minuteOf = [](const DateTime& time) {
    return std::tuple(time.year, time.month, time.day, time.hour, time.minute);
  };
  const auto now = minuteOf(services_.clock.Now());
  std::erase_if(comeOnce_, [&](const auto& each) {
    const bool passed = minuteOf(each.first) <= now;
    if (passed) treTasks.Fade(each.second);
    return passed;
  });
}

// The other windows first, so that this one stays above those that it does not open in front of.
void frmScriptcfg::SetOnTop(bool on) {
  if (onOnTop) onOnTop(on);
  SetTopMost(on);
}

void frmScriptcfg::Return() {
  if (!Loaded()) return;
  services_.trayIcon.Remove();
  treTasks.SetFocus();
  Activate();
  if (!placeAtFirst_) placeAtFirst_ = Place();
}

void frmScriptcfg::WireRemoteControl() {
  const bool there = remoteCommands != nullptr;
  optIneton.SetEnabled(there);
  optInetoff.SetEnabled(there);
  mnuInternet.SetEnabled(there);
  cmdChat.SetEnabled(false);
  cmdKick.SetEnabled(false);
  mnuServersetup.SetEnabled(showSettings != nullptr);
  // It has no function yet.
  mnuInetsendfile.SetEnabled(false);
  mnuInetftpserver.SetEnabled(false);  // while the server is off
  mnuInetdownload.SetEnabled(showDownload != nullptr);
  mnuInetdownload.onClick = showDownload;
  if (!there) return;
  optIneton.onClick = mnuServeron.onClick = [this] { remoteCommands->SwitchServer(true); };
  optInetoff.onClick = mnuServeroff.onClick = [this] { remoteCommands->SwitchServer(false); };
  mnuServersetup.onClick = mnuSettings.onClick;
  mnuInetchat.onClick = [this] { remoteCommands->SendTilde(); };
  mnuInetftpserver.onClick = [this] { remoteCommands->ShowFtpServer(); };
  cmdChat.onClick = [this] { remoteCommands->StartChat(); };
  cmdKick.onClick = [this] { remoteCommands->Kick(); };
}

std::int16_t frmScriptcfg::SelectedSlot() {
  std::int16_t slot = 0;
  const auto selected = treTasks.Selected();
  // A group's node names no task, whatever its text looks like.
  if (selected && treTasks.Nodes()[*selected].parent) {
    services_.store.FindTaskIndex(treTasks.Nodes()[*selected].text, slot);
  }
  return slot;
}

std::string frmScriptcfg::SelectedKey() const {
  const auto selected = treTasks.Selected();
  return selected ? treTasks.Nodes()[*selected].key : "";
}

// The task that a person looks at next when the selected one goes: the one below in its group, or
// the one above; where it was the only one, the nearest of another group. Empty for none.
std::string frmScriptcfg::NeighbourOfSelected() const {
  const auto& nodes = treTasks.Nodes();
  const auto selected = treTasks.Selected();
  std::tuple<bool, bool, std::size_t> nearest;
  std::string key;
  for (std::size_t id = 0; selected && id < nodes.size(); ++id) {
    if (id == *selected || !nodes[id].parent) continue;
    const bool above = id < *selected;
    const std::tuple distance{nodes[id].parent != nodes[*selected].parent, above,
                              above ? *selected - id : id - *selected};
    if (!key.empty() && nearest < distance) continue;
    nearest = distance;
    key = nodes[id].key;
  }
  return key;
}

void frmScriptcfg::SelectKey(const std::string& key) {
  const auto& nodes = treTasks.Nodes();
  const auto node =
      std::find_if(nodes.begin(), nodes.end(), [&](const auto& each) { return each.key == key; });
  if (node == nodes.end()) return;
  treTasks.Select(static_cast<std::size_t>(node - nodes.begin()));
  EnableTaskCommands(true);
}

void frmScriptcfg::EnableTaskCommands(bool selected) {
  const bool editable = selected && showEditor != nullptr;
  cmdDelete.SetEnabled(selected);
  mnuDelete.SetEnabled(selected);
  cmdRun.SetEnabled(selected);
  mnuRun.SetEnabled(selected);
  cmdEdit.SetEnabled(editable);
  mnuEdit.SetEnabled(editable);
  const auto node = treTasks.Selected();
  const bool task = selected && node && treTasks.Nodes()[*node].parent;
  for (forms::MenuItem* item : {&mnuListDelete, &mnuListRun, &mnuListDuplicate}) {
    item->SetEnabled(task);
  }
  mnuListEdit.SetEnabled(task && editable);
}

void frmScriptcfg::Step(const std::function<void()>& step) {
  int number = kInternalError;
  try {
    step();
    return;
  } catch (const Error& error) {
    number = error.Number();
  } catch (const std::exception&) {
    // Logged as an internal error.
  }
  services_.files.Append(kStartupLog, "\"Error Code:" + std::to_string(number) + "\"" + kCrLf);
}

void frmScriptcfg::Start(const std::string& commandLine, const std::string& programFolder) {
  TaskStore& store = services_.store;
  ProgramSettings& values = services_.programSettings;
  const bool invisible = LowerCase(commandLine) == "invisible";

  Step([&] { Load(); });
  Step([&] {
    services_.message.Load();
    services_.message.SetTopMost(true);
  });
  // Read before the storage mode is known, so always from the user's own settings.
  Step([&] { fraInet.SetVisible(true); });
  for (const Setting& setting : kSettings) {
    if (setting.read == Setting::Read::Early) LoadSetting(setting);
  }
  WireRemoteControl();
  Step([&] {
    if (remoteCommands != nullptr) remoteCommands->SwitchServer(values.serverOn);
  });
  Step([&] { services_.settings.ReadStorageMode(); });
  LoadSetting(SettingOf("OnTop"));
  Step([&] {
    mnuOnTop.SetChecked(values.onTop);
    if (values.onTop) SetOnTop(true);
  });
  LoadSetting(SettingOf("Proxy"));
  if (!values.proxyHost.empty()) {
    LoadSetting(SettingOf("ProxyPort"));
    LoadSetting(SettingOf("Proxy FTP"));
  }
  LoadSetting(SettingOf("Check_Auto_Update"));
  Step([&] { store.ReadDateOrder(); });
  Step([&] { CentreOnScreen(); });
  Step([&] { RestorePlace(); });
  Step([&] { services_.folder.Set(programFolder); });
  Step([&] {
    BuildTaskTree();
    if (store.NoTasks() > kMaxTasks) throw Error(kSubscriptOutOfRange, "Subscript out of range");
  });
  SetCaption(services_.scheduler.Caption());

  const bool canEdit = showEditor != nullptr;
  cmdNew.SetEnabled(canEdit);
  mnuNew.SetEnabled(canEdit);
  cmdAbout.SetEnabled(showAbout != nullptr);
  mnuAbout.SetEnabled(showAbout != nullptr);
  mnuSettings.SetEnabled(showSettings != nullptr);
  services_.scheduler.tmrSched.Start();
  if (invisible) return;
  Show();
  placeAtFirst_ = Place();
}

void frmScriptcfg::LoadSetting(const Setting& setting) {
  Step([&] { setting.Load(services_.settings, services_.programSettings); });
}

void frmScriptcfg::SelectTask(std::int16_t slot) {
  const auto position = static_cast<std::size_t>(slot - 1);
  if (position < nodeOfSlot_.size()) treTasks.Select(nodeOfSlot_[position]);
  EnableTaskCommands(treTasks.Selected().has_value());
}

void frmScriptcfg::ShowServerArea(bool on) {
  (on ? optIneton : optInetoff).SetValue(true);
  fraServer.SetVisible(on);
  LayOut();
  mnuInetftpserver.SetEnabled(on);
}

// What the window has more than at first goes to the tree, and in width to the server's log.
void frmScriptcfg::LayOut() {
  const int wider = ClientSize().width - kFirstSize.width;
  const int higher = ClientSize().height - kFirstSize.height;
  const auto moved = [](forms::Bounds bounds, int right, int down, int width, int height) {
    return forms::Bounds{bounds.left + right, bounds.top + down, bounds.width + width,
                         bounds.height + height};
  };
  const int treeHeight = fraServer.Visible() ? kTreeAboveServer : kTreeAlone;
  treTasks.SetBounds(moved(kTree, 0, 0, wider, treeHeight - kTree.height + higher));
  int row = 0;
  for (forms::Button* button :
       {&cmdNew, &cmdDelete, &cmdEdit, &cmdRun, &cmdSystemTray, &cmdAbout, &cmdExit}) {
    button->SetBounds(moved(kCommands[row++], wider, 0, 0, 0));
  }
  fraServer.SetBounds(moved(kServer, 0, higher, wider, 0));
  txtServer.SetBounds(moved(kServerLog, 0, 0, wider, 0));
  row = 0;
  for (forms::Button* button : {&cmdChat, &cmdKick}) {
    button->SetBounds(moved(kServerCommands[row++], wider, 0, 0, 0));
  }
  fraInet.SetBounds(moved(kServerSwitch, 0, higher, wider, 0));
}

void frmScriptcfg::RestorePlace() {
  const auto place = ParsePlace(SettingOf("Window").Text(services_.settings));
  if (place) SetPlace(*place);
}

// One that nobody has moved comes to the middle of the screen, whatever screen there is next time.
void frmScriptcfg::SavePlace() {
  if (!placeAtFirst_ || Place() == *placeAtFirst_) return;
  SettingOf("Window").Store(services_.settings, PlaceText(Place()));
}

// Keeps the line selected that was, as long as there is the same. As far as the hundredth task.
void frmScriptcfg::BuildTaskTree() {
  TaskStore& store = services_.store;
  const std::string selected = SelectedKey();
  TreeUpdate update(treTasks);
  // Not disabled in between, where the selection stays: the keyboard would leave the button.
  if (selected.empty()) EnableTaskCommands(false);
  treTasks.Clear();
  nodeOfSlot_.clear();
  comeOnce_.clear();
  for (const std::int16_t slot : store.Slots()) {
    if (slot > kMaxTasks) break;
    const std::string description = services_.sched.TreeLine(slot);
    const std::string group = store.CurrentTask.group;
    const bool once = store.CurrentTask.timeType == kTimeOnce;
    const auto due = once ? services_.sched.NextDue(store.CurrentTask) : std::nullopt;
    // Any node of that text will do, in the order of their making.
    std::optional<forms::TreeView::NodeId> parent;
    for (std::size_t id = 0; id < treTasks.Nodes().size() && !parent; ++id) {
      if (treTasks.Nodes()[id].text == group) parent = id;
    }
    if (!parent) {
      parent = treTasks.Add({.parent = std::nullopt,
                             .key = "g " + group,
                             .text = group,
                             .image = "GROUP",
                             .selectedImage = "GROUP"});
    }
    const auto node = treTasks.Add({.parent = parent,
                                    .key = "t " + description,
                                    .text = description,
                                    .image = "TASK",
                                    .selectedImage = "TASK_SELECTED",
                                    .faded = once && !due});
    if (due) comeOnce_.emplace_back(*due, node);
    treTasks.EnsureVisible(node);
    nodeOfSlot_.push_back(node);
  }
  SelectKey(selected);
  EnableTaskCommands(treTasks.Selected().has_value());
}

void frmScriptcfg::OnUnload() {
  services_.scheduler.tmrSched.Stop();
  services_.trayIcon.Remove();
  services_.message.Unload();
  services_.programSettings.onTop = mnuOnTop.Checked();
  SettingOf("OnTop").Save(services_.settings, services_.programSettings);
  SavePlace();
  if (onEnded) onEnded();
}

}  // namespace orvanto
