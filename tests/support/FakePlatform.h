// A platform of fakes. Time stands still until a test moves it; nothing waits, and what would leave
// the program is written down.
#pragma once

#include <gtest/gtest.h>

#include <cassert>
#include <deque>
#include <functional>
#include <string>

#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/forms/forms.h"
#include "platform/registry/TreeRegistry.h"
#include "tests/support/FakeLoop.h"
#include "tests/support/FakeServices.h"
#include "tests/support/FakeSockets.h"

namespace orvanto {

// A registry in memory, with writes that fail on demand.
class MemoryRegistry : public TreeRegistry {
 public:
  // What was written before a failure stays, as on Windows.
  void BeginChange() override {
    if (depth_++ == 0) failure_.Take();
  }
  Status EndChange() override {
    assert(depth_ > 0);
    return --depth_ == 0 ? failure_.Take() : kSuccess;
  }

  // Lets the `count`th call from now on (1 is the next) of CreateKey, SetValue, DeleteValue or
  // DeleteKey fail with `status` and change nothing. Calls with a bad handle or path do not count.
  void FailWrite(int count, Status status) {
    failingWrite_ = writes_ + count;
    failingStatus_ = status;
  }
  int Writes() const { return writes_; }      // calls so far, failed ones included
  int ChangeDepth() const { return depth_; }  // 0 when every change has been ended

  // Past the interface.
  RegistryTree& Tree() { return tree_; }

 protected:
  Status Write(const WriteStep& step) override {
    return ++writes_ == failingWrite_ ? failingStatus_ : step(tree_);
  }

 private:
  int depth_ = 0;
  int writes_ = 0;
  int failingWrite_ = 0;
  Status failingStatus_ = kSuccess;
};

// Shows nothing: answers from the list of what the test expects. A box that was not expected fails
// the test and takes the safe answer.
class FakeMessageBoxes : public MessageBoxes {
 public:
  Answer Show(const std::string& text, const std::string&, Buttons buttons, BoxIcon) override {
    buttonsShown = buttons;
    if (expected.empty()) {
      if (!answersAll) ADD_FAILURE() << "unexpected message box: " << text;
      return buttons == Buttons::Ok         ? Answer::Ok
             : buttons == Buttons::OkCancel ? Answer::Cancel
                                            : Answer::No;
    }
    const Expected box = std::move(expected.front());
    expected.pop_front();
    EXPECT_EQ(text, box.text);
    if (box.whileOpen) box.whileOpen();
    return box.answer;
  }

  struct Expected {
    std::string text;
    Answer answer = Answer::Ok;
    std::function<void()> whileOpen = {};
  };
  std::deque<Expected> expected;
  Buttons buttonsShown = Buttons::Ok;  // of the last box
  bool answersAll = false;             // the safe answer to every box that is not expected
};

// All of them, put together. Its end fails the test when a box it announced has not come, or when a
// key or a change of the registry is still open.
struct FakePlatform {
  ~FakePlatform() {
    for (const auto& box : messageBoxes.expected)
      ADD_FAILURE() << "this box did not come: " << box.text;
    EXPECT_EQ(registry.OpenKeys(), 0U);
    EXPECT_EQ(registry.ChangeDepth(), 0);
  }

  FakeClock clock;
  FakeLoop loop{clock};
  MemoryRegistry registry;
  FakeFiles files;
  Texts done;  // see Doer
  FakeShell shell{done};
  FakeSession session{done};
  FakeDesktop desktop{done};
  FakeKeyboard keyboard;
  FakeClipboard clipboard;
  FakeSound sound{done};
  FakeMessageBoxes messageBoxes;
  FakeFileDialogs fileDialogs;
  FakeTrayIcon trayIcon;
  FakeSocketHost sockets{loop};
  forms::HeadlessFormHost forms;
  Platform platform{loop,         clock,       registry, files,     shell,
                    session,      desktop,     keyboard, clipboard, sound,
                    messageBoxes, fileDialogs, trayIcon, sockets,   forms};
};

}  // namespace orvanto
