// The popup message of scripts: a small window above all others that blocks nothing.
#pragma once

#include "platform/forms/forms.h"

namespace orvanto {

class frmmsg : public forms::Form {
 public:
  explicit frmmsg(forms::FormHost& host);

  // The window is as large as the text wants, up to most of the screen; a text that is longer still
  // is shown in txtMsg, which scrolls.
  void ShowText(const std::string& text);

  forms::Label lblMsg;
  forms::Button cmdOK;  // unloads the form
  forms::TextBox txtMsg;

 private:
  void LayOut();

  forms::FormHost& formHost_;
};

}  // namespace orvanto
