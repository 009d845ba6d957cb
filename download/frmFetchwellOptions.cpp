#include "download/frmFetchwellOptions.h"

namespace orvanto {

frmFetchwellOptions::frmFetchwellOptions(forms::FormHost& host, DownloadOptions& options,
                                         MessageBoxes& messageBoxes)
    : OptionsDialog(host, "Fetchwell! Options", {6000, 2745}, options, messageBoxes),
      chkRollback(*this, nullptr, "Cut the end off a partial file before &resuming it",
                  {240, 240, 5520, 270}),
      lblRollback(*this, nullptr, "Bytes to cut:", {525, 660, 1500, 240}),
      txtRollback(*this, nullptr, {}, {2100, 615, 1290, 345}),
      chkClipboard(*this, nullptr, "&Take the URL from the clipboard when the window opens",
                   {240, 1125, 5520, 270}),
      chkDownloadDrop(*this, nullptr, "Take a &URL over as soon as it is dropped",
                      {240, 1545, 5520, 270}),
      cmdSave(*this, nullptr, "&Save", {3030, 2130, 1290, 375}),
      cmdCancel(*this, nullptr, "&Cancel", {4470, 2130, 1290, 375}) {
  TakeDigits(txtRollback);
  Bind({{DownloadOptions::kRollback, &chkRollback},
        {DownloadOptions::kRollbackAmount, &txtRollback},
        {DownloadOptions::kClipboard, &chkClipboard},
        {DownloadOptions::kDownloadDrop, &chkDownloadDrop}},
       cmdSave, cmdCancel);
}

}  // namespace orvanto
