// The file finder over a folder tree: finder_bench FOLDER NAME. Prints the milliseconds of the best
// of five searches, with events processed before every entry, as in a script. A timer is running
// and two descriptors are watched, as they would be.
#include <unistd.h>

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <iostream>

#include "core/ProgramFolder.h"
#include "platform/posix/FileRegistry.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixLoop.h"
#include "platform/posix/PosixShell.h"
#include "script/FileFinder.h"

int main(int argc, char** argv) {
  using namespace orvanto;
  if (argc != 3) return 2;
  posix::PosixLoop loop;
  posix::PosixFiles files;
  posix::PosixClock clock;
  posix::Notices notices;
  posix::PosixShell shell(loop, notices);
  const auto timer = loop.NewTimer([] {});
  timer->Start(std::chrono::milliseconds(20));
  int ends[2];
  if (::pipe(ends) != 0) return 1;
  const auto watch = loop.WatchFd(ends[0], POLLIN, [](short) {});
  const ProgramFolder folder;
  FileActions actions(files, shell, folder);
  FolderSearch search(loop, files, actions);
  double best = 1e9;
  for (int round = 0; round < 5; ++round) {
    const auto began = std::chrono::steady_clock::now();
    // The action of a check does nothing but to look whether the hit is there.
    search.FindAndAct(posix::FromNative(argv[1]), argv[2], FileCode::CheckOnly);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    best = std::min(best, took.count());
  }
  std::cout << best << std::endl;
}
