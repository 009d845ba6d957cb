#include "core/ui/frmmsg.h"
#include "core/ProgramTitle.h"

namespace orvanto {

frmmsg::frmmsg(forms::FormHost& host)
    : Form(host, kProgramTitle, {4500, 1725}),
      lblMsg(*this, nullptr, "", {180, 180, 4140, 885}),
      cmdOK(*this, nullptr, "&OK", {1635, 1185, 1230, 375}) {
  cmdOK.onClick = [this] { Unload(); };
  defaultButton = cancelButton = &cmdOK;
}

void frmmsg::ShowText(const std::string& text) {
  lblMsg.SetText(text);
  CentreOnScreen();
  Show();
}

}  // namespace orvanto
