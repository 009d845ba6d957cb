// The task editor: makes a new task or changes one, through validation. Modal in that the main
// window is hidden while it is open.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/TaskRecord.h"
#include "platform/forms/forms.h"

namespace orvanto {

class Clock;
struct DateTime;
class FileDialogs;
class MessageBoxes;
class Shell;
class TaskStore;

class frmEdit : public forms::Form {
 public:
  struct Services {
    TaskStore& store;
    const Clock& clock;
    Shell& shell;
    MessageBoxes& messageBoxes;
    FileDialogs& fileDialogs;
  };
  frmEdit(forms::FormHost& host, const Services& services);

  // Shows the form with the slot's task; without a slot, with the defaults of a new one.
  void Open(std::optional<std::int16_t> slot);

  // The editor has gone, with or without saving.
  std::function<void()> onClosed;
  // A task has been stored, in that slot.
  std::function<void(std::int16_t slot)> onSaved;

  forms::Label lblTaskName;
  forms::TextBox txtTaskName;
  forms::Label lblGroup;
  forms::ComboBox cmbGroup;
  forms::Frame fraTaskType;
  std::array<forms::OptionButton, kTaskTypes> optTaskType;
  forms::Label lbl1;
  forms::TextBox txt1;
  forms::Button cmdBrowse, cmdEdit;
  forms::Label lbl2;
  forms::TextBox txt2;
  forms::Label lblWindow;
  forms::ComboBox cmbWindow;
  forms::Label lblTime;
  forms::TextBox txtHour;
  forms::Label lblColon;
  forms::TextBox txtMinute;
  forms::Button cmdNow;
  forms::Frame fraWhen;
  forms::OptionButton optOnce, optRecurring, optMonthly;
  std::array<forms::TextBox, 3> txtdte;
  std::array<forms::Label, 2> lblSlash;
  forms::Button cmdToday;
  forms::ComboBox cmbRecur, cmbMonth;
  forms::TextBox txtmnthday;
  forms::UpDown srlmnthday;
  forms::Button cmdSave, cmdCancel;

 private:
  void WireControls();
  void Fill(const TaskRecord& task);
  void FillLists(const TaskRecord& task);
  void FillWhen(const TaskRecord& task);
  void ShowDesignState();
  void ChangeTaskType(int index);
  void ChangeTimeType(std::int16_t timeType);
  std::int16_t ChosenTaskType() const;
  std::int16_t ChosenTimeType() const;
  std::vector<std::string> Groups();
  void Browse();
  void EditScript();
  void FillTime(const DateTime& time);
  void FillDate(const DateTime& date);
  TaskEntry Entered() const;
  void Save();
  forms::Control* FieldAtFault();

  Services services_;
  bool newTask_ = true;
  TaskRecord loaded_;  // what the form was filled from
};

}  // namespace orvanto
