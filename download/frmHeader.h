// The log of downloads: the headers of HTTP servers, the states and replies of FTP servers.
#pragma once

#include "core/TextLog.h"
#include "platform/forms/forms.h"

namespace orvanto {

class frmHeader : public forms::Form {
 public:
  explicit frmHeader(forms::FormHost& host);

  void Open();  // centred; one that is open already comes to the front

  // Kept while the window is closed.
  TextLog& Log() { return log_; }

  forms::TextBox txtHeader;
  forms::Button cmdClose;

 private:
  TextLog log_;
  Subscription logChanged_;
};

}  // namespace orvanto
