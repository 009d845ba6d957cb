// Picks where a file is saved: drives, their folders, the files in them, and the path.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/forms/forms.h"

namespace orvanto {

class Files;

class frmSave : public forms::Form {
 public:
  frmSave(forms::FormHost& host, Files& files);

  // Shows the folder of the path and offers its name; without a folder, that of the first drive.
  // One that is open already comes to the front and shows the new one.
  void Open(const std::string& path);

  // Once for each opening, when the form has gone, so it may open it again: the full path that was
  // picked (there may be a file of that name already), or nothing where the user has cancelled.
  std::function<void(const std::optional<std::string>& path)> onPicked;

  forms::Label lblDrive;
  forms::ComboBox cmbDrive;
  forms::Label lblFolders;
  forms::ListBox lstFolders;  // the first one is ".." but in the root of a drive
  forms::Label lblFiles;
  forms::ListBox lstFiles;
  forms::Label lblPath;
  forms::TextBox txtPath;  // what is typed may also be a name for the folder shown, or a folder
  forms::Button cmdOK, cmdCancel;

 private:
  void ShowFolder(const std::string& folder, const std::string& name);
  void EnterFolder();
  void TakeFile();
  void Accept();
  void End(const std::optional<std::string>& path);
  std::string FullPath(const std::string& typed) const;

  Files& files_;
  std::string folder_;  // shown; ends in a backslash
};

}  // namespace orvanto
