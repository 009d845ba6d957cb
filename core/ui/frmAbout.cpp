#include "core/ui/frmAbout.h"

#include "core/ProgramTitle.h"
#include "platform/Shell.h"

namespace orvanto {

frmAbout::frmAbout(forms::FormHost& host, Shell& shell)
    : Form(host, std::string("About ") + kProgramTitle, {5400, 2145}),
      lblTitle(*this, nullptr, kProgramTitle, {240, 240, 4920, 240}),
      lblVersion(*this, nullptr, std::string("Version ") + kProgramVersion, {240, 525, 4920, 240}),
      lblDescription(*this, nullptr, "Runs your tasks at their hour and minute.",
                     {240, 945, 4920, 240}),
      cmdOK(*this, nullptr, "&OK", {3870, 1530, 1290, 375}),
      cmdSysInfo(*this, nullptr, "&System Info...", {240, 1530, 1800, 375}) {
  helpPage = "index";
  cmdSysInfo.onClick = [&shell] { shell.Start("msinfo32.exe", ShowCommand::Normal); };
  cmdOK.onClick = [this] { Unload(); };
  defaultButton = cancelButton = &cmdOK;
  onUnload = [this] {
    if (onClosed) onClosed();
  };
}

void frmAbout::Open() {
  CentreOnScreen();
  Show();
}

}  // namespace orvanto
