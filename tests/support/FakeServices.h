// Services that write down what they are asked for, and do nothing.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Clipboard.h"
#include "platform/Desktop.h"
#include "platform/FileDialogs.h"
#include "platform/Keyboard.h"
#include "platform/MessageBoxes.h"
#include "platform/Session.h"
#include "platform/Shell.h"
#include "platform/Sound.h"
#include "platform/TrayIcon.h"

namespace orvanto {

// Shows nothing: answers from the list of what the test expects. A box that was not expected fails
// the test and takes the safe answer.
class FakeMessageBoxes : public MessageBoxes {
 public:
  Answer Show(const std::string& text, const std::string& title, Buttons buttons,
              BoxIcon icon) override;

  struct Expected {
    std::string text;
    Answer answer = Answer::Ok;
    std::function<void()> whileOpen = {};
  };
  std::deque<Expected> expected;
  bool answersAll = false;  // the safe answer to every box that is not expected
};

class FakeShell : public Shell {
 public:
  bool Execute(const ShellRequest& request) override {
    requests.push_back(request);
    return true;
  }
  bool Start(const std::string& commandLine, ShowCommand) override {
    started.push_back(commandLine);
    return true;
  }
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override {
    waitedFor.push_back(commandLine + " " + std::to_string(static_cast<int>(show)));
    return true;
  }
  std::vector<std::string> waitedFor;
  std::vector<ShellRequest> requests;
  std::vector<std::string> started;
};

// Windows that a test puts there, from the top down; what is done to them is written down.
class FakeDesktop : public Desktop {
 public:
  std::vector<Window> TopLevelWindows() override;
  std::string Title(Window window) override { return titles.at(window); }
  void BringToTop(Window window) override { Log("top", window); }
  void Show(Window window, ShowCommand show) override {
    Log("show " + std::to_string(static_cast<int>(show)), window);
  }
  void Send(Window window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t) override {
    Log("send " + std::to_string(message) + " " + std::to_string(wParam), window);
  }
  void Log(const std::string& what, Window window) {
    log.push_back(what + " " + std::to_string(window));
  }
  std::vector<std::string> titles;  // a window is its number here
  std::vector<std::string> log;
};

class FakeKeyboard : public Keyboard {
 public:
  void Type(const std::vector<KeyEvent>& events) override { typed.push_back(events); }
  std::vector<std::vector<KeyEvent>> typed;
};

class FakeClipboard : public Clipboard {
 public:
  bool SetText(const std::string& newText) override {
    text = newText;
    return true;
  }
  std::string text;
};

// Answers with `chosen`; keeps what it was asked.
class FakeFileDialogs : public FileDialogs {
 public:
  std::optional<std::string> ChooseFile(const std::string& title,
                                        const std::vector<FileFilter>& filters,
                                        const std::string& folder) override {
    asked = title + "|" + folder;
    for (const FileFilter& filter : filters) asked += "|" + filter.name + "=" + filter.pattern;
    return chosen;
  }
  std::optional<std::string> chosen;
  std::string asked;
};

class FakeSession : public Session {
 public:
  bool End(std::uint32_t flags) override {
    ends.push_back(flags);
    return false;
  }
  void ChangeResolution(int width, int height) override {
    sizes.push_back(std::to_string(width) + "x" + std::to_string(height));
  }
  void HangUp() override { ++hangUps; }
  std::vector<std::string> sizes;
  int hangUps = 0;
  std::vector<std::uint32_t> ends;
};

class FakeSound : public Sound {
 public:
  bool Play(const std::string& name) override {
    played.push_back(name);
    return true;
  }
  void Beep() override { ++beeps; }
  int beeps = 0;
  std::vector<std::string> played;
};

class FakeTrayIcon : public TrayIcon {
 public:
  void Add(const std::string& tip) override {
    added = true;
    shownTip = tip;
  }
  void Remove() override { added = false; }
  bool added = false;
  std::string shownTip;
};

}  // namespace orvanto
