// The proxy of downloads.
#pragma once

#include "download/OptionsDialog.h"

namespace orvanto {

class frmProxy : public OptionsDialog {
 public:
  frmProxy(forms::FormHost& host, DownloadOptions& options, MessageBoxes& messageBoxes);

  forms::CheckBox chkProxy;
  forms::Label lblProxyIP;
  forms::TextBox txtProxyIP;
  forms::Label lblProxyPort;
  forms::TextBox txtProxyPort;
  forms::CheckBox chkFTPPRoxy;
  forms::Button cmdSave, cmdCancel;

 private:
  void OnFilled() override;
};

}  // namespace orvanto
