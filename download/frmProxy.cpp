#include "download/frmProxy.h"

namespace orvanto {

frmProxy::frmProxy(forms::FormHost& host, DownloadOptions& options, MessageBoxes& messageBoxes)
    : OptionsDialog(host, "Proxy Options", {4800, 2745}, options, messageBoxes),
      chkProxy(*this, nullptr, "&Use a proxy", {240, 240, 4320, 270}),
      lblProxyIP(*this, nullptr, "Address:", {525, 660, 1200, 240}),
      txtProxyIP(*this, nullptr, {}, {1740, 615, 2820, 345}),
      lblProxyPort(*this, nullptr, "Port:", {525, 1110, 1200, 240}),
      txtProxyPort(*this, nullptr, {}, {1740, 1065, 1290, 345}),
      chkFTPPRoxy(*this, nullptr, "&FTP through the proxy, too", {240, 1575, 4320, 270}),
      cmdSave(*this, nullptr, "&Save", {1830, 2130, 1290, 375}),
      cmdCancel(*this, nullptr, "&Cancel", {3270, 2130, 1290, 375}) {
  chkProxy.onClick = [this] { OnFilled(); };
  Bind({{DownloadOptions::kProxyUse, &chkProxy},
        {DownloadOptions::kProxyIP, &txtProxyIP},
        {DownloadOptions::kProxyPort, &txtProxyPort},
        {DownloadOptions::kProxyFtp, &chkFTPPRoxy}},
       cmdSave, cmdCancel);
}

void frmProxy::OnFilled() {
  txtProxyIP.SetEnabled(chkProxy.Value());
  txtProxyPort.SetEnabled(chkProxy.Value());
}

}  // namespace orvanto
