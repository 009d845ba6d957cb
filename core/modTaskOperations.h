// The task list in the settings store: a count and numbered names in section "General", and one
// section of fields for each task. The store is read again whenever it is needed; CurrentTask and
// TaskValidationMessage are overwritten by every load and validation and are good at once only.
#pragma once

#include <cstdint>
#include <string>

#include "core/TaskRecord.h"
#include "core/modRegistry.h"
#include "platform/Clock.h"
#include "platform/Event.h"

namespace orvanto {

class ProgramFolder;

// What validation needs to know of the file system.
class FileLookup {
 public:
  virtual ~FileLookup() = default;
  // True when a file of that full path exists.
  virtual bool FindFile(const std::string& path) = 0;
};

class TaskStore {
 public:
  TaskStore(Settings& settings, const Clock& clock, FileLookup& finder, const ProgramFolder& folder)
      : settings_(settings), clock_(clock), finder_(finder), folder_(folder) {}

  const ProgramFolder& Folder() const { return folder_; }

  TaskRecord CurrentTask;
  std::string TaskValidationMessage;  // empty: valid

  // 1 when the system's short date begins with the month; read at start.
  int DateOrderMonthFirst = 0;
  void ReadDateOrder();

  // The number of slots, 0 where none is stored. A count that does not convert is made good from
  // the names that are there, but not where tasks are shared: names of deleted ones are among them.
  std::int16_t NoTasks();
  std::string TaskName(std::int16_t index);
  // The slots that are there now, from 1 on.
  SlotRange Slots() { return SlotRange(NoTasks()); }

  // The first slot of that name, compared with regard to case; 0 for none.
  std::int16_t SlotOfName(const std::string& name);

  // Whether a slot other than the given one keeps its fields in that section: its name differs at
  // most in upper and lower case.
  bool BelongsToAnother(const std::string& section, std::int16_t ownSlot);

  // Fills CurrentTask. Numbers that do not convert load as 0; a slot without a name loads defaults.
  void LoadTask(std::int16_t index);

  // Writes one task as one change of the store. Does not validate.
  void SaveTask(const TaskEntry& entry);

  // Checks what a user has entered and saves it, as one change of the store. `loadedName` is the
  // name that the task had when it was loaded from the entry's slot; its slot is looked for again,
  // since the list may have changed. What was never stored (an empty name) or has gone comes after
  // the last task. Times and dates are stored as digits, however they were typed. Returns the slot;
  // 0 when it is refused or cannot be written, and TaskValidationMessage tells why.
  enum class Check { All, NameOnly };
  std::int16_t StoreEntry(TaskEntry entry, const std::string& loadedName, Check check = Check::All);
  static constexpr const char* kListFull =
      "The task list is full: it holds 100 tasks. Delete one first.";
  static constexpr const char* kSameSection =
      "Another task keeps its settings under that name. Please use a different one.";
  static constexpr const char* kCountLost =
      "The number of shared tasks cannot be read. Set NoTasks in the settings first.";
  static constexpr const char* kNotWritten =
      "The task could not be saved: the settings cannot be written.";

  // Removes a slot and closes the gap, as one change. In shared mode the machine-wide section stays
  // and is only hidden. A slot that is not there changes nothing.
  void DeleteTask(std::int16_t index);

  // Raised after every operation that has changed the list or a task in it.
  Event<> listChanged;

  // The slot whose name stands before the first " | " of a tree line; `index` stays as it is when
  // there is none, or when the line goes on otherwise than the line of that slot (a name that holds
  // a separator itself).
  void FindTaskIndex(const std::string& nodeText, std::int16_t& index);

  // All checks in order; the message of the last one that fails remains.
  void ValidateTask(const TaskEntry& entry);

  // The pieces of it. Each sets TaskValidationMessage when its check fails and leaves it otherwise.
  void ValidateTaskName(const std::string& name, std::int16_t ownIndex);
  void ValidateDate(const std::string& day, const std::string& month, const std::string& year);
  void ValidateTime(const std::string& hour, const std::string& minute);
  void CheckTaskFile(std::int16_t taskType, const std::string& path);

 private:
  void Write(const TaskEntry& entry);
  void ReadWhen(const Settings::Section& section, TaskRecord& task);
  void WriteWhen(const TaskEntry& entry);
  void WriteWhat(const TaskEntry& entry);
  void ClaimSlot(const TaskEntry& entry);
  void DeleteSection(const std::string& name, std::int16_t ownSlot);
  void ForgetOldTexts(const std::string& section);
  std::int16_t NamesThere();
  std::int16_t LastSlot();
  bool CountIsLost();
  std::int16_t SlotToSave(const std::string& loadedName, std::int16_t loadedSlot);
  void ValidateWhen(const TaskEntry& entry);
  static bool IsOwnSection(const std::string& name);
  bool MayBeGiven(const std::string& name, std::int16_t ownIndex);

  Settings& settings_;
  const Clock& clock_;
  FileLookup& finder_;
  const ProgramFolder& folder_;
};

}  // namespace orvanto
