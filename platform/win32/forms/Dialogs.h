// The system's own dialogs, owned by our forms.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/FileDialogs.h"
#include "platform/MessageBoxes.h"
#include "platform/win32/Com.h"
#include "platform/win32/Win32Loop.h"
#include "platform/win32/forms/Win32FormHost.h"

namespace orvanto::win32 {

// The scope of a modal dialog of the system: the loop is held, and no form takes input. The owner
// itself is the dialog's business, and so is everything when there is none.
class ModalScope {
 public:
  ModalScope(Win32Loop& loop, const Win32FormHost& forms);
  ~ModalScope();
  ModalScope(const ModalScope&) = delete;
  ModalScope& operator=(const ModalScope&) = delete;

  HWND Owner() const { return owner_; }

 private:
  EventLoop::Hold hold_;
  HWND owner_;
  std::vector<HWND> disabled_;
};

class Win32MessageBoxes : public MessageBoxes {
 public:
  Win32MessageBoxes(Win32Loop& loop, const Win32FormHost& forms) : loop_(loop), forms_(forms) {}
  Answer Show(const std::string& text, const std::string& title, Buttons buttons,
              BoxIcon icon) override;

 private:
  Win32Loop& loop_;
  const Win32FormHost& forms_;
};

class Win32FileDialogs : public FileDialogs {
 public:
  Win32FileDialogs(Win32Loop& loop, const Win32FormHost& forms) : loop_(loop), forms_(forms) {}
  std::optional<std::string> ChooseFile(const std::string& title,
                                        const std::vector<FileFilter>& filters,
                                        const std::string& folder) override;

 private:
  Win32Loop& loop_;
  const Win32FormHost& forms_;
  Com com_;
};

}  // namespace orvanto::win32
