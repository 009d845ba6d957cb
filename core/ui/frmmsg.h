// The popup message of scripts: a small window above all others that blocks nothing.
#pragma once

#include "platform/forms.h"

namespace orvanto {

class frmmsg : public forms::Form {
 public:
  explicit frmmsg(forms::FormHost& host);

  void ShowText(const std::string& text);

  forms::Label lblMsg;
  forms::Button cmdOK;  // unloads the form
};

}  // namespace orvanto
