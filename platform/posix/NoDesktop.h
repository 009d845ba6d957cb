// A host without a desktop: there are no windows, so nothing is ever typed or pasted into one.
#pragma once

#include "platform/Clipboard.h"
#include "platform/Desktop.h"
#include "platform/Keyboard.h"
#include "platform/posix/Notices.h"

namespace orvanto::posix {

class NoDesktop : public Desktop {
 public:
  explicit NoDesktop(Notices& notices) : notices_(notices) {}
  std::vector<Window> TopLevelWindows() override {
    notices_.Say("there are no windows here");
    return {};
  }
  std::string Title(Window) override { return ""; }
  void BringToTop(Window) override {}
  void Show(Window, ShowCommand) override {}
  void Send(Window, std::uint32_t, std::uintptr_t, std::intptr_t) override {}

 private:
  Notices& notices_;
};

class NoKeyboard : public Keyboard {
 public:
  void Type(const std::vector<KeyEvent>&) override {}
};

class NoClipboard : public Clipboard {
 public:
  bool SetText(const std::string&) override { return false; }
  std::string Text() override { return ""; }
};

}  // namespace orvanto::posix
