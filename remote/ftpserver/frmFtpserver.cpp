#include "remote/ftpserver/frmFtpserver.h"

namespace orvanto {

frmFtpserver::frmFtpserver(forms::FormHost& host)
    : Form(host, "Brisk FTP Server ver .1a", {8400, 5895}),
      fraMain(*this, nullptr, "", {120, 60, 8160, 5220}),
      lblServerLog(*this, &fraMain, "Server Log", {180, 240, 7800, 240}),
      lstServerLog(*this, &fraMain, {180, 510, 7800, 2700}),
      lblConnectedClients(*this, &fraMain, "Connected Clients", {180, 3360, 7800, 240}),
      lstConnectedClients(*this, &fraMain, {180, 3630, 7800, 1410}),
      cmdClose(*this, nullptr, "&Close", {7050, 5400, 1230, 375}) {
  helpPage = "remote-control";
  lstServerLog.followsEnd = true;
  cancelButton = &cmdClose;
  // The server runs on.
  onClose = cmdClose.onClick = [this] { Hide(); };
}

void frmFtpserver::AddToLog(const std::string& line) {
  const auto& lines = lstServerLog.Items();
  if (lines.size() >= kMostLines) {
    const auto gone = static_cast<int>(lines.size() - kMostLines / 2);
    const int selected = lstServerLog.SelectedIndex() - gone;
    lstServerLog.SetItems({lines.begin() + gone, lines.end()});
    lstServerLog.Select(selected);
  }
  lstServerLog.Add(line);
}

void frmFtpserver::ShowClients(const std::vector<std::string>& clients) {
  if (clients == lstConnectedClients.Items()) return;
  const int selected = lstConnectedClients.SelectedIndex();
  lstConnectedClients.SetItems(clients);
  lstConnectedClients.Select(selected);
}

}  // namespace orvanto
