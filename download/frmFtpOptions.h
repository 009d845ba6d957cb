// The options of FTP downloads.
#pragma once

#include "download/OptionsDialog.h"

namespace orvanto {

class frmFtpOptions : public OptionsDialog {
 public:
  frmFtpOptions(forms::FormHost& host, DownloadOptions& options, MessageBoxes& messageBoxes);

  forms::Label lblTimeout;
  forms::TextBox txtTimeout;
  forms::CheckBox chkPasv;
  forms::Button cmdSave, cmdCancel;
};

}  // namespace orvanto
