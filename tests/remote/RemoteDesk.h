// The remote control on a platform of fakes, and a client that types.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/TaskExecution.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "remote/Internet.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {

class FakeArea : public ServerArea {
 public:
  void ShowServer(bool on) override { shown = on; }
  void SetCaption(const std::string& text) override { caption = text; }
  void SetLamps(bool yes, bool no) override {
    lamps = std::string(yes ? "Y" : "-") + (no ? "N" : "-");
  }
  void SetClient(const std::string& address) override { client = address; }
  void EnableClientCommands(bool on) override { commands = on; }
  void SetLog(const std::string& text) override { log = text; }
  std::string Log() const override { return log; }
  void TaskListChanged() override { ++listChanges; }

  bool shown = false;
  std::string caption, lamps, client = "0.0.0.0", log;
  bool commands = false;
  int listChanges = 0;
};

struct RemoteDesk : FakePlatform {
  class Finder : public FileFinder {
   public:
    explicit Finder(const FakeFiles& files) : files_(files) {}
    bool FindFile(const std::string& path) override { return files_.Exists(path); }

   private:
    const FakeFiles& files_;
  };

  RemoteDesk() { store.SetProgramFolder("C:\\Orvanto"); }

  Settings settings{registry};
  Finder finder{files};
  TaskStore store{settings, clock, finder};
  Sched sched{store, clock};
  TaskExecution execution{store, shell, session, sound, messageBoxes, nullptr};
  RemoteSettings remote;
  FakeArea area;
  frmChat chat{forms};
  TelnetServer server{{sockets, settings, store, execution, clock, files, messageBoxes, area, chat},
                      remote};
  FakeSocketHost::Socket& socket = *sockets.sockets.front();

  // Switches the server on and connects; what the client is sent at first.
  std::string Connect() {
    if (!server.Connected() && !server.Listening()) server.ServerOn();
    EXPECT_TRUE(socket.PeerConnects());
    return socket.Sent();
  }
  // Types key by key and Enter; what the client is sent behind the echo of the keys.
  std::string Line(const std::string& text) {
    for (const char key : text) socket.PeerSends(std::string(1, key));
    socket.Sent();
    socket.PeerSends(kCrLf);
    return socket.Sent();
  }
  std::string Lines(const std::vector<std::string>& lines) {
    std::string last;
    for (const std::string& line : lines) last = Line(line);
    return last;
  }
  void AddMessage(const std::string& name) {
    TaskEntry entry;
    entry.name = name;
    entry.index = static_cast<std::int16_t>(store.NoTasks() + 1);
    entry.group = "G";
    entry.timeType = kTimeRecurring;
    entry.every = 3;
    entry.in = 2;
    entry.hour = "08";
    entry.minute = "05";
    entry.taskType = kPopupMessage;
    entry.path = "Text of " + name;
    store.SaveTask(entry);
  }
};

inline const std::string kMenu =
    "\r\n\r\nOrvanto 1.3\r\n\r\n1) New Task\r\n2) Delete Task\r\n3) Run Task\r\n4) Edit Task\r\n"
    "5) View Scripts Folder\r\n6) Chat\r\n7) Logout\r\n>";

}  // namespace orvanto
