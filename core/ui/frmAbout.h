// What this program is, and the way to the system's own description of itself.
#pragma once

#include "platform/forms/forms.h"

namespace orvanto {

class Shell;

class frmAbout : public forms::Form {
 public:
  frmAbout(forms::FormHost& host, Shell& shell);

  void Open();  // centred
  std::function<void()> onClosed;

  forms::Label lblTitle, lblVersion, lblDescription;
  forms::Button cmdOK;  // first, so that it has the focus
  forms::Button cmdSysInfo;
};

}  // namespace orvanto
