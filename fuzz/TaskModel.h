// What the task list and its schedule are to do, said once more in the plainest way: the stored
// texts as they are, rules as tables, a calendar that counts days. It shares no code with the
// program, so that task_model.cpp can hold the two against each other.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvanto::model {

using Lines = std::vector<std::string>;
using Fields = std::map<std::string, std::string>;

// A task as it is loaded or entered. Times and dates as texts, the day and the month by name.
struct Entry {
  std::string name, group = "General", hour, minute, day, month, year, path, params;
  int when = 0, every = 0, in = 0, dayNo = 0, type = 0, window = 1;
};

// What is stored.
struct Stored {
  std::optional<std::string> count;        // NoTasks
  std::map<int, std::string> names;        // by slot
  std::map<std::string, Fields> sections;  // by name in small letters; of former tasks, too
  bool operator==(const Stored&) const = default;
};

std::string Pad(const std::string& text);  // "7" as "07"
std::string Small(const std::string& text);
int NumberOf(const std::string& text, int otherwise);  // as far as the tables here hold numbers
std::string EveryText(int code);
std::string InText(int code);
bool FileIsThere(const std::string& path);

class TaskModel {
 public:
  Stored stored;
  bool shared = false;       // with all users, where nothing is deleted
  bool monthFirst = false;   // in dates
  std::int64_t wall = 0;     // milliseconds since 1970
  std::int64_t boxOpen = 0;  // how long a popup of the schedule stays open

  // What has happened and is still to be compared: tasks run, with their minutes, and boxes.
  Lines fired, boxes;
  std::vector<std::pair<std::string, std::string>> shown;  // the tree: group (or empty), text

  // The store.
  int Count() const;
  std::string Name(int slot) const;
  Entry Load(int slot) const;
  static Entry Normal(Entry entry);  // its numbers as a user would have to enter them
  // A refusal, or nothing: then it is stored.
  std::string Store(Entry entry, const std::string& loadedName, int loadedSlot, bool checkAll);
  bool Delete(int slot);  // false where there is none
  std::string NameRefusal(const std::string& name, int ownSlot) const;
  std::string SectionRefusal(const std::string& name, int ownSlot) const;
  static std::string DateRefusal(const std::string& day, const std::string& month,
                                 const std::string& year);
  static std::string TimeRefusal(const std::string& line);  // of the remote control's question
  int SlotOf(const std::string& name) const;
  int SlotOfLine(const std::string& line) const;

  // What is shown of it.
  void Rebuild();
  std::string Line(const Entry& entry) const;
  Lines List() const;
  Lines Next() const;
  std::optional<std::int64_t> NextDue(const Entry& entry) const;  // in minutes since 1970

  // The clock and the schedule.
  void Start();  // of the program
  void Advance(std::int64_t milliseconds);
  void Busy(std::int64_t milliseconds);
  void Run(int slot);
  std::string Stamp() const;  // "2026-11-22 08:01"

 private:
  bool Shares(const std::string& section, int ownSlot) const;
  int HighestName() const;
  int LastSlot() const;
  std::string ListRefusal(int slot) const;
  std::string WhenRefusal(const Entry& entry) const;
  void Write(int slot, const Entry& entry);
  void Forget(const std::string& section, int ownSlot);
  bool Due(const Entry& entry) const;
  void Second();

  std::int64_t toTick_ = 0, lastSecond_ = 0, looked_[2] = {};
  std::vector<std::pair<std::int64_t, std::string>> late_;
};

}  // namespace orvanto::model
