// The FTP server's window: its log, and who is connected.
#pragma once

#include <string>
#include <vector>

#include "platform/forms/forms.h"

namespace orvanto {

class frmFtpserver : public forms::Form {
 public:
  // The oldest lines of the log go when there are more.
  static constexpr std::size_t kMostLines = 1000;

  explicit frmFtpserver(forms::FormHost& host);

  void AddToLog(const std::string& line);
  // One line for each. Nothing happens while they are the same.
  void ShowClients(const std::vector<std::string>& clients);

  forms::Frame fraMain;
  forms::Label lblServerLog;
  forms::ListBox lstServerLog;
  forms::Label lblConnectedClients;
  forms::ListBox lstConnectedClients;
  forms::Button cmdClose;
};

}  // namespace orvanto
