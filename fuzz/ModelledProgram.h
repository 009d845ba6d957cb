// The program on a platform of fakes for task_model.cpp: its windows and its remote control, and
// beside it the commands of the console, which are a process of their own on the same registry.
#pragma once

#include <optional>
#include <sstream>
#include <string>

#include "app/Program.h"
#include "app/console/Commands.h"
#include "core/TaskRecord.h"
#include "platform/text/Lines.h"
#include "tests/support/FakePlatform.h"

namespace orvanto::model {

// As the file-backed registry: of a change everything is kept or nothing. Knows what a kill at a
// certain write would leave.
class ChangeRegistry : public MemoryRegistry {
 public:
  void BeginChange() override {
    if (ChangeDepth() == 0) before_ = tree_;
    MemoryRegistry::BeginChange();
  }
  Status EndChange() override {
    const Status status = MemoryRegistry::EndChange();
    if (status != kSuccess) tree_ = before_;
    return status;
  }
  // At the `count`th write from now on.
  void FailAt(int count) {
    failed = false;
    FailWrite(count, kDiskFull);
  }
  void KillAt(int count) {
    left.reset();
    killIn_ = count;
  }
  bool failed = false;
  std::optional<RegistryTree> left;  // by the kill

 protected:
  Status Write(const WriteStep& step) override {
    if (--killIn_ == 0) left = ChangeDepth() > 0 ? before_ : tree_;
    const Status status = MemoryRegistry::Write(step);
    if (status == kDiskFull) failed = true;
    return status;
  }

 private:
  RegistryTree before_;
  int killIn_ = 0;
};

struct Boxes : MessageBoxes {
  Answer Show(const std::string& text, const std::string&, Buttons buttons, BoxIcon) override {
    shown.push_back(text);
    if (whileOpen) whileOpen();
    return buttons == Buttons::Ok ? Answer::Ok : Answer::Yes;
  }
  Texts shown;
  std::function<void()> whileOpen;
};

class ModelledProgram {
 public:
  ModelledProgram(const RegistryTree& tree, std::int64_t wall, bool monthFirst) {
    registry.Tree() = tree;
    clock.Move(wall - clock.UnixMilliseconds());
    clock.shortDateOrder = monthFirst ? "m/d/y" : "d.m.y";
    files.contents = {{"C:\\Home\\scripts\\a.txt", ""}, {"C:\\tool.exe", ""}};
    program.onTaskRun = commands.onTaskRun = [this](const TaskRecord& task) { Ran(task); };
    program.Start();
    commands.Prepare();
  }

  // A line of a remote client; what it is sent.
  std::string Say(const std::string& line) {
    if (!line.empty()) socket->PeerSends(line);
    socket->Sent();  // the echo
    socket->PeerSends(kCrLf);
    return socket->Sent();
  }
  bool Connect() {
    for (FakeSocketHost::Socket* each : here.sockets.sockets) {
      if (each->LocalPort() != kPort || !each->PeerConnects()) continue;
      socket = each;
      return true;
    }
    return false;
  }
  // A command of the console; its exit status.
  int Command(const Texts& words) {
    out.str("");
    err.str("");
    return RunCommand(words, {commands, out, err, clock, false,
                              [](const std::string& path, std::int16_t) { return path; }});
  }

  static constexpr std::uint16_t kPort = 600;
  FakePlatform here, there;
  std::optional<Platform> platform, commandPlatform;
  ChangeRegistry registry;
  Boxes boxes;
  Texts fired;  // "2026-11-22 08:01 Name"
  FakeClock& clock = here.clock;
  FakeFiles& files = here.files;
  Program program{On(here), {"", "C:\\Home"}};
  Program commands{On(there), {"", "C:\\Home"}};
  FakeSocketHost::Socket* socket = nullptr;
  std::ostringstream out, err;

 private:
  Platform& On(FakePlatform& fake) {
    std::optional<Platform>& its = &fake == &here ? platform : commandPlatform;
    its.emplace(Platform{fake.loop, here.clock, registry, here.files, fake.shell, fake.session,
                         fake.desktop, fake.keyboard, fake.clipboard, fake.sound, boxes,
                         fake.fileDialogs, fake.trayIcon, fake.sockets, fake.forms});
    return *its;
  }
  void Ran(const TaskRecord& task) {
    const DateTime now = clock.Now();
    const auto two = [](int number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    fired.push_back(std::to_string(now.year) + "-" + two(now.month) + "-" + two(now.day) + " " +
                    two(now.hour) + ":" + two(now.minute) + " " + task.name);
  }
};

}  // namespace orvanto::model
