// Searches a folder tree breadth-first for files of one name and acts on them.
#pragma once

#include <deque>
#include <string>

#include "core/modTaskOperations.h"
#include "script/FileAction.h"

namespace orvanto {

class EventLoop;
class Files;

// The finder of the find commands and of validation's file check.
class FolderSearch : public FileLookup {
 public:
  FolderSearch(EventLoop& loop, Files& files, FileActions& actions)
      : loop_(loop), files_(files), actions_(actions) {}

  // In every folder of the tree, the first file of that name (compared whole, without regard to
  // case) gets the action; the folder's later entries are then passed over, sub-folders too. Links
  // to folders are not followed. Other events run before every entry; a search that one of them
  // starts shares this one's folder queue. Ends early when the program is told to end.
  void FindAndAct(const std::string& startFolder, const std::string& fileName, FileCode code);

  bool FindFile(const std::string& path) override;

 private:
  void SearchOneFolder(const std::string& folder, const std::string& fileName, FileCode code);

  EventLoop& loop_;
  Files& files_;
  FileActions& actions_;
  std::deque<std::string> lstDirs_;  // still to be searched, each ending with a backslash
};

}  // namespace orvanto
