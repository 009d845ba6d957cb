#include "download/frmHeader.h"

namespace orvanto {

frmHeader::frmHeader(forms::FormHost& host)
    : Form(host, "Header & FTP Log", {7200, 4995}),
      txtHeader(*this, nullptr, {.multiLine = true, .readOnly = true}, {180, 180, 6840, 4080}),
      cmdClose(*this, nullptr, "&Close", {5730, 4440, 1290, 375}) {
  helpPage = "downloads";
  txtHeader.spokenName = "Log";
  logChanged_ = log_.changed.Subscribe([this] { txtHeader.SetText(log_.Text()); });
  cmdClose.onClick = [this] { Unload(); };
  defaultButton = cancelButton = &cmdClose;
}

void frmHeader::Open() {
  if (!Loaded()) CentreOnScreen();
  Activate();
}

}  // namespace orvanto
