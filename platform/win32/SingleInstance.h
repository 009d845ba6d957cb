// One running program per user session.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>

#include "platform/win32/Handle.h"
#include "platform/win32/HiddenWindow.h"

namespace orvanto::win32 {

// Claims the session. Who comes second tells the first instead of running.
class SingleInstance {
 public:
  // Waits a little where the first is just starting or ending.
  SingleInstance();
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  bool IsFirst() const { return window_ != nullptr; }

  // In the second: asks the first to show itself.
  void ShowFirst() const;
  // In the first, from its message loop: a second start has asked.
  std::function<void()> onShow;

 private:
  UINT message_;
  Handle<HANDLE, CloseHandle> mutex_;
  HWND first_ = nullptr;
  std::unique_ptr<HiddenWindow> window_;
};

}  // namespace orvanto::win32
