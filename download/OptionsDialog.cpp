#include "download/OptionsDialog.h"

#include <utility>

#include "core/ProgramTitle.h"
#include "platform/MessageBoxes.h"

namespace orvanto {
namespace {

constexpr const char* kNotSaved =
    "The options were not saved. They hold for everyone who uses this computer, and the system did "
    "not let you change them.";

}  // namespace

OptionsDialog::OptionsDialog(forms::FormHost& host, const std::string& caption,
                             forms::Size clientSize, DownloadOptions& options,
                             MessageBoxes& messageBoxes)
    : Form(host, caption, clientSize), options_(options), messageBoxes_(messageBoxes) {
  helpPage = "downloads";
}

void OptionsDialog::Bind(std::vector<Row> rows, forms::Button& save, forms::Button& cancel) {
  rows_ = std::move(rows);
  save.onClick = [this] { Save(); };
  cancel.onClick = [this] { Unload(); };
  defaultButton = &save;
  cancelButton = &cancel;
}

void OptionsDialog::TakeDigits(forms::TextBox& box) {
  box.takesKey = [](char32_t key) { return (key >= '0' && key <= '9') || key == 8 || key == 13; };
}

void OptionsDialog::Open() {
  if (!Loaded()) {
    for (const auto& [option, control] : rows_) {
      if (auto* const* check = std::get_if<forms::CheckBox*>(&control)) {
        (*check)->SetValue(options_.IsOn(option));
      } else {
        std::get<forms::TextBox*>(control)->SetText(options_.Text(option));
      }
    }
    OnFilled();
    CentreOnScreen();
  }
  Activate();
}

void OptionsDialog::Save() {
  std::vector<std::pair<DownloadOptions::Option, std::string>> texts;
  for (const auto& [option, control] : rows_) {
    auto* const* check = std::get_if<forms::CheckBox*>(&control);
    texts.emplace_back(option, check == nullptr    ? std::get<forms::TextBox*>(control)->Text()
                               : (*check)->Value() ? "1"
                                                   : "0");
  }
  if (options_.Save(texts)) return Unload();
  messageBoxes_.Show(kNotSaved, kProgramTitle, Buttons::Ok, BoxIcon::Critical);
}

}  // namespace orvanto
