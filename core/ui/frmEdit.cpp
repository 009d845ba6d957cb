#include "core/ui/frmEdit.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/ProgramTitle.h"
#include "core/Sched.h"
#include "core/TaskFacts.h"
#include "core/modTaskOperations.h"
#include "platform/Clock.h"
#include "platform/FileDialogs.h"
#include "platform/MessageBoxes.h"
#include "platform/Shell.h"
#include "platform/text/Case.h"

namespace orvanto {
namespace {

constexpr const char* kDefaultGroup = "General";

// What a change of the task type does to a control. Kept is deliberate: what one type has hidden
// stays hidden under a type that does not touch it.
enum class Show { Yes, No, Kept };

struct TypeLayout {
  const char* caption;  // of lbl1; null: kept
  Show first;           // lbl1, txt1
  Show browse;
  Show edit;
  Show second;  // txt2 and its label
  Show windowLabel;
  Show window;
};

constexpr Show kYes = Show::Yes;
constexpr Show kNo = Show::No;
constexpr Show kKept = Show::Kept;

constexpr std::array<TypeLayout, kTaskTypes> kLayouts{{
    {"Script File:", kYes, kYes, kYes, kNo, kNo, kNo},
    {"Program or Shortcut:", kYes, kYes, kNo, kYes, kYes, kKept},
    {"File to Print:", kYes, kYes, kNo, kNo, kNo, kKept},
    {nullptr, kNo, kNo, kNo, kNo, kKept, kKept},
    {nullptr, kNo, kNo, kNo, kNo, kNo, kNo},
    {"Message:", kYes, kNo, kNo, kNo, kNo, kNo},
    {"Sound File:", kYes, kYes, kNo, kNo, kNo, kNo},
}};

void Apply(Show show, forms::Control& control) {
  if (show != Show::Kept) control.SetVisible(show == Show::Yes);
}

std::vector<std::string> Texts(std::string (*nameOf)(int), int codes) {
  std::vector<std::string> texts;
  for (int code = 1; code <= codes; ++code) texts.push_back(nameOf(code));
  return texts;
}

// A list's position for a code from 1, and back; a code the list does not show stays what it was.
std::int16_t CodeOf(const forms::ComboBox& list, std::int16_t stored) {
  const int index = list.SelectedIndex();
  return index == forms::ComboBox::kNone ? stored : static_cast<std::int16_t>(index + 1);
}

DateTime NextMinute(DateTime time) {
  if (++time.minute < 60) return time;
  time.minute = 0;
  if (++time.hour < 24) return time;
  time.hour = 0;
  using std::chrono::year_month_day;
  const year_month_day today{std::chrono::year(time.year), std::chrono::month(unsigned(time.month)),
                             std::chrono::day(unsigned(time.day))};
  const year_month_day tomorrow(std::chrono::sys_days(today) + std::chrono::days(1));
  time.year = int{tomorrow.year()};
  time.month = static_cast<int>(unsigned{tomorrow.month()});
  time.day = static_cast<int>(unsigned{tomorrow.day()});
  return time;
}

constexpr forms::Column kTypes{{180, 300, 3060, 270}, 345};
// What the type asks for, each under its caption.
constexpr forms::Column kFieldCaptions{{3780, 765, 4200, 240}, 1035};
constexpr forms::Column kFields{{3780, 1035, 4200, 345}, 1035};
// The three rules in their frame, with the fields of each beside it.
constexpr forms::Column kRules{{180, 345, 3360, 270}, 480};

forms::OptionButton TypeOption(frmEdit& form, const forms::Frame& frame, int index) {
  return {form, &frame, kTaskTypeFacts[static_cast<std::size_t>(index)].caption, kTypes[index]};
}

}  // namespace

frmEdit::frmEdit(forms::FormHost& host, const Services& services)
    : Form(host, "New Task", {9600, 6780}),
      lblTaskName(*this, nullptr, "Name of Task:", {180, 225, 1500, 240}),
      txtTaskName(*this, nullptr, {}, {1740, 180, 3600, 345}),
      lblGroup(*this, nullptr, "Task Group:", {5640, 225, 1200, 240}),
      cmbGroup(*this, nullptr, {.editable = true}, {6900, 180, 2520, 345}),
      fraTaskType(*this, nullptr, "Type of Task:", {180, 675, 3360, 2775}),
      optTaskType{TypeOption(*this, fraTaskType, 0), TypeOption(*this, fraTaskType, 1),
                  TypeOption(*this, fraTaskType, 2), TypeOption(*this, fraTaskType, 3),
                  TypeOption(*this, fraTaskType, 4), TypeOption(*this, fraTaskType, 5),
                  TypeOption(*this, fraTaskType, 6)},
      lbl1(*this, nullptr, "Program or Shortcut:", kFieldCaptions[0]),
      txt1(*this, nullptr, {}, kFields[0]),
      cmdBrowse(*this, nullptr, "&Browse", {8130, 1035, 1290, 345}),
      cmdEdit(*this, nullptr, "E&dit Script", {8130, 1470, 1290, 345}),
      lbl2(*this, nullptr, "Parameters:", kFieldCaptions[1]),
      txt2(*this, nullptr, {}, kFields[1]),
      lblWindow(*this, nullptr, "Window style:", kFieldCaptions[2]),
      cmbWindow(*this, nullptr, {}, kFields[2]),
      lblTime(*this, nullptr, "At this time:", {180, 3735, 1500, 240}),
      txtHour(*this, nullptr, {.maxLength = 2}, {1740, 3690, 480, 345}),
      lblColon(*this, nullptr, ":", {2280, 3735, 90, 240}),
      txtMinute(*this, nullptr, {.maxLength = 2}, {2400, 3690, 480, 345}),
      cmdNow(*this, nullptr, "&Now", {3780, 3690, 1290, 345}),
      fraWhen(*this, nullptr, "When this task will occur:", {180, 4185, 9240, 1845}),
      optOnce(*this, &fraWhen, "&Once, on this day:", kRules[0]),
      optRecurring(*this, &fraWhen, "&Recurring", kRules[1]),
      optMonthly(*this, &fraWhen, "&Every month, on this day number:", kRules[2]),
      txtdte{forms::TextBox(*this, &fraWhen, {.maxLength = 2}, {3600, 300, 480, 345}),
             forms::TextBox(*this, &fraWhen, {.maxLength = 2}, {4320, 300, 480, 345}),
             forms::TextBox(*this, &fraWhen, {.maxLength = 4}, {5040, 300, 720, 345})},
      lblSlash{forms::Label(*this, &fraWhen, "/", {4155, 345, 105, 240}),
               forms::Label(*this, &fraWhen, "/", {4875, 345, 105, 240})},
      cmdToday(*this, &fraWhen, "&Today", {6000, 300, 1290, 345}),
      cmbRecur(*this, &fraWhen, {}, {3600, 780, 2160, 345}),
      cmbMonth(*this, &fraWhen, {}, {6000, 780, 2160, 345}),
      txtmnthday(*this, &fraWhen, {.maxLength = 2}, {3600, 1260, 480, 345}),
      srlmnthday(*this, &fraWhen, txtmnthday, 1, 31, {4080, 1260, 255, 345}),
      cmdSave(*this, nullptr, "&Save", {6690, 6225, 1290, 375}),
      cmdCancel(*this, nullptr, "&Cancel", {8130, 6225, 1290, 375}),
      services_(services) {
  helpPage = "tasks";
  defaultButton = &cmdSave;
  cancelButton = &cmdCancel;
  txtMinute.spokenName = "Minute";
  txtdte[2].spokenName = "Year";
  cmbRecur.spokenName = "Days";
  cmbMonth.spokenName = "Months";
  txtmnthday.spokenName = srlmnthday.spokenName = "Day of the month";
  WireControls();
}

void frmEdit::WireControls() {
  for (int i = 0; i < kTaskTypes; ++i) {
    optTaskType[static_cast<std::size_t>(i)].onClick = [this, i] { ChangeTaskType(i); };
  }
  optOnce.onClick = [this] { ChangeTimeType(kTimeOnce); };
  optRecurring.onClick = [this] { ChangeTimeType(kTimeRecurring); };
  optMonthly.onClick = [this] { ChangeTimeType(kTimeDayNumber); };
  cmdBrowse.onClick = [this] { Browse(); };
  cmdEdit.onClick = [this] { EditScript(); };
  cmdNow.onClick = [this] { FillTime(services_.clock.Now()); };
  cmdToday.onClick = [this] { FillDate(services_.clock.Now()); };
  cmdSave.onClick = [this] { Save(); };
  cmdCancel.onClick = [this] { Unload(); };
  onUnload = [this] {
    if (onClosed) onClosed();
  };
}

void frmEdit::Open(std::optional<std::int16_t> slot) {
  // Not the slot after the last: shared settings keep the name of a deleted task there.
  constexpr std::int16_t kNoSlot = 0;
  services_.store.LoadTask(slot.value_or(kNoSlot));
  loaded_ = services_.store.CurrentTask;
  newTask_ = !slot;
  if (newTask_) {
    // An empty slot loads the defaults; a time rule is not among them.
    loaded_.timeType = kTimeOnce;
    SetCaption("New Task");
  } else {
    SetCaption("Edit Task - " + loaded_.name);
  }
  const bool monthFirst = services_.store.DateOrderMonthFirst != 0;
  txtdte[0].spokenName = monthFirst ? "Month" : "Day";
  txtdte[1].spokenName = monthFirst ? "Day" : "Month";
  Fill(loaded_);
  CentreOnScreen();
  Show();
}

void frmEdit::Fill(const TaskRecord& task) {
  txtTaskName.SetText(task.name);
  txt1.SetText(task.path);
  txt2.SetText(task.cmdLine);
  FillLists(task);
  ShowDesignState();
  for (int i = 0; i < kTaskTypes; ++i) {
    optTaskType[static_cast<std::size_t>(i)].SetValue(task.taskType == i + 1);
  }
  if (ChosenTaskType() != 0) ChangeTaskType(task.taskType - 1);
  FillWhen(task);
}

void frmEdit::FillLists(const TaskRecord& task) {
  cmbGroup.SetItems(Groups());
  cmbGroup.SetText(task.group);
  std::vector<std::string> styles;
  styles.reserve(kWindowStyleFacts.size());
  for (const WindowStyleFacts& style : kWindowStyleFacts) styles.emplace_back(style.name);
  cmbWindow.SetItems(std::move(styles));
  cmbWindow.Select(task.winStyle - 1);
  // The rules that fire; one that never does is offered only to the task that has it.
  std::vector<std::string> rules = Texts(EveryName, kEveryCodesThatFire);
  const bool neverFires = task.every > kEveryCodesThatFire && task.every <= kEveryCodes;
  if (neverFires) rules.push_back(EveryName(task.every));
  cmbRecur.SetItems(std::move(rules));
  cmbMonth.SetItems(Texts(InName, kInCodes));
  const bool recurring = task.timeType == kTimeRecurring;
  cmbRecur.Select(!recurring ? 0 : neverFires ? kEveryCodesThatFire : task.every - 1);
  cmbMonth.Select(!recurring ? 0 : task.in - 1);
}

void frmEdit::FillWhen(const TaskRecord& task) {
  const DateTime now = services_.clock.Now();
  // The present minute has begun already, and would never come due.
  const DateTime offered = newTask_ ? NextMinute(now) : now;
  FillTime(offered);
  FillDate(offered);
  if (!newTask_) {
    txtHour.SetText(task.timeHour);
    txtMinute.SetText(task.timeMinute);
  }
  if (task.timeType == kTimeOnce && !newTask_) {
    const bool monthFirst = services_.store.DateOrderMonthFirst != 0;
    txtdte[0].SetText(monthFirst ? task.dateMonth : task.dateDay);
    txtdte[1].SetText(monthFirst ? task.dateDay : task.dateMonth);
    txtdte[2].SetText(task.dateYear);
  }
  txtmnthday.SetText(std::to_string(task.timeType == kTimeDayNumber ? task.dayNo : 1));
  optOnce.SetValue(task.timeType == kTimeOnce);
  optRecurring.SetValue(task.timeType == kTimeRecurring);
  optMonthly.SetValue(task.timeType == kTimeDayNumber);
  ChangeTimeType(task.timeType);
}

std::vector<std::string> frmEdit::Groups() {
  std::vector<std::string> groups{kDefaultGroup};
  for (const std::int16_t slot : services_.store.Slots()) {
    services_.store.LoadTask(slot);
    const std::string& group = services_.store.CurrentTask.group;
    if (std::find(groups.begin(), groups.end(), group) == groups.end()) groups.push_back(group);
  }
  return groups;
}

void frmEdit::ShowDesignState() {
  for (forms::Control* control : std::initializer_list<forms::Control*>{
           &lbl1, &txt1, &cmdBrowse, &cmdEdit, &lbl2, &txt2, &lblWindow, &cmbWindow}) {
    control->SetVisible(true);
  }
}

void frmEdit::ChangeTaskType(int index) {
  const TypeLayout& layout = kLayouts[static_cast<std::size_t>(index)];
  if (layout.caption != nullptr) lbl1.SetText(layout.caption);
  Apply(layout.first, lbl1);
  Apply(layout.first, txt1);
  Apply(layout.browse, cmdBrowse);
  Apply(layout.edit, cmdEdit);
  Apply(layout.second, lbl2);
  Apply(layout.second, txt2);
  Apply(layout.windowLabel, lblWindow);
  Apply(layout.window, cmbWindow);
}

void frmEdit::ChangeTimeType(std::int16_t timeType) {
  for (forms::TextBox& part : txtdte) part.SetEnabled(timeType == kTimeOnce);
  cmdToday.SetEnabled(timeType == kTimeOnce);
  cmbRecur.SetEnabled(timeType == kTimeRecurring);
  cmbMonth.SetEnabled(timeType == kTimeRecurring);
  txtmnthday.SetEnabled(timeType == kTimeDayNumber);
  srlmnthday.SetEnabled(timeType == kTimeDayNumber);
}

std::int16_t frmEdit::ChosenTaskType() const {
  for (std::size_t i = 0; i < optTaskType.size(); ++i) {
    if (optTaskType[i].Value()) return static_cast<std::int16_t>(i + 1);
  }
  return 0;
}

std::int16_t frmEdit::ChosenTimeType() const {
  if (optOnce.Value()) return kTimeOnce;
  if (optRecurring.Value()) return kTimeRecurring;
  return optMonthly.Value() ? kTimeDayNumber : 0;
}

void frmEdit::Browse() {
  std::vector<FileFilter> filters;
  std::string folder;
  switch (ChosenTaskType()) {
    case kRunScript:
      filters.push_back({"Text Files (*.txt)", "*.txt"});
      folder = services_.store.Folder().Scripts();
      break;
    case kRunProgram:
      filters.push_back({"Executables (*.exe)", "*.exe"});
      filters.push_back({"Shortcuts (*.lnk)", "*.lnk"});
      break;
    case kPlaySound:
      filters.push_back({"Sound Files (*.wav)", "*.wav"});
      break;
    default:
      break;
  }
  filters.push_back({"All Files", "*.*"});
  const auto file = services_.fileDialogs.ChooseFile("Select File", filters, folder);
  if (file) txt1.SetText(file->substr(0, file->find('\0')));
}

void frmEdit::EditScript() {
  if (txt1.Text().empty()) return;  // the scripts folder is no script
  services_.shell.Start("notepad.exe " + services_.store.Folder().TaskFile(txt1.Text()),
                        ShowCommand::Normal);
}

void frmEdit::FillTime(const DateTime& time) {
  txtHour.SetText(TwoDigits(time.hour));
  txtMinute.SetText(TwoDigits(time.minute));
}

void frmEdit::FillDate(const DateTime& date) {
  const bool monthFirst = services_.store.DateOrderMonthFirst != 0;
  txtdte[0].SetText(TwoDigits(monthFirst ? date.month : date.day));
  txtdte[1].SetText(TwoDigits(monthFirst ? date.day : date.month));
  txtdte[2].SetText(std::to_string(date.year));
}

TaskEntry frmEdit::Entered() const {
  TaskEntry entry;
  entry.name = txtTaskName.Text();
  entry.index = loaded_.index;
  entry.group = cmbGroup.Text();
  entry.timeType = ChosenTimeType();
  entry.hour = TwoDigits(txtHour.Text());
  entry.minute = TwoDigits(txtMinute.Text());
  entry.datePart1 = TwoDigits(txtdte[0].Text());
  entry.datePart2 = TwoDigits(txtdte[1].Text());
  entry.year = txtdte[2].Text();
  // The task's own comes after the rules that fire.
  entry.every = CodeOf(cmbRecur, loaded_.every);
  if (entry.every > kEveryCodesThatFire) entry.every = loaded_.every;
  entry.in = CodeOf(cmbMonth, loaded_.in);
  // What is no number is no day either.
  entry.dayNo = ToInt16Or(txtmnthday.Text(), 0);
  entry.taskType = ChosenTaskType();
  entry.winStyle = CodeOf(cmbWindow, loaded_.winStyle);
  entry.path = txt1.Text();
  entry.cmdLine = txt2.Text();
  return entry;
}

void frmEdit::Save() {
  TaskStore& store = services_.store;
  const std::int16_t slot = store.StoreEntry(Entered(), newTask_ ? "" : loaded_.name);
  if (slot == 0) {
    forms::Control* field = FieldAtFault();
    services_.messageBoxes.Show(store.TaskValidationMessage, kProgramTitle, Buttons::Ok,
                                BoxIcon::None);
    if (field != nullptr && field->Usable()) field->SetFocus();
    return;
  }
  // First the tree, so that the keyboard comes back to a window whose buttons are as they will be.
  if (onSaved) onSaved(slot);
  Unload();
}

// The field that the validation's message names; null where it names none.
forms::Control* frmEdit::FieldAtFault() {
  const bool monthFirst = services_.store.DateOrderMonthFirst != 0;
  // The first one that fits, so the longer words stand before those that are in them.
  const std::pair<const char*, forms::Control*> fields[] = {
      {"name", &txtTaskName},
      {"day of month", &txtmnthday},
      {"day", &txtdte[monthFirst ? 1 : 0]},
      {"month", &txtdte[monthFirst ? 0 : 1]},
      {"year", &txtdte[2]},
      {"date", &txtdte[0]},
      {"hour", &txtHour},
      {"minute", &txtMinute},
      {"file", &txt1},
  };
  const std::string message = LowerCase(services_.store.TaskValidationMessage);
  for (const auto& [word, field] : fields) {
    if (message.find(word) != std::string::npos) return field;
  }
  return nullptr;
}

}  // namespace orvanto
