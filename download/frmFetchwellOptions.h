// The options of the download window itself.
#pragma once

#include "download/OptionsDialog.h"

namespace orvanto {

class frmFetchwellOptions : public OptionsDialog {
 public:
  frmFetchwellOptions(forms::FormHost& host, DownloadOptions& options, MessageBoxes& messageBoxes);

  forms::CheckBox chkRollback;
  forms::Label lblRollback;
  forms::TextBox txtRollback;
  forms::CheckBox chkClipboard, chkDownloadDrop;
  forms::Button cmdSave, cmdCancel;
};

}  // namespace orvanto
