#include "script/FileFinder.h"

#include "platform/EventLoop.h"
#include "platform/Files.h"
#include "platform/text/Case.h"

namespace orvanto {

void FolderSearch::FindAndAct(const std::string& startFolder, const std::string& fileName,
                              FileCode code) {
  lstDirs_.push_back(startFolder);
  while (!lstDirs_.empty() && !loop_.QuitRequested()) {
    // A copy that stays in the queue while it is searched; a search inside may take it out.
    const std::string folder = lstDirs_.front();
    SearchOneFolder(folder, fileName, code);
    if (!lstDirs_.empty()) lstDirs_.pop_front();
  }
}

void FolderSearch::SearchOneFolder(const std::string& givenFolder, const std::string& fileName,
                                   FileCode code) {
  const bool ended = !givenFolder.empty() && givenFolder.back() == '\\';
  const std::string folder = ended ? givenFolder : givenFolder + "\\";
  const std::string wanted = FoldCase(fileName);
  files_.ListFolder(folder, [&](const std::string& name, Files::EntryKind kind) {
    loop_.DoEvents();
    if (loop_.QuitRequested()) return false;
    if (kind == Files::EntryKind::Folder) {
      lstDirs_.push_back(folder + name + "\\");
      return true;
    }
    if (kind == Files::EntryKind::FolderLink) return true;
    // Names of another length in bytes are not worth a fold.
    if (name.size() != fileName.size() || FoldCase(name) != wanted) return true;
    actions_.FileAction(folder + name, code, "1");
    return false;
  });
}

bool FolderSearch::FindFile(const std::string& path) {
  return actions_.FileAction(path, FileCode::CheckOnly, "") == 1;
}

}  // namespace orvanto
