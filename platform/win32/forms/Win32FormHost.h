// Gives every form a real window when it is first shown.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "platform/forms/forms.h"
#include "platform/win32/HiddenWindow.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/forms/FormWindow.h"

namespace orvanto::win32 {

// The first form that is loaded is the main window. The others belong to a hidden owner and have a
// button in the task bar only where they are shown in place of the main window.
class Win32FormHost : public forms::FormHost {
 public:
  explicit Win32FormHost(Win32Loop& loop);
  ~Win32FormHost() override;

  std::unique_ptr<forms::FormPeer> Attach(forms::Form& form) override;
  void Detach(std::unique_ptr<forms::FormPeer> peer) override;
  forms::Size ScreenSize() const override;
  forms::Size FrameSize(const forms::Form& form) const override;
  forms::Size TextSize(const std::string& text, int width) const override;

  // Null as long as there is none.
  HWND MainWindow() const { return mainWindow_; }
  // The form that the user works in; null when that is another program, or a dialog.
  HWND ActiveForm() const;
  std::vector<HWND> VisibleForms() const;

 private:
  class Peer;

  FormWindow& MakeWindow(forms::Form& form);
  bool Navigate(MSG& message) const;
  void Forget(const FormWindow& window);
  void ChooseTaskbar(HWND window) const;

  Win32Loop& loop_;
  HiddenWindow owner_{L"OrvantoOwner", [](UINT, WPARAM, LPARAM) { return std::nullopt; }};
  const forms::Form* main_ = nullptr;  // whose window the hidden one does not own
  HWND mainWindow_ = nullptr;
  std::vector<std::unique_ptr<FormWindow>> windows_;
};

}  // namespace orvanto::win32
