// One run of random operations, on the program and on the model of it.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>

#include "fuzz/ModelledProgram.h"
#include "fuzz/TaskModel.h"

namespace orvanto::model {

// The two say different things.
struct Contradiction {
  std::string what, product, model;
};

class ModelRun {
 public:
  explicit ModelRun(std::uint64_t seed) : random_(seed) {}

  void Step();           // throws Contradiction
  bool Summary() const;  // prints it; false where a kind of operation has never succeeded
  Lines done;            // since the last start of the program, in words

 private:
  // Each returns whether it was carried out, rather than refused.
  using Operation = bool (ModelRun::*)();
  struct Kind {
    const char* name;
    int weight;
    Operation operation;
    bool writes;  // so that a write of it can fail
  };
  static const std::array<Kind, 17> kKinds;
  struct Tally {
    std::int64_t done = 0, refused = 0, failed = 0, killed = 0;
  };

  // In the main window and the editor.
  bool WindowAdd() { return Form(true); }
  bool WindowEdit() { return Form(false); }
  bool WindowDelete();
  bool WindowRun();
  bool WindowDuplicate();
  bool Form(bool add);
  void OpenForm(bool add, Entry& entry) const;
  void FillForm(bool add, Entry& entry);
  int ClickTask();  // any line of the tree; its slot, or 0
  // By the remote control.
  bool RemoteAdd() { return Wizard(true); }
  bool RemoteEdit() { return Wizard(false); }
  bool RemoteDelete();
  bool RemoteRun();
  bool Wizard(bool add);
  bool WantsChange(bool add);
  using Judge = std::function<std::string(const std::string& answer)>;
  std::string Answer(std::string answer, const std::string& good, bool again, const Judge& refusal);
  void WizardWhen(bool add, Entry& entry);
  void WizardWhat(bool add, Entry& entry);
  // By the console.
  bool ConsoleAdd();
  bool ConsoleEdit();
  bool ConsoleDelete();
  bool ConsoleRun();
  void AddWords(bool add, Texts& words, Entry& entry);
  bool ConsoleStore(const Texts& words, const Entry& entry, const std::string& loaded, int slot);
  // Of time, of the program and of its store.
  bool PassTime();
  bool Pass(std::int64_t milliseconds);
  bool SetClock();
  void MoveClock(std::int64_t by);
  bool Restart();
  bool Damage();
  void NewWorld();
  void Begin(const RegistryTree& tree);
  void Poke(const std::string& section, const std::string& value, const char* text);

  void Compare();
  void CompareStore();
  void CompareTask(int slot);
  void Same(const std::string& what, const std::string& product, const std::string& expected);
  void Same(const std::string& what, const Texts& product, const Lines& expected);
  void Holds(bool condition, const std::string& what);
  // After the program has stored something, or not: the refusal, that of a write that failed.
  std::string Settle(const std::string& refusal, const std::string& notWritten);
  void Meanwhile();  // something else may happen while a task is being entered

  int Below(int end) { return static_cast<int>(random_() % static_cast<std::uint64_t>(end)); }
  bool Chance(int percent) { return Below(100) < percent; }
  template <typename Table>
  auto& Pick(Table& table) {
    return table[static_cast<std::size_t>(Below(static_cast<int>(std::size(table))))];
  }
  Entry Wish(bool valid);  // what a user may want to enter
  std::string FreshName() { return "Fresh " + std::to_string(++fresh_); }
  bool ScriptIsMissing(int slot) const;
  int AnySlot();  // one that is there, or nearly
  void Say(const std::string& what) { done.push_back(what); }

  std::mt19937_64 random_;
  TaskModel model_;
  std::unique_ptr<ModelledProgram> product_;
  Stored before_;  // the operation
  int stepsLeft_ = 0, fresh_ = 0;
  bool alone_ = false;  // nothing else happens meanwhile
  std::map<std::string, Tally> tally_;
  std::int64_t scheduled_ = 0;
};

}  // namespace orvanto::model
