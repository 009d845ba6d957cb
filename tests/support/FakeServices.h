// Services that write down what they are asked for, and do nothing.
#pragma once

#include <cstdint>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "platform/Clipboard.h"
#include "platform/Desktop.h"
#include "platform/FileDialogs.h"
#include "platform/Keyboard.h"
#include "platform/Session.h"
#include "platform/Shell.h"
#include "platform/Sound.h"
#include "platform/TrayIcon.h"
#include "tests/support/FakeFiles.h"

namespace orvanto {

// What the program did to the world, in the order of the doing and in words: "beep", "end 2".
class Doer {
 public:
  explicit Doer(Texts& done) : done_(done) {}

 protected:
  bool Did(const std::string& what) {
    done_.push_back(what);
    return true;
  }
  static std::string Text(ShowCommand show) { return std::to_string(static_cast<int>(show)); }

 private:
  Texts& done_;
};

class FakeShell : public Shell, private Doer {
 public:
  using Doer::Doer;
  bool Execute(const ShellRequest& request) override {
    return Did(request.operation + " " + request.file + request.parameters + " in '" +
               request.directory + "' " + Text(request.show));
  }
  bool Start(const std::string& commandLine, ShowCommand) override {
    return Did("start " + commandLine);
  }
  bool StartAndWait(const std::string& commandLine, ShowCommand show) override {
    return Did("wait for " + commandLine + " " + Text(show));
  }
};

// Windows that a test puts there, from the top down. A window is its number.
class FakeDesktop : public Desktop, private Doer {
 public:
  using Doer::Doer;
  std::vector<Window> TopLevelWindows() override {
    std::vector<Window> windows(titles.size());
    std::iota(windows.begin(), windows.end(), Window{0});
    return windows;
  }
  std::string Title(Window window) override { return titles.at(window); }
  void BringToTop(Window window) override { Did("top " + std::to_string(window)); }
  void Show(Window window, ShowCommand show) override {
    Did("show " + Text(show) + " " + std::to_string(window));
  }
  void Send(Window window, std::uint32_t message, std::uintptr_t wParam, std::intptr_t) override {
    Did("send " + std::to_string(message) + " " + std::to_string(wParam) + " " +
        std::to_string(window));
    if (closes) titles[window].clear();
  }

  Texts titles;
  bool closes = false;  // windows lose their titles with their first message
};

class FakeSession : public Session, private Doer {
 public:
  using Doer::Doer;
  bool End(std::uint32_t flags) override { return Did("end " + std::to_string(flags)); }
  void ChangeResolution(int width, int height) override {
    Did("size " + std::to_string(width) + "x" + std::to_string(height));
  }
  void HangUp() override { Did("hang up"); }
};

class FakeSound : public Sound, private Doer {
 public:
  using Doer::Doer;
  bool Play(const std::string& name) override { return Did("play " + name); }
  void Beep() override { Did("beep"); }
};

class FakeKeyboard : public Keyboard {
 public:
  void Type(const std::vector<KeyEvent>& events) override { typed.push_back(events); }
  std::vector<std::vector<KeyEvent>> typed;
};

class FakeClipboard : public Clipboard {
 public:
  bool SetText(const std::string& newText) override {
    if (!taken) text = newText;
    return !taken;
  }
  std::string Text() override { return taken ? "" : text; }
  bool taken = false;  // by another program
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

class FakeTrayIcon : public TrayIcon {
 public:
  void Add(const std::string& tip) override { shownTip = tip; }
  void Remove() override { shownTip.clear(); }
  std::string shownTip;  // empty: there is no icon
};

}  // namespace orvanto
