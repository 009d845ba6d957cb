#include "download/frmFtpOptions.h"

namespace orvanto {

frmFtpOptions::frmFtpOptions(forms::FormHost& host, DownloadOptions& options,
                             MessageBoxes& messageBoxes)
    : OptionsDialog(host, "FTP Options", {4800, 1905}, options, messageBoxes),
      lblTimeout(*this, nullptr, "Seconds to wait for a reply:", {240, 285, 2700, 240}),
      txtTimeout(*this, nullptr, {}, {3270, 240, 1290, 345}),
      chkPasv(*this, nullptr, "&Passive data connections", {240, 735, 4320, 270}),
      cmdSave(*this, nullptr, "&Save", {1830, 1290, 1290, 375}),
      cmdCancel(*this, nullptr, "&Cancel", {3270, 1290, 1290, 375}) {
  TakeDigits(txtTimeout);
  Bind({{DownloadOptions::kFtpTimeout, &txtTimeout}, {DownloadOptions::kFtpPasv, &chkPasv}},
       cmdSave, cmdCancel);
}

}  // namespace orvanto
