#include "download/frmSave.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/Convert.h"
#include "platform/Files.h"
#include "platform/text/Case.h"

namespace orvanto {
namespace {

constexpr const char* kUp = "..";

// Up to the last backslash, and what follows it.
std::pair<std::string, std::string> Split(const std::string& path) {
  const std::size_t name = path.rfind('\\') + 1;  // 0 where there is none
  return {path.substr(0, name), path.substr(name)};
}

// "C:\", or "\\server\share\".
bool IsRoot(const std::string& folder) {
  return folder.starts_with("\\\\") ? std::count(folder.begin(), folder.end(), '\\') <= 4
                                    : folder.size() <= 3;
}

// In the order of the alphabet, without regard to case; each name comes with its folded form.
using Names = std::vector<std::pair<std::string, std::string>>;

std::vector<std::string> Sorted(Names names) {
  std::sort(names.begin(), names.end());
  std::vector<std::string> sorted;
  sorted.reserve(names.size());
  for (auto& [folded, name] : names) sorted.push_back(std::move(name));
  return sorted;
}

}  // namespace

frmSave::frmSave(forms::FormHost& host, Files& files)
    : Form(host, "Save As", {7200, 5595}),
      lblDrive(*this, nullptr, "Drive:", {180, 225, 900, 240}),
      cmbDrive(*this, nullptr, {}, {1140, 180, 1500, 345}),
      lblFolders(*this, nullptr, "Folders:", {180, 675, 3330, 240}),
      lstFolders(*this, nullptr, {180, 945, 3330, 3300}),
      lblFiles(*this, nullptr, "Files:", {3690, 675, 3330, 240}),
      lstFiles(*this, nullptr, {3690, 945, 3330, 3300}),
      lblPath(*this, nullptr, "Path:", {180, 4470, 900, 240}),
      txtPath(*this, nullptr, {}, {1140, 4425, 5880, 345}),
      cmdOK(*this, nullptr, "&OK", {4290, 5040, 1290, 375}),
      cmdCancel(*this, nullptr, "&Cancel", {5730, 5040, 1290, 375}),
      files_(files) {
  helpPage = "downloads";
  cmbDrive.onChange = [this] { ShowFolder(cmbDrive.Text(), Split(txtPath.Text()).second); };
  lstFolders.onEnter = [this] { EnterFolder(); };
  lstFiles.onChange = [this] { TakeFile(); };
  lstFiles.onEnter = [this] {
    TakeFile();
    Accept();
  };
  cmdOK.onClick = [this] { Accept(); };
  onClose = cmdCancel.onClick = [this] { End(std::nullopt); };
  defaultButton = &cmdOK;
  cancelButton = &cmdCancel;
}

void frmSave::Open(const std::string& path) {
  const auto drives = files_.Drives();
  cmbDrive.SetItems(drives);
  const auto [folder, name] = Split(path);
  ShowFolder(!folder.empty() || drives.empty() ? folder : drives.front(), name);
  if (!Loaded()) CentreOnScreen();
  Activate();
  txtPath.SetFocus();
}

void frmSave::ShowFolder(const std::string& folder, const std::string& name) {
  folder_ = folder;
  txtPath.SetText(folder_ + name);
  const auto& drives = cmbDrive.Items();
  const auto drive = std::find_if(drives.begin(), drives.end(), [&](const std::string& each) {
    return EqualIgnoringCase(each, folder_.substr(0, each.size()));
  });
  cmbDrive.Select(drive != drives.end() ? static_cast<int>(drive - drives.begin())
                                        : forms::ComboBox::kNone);
  Names folders;
  Names files;
  files_.ListFolder(folder_, [&](const std::string& entry, Files::EntryKind kind) {
    const bool isFile = kind == Files::EntryKind::File;
    if (kind != Files::EntryKind::Hidden) {
      (isFile ? files : folders).emplace_back(FoldCase(entry), entry);
    }
    return true;
  });
  std::vector<std::string> shown = Sorted(std::move(folders));
  if (!IsRoot(folder_)) shown.insert(shown.begin(), kUp);
  // Emptied first, so that they are shown from the top.
  for (forms::ListBox* list : {&lstFolders, &lstFiles}) list->SetItems({});
  lstFolders.SetItems(std::move(shown));
  lstFolders.Select(0);
  lstFiles.SetItems(Sorted(std::move(files)));
}

void frmSave::EnterFolder() {
  const std::string entered =
      lstFolders.Items()[static_cast<std::size_t>(lstFolders.SelectedIndex())];
  const std::string name = Split(txtPath.Text()).second;
  if (entered != kUp) return ShowFolder(folder_ + entered + "\\", name);
  const auto [above, left] = Split(folder_.substr(0, folder_.size() - 1));
  ShowFolder(above, name);
  const auto& folders = lstFolders.Items();
  const auto at = std::find(folders.begin(), folders.end(), left);
  lstFolders.Select(static_cast<int>(at - folders.begin()));
}

void frmSave::TakeFile() {
  txtPath.SetText(folder_ + lstFiles.Items()[static_cast<std::size_t>(lstFiles.SelectedIndex())]);
}

// A path without a name is a folder to be looked at.
void frmSave::Accept() {
  const std::string path = FullPath(std::string(TrimBlanks(txtPath.Text())));
  if (path.ends_with('\\')) return ShowFolder(path, "");
  End(path);
}

void frmSave::End(const std::optional<std::string>& path) {
  Unload();
  if (const auto handler = onPicked) handler(path);
}

std::string frmSave::FullPath(const std::string& typed) const {
  if (typed.starts_with("\\\\")) return typed;
  if (typed.starts_with('\\')) return folder_.substr(0, folder_.find('\\')) + typed;
  if (typed.size() < 2 || typed[1] != ':') return folder_ + typed;
  // "D:name" would depend on where the program has been in that drive.
  return typed.substr(0, 2) + (typed.substr(2).starts_with('\\') ? "" : "\\") + typed.substr(2);
}

}  // namespace orvanto
