// The three ways to enter a task: the editor, the remote control's questions, the console's words.
#include "core/ui/frmEdit.h"
#include "core/ui/frmScriptcfg.h"
#include "fuzz/ModelRun.h"

namespace orvanto::model {
namespace {

// The first ones are valid.
constexpr const char* kHours[] = {"08", "23", "00", "8", "08", "23", "24", "x", "", "+7"};
constexpr const char* kMinutes[] = {"00", "01", "59", "1", "30", "00", "60", "x", "", "7."};
constexpr const char* kDays[] = {"28", "01", "1", "9", "29", "30", "31", "32", "0", "x"};
constexpr const char* kMonthNumbers[] = {"02", "2", "8", "9", "12", "4", "3", "13", "0", ""};
constexpr const char* kYears[] = {"2028", "2026", "2027", "2028", "99", "y", ""};
constexpr const char* kGroups[] = {"General", "Night", "night", "", "Day work"};
constexpr const char* kNames[] = {
    "Backup",    "BACKUP", "Ä day", "ä Day",     "A",       "A\\B",         "1",
    "2",         "3",      "4",     "7",         "NoTasks", "General",      "internet",
    "General\\", "x\\",    "a | b", "tab\there", "",        "C \"quoted\"", "Task1"};
constexpr const char* kFiles[] = {"a.txt", "C:\\TOOL.exe", "A.TXT", "b.txt", "", "C:\\no"};
constexpr const char* kTexts[] = {"Hello", "", "a b", "\"x\" /y", "Ä"};
constexpr const char* kNotWritten = "The task could not be saved: the settings cannot be written.";
constexpr const char* kNotWrittenToConsole =
    "The registry could not be written (error 112). Nothing was changed.";

bool NamesFile(int type) { return type == 1 || type == 2 || type == 3 || type == 7; }

}  // namespace

Entry ModelRun::Wish(bool valid) {
  const auto pick = [&](const auto& table, int good) {
    return std::string(valid || Chance(90) ? table[Below(good)] : Pick(table));
  };
  Entry entry;
  entry.name = valid || Chance(60) ? FreshName() : Pick(kNames);
  entry.group = Pick(kGroups);
  entry.hour = pick(kHours, 4);
  entry.minute = pick(kMinutes, 4);
  entry.day = pick(kDays, 4);
  entry.month = pick(kMonthNumbers, 4);
  entry.year = pick(kYears, 4);
  entry.when = 1 + Below(3);
  entry.every = 1 + Below(10);
  entry.in = Chance(50) ? 1 : 1 + Below(13);
  entry.dayNo = valid || Chance(95) ? 1 + Below(31) : 32 * Below(2);
  entry.type = Chance(30) ? 6 : 1 + Below(7);
  entry.path = NamesFile(entry.type) ? pick(kFiles, 3) : Pick(kTexts);
  entry.params = Pick(kTexts);
  entry.window = 1 + Below(6);
  return entry;
}

// The editor.

bool ModelRun::Form(bool add) {
  frmScriptcfg& main = product_->program.MainWindow();
  frmEdit& editor = product_->program.Editor();
  int slot = 0;
  if (!add) slot = ClickTask();
  Holds((add ? main.cmdNew : main.cmdEdit).Press() || (!add && model_.shown.empty()), "no button");
  if (add && model_.Count() >= 100) {
    model_.boxes.emplace_back("The task list is full: it holds 100 tasks. Delete one first.");
    return false;
  }
  Holds(editor.Visible() == (add || slot != 0), "the editor's opening");
  if (!editor.Visible()) return false;
  Entry entry = model_.Load(slot);
  const std::string loaded = entry.name;
  OpenForm(add, entry);
  FillForm(add, entry);
  Meanwhile();
  if (Chance(5)) {
    Holds(editor.cmdCancel.Press(), "Cancel");
    return false;
  }
  Holds(editor.cmdSave.Press(), "Save");
  const std::string refusal = Settle(model_.Store(entry, loaded, slot, true), kNotWritten);
  Holds(editor.Visible() != refusal.empty(), "the editor's closing: " + refusal);
  if (refusal.empty()) {
    model_.Rebuild();
    return true;
  }
  model_.boxes.push_back(refusal);
  return !editor.cmdCancel.Press();
}

// What stands in the editor at first, of a new task or of one that is loaded.
void ModelRun::OpenForm(bool add, Entry& entry) const {
  TaskModel then = model_;
  if (add) then.wall += 60'000;  // the next minute is offered
  const std::string offered = then.Stamp();
  if (add) {
    entry.when = 1;
    entry.hour = offered.substr(11, 2);
    entry.minute = offered.substr(14, 2);
  }
  if (add || entry.when != 1) {
    entry.year = offered.substr(0, 4);
    entry.month = offered.substr(5, 2);
    entry.day = offered.substr(8, 2);
  }
  if (entry.when != 2) entry.every = entry.in = 1;
  if (entry.when != 3) entry.dayNo = 1;
  if (entry.when < 1 || entry.when > 3) entry.when = 0;
}

void ModelRun::FillForm(bool add, Entry& entry) {
  frmEdit& editor = product_->program.Editor();
  // Hidden by these types, until the editor is opened again.
  const auto hides = [](int type) { return type == 1 || type >= 5; };
  bool windowShown = entry.type > 7 || !hides(entry.type);

  const Entry wish = Wish(false);
  if (add || Chance(30)) {
    Holds(editor.txtTaskName.Type(wish.name) && editor.cmbGroup.Type(wish.group), "name");
    entry.name = wish.name;
    entry.group = wish.group;
  }
  if (add || Chance(40)) {
    Holds(editor.optTaskType[static_cast<std::size_t>(wish.type - 1)].Choose(), "type");
    entry.type = wish.type;
    windowShown = windowShown && !hides(wish.type);
    Holds(editor.txt1.Type(wish.path) == (wish.type != 4 && wish.type != 5), "path");
    if (wish.type != 4 && wish.type != 5) entry.path = wish.path;
    Holds(editor.txt2.Type(wish.params) == (wish.type == 2), "parameters");
    if (wish.type == 2) entry.params = wish.params;
    Holds(editor.cmbWindow.Choose(wish.window - 1) == windowShown, "window style");
    if (windowShown) entry.window = wish.window;
  }
  if (add || Chance(40)) {
    Holds(editor.txtHour.Type(wish.hour) && editor.txtMinute.Type(wish.minute), "time");
    entry.hour = Pad(wish.hour);
    entry.minute = Pad(wish.minute);
  }
  if (!add && !Chance(40)) return;
  entry.when = wish.when;
  forms::OptionButton* const options[] = {&editor.optOnce, &editor.optRecurring,
                                          &editor.optMonthly};
  Holds(options[wish.when - 1]->Choose(), "rule");
  if (Chance(10)) return;  // as it stands there
  Holds(editor.txtdte[0].Type(model_.monthFirst ? wish.month : wish.day) == (wish.when == 1) &&
            editor.txtdte[1].Type(model_.monthFirst ? wish.day : wish.month) == (wish.when == 1) &&
            editor.txtdte[2].Type(wish.year) == (wish.when == 1) &&
            editor.cmbRecur.Choose(wish.every - 1) == (wish.when == 2) &&
            editor.cmbMonth.Choose(wish.in - 1) == (wish.when == 2) &&
            editor.txtmnthday.Type(std::to_string(wish.dayNo)) == (wish.when == 3),
        "the rule's fields");
  if (wish.when == 1) {
    entry.day = Pad(wish.day);
    entry.month = Pad(wish.month);
    entry.year = wish.year;
  }
  if (wish.when == 2) entry.every = wish.every;
  if (wish.when == 2) entry.in = wish.in;
  if (wish.when == 3) entry.dayNo = wish.dayNo;
}

// The remote control.

bool ModelRun::WantsChange(bool add) {
  if (add) return true;
  const bool wants = Chance(50);
  product_->Say(wants ? "y" : "n");
  return wants;
}

// Answers until it is accepted, which `good` is; an edit asks anew whether to change (`again`).
std::string ModelRun::Answer(std::string answer, const std::string& good, bool again,
                             const Judge& refusalOf) {
  for (;; answer = good) {
    const std::string refusal = refusalOf(answer);
    const std::string reply = product_->Say(answer);
    const bool refused = reply.find("\r\n\r\n\r\n" + refusal + "\r\n") != std::string::npos;
    if (refusal.empty()) {
      Holds(reply.find("\r\nInvalid ") == std::string::npos &&
                reply.find("That Task Name") == std::string::npos &&
                reply.find("does not exist") == std::string::npos,
            "\"" + answer + "\" is refused: " + reply);
      return answer;
    }
    Holds(refused, "\"" + answer + "\" is not refused with " + refusal + ": " + reply);
    if (again) product_->Say("y");
  }
}

void ModelRun::WizardWhen(bool add, Entry& entry) {
  if (!WantsChange(add)) return;
  const Entry wish = Wish(false), good = Wish(true);
  const auto among = [](int most, const char* refusal) {
    return [=](const std::string& answer) {
      return answer != "0" && answer.find_first_not_of("0123456789") == std::string::npos &&
                     !answer.starts_with("0") && NumberOf(answer, 99) <= most
                 ? ""
                 : refusal;
    };
  };
  const auto number = [&](int wanted, int most, const char* refusal, bool again) {
    const std::string answer =
        Chance(10) ? Chance(50) ? "0" + std::to_string(wanted) : "99" : std::to_string(wanted);
    return std::stoi(Answer(answer, std::to_string(wanted), again, among(most, refusal)));
  };
  entry.when = number(wish.when, 3, "Invalid Option Selected", !add);
  if (entry.when == 2) entry.every = number(wish.every, 10, "Invalid Option", false);
  if (entry.when == 2) entry.in = number(wish.in, 13, "Invalid Option", false);
  if (entry.when == 3) entry.dayNo = number(good.dayNo, 31, "Invalid Option", false);
  if (entry.when != 1) return;
  const auto written = [&](const Entry& date) {
    const std::string parts = model_.monthFirst ? Pad(date.month) + "/" + Pad(date.day)
                                                : Pad(date.day) + "/" + Pad(date.month);
    return parts + "/" + date.year;
  };
  const auto day = [&](const std::string& line) {
    return line.substr(model_.monthFirst ? 3 : 0, 2);
  };
  const auto month = [&](const std::string& line) {
    return line.substr(model_.monthFirst ? 0 : 3, 2);
  };
  const std::string line = Answer(written(wish), written(good), false, [&](const std::string& its) {
    return its.size() != 10 ? "Invalid Date"
                            : TaskModel::DateRefusal(day(its), month(its), its.substr(6));
  });
  entry.day = day(line);
  entry.month = month(line);
  entry.year = line.substr(6);
}

void ModelRun::WizardWhat(bool add, Entry& entry) {
  if (!WantsChange(add)) return;
  const Entry wish = Wish(false);
  entry.type = wish.type;
  Answer(Chance(5) ? "8" : std::to_string(wish.type), std::to_string(wish.type), !add,
         [](const std::string& its) { return its == "8" ? "Invalid Option Selected" : ""; });
  if (NamesFile(wish.type)) {
    entry.path = Answer(
        NamesFile(wish.type) ? wish.path : "b.txt", "a.txt", false,
        [](const std::string& its) { return FileIsThere(its) ? "" : "File does not exist"; });
  }
  if (wish.type == 6) product_->Say(entry.path = wish.path);
  if (wish.type != 2) return;
  product_->Say(entry.params = wish.params);
  entry.window = wish.window;
  product_->Say(std::to_string(wish.window));
}

bool ModelRun::Wizard(bool add) {
  Holds(product_->Connect(), "nobody listens");
  const int slot = add ? model_.Count() + 1 : AnySlot();
  product_->Say(add ? "1" : "4");
  product_->Say(add ? "y" : std::to_string(slot));
  Entry entry = add ? Entry() : TaskModel::Normal(model_.Load(slot));
  const std::string loaded = entry.name;
  const Entry wish = Wish(false), good = Wish(true);
  if (WantsChange(add)) {
    entry.name = Answer(wish.name, good.name, !add, [&](const std::string& its) {
      const std::string refusal = model_.NameRefusal(its, slot);
      return refusal.empty() ? model_.SectionRefusal(its, slot) : refusal;
    });
  }
  if (WantsChange(add)) {
    const std::string time =
        Answer(Pad(wish.hour) + ":" + Pad(wish.minute), Pad(good.hour) + ":" + Pad(good.minute),
               !add, TaskModel::TimeRefusal);
    entry.hour = time.substr(0, 2);
    entry.minute = time.substr(3);
  }
  WizardWhen(add, entry);
  WizardWhat(add, entry);
  Meanwhile();
  if (Chance(5)) Holds(product_->Say("Y").ends_with("(y/n)?"), "neither y nor n");
  const bool keeps = !Chance(5);
  const std::string reply = product_->Say(keeps ? "y" : "n");
  const std::string refusal =
      keeps ? Settle(model_.Store(entry, loaded, slot, false), kNotWritten) : "";
  Holds(reply.find("\r\n\r\n" + refusal + (refusal.empty() ? "" : "\r\n") +
                   "\r\n\r\nOrvanto 1.3\r\n") != std::string::npos,
        "the end, " + refusal + ": " + reply);
  if (refusal.empty()) model_.Rebuild();
  product_->socket->PeerCloses();
  return keeps && refusal.empty();
}

// The console.

void ModelRun::AddWords(bool add, Texts& words, Entry& entry) {
  const Entry wish = Wish(false);
  const auto put = [&](std::initializer_list<std::string> more) {
    words.insert(words.end(), more);
  };
  const auto part = [](const std::string& text) {
    return text.empty() || text.find_first_not_of("0123456789") != std::string::npos ? "?"
                                                                                     : Pad(text);
  };
  if (add || Chance(30)) put({entry.name = wish.name});
  if (add || Chance(30)) put({"--group", entry.group = wish.group});
  if (add || Chance(40) || words.size() < 3) {
    put({"--at", wish.hour + ":" + wish.minute});
    entry.hour = part(wish.hour);
    entry.minute = part(wish.minute);
  }
  if (add || Chance(40)) {
    entry.when = wish.when;
    if (wish.when == 1) {
      const bool yearFirst = wish.year.size() == 4 && Chance(30);
      const std::string& one = model_.monthFirst ? wish.month : wish.day;
      const std::string& other = model_.monthFirst ? wish.day : wish.month;
      put({"--once", yearFirst ? wish.year + "-" + wish.month + "-" + wish.day
                               : one + "-" + other + "-" + wish.year});
      entry.day = part(wish.day);
      entry.month = part(wish.month);
      entry.year = wish.year;
    } else if (wish.when == 2) {
      entry.every = Chance(80) ? wish.every : 11 + Below(28);
      entry.in = wish.in;
      put({"--every", Small(EveryText(entry.every))});
      if (wish.in != 1 || Chance(50)) put({"--in", InText(wish.in)});
    } else {
      put({"--day", std::to_string(entry.dayNo = wish.dayNo)});
    }
  }
  if (!add && !Chance(40)) return;
  constexpr const char* kOptions[] = {"--script",   "--program", "--print", "--reset",
                                      "--shutdown", "--message", "--sound"};
  put({kOptions[wish.type - 1]});
  const bool named = wish.type != 4 && wish.type != 5;
  if (named) put({wish.path});
  entry.type = wish.type;
  entry.path = named ? wish.path : "";
  entry.params = "";
  entry.window = 1;
  if ((wish.type != 2 && wish.type != 3) || Chance(50)) return;
  put({"--params", entry.params = wish.params, "--window", std::to_string(wish.window)});
  entry.window = wish.window;
}

bool ModelRun::ConsoleStore(const Texts& words, const Entry& entry, const std::string& loaded,
                            int slot) {
  const int status = product_->Command(words);
  // The store tells by itself when the very name could not be written.
  const bool early = product_->err.str().starts_with(kNotWritten);
  const std::string refusal =
      Settle(model_.Store(entry, loaded, slot, true), early ? kNotWritten : kNotWrittenToConsole);
  const bool never = entry.when == 2 && entry.every > 10 && entry.every <= 38;
  const std::string note =
      "Note: a task with the rule \"" + EveryText(entry.every) + "\" is kept but never comes due.";
  Same("what the console refuses or notes", product_->err.str(),
       !refusal.empty() ? refusal + "\n"
       : never          ? note + "\n"
                        : "");
  Same("the console's exit status", std::to_string(status), refusal.empty() ? "0" : "1");
  if (!refusal.empty()) return false;
  const int stored = model_.SlotOf(entry.name);
  const Entry now = model_.Load(stored);
  const bool known = now.type >= 1 && now.type <= 7;
  Same("what the console has stored", product_->out.str(),
       std::to_string(stored) + ") " + (known ? model_.Line(now) : "") + "\n");
  return true;
}

bool ModelRun::ConsoleAdd() {
  Texts words{"add"};
  Entry entry;
  AddWords(true, words, entry);
  return ConsoleStore(words, entry, "", 0);
}

bool ModelRun::ConsoleEdit() {
  const int slot = AnySlot();
  Texts words{"edit", std::to_string(slot)};
  Entry entry = TaskModel::Normal(model_.Load(slot));
  const std::string loaded = entry.name;
  AddWords(false, words, entry);
  if (slot >= 1 && slot <= model_.Count()) return ConsoleStore(words, entry, loaded, slot);
  Same("the edit of no task", std::to_string(product_->Command(words)), "1");
  Same("its refusal", product_->err.str(), "There is no task " + words[1] + ".\n");
  return false;
}

}  // namespace orvanto::model
