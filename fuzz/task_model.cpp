// Random operations on the list of tasks, in the windows, by the remote control and by the console,
// with a clock that is moved and set, restarts, failures, kills and damaged values; after each one
// the program and an independent model of it must agree.
// Usage: task_model [--seed S] [--steps N]
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "core/modTaskOperations.h"
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "fuzz/ModelRun.h"

namespace orvanto::model {
namespace {

struct DamagedValue {
  const char* value;
  const char* text;  // null: it is missing
};
constexpr DamagedValue kDamage[] = {
    {"TimeHour", "x"},     {"TimeHour", "8.5"},     {"TimeHour", nullptr},  {"TimeMinute", "77"},
    {"TimeMinute", "1"},   {"TimeMinute", nullptr}, {"TimeType", "9"},      {"TimeType", ""},
    {"TimeType", nullptr}, {"TimeType", "1"},       {"TimeType", "3"},      {"Every", "77"},
    {"Every", "20"},       {"Every", "x"},          {"Every", nullptr},     {"In", "0"},
    {"In", "99999"},       {"In", nullptr},         {"DayNo", "x"},         {"DayNo", "31"},
    {"DayNo", nullptr},    {"DateYear", "26"},      {"DateYear", "y"},      {"DateYear", nullptr},
    {"DateMonth", "13"},   {"DateMonth", "1e1"},    {"DateMonth", nullptr}, {"DateDay", "+7"},
    {"DateDay", ""},       {"DateDay", nullptr},    {"TaskType", "9"},      {"TaskType", "x"},
    {"TaskType", nullptr}, {"TaskType", "6"},       {"Path", nullptr},      {"Group", ""},
    {"Group", nullptr},    {"CmdLine", nullptr},    {"WinStyle", "x"},      {"WinStyle", nullptr}};
constexpr DamagedValue kDamagedList[] = {
    {"NoTasks", "many"}, {"NoTasks", ""},     {"NoTasks", "-3"},    {"NoTasks", nullptr},
    {"NoTasks", "120"},  {"NoTasks", "8.5"},  {"NoTasks", "0"},     {"Task1", nullptr},
    {"Task2", nullptr},  {"Task3", ""},       {"Task1", "General"}, {"Task1", "Backup"},
    {"Task2", "Backup"}, {"Task2", "BACKUP"}, {"Task3", "a | b"}};
constexpr std::int64_t kSecond = 1000, kHour = 3600 * kSecond, kWholeDay = 24 * kHour;
// The last minute of the days before those on which rules go wrong.
constexpr std::array<int, 4> kEves[] = {{2026, 2, 28, 7},  {2027, 12, 31, 23}, {2028, 2, 28, 23},
                                        {2028, 2, 29, 23}, {2027, 3, 31, 7},   {2026, 8, 30, 23},
                                        {2026, 8, 31, 7},  {2028, 9, 30, 23},  {2027, 4, 30, 7}};

std::string Joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

}  // namespace

const std::array<ModelRun::Kind, 17> ModelRun::kKinds{{
    {"add in the window", 8, &ModelRun::WindowAdd, true},
    {"edit in the window", 8, &ModelRun::WindowEdit, true},
    {"delete in the window", 3, &ModelRun::WindowDelete, true},
    {"run in the window", 2, &ModelRun::WindowRun, false},
    {"duplicate in the window", 3, &ModelRun::WindowDuplicate, true},
    {"add by remote control", 7, &ModelRun::RemoteAdd, true},
    {"edit by remote control", 7, &ModelRun::RemoteEdit, true},
    {"delete by remote control", 4, &ModelRun::RemoteDelete, true},
    {"run by remote control", 2, &ModelRun::RemoteRun, false},
    {"add by console", 7, &ModelRun::ConsoleAdd, true},
    {"edit by console", 7, &ModelRun::ConsoleEdit, true},
    {"delete by console", 4, &ModelRun::ConsoleDelete, true},
    {"run by console", 2, &ModelRun::ConsoleRun, false},
    {"pass time", 12, &ModelRun::PassTime, false},
    {"set the clock", 14, &ModelRun::SetClock, false},
    {"restart", 3, &ModelRun::Restart, false},
    {"damage", 4, &ModelRun::Damage, false},
}};

void ModelRun::Same(const std::string& what, const std::string& product,
                    const std::string& expected) {
  if (product != expected) throw Contradiction{what, product, expected};
}

void ModelRun::Same(const std::string& what, const Texts& product, const Lines& expected) {
  if (product != expected) throw Contradiction{what, Joined(product), Joined(expected)};
}

void ModelRun::Holds(bool condition, const std::string& what) {
  if (!condition) throw Contradiction{what, "", ""};
}

int ModelRun::AnySlot() {
  if (Chance(6)) return Chance(50) ? 0 : model_.Count() + 1;
  return 1 + Below(std::max(model_.Count(), 1));
}

std::string ModelRun::Settle(const std::string& refusal, const std::string& notWritten) {
  if (!product_->registry.failed) return refusal;
  model_.stored = before_;
  return refusal.empty() ? notWritten : refusal;
}

void ModelRun::Meanwhile() {
  if (alone_ || !Chance(10)) return;
  constexpr Operation kOperations[] = {&ModelRun::ConsoleDelete, &ModelRun::ConsoleEdit,
                                       &ModelRun::ConsoleAdd, &ModelRun::PassTime};
  Say("  meanwhile:");
  (this->*Pick(kOperations))();
}

int ModelRun::ClickTask() {
  if (model_.shown.empty()) return 0;
  const int node = Below(static_cast<int>(model_.shown.size()));
  Holds(product_->program.MainWindow().treTasks.ClickNode(static_cast<std::size_t>(node)), "click");
  const auto& [group, line] = model_.shown[static_cast<std::size_t>(node)];
  Say("  clicked on " + line);
  return group.empty() ? 0 : model_.SlotOfLine(line);
}

bool ModelRun::WindowDelete() {
  frmScriptcfg& main = product_->program.MainWindow();
  const int slot = ClickTask();
  if (model_.shown.empty()) return false;
  if (slot != 0 && Chance(50)) {
    model_.boxes.push_back("Delete the task \"" + model_.Name(slot) + "\"?");
    Holds(main.treTasks.PressDelete(), "the Delete key");
  } else {
    Holds(main.cmdDelete.Press(), "Delete");
  }
  const bool there = model_.Delete(slot);
  Settle("", "");
  if (there) model_.Rebuild();
  return there;
}

bool ModelRun::WindowRun() {
  const int slot = ClickTask();
  if (slot == 0) return false;
  const bool fails = ScriptIsMissing(slot);
  bool failed = false;
  try {
    Holds(product_->program.MainWindow().cmdRun.Press(), "Run");
  } catch (const Error&) {  // which the window would report
    failed = true;
  }
  Holds(failed == fails, "the end of a start by button");
  model_.Run(slot);
  return true;
}

bool ModelRun::ScriptIsMissing(int slot) const {
  const Entry task = model_.Load(slot);
  return task.type == 1 && !FileIsThere(task.path);
}

bool ModelRun::WindowDuplicate() {
  const int slot = ClickTask();
  if (slot == 0) return false;
  Holds(product_->program.MainWindow().mnuListDuplicate.Choose(), "Duplicate");
  Entry copy = TaskModel::Normal(model_.Load(slot));
  const std::string name = copy.name;
  int number = 1;
  do {
    copy.name = name + " (" + std::to_string(++number) + ")";
  } while (!model_.SectionRefusal(copy.name, 0).empty());
  const std::string refusal =
      Settle(model_.Store(copy, "", 0, false),
             "The task could not be saved: the settings cannot be written.");
  if (refusal.empty()) {
    model_.Rebuild();
  } else {
    model_.boxes.push_back(refusal);
  }
  return refusal.empty();
}

bool ModelRun::RemoteDelete() {
  Holds(product_->Connect(), "nobody listens");
  const int slot = AnySlot();
  const std::string name = model_.Load(slot).name;
  product_->Say("2");
  const std::string reply = product_->Say(std::to_string(slot));
  const bool listed = slot <= model_.Count();
  Holds(reply.starts_with(listed ? "\r\nDeleted Task: " + name + "\r\n" : "\r\n\r\nOrvanto 1.3"),
        "the answer to the deletion of " + name + ": " + reply);
  const bool there = model_.Delete(slot);
  Settle("", "");
  if (there) model_.Rebuild();
  product_->socket->PeerCloses();
  return there;
}

bool ModelRun::RemoteRun() {
  Holds(product_->Connect(), "nobody listens");
  const int slot = AnySlot();
  product_->Say("3");
  const std::string reply = product_->Say(std::to_string(slot));
  const bool there = slot <= model_.Count();
  if (there) model_.Run(slot);  // slot 0, too, which is a nameless program
  // A script that is not there ends the handling of the line, and nothing is answered.
  Holds(!there || (ScriptIsMissing(slot) && reply.empty()) ||
            reply.find("\r\nStarted Task: " + model_.Name(slot) + "\r\n") == 0,
        "the answer to a start: " + reply);
  product_->socket->PeerCloses();
  return there;
}

bool ModelRun::ConsoleDelete() {
  const int slot = AnySlot();
  const int status = product_->Command({"delete", std::to_string(slot)});
  const bool there = model_.Delete(slot);
  const std::string refusal =
      Settle(there ? "" : "There is no task " + std::to_string(slot) + ".",
             "The registry could not be written (error 112). Nothing was changed.");
  Same("the console's answer to a deletion", product_->err.str(),
       refusal.empty() ? "" : refusal + "\n");
  Same("its status", std::to_string(status), refusal.empty() ? "0" : "1");
  return there;
}

bool ModelRun::ConsoleRun() {
  const int slot = AnySlot();
  const int status = product_->Command({"run", std::to_string(slot)});
  const bool there = slot >= 1 && slot <= model_.Count();
  if (there) model_.Run(slot);
  Same("the status of a run", std::to_string(status), there && !ScriptIsMissing(slot) ? "0" : "1");
  return there;
}

bool ModelRun::PassTime() {
  return Pass(Chance(3) ? (1 + Below(30)) * kHour : Chance(30) ? Below(3000) : Below(240'000));
}

bool ModelRun::Pass(std::int64_t time) {
  // A popup may stay open for a while; what is due behind it comes late, or not at all.
  model_.boxOpen = Chance(60) ? 0 : Chance(70) ? 60 * kSecond + Below(1200) : Below(130'000);
  Say("  " + std::to_string(time) + " ms pass, boxes stay open for " +
      std::to_string(model_.boxOpen));
  product_->boxes.whileOpen = [this] { product_->here.loop.Block(model_.boxOpen); };
  product_->here.loop.Advance(time);
  product_->boxes.whileOpen = nullptr;
  scheduled_ -= static_cast<std::int64_t>(model_.fired.size());
  model_.Advance(time);
  scheduled_ += static_cast<std::int64_t>(model_.fired.size());
  return true;
}

// To a minute in which something may be due, and now and then back behind it again.
bool ModelRun::SetClock() {
  std::int64_t by = 0;
  if (Chance(10)) {
    const std::int64_t busy = Below(150'000);
    product_->here.loop.Block(busy);
    model_.Busy(busy);
  } else if (Chance(35)) {
    FakeClock then;
    const auto& [year, month, day, hour] = Pick(kEves);
    then.Set(year, month, day, hour, 59, Below(60), Below(1000));
    by = then.UnixMilliseconds() - model_.wall;
  } else {
    const auto due = model_.NextDue(model_.Load(AnySlot()));
    const std::int64_t ahead = due ? *due * 60 * kSecond - model_.wall : 0;
    by = due && ahead < 800 * kWholeDay ? ahead - Below(90'000) : Below(60) * kWholeDay;
  }
  MoveClock(by);
  Pass(Below(240'000));
  while (Chance(30)) {
    MoveClock(Below(200'000) - 150'000);
    Pass(Below(120'000));
  }
  return true;
}

void ModelRun::MoveClock(std::int64_t by) {
  product_->clock.Move(by);
  model_.wall += by;
  Say("  the clock says " + model_.Stamp());
}

bool ModelRun::Restart() {
  if (Chance(50)) product_->program.Quit();
  Begin(RegistryTree(product_->registry.Tree()));
  return true;
}

void ModelRun::Begin(const RegistryTree& tree) {
  product_ = std::make_unique<ModelledProgram>(tree, model_.wall, model_.monthFirst);
  model_.Start();
  model_.Rebuild();
  done.clear();
}

// Writes past the program, as a person with a registry editor does.
void ModelRun::Poke(const std::string& section, const std::string& value, const char* text) {
  RegistryTree& tree = product_->registry.Tree();
  const RootKey root = model_.shared ? RootKey::LocalMachine : RootKey::CurrentUser;
  const std::string path = "Software\\Quellmark\\Orvanto\\" + section;
  std::string id;
  Holds(RegistryTree::IdOf(root, path, id) == kSuccess, "the key " + path);
  if (text == nullptr) {
    tree.DeleteValue(id, value);
  } else {
    tree.CreateKey(root, path);
    tree.SetValue(id, value, ValueType::String, text + std::string(1, '\0'));
  }
}

bool ModelRun::Damage() {
  if (Chance(20)) {
    const auto& [value, text] = Pick(kDamagedList);
    Say(std::string("  ") + value + " = " + (text != nullptr ? text : "(missing)"));
    Poke("General", value, text);
    stepsLeft_ = std::min(stepsLeft_, 10);
    if (const std::string name = value; name != "NoTasks") {
      model_.stored.names[name.back() - '0'] = text != nullptr ? text : "";
    } else if (text == nullptr) {
      model_.stored.count.reset();
    } else {
      model_.stored.count = text;
    }
    return true;
  }
  const std::string name = model_.Name(AnySlot());
  if (name.empty() || name == "General") return false;
  const auto& [value, text] = Pick(kDamage);
  Say("  " + name + ": " + value + " = " + (text != nullptr ? text : "(missing)"));
  Poke(name, value, text);
  Fields& fields = model_.stored.sections[Small(name)];
  fields.erase(value);
  if (text != nullptr) fields[value] = text;
  return true;
}

// An empty list, or one that is nearly full, of another user.
void ModelRun::NewWorld() {
  FakeClock start;
  start.Set(2026 + Below(2), 1 + Below(12), 1 + Below(28), Below(24), Below(60), Below(60));
  model_ = {};
  model_.wall = start.UnixMilliseconds();
  model_.shared = Chance(25);
  model_.monthFirst = Chance(40);
  Begin(RegistryTree());
  product_->Command({"set", "General", "Inet_ServerOn", "1"});
  product_->Command({"set", "General", "Users_Share", model_.shared ? "1" : "0"});
  Begin(RegistryTree(product_->registry.Tree()));
  const bool full = Chance(4);
  stepsLeft_ = full ? 20 : 40 + Below(200);
  if (!full) return;
  for (int number = 1; number <= 97; ++number) {
    Entry entry = Wish(true);
    model_.Store(entry, "", 0, true);
    const std::string slot = "Task" + std::to_string(number);
    Poke("General", slot, entry.name.c_str());
    for (const auto& [value, text] : model_.stored.sections[Small(entry.name)]) {
      Poke(entry.name, value, text.c_str());
    }
  }
  Poke("General", "NoTasks", "97");
  Begin(RegistryTree(product_->registry.Tree()));
}

void ModelRun::Step() {
  if (stepsLeft_-- <= 0) NewWorld();
  int total = 0;
  for (const Kind& kind : kKinds) total += kind.weight;
  int chosen = Below(total);
  const Kind* kind = kKinds.begin();
  for (; chosen >= kind->weight; ++kind) chosen -= kind->weight;
  before_ = model_.stored;
  const bool fails = kind->writes && Chance(8), killed = kind->writes && !fails && Chance(8);
  alone_ = fails || killed;
  const int write = 1 + (Chance(50) ? Below(4) : Below(20));
  Say(kind->name +
      std::string(fails    ? ", failing"
                  : killed ? ", killed"
                           : "") +
      (alone_ ? " at write " + std::to_string(write) : ""));
  product_->registry.FailAt(fails ? write : 0);
  product_->registry.KillAt(killed ? write : 0);
  const bool carriedOut = (this->*(kind->operation))();
  Tally& tally = tally_[kind->name];
  ++(product_->registry.failed ? tally.failed : carriedOut ? tally.done : tally.refused);
  product_->registry.FailAt(0);
  Compare();
  if (!killed || !product_->registry.left) return;
  // Everything or nothing: it was one change.
  ++tally.killed;
  model_.stored = before_;
  Begin(RegistryTree(*product_->registry.left));
  Compare();
}

void ModelRun::Compare() {
  Same("the tasks that have run", product_->fired, model_.fired);
  Same("the message boxes", product_->boxes.shown, model_.boxes);
  for (Lines* lines : {&product_->fired, &product_->boxes.shown, &model_.fired, &model_.boxes}) {
    lines->clear();
  }
  CompareStore();
  CompareTask(AnySlot());
  Lines tree, expected;
  const auto& nodes = product_->program.MainWindow().treTasks.Nodes();
  for (const auto& node : nodes) {
    tree.push_back((node.parent ? nodes[*node.parent].text : "") + " > " + node.text);
  }
  for (const auto& [group, line] : model_.shown) expected.push_back(group + " > " + line);
  Same("the lines of the tree", tree, expected);
  for (const char* command : {"list", "next"}) {
    Same("the status", std::to_string(product_->Command({command})), "0");
    Same(std::string("orvanto ") + command, product_->out.str(),
         Joined(std::string(command) == "list" ? model_.List() : model_.Next()));
  }
}

// As it is loaded; what is stored may be damaged.
void ModelRun::CompareTask(int slot) {
  product_->program.Store().LoadTask(static_cast<std::int16_t>(slot));
  const TaskRecord& task = product_->program.Store().CurrentTask;
  const Entry entry = model_.Load(slot);
  const auto number = [](int each) { return std::to_string(each); };
  Same("a task as it is loaded",
       Texts{task.name, task.group, number(task.timeType), task.timeHour, task.timeMinute,
             task.dateDay, task.dateMonth, task.dateYear, number(task.every), number(task.in),
             number(task.dayNo), number(task.taskType), task.path, task.cmdLine,
             number(task.winStyle)},
       {entry.name, entry.group, number(entry.when), entry.hour, entry.minute, entry.day,
        entry.month, entry.year, number(entry.every), number(entry.in), number(entry.dayNo),
        number(entry.type), entry.path, entry.params, number(entry.window)});
}

void ModelRun::CompareStore() {
  const auto told = [](const Stored& stored) {
    Lines lines{"NoTasks " + stored.count.value_or("(missing)")};
    for (const auto& [slot, name] : stored.names)
      lines.push_back(std::to_string(slot) + " " + name);
    for (const auto& [name, fields] : stored.sections) {
      for (const auto& [value, text] : fields) lines.push_back(name + ": " + value + " = " + text);
    }
    return lines;
  };
  Stored stored;
  const std::string product = "Software\\Quellmark\\Orvanto\\";
  for (const auto& [id, node] : product_->registry.Tree().Keys()) {
    if (node.root != (model_.shared ? RootKey::LocalMachine : RootKey::CurrentUser)) continue;
    if (!node.path.starts_with(product)) continue;
    const std::string section = node.path.substr(product.size());
    for (const auto& [folded, value] : node.values) {
      const std::string text = value.data.substr(0, value.data.size() - 1);
      if (section != "General") {
        stored.sections[Small(section)][value.name] = text;
      } else if (value.name == "NoTasks") {
        stored.count = text;
      } else if (value.name.starts_with("Task") && !text.empty()) {
        stored.names[std::stoi(value.name.substr(4))] = text;
      }
    }
  }
  Stored expected = model_.stored;
  std::erase_if(expected.sections, [](const auto& section) { return section.second.empty(); });
  std::erase_if(expected.names, [](const auto& slot) { return slot.second.empty(); });
  if (!(stored == expected)) Same("what is stored", told(stored), told(expected));
}

bool ModelRun::Summary() const {
  bool all = scheduled_ > 0;
  std::int64_t failed = 0, killed = 0;
  std::printf("%-26s %8s %8s %8s %8s\n", "", "done", "refused", "failed", "killed");
  for (const Kind& kind : kKinds) {
    const auto found = tally_.find(kind.name);
    const Tally tally = found == tally_.end() ? Tally() : found->second;
    std::printf("%-26s %8lld %8lld %8lld %8lld\n", kind.name, static_cast<long long>(tally.done),
                static_cast<long long>(tally.refused), static_cast<long long>(tally.failed),
                static_cast<long long>(tally.killed));
    all = all && tally.done > 0;
    failed += tally.failed;
    killed += tally.killed;
  }
  std::printf("%lld tasks were due\n", static_cast<long long>(scheduled_));
  all = all && failed > 0 && killed > 0;
  if (!all) std::printf("something never succeeded\n");
  return all;
}

namespace {

// False for a contradiction, or where something has never succeeded.
bool RunSteps(std::uint64_t seed, std::uint64_t steps) {
  const std::string repeated = "task_model --seed " + std::to_string(seed) + " --steps ";
  std::printf("%s%s\n", repeated.c_str(), std::to_string(steps).c_str());
  std::fflush(stdout);
  ModelRun run(seed);
  for (std::uint64_t step = 1; step <= steps; ++step) {
    try {
      run.Step();
    } catch (const Contradiction& found) {
      std::printf("%s%s. Since the last start:\n%s", repeated.c_str(), std::to_string(step).c_str(),
                  Joined(run.done).c_str());
      std::printf("CONTRADICTION: %s\nthe program:\n%s\nthe model:\n%s\n", found.what.c_str(),
                  found.product.c_str(), found.model.c_str());
      return false;
    }
  }
  return run.Summary();
}

}  // namespace
}  // namespace orvanto::model

int main(int count, char** arguments) {
  std::uint64_t seed = std::random_device()();
  std::uint64_t steps = 100'000;
  for (int i = 1; i + 1 < count; i += 2) {
    (arguments[i] == std::string("--seed") ? seed : steps) =
        std::strtoull(arguments[i + 1], nullptr, 10);
  }
  return orvanto::model::RunSteps(seed, steps) ? 0 : 1;
}
