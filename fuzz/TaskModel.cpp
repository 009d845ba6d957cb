#include "fuzz/TaskModel.h"

#include <algorithm>
#include <tuple>

namespace orvanto::model {
namespace {

constexpr std::int64_t kMinute = 60'000, kDay = 24 * 60 * kMinute;
constexpr int kMostTasks = 100, kLongestWalk = 800;

struct Rule {
  const char* text;
  const char* weekdays;  // Sunday is 1
};
constexpr Rule kRules[] = {{"Every Day", "1234567"},   {"Every Sunday", "1"},
                           {"Every Monday", "2"},      {"Every Tuesday", "3"},
                           {"Every Wednesday", "4"},   {"Every Thursday", "5"},
                           {"Every Friday", "6"},      {"Every Saturday", "7"},
                           {"Every Weekday", "23456"}, {"Every Weekend Day", "17"}};
constexpr const char* kNth[] = {"1st", "2nd", "3rd", "4th"};
constexpr const char* kWeekdays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};
constexpr const char* kMonths[] = {"Every Month", "January",  "February", "March",  "April",
                                   "May",         "June",     "July",     "August", "September",
                                   "October",     "November", "December"};
constexpr const char* kTypes[] = {
    "Run Script",        "Run",           "Print File", "Reset Computer",
    "Shutdown Computer", "Popup Message", "Play Sound"};

// Texts that are numbers though they are not all digits.
const std::map<std::string, int> kOddNumbers{{" 7", 7},  {"+7", 7}, {"-3", -3}, {"-1", -1},
                                             {"8.5", 8}, {"7.", 7}, {"1e1", 10}};

struct Date {
  int year, month, day, weekday;
};

int DaysIn(int year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && leap ? 29 : kDays[month - 1];
}

int DaysIn(int year) { return 337 + DaysIn(year, 2); }

Date DateOf(std::int64_t day) {
  Date date{1970, 1, 1, static_cast<int>((day + 4) % 7) + 1};  // 1 January 1970 was a Thursday
  for (; day >= DaysIn(date.year); ++date.year) day -= DaysIn(date.year);
  for (; day >= DaysIn(date.year, date.month); ++date.month) day -= DaysIn(date.year, date.month);
  date.day = static_cast<int>(day) + 1;
  return date;
}

// None for what stands in no calendar.
std::optional<std::int64_t> DayOf(int year, int month, int day) {
  if (month < 1 || month > 12 || day < 1 || year < 1970 || day > DaysIn(year, month)) return {};
  std::int64_t days = day - 1;
  for (int each = 1970; each < year; ++each) days += DaysIn(each);
  for (int each = 1; each < month; ++each) days += DaysIn(year, each);
  return days;
}

std::string Two(int number) { return Pad(std::to_string(number)); }

bool AllDigits(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::string Bare(std::string text) {
  while (text.starts_with(' ')) text.erase(0, 1);
  while (text.ends_with(' ')) text.pop_back();
  return text.starts_with('+') ? text.substr(1) : text;
}

bool Falls(const Entry& entry, const Date& date) {
  if (entry.when == 1) {
    return NumberOf(entry.year, -1) == date.year && NumberOf(entry.month, -1) == date.month &&
           NumberOf(entry.day, -1) == date.day;
  }
  if (entry.when == 3) return date.day == entry.dayNo;
  if (entry.when != 2 || entry.every < 1 || entry.every > 10) return false;
  if (entry.in < 1 || entry.in > 13) return false;
  const std::string weekdays = kRules[entry.every - 1].weekdays;
  if (weekdays.find(std::to_string(date.weekday)) == std::string::npos) return false;
  // On weekend days of one month: every Sunday of the year.
  return entry.in == 1 || date.month == entry.in - 1 || (entry.every == 10 && date.weekday == 1);
}

int MinuteOfDay(const Entry& entry) {
  const int hour = NumberOf(entry.hour, -1), minute = NumberOf(entry.minute, -1);
  return hour < 0 || hour > 23 || minute < 0 || minute > 59 ? -1 : hour * 60 + minute;
}

// Of the program's own settings; a backslash at an end does not count.
bool IsOwnSection(std::string name) {
  while (name.starts_with('\\')) name.erase(0, 1);
  while (name.ends_with('\\')) name.pop_back();
  return name.empty() || Small(name) == "general" || Small(name) == "internet";
}

bool CanBeSection(const std::string& name) {
  return !name.starts_with('\\') && !name.ends_with('\\') &&
         name.find("\\\\") == std::string::npos && name.size() <= 255;
}

bool CanBeSeen(const std::string& name) {
  return name.find(" | ") == std::string::npos && name.find('\t') == std::string::npos;
}

}  // namespace

std::string Pad(const std::string& text) { return text.size() == 1 ? "0" + text : text; }

std::string Small(const std::string& text) {
  std::string small;
  for (const char c : text) small += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  for (std::size_t at = 0; (at = small.find("Ä", at)) != std::string::npos;) {
    small.replace(at, 2, "ä");
  }
  return small;
}

int NumberOf(const std::string& text, int otherwise) {
  if (const auto odd = kOddNumbers.find(text); odd != kOddNumbers.end()) return odd->second;
  return AllDigits(text) && text.size() < 6 && std::stoi(text) < 32768 ? std::stoi(text)
                                                                       : otherwise;
}

std::string EveryText(int code) {
  if (code < 1 || code > 38) return "";
  if (code <= 10) return kRules[code - 1].text;
  return std::string("The ") + kNth[(code - 11) / 7] + " " + kWeekdays[(code - 11) % 7];
}

std::string InText(int code) { return code < 1 || code > 13 ? "" : kMonths[code - 1]; }

bool FileIsThere(const std::string& path) {
  return Small(path) == "a.txt" || Small(path) == "c:\\tool.exe";
}

int TaskModel::HighestName() const {
  int last = shared ? 0 : kMostTasks;
  while (last > 0 && Name(last).empty()) --last;
  return last;
}

// What is no number, or below 0, is made good from the names.
int TaskModel::Count() const {
  const int count = NumberOf(stored.count.value_or("0"), -1);
  return count < 0 ? HighestName() : count;
}

int TaskModel::LastSlot() const {
  return stored.count.value_or("").empty() ? HighestName() : Count();
}

std::string TaskModel::Name(int slot) const {
  const auto name = stored.names.find(slot);
  return name == stored.names.end() ? "" : name->second;
}

Entry TaskModel::Load(int slot) const {
  Entry entry;
  entry.name = Name(slot);
  const auto section = stored.sections.find(Small(entry.name));
  const bool there = !entry.name.empty() && section != stored.sections.end();
  const Fields none;
  const Fields& fields = there ? section->second : none;
  const auto text = [&](const char* value, const std::string& missing) {
    return fields.contains(value) ? fields.at(value) : missing;
  };
  const auto number = [&](const char* value, const char* missing) {
    return NumberOf(text(value, missing), 0);
  };
  const Date today = DateOf(wall / kDay);
  entry.group = text("Group", "").empty() ? "General" : text("Group", "");
  entry.when = number("TimeType", "0");
  entry.hour = Pad(text("TimeHour", Two(static_cast<int>(wall % kDay / kMinute / 60))));
  entry.minute = Pad(text("TimeMinute", Two(today.month)));  // the month: an oddity that stays
  entry.day = entry.month = entry.year = "0";
  if (entry.when == 1) {
    entry.day = Pad(text("DateDay", Two(today.day)));
    entry.month = Pad(text("DateMonth", Two(today.month)));
    entry.year = text("DateYear", std::to_string(today.year));
  }
  if (entry.when == 2) entry.every = number("Every", "0");
  if (entry.when == 2) entry.in = number("In", "0");
  if (entry.when == 3) entry.dayNo = number("DayNo", "1");
  entry.type = number("TaskType", "2");
  entry.path = text("Path", "");
  entry.params = text("CmdLine", "");
  entry.window = number("WinStyle", "1");
  return entry;
}

Entry TaskModel::Normal(Entry entry) {
  for (std::string* text : {&entry.hour, &entry.minute, &entry.day, &entry.month}) {
    *text = Two(NumberOf(*text, 0));
  }
  entry.year = std::to_string(NumberOf(entry.year, 0));
  return entry;
}

bool TaskModel::Shares(const std::string& section, int ownSlot) const {
  for (int slot = 1; slot <= std::max(Count(), ownSlot - 1); ++slot) {
    if (slot != ownSlot && Small(Name(slot)) == Small(section)) return true;
  }
  return false;
}

int TaskModel::SlotOf(const std::string& name) const {
  for (int slot = 1; slot <= Count(); ++slot) {
    if (Name(slot) == name) return slot;
  }
  return 0;
}

std::string TaskModel::ListRefusal(int slot) const {
  if (slot > kMostTasks) return "The task list is full: it holds 100 tasks. Delete one first.";
  if (shared && !Name(1).empty() && NumberOf(stored.count.value_or(""), -1) < 0) {
    return "The number of shared tasks cannot be read. Set NoTasks in the settings first.";
  }
  return "";
}

std::string TaskModel::NameRefusal(const std::string& name, int ownSlot) const {
  const std::string inUse = "That Task Name is already in use. Please use a different one.";
  if (name.empty()) return "No task name given";
  if (IsOwnSection(name)) return inUse;
  const bool kept = ownSlot <= Count() && Name(ownSlot) == name;
  if (!CanBeSection(name) || (!CanBeSeen(name) && !kept)) {
    return "That Task Name cannot be used. Please use a different one.";
  }
  for (int slot = 1; slot <= Count(); ++slot) {
    if (slot != ownSlot && Name(slot) == name) return inUse;
  }
  return "";
}

std::string TaskModel::SectionRefusal(const std::string& name, int ownSlot) const {
  return Shares(name, ownSlot)
             ? "Another task keeps its settings under that name. Please use a different one."
             : "";
}

std::string TaskModel::DateRefusal(const std::string& dayText, const std::string& monthText,
                                   const std::string& yearText) {
  constexpr int kNone = -9999;
  const int day = NumberOf(dayText, kNone), month = NumberOf(monthText, kNone),
            year = NumberOf(yearText, kNone);
  if (day == kNone || month == kNone || year == kNone) return "Invalid Date";
  // August is a short month and September a long one, and 1900 a leap year: oddities that stay.
  const bool isShort = month == 4 || month == 6 || month == 8 || month == 11;
  const int longest = month == 2 ? (year % 4 == 0 ? 29 : 28) : isShort ? 30 : 31;
  if (day > longest && (month == 2 || isShort)) return "Invalid Day given for Date";
  if (month < 1 || month > 12) return "Invalid Month given for Date";
  if (yearText.size() < 4) return "Invalid Year given for Date";
  return day < 1 || day > 31 ? "Invalid Day given for Date" : "";
}

std::string TaskModel::TimeRefusal(const std::string& line) {
  if (line.size() != 5 || line[2] != ':') return "Invalid Time";
  const int hour = NumberOf(line.substr(0, 2), -9), minute = NumberOf(line.substr(3), -9);
  if (hour == -9 || minute == -9) return "Invalid Time";
  if (minute < 0 || minute > 59) return "Invalid Minute selected for execution time";
  return hour < 0 || hour > 23 ? "Invalid Hour selected for execution time" : "";
}

// The last one that applies.
std::string TaskModel::WhenRefusal(const Entry& entry) const {
  std::string refusal;
  if (entry.when == 1) refusal = DateRefusal(entry.day, entry.month, entry.year);
  if (entry.when == 1 && refusal.empty() && !AllDigits(entry.year)) {
    refusal = "Invalid Year given for Date";
  }
  if (entry.when == 3 && (entry.dayNo < 1 || entry.dayNo > 31)) {
    refusal = "Invlaid Day of Month Given";
  }
  if (!AllDigits(entry.hour) || NumberOf(entry.hour, 99) > 23) {
    refusal = "Invlaid Hour given for Time";
  }
  if (!AllDigits(entry.minute) || NumberOf(entry.minute, 99) > 59) {
    refusal = "Invalid Minute given for Time";
  }
  const bool namesFile = entry.type == 1 || entry.type == 2 || entry.type == 3 || entry.type == 7;
  return namesFile && !FileIsThere(entry.path) ? "File does not exist" : refusal;
}

std::string TaskModel::Store(Entry entry, const std::string& loadedName, int loadedSlot,
                             bool checkAll) {
  int slot = std::min(LastSlot(), kMostTasks) + 1;
  if (!loadedName.empty()) {
    const int now = Name(loadedSlot) == loadedName ? loadedSlot : SlotOf(loadedName);
    if (now != 0) slot = now;
  }
  for (std::string* text : {&entry.hour, &entry.minute, &entry.day, &entry.month, &entry.year}) {
    *text = Bare(*text);
  }
  std::string refusal = ListRefusal(slot);
  if (refusal.empty()) {
    refusal = NameRefusal(entry.name, slot);
    if (const std::string last = checkAll ? WhenRefusal(entry) : ""; !last.empty()) refusal = last;
  }
  if (refusal.empty()) refusal = SectionRefusal(entry.name, slot);
  if (refusal.empty()) Write(slot, entry);
  return refusal;
}

void TaskModel::Write(int slot, const Entry& entry) {
  Fields& fields = stored.sections[Small(entry.name)];
  if (!Shares(entry.name, 0)) {  // the section of a former task
    if (fields.contains("CmdLine")) fields["CmdLine"] = "";
    if (fields.contains("WinStyle")) fields["WinStyle"] = "1";
  }
  fields["Group"] = entry.group;
  if (entry.when == 1) {
    fields["DateDay"] = Two(NumberOf(entry.day, 0));
    fields["DateMonth"] = Two(NumberOf(entry.month, 0));
    fields["DateYear"] = entry.year;
  }
  if (entry.when == 2) fields["Every"] = std::to_string(entry.every);
  if (entry.when == 2) fields["In"] = std::to_string(entry.in);
  if (entry.when == 3) fields["DayNo"] = std::to_string(entry.dayNo);
  fields["TimeHour"] = Two(NumberOf(entry.hour, 0));
  fields["TimeMinute"] = Two(NumberOf(entry.minute, 0));
  fields["TimeType"] = std::to_string(entry.when);
  fields["TaskType"] = std::to_string(entry.type);
  if (entry.type >= 1 && entry.type <= 7) {
    fields["Path"] = entry.type == 4   ? "Reset Computer"
                     : entry.type == 5 ? "Shutdown Computer"
                                       : entry.path;
  }
  if (entry.type == 2 || entry.type == 3) {
    fields["WinStyle"] = std::to_string(entry.window);
    fields["CmdLine"] = entry.params;
  }
  if (slot > Count()) {
    stored.count = std::to_string(std::max(slot, LastSlot()));
  } else if (const std::string count = stored.count.value_or("0"); entry.name != count) {
    Forget(count, slot);  // a section named like the count goes: an oddity that stays
  }
  stored.names[slot] = entry.name;
}

// A section that has others below it stays, and so does what is shared.
void TaskModel::Forget(const std::string& section, int ownSlot) {
  if (shared || IsOwnSection(section) || Shares(section, ownSlot)) return;
  const std::string below = Small(section) + "\\";
  for (const auto& [name, fields] : stored.sections) {
    if (name.starts_with(below)) return;
  }
  stored.sections.erase(Small(section));
}

bool TaskModel::Delete(int slot) {
  const int count = Count();
  if (slot < 1 || slot > count) return false;
  Forget(Name(slot), slot);
  for (int each = slot; each <= count; ++each) {
    const std::string next = each < count ? Name(each + 1) : shared ? Name(each) : "";
    stored.names[each] = next;
    if (next.empty()) stored.names.erase(each);
  }
  stored.count = std::to_string(count - 1);
  return true;
}

int TaskModel::SlotOfLine(const std::string& line) const {
  const std::string name = line.substr(0, line.find(" | "));
  const int slot = SlotOf(name);
  // What is shown may be older than what is stored.
  const std::string head = slot == 0 ? "" : Line(Load(slot));
  const auto type = [](const std::string& text) {
    const std::size_t from = text.find(" | ");
    return text.substr(from, text.find(" | ", from + 3) - from);
  };
  return slot != 0 && type(head) == type(line) ? slot : 0;
}

std::string TaskModel::Line(const Entry& entry) const {
  std::string when;
  if (entry.when == 1) {
    const std::string year =
        entry.year.size() == 4 ? entry.year : std::to_string(DateOf(wall / kDay).year);
    when =
        (monthFirst ? entry.month + "-" + entry.day : entry.day + "-" + entry.month) + "-" + year;
  }
  if (entry.when == 2) when = EveryText(entry.every) + " In " + InText(entry.in);
  if (entry.when == 3) when = "Day Number: " + std::to_string(entry.dayNo);
  const bool known = entry.type >= 1 && entry.type <= 7;
  return entry.name + " | " + (known ? kTypes[entry.type - 1] : "Unknown Type") + " | " +
         entry.hour + ":" + entry.minute + " on " + when;
}

// A group stands where its first task does, under the first node of its text.
void TaskModel::Rebuild() {
  shown.clear();
  for (int slot = 1; slot <= std::min(Count(), kMostTasks); ++slot) {
    const Entry entry = Load(slot);
    const auto group = std::find_if(shown.begin(), shown.end(),
                                    [&](const auto& node) { return node.second == entry.group; });
    if (group == shown.end()) shown.emplace_back("", entry.group);
    shown.emplace_back(entry.group, Line(entry));
  }
}

Lines TaskModel::List() const {
  Lines lines;
  for (int slot = 1; slot <= Count(); ++slot) {
    const Entry entry = Load(slot);
    const bool described = slot <= kMostTasks && entry.type >= 1 && entry.type <= 7;
    lines.push_back(std::to_string(slot) + ") " + (described ? Line(entry) : entry.name));
  }
  return lines;
}

std::optional<std::int64_t> TaskModel::NextDue(const Entry& entry) const {
  const int minute = MinuteOfDay(entry);
  if (minute < 0) return {};
  std::int64_t day = wall / kDay;
  if (entry.when == 1) {
    const auto date =
        DayOf(NumberOf(entry.year, 0), NumberOf(entry.month, 0), NumberOf(entry.day, 0));
    if (!date || *date * 1440 + minute <= wall / kMinute) return {};
    return *date * 1440 + minute;
  }
  Date date = DateOf(day);
  for (const std::int64_t last = day + kLongestWalk; day <= last; ++day) {
    if (Falls(entry, date) && day * 1440 + minute > wall / kMinute) return day * 1440 + minute;
    date.weekday = date.weekday % 7 + 1;
    if (++date.day <= DaysIn(date.year, date.month)) continue;
    date.day = 1;
    if (date.month++ == 12) date = {date.year + 1, 1, 1, date.weekday};
  }
  return {};
}

namespace {

std::string Told(std::int64_t minute) {
  const Date date = DateOf(minute / 1440);
  return std::to_string(date.year) + "-" + Two(date.month) + "-" + Two(date.day) + " " +
         Two(static_cast<int>(minute % 1440 / 60)) + ":" + Two(static_cast<int>(minute % 60));
}

}  // namespace

Lines TaskModel::Next() const {
  std::vector<std::tuple<std::int64_t, int>> due;
  for (int slot = 1; slot <= Count(); ++slot) {
    if (const auto next = NextDue(Load(slot))) due.emplace_back(*next, slot);
  }
  std::sort(due.begin(), due.end());
  if (due.size() > 100) due.resize(100);
  const Lines list = List();
  Lines lines;
  for (const auto& [minute, slot] : due) {
    const std::string weekday = kWeekdays[DateOf(minute / 1440).weekday - 1];
    lines.push_back(Told(minute) + " " + weekday.substr(0, 3) + "  " +
                    list[static_cast<std::size_t>(slot - 1)]);
  }
  return lines;
}

std::string TaskModel::Stamp() const { return Told(wall / kMinute); }

void TaskModel::Start() {
  toTick_ = 1000 - wall % 1000;
  lastSecond_ = wall / 1000;
  looked_[0] = looked_[1] = 0;
  late_.clear();
}

void TaskModel::Busy(std::int64_t milliseconds) {
  wall += milliseconds;
  toTick_ -= milliseconds;
}

void TaskModel::Advance(std::int64_t milliseconds) {
  while (toTick_ <= std::max<std::int64_t>(milliseconds, 0)) {
    const std::int64_t waits = std::max<std::int64_t>(toTick_, 0);
    const std::int64_t before = wall;
    Busy(waits);
    toTick_ = 1000 - wall % 1000;
    if (wall / 1000 != lastSecond_) {
      lastSecond_ = wall / 1000;
      Second();
    }
    milliseconds -= wall - before;
  }
  if (milliseconds > 0) Busy(milliseconds);
}

bool TaskModel::Due(const Entry& entry) const {
  return MinuteOfDay(entry) == wall % kDay / kMinute && Falls(entry, DateOf(wall / kDay));
}

// Each minute is looked at once, in the second in which it begins; no task is started in it twice.
void TaskModel::Second() {
  const std::int64_t minute = wall / kMinute;
  if (wall / 1000 % 60 != 0) return;
  std::erase_if(late_, [&](const auto& each) { return each.first != minute; });
  if (minute == looked_[0] || minute == looked_[1]) return;
  looked_[1] = looked_[0];
  looked_[0] = minute;
  for (int slot = 1, count = Count(); slot <= count; ++slot) {
    const Entry entry = Load(slot);
    const std::pair start{wall / kMinute, entry.name};
    if (!Due(entry) || std::find(late_.begin(), late_.end(), start) != late_.end()) continue;
    if (start.first != minute) late_.push_back(start);
    Run(slot);
    if (entry.type == 6) Busy(boxOpen);
  }
}

void TaskModel::Run(int slot) {
  const Entry entry = Load(slot);
  if (entry.type < 1 || entry.type > 7) return;
  fired.push_back(Stamp() + " " + entry.name);
  if (entry.type == 6) boxes.push_back(entry.path);
}

}  // namespace orvanto::model
