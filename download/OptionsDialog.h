// What the dialogs of the download options have in common: controls that show options, a button
// that saves them all and one that does not.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "download/DownloadOptions.h"
#include "platform/forms/forms.h"

namespace orvanto {

class MessageBoxes;

class OptionsDialog : public forms::Form {
 public:
  // Shows what is stored, centred. One that is open already comes to the front as it is.
  void Open();

 protected:
  struct Row {
    DownloadOptions::Option option;
    std::variant<forms::CheckBox*, forms::TextBox*> control;
  };

  OptionsDialog(forms::FormHost& host, const std::string& caption, forms::Size clientSize,
                DownloadOptions& options, MessageBoxes& messageBoxes);
  // For the constructor, once the controls exist.
  void Bind(std::vector<Row> rows, forms::Button& save, forms::Button& cancel);
  // Of the keys, the box takes digits, backspace and Enter.
  static void TakeDigits(forms::TextBox& box);
  // The controls show what is stored.
  virtual void OnFilled() {}

 private:
  void Save();

  DownloadOptions& options_;
  MessageBoxes& messageBoxes_;
  std::vector<Row> rows_;
};

}  // namespace orvanto
