// The FTP client on the command line, for the benchmarks and for tests with real servers. One line
// of output for each command: whether it went well, and what it brought.
// Usage: ftp_client PORT USER PASSWORD passive|active COMMAND[:ARGUMENT[:ARGUMENT]]...
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "download/ftp/CFtpConnection.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixLoop.h"
#include "platform/posix/PosixSocket.h"

namespace {

using namespace orvanto;

class NobodyWaits : public MessageBoxes {
  Answer Show(const std::string& text, const std::string&, Buttons, BoxIcon) override {
    std::puts(text.c_str());
    return Answer::No;
  }
};

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  parts.resize(4);
  return parts;
}

std::string Told(const CFTPFile& file) {
  const DateTime& time = file.LastWriteTime;
  return (file.IsDirectory ? "/" : "") + file.FilePath + "," + std::to_string(file.FileSize) + "," +
         std::to_string(time.year) + "; ";
}

bool Do(CFtpConnection& ftp, const std::vector<std::string>& words, std::string& brought) {
  const std::string& verb = words[0];
  if (verb == "cd")
    return words[1] == ".." ? ftp.SetParentAsCurrentDirectory() : ftp.SetCurrentDirectory(words[1]);
  if (verb == "mkdir") return ftp.CreateDirectory(words[1]);
  if (verb == "rmdir") return ftp.RemoveDirectory(words[1]);
  if (verb == "delete") return ftp.DeleteFile(words[1]);
  if (verb == "rename") return ftp.RenameFile(words[1], words[2]);
  if (verb == "put") return ftp.UploadFile("Z:" + words[1], words[2]);
  if (verb == "get") {
    return ftp.DownloadFile(words[1], "Z:" + words[2],
                            std::strtoull(words[3].c_str(), nullptr, 10));
  }
  // Cancelled as soon as so many bytes have come.
  if (verb == "begin") {
    bool cancelled = false;
    ftp.DownloadProgress = [&, most = std::stoull(words[3])](std::uint64_t bytes) {
      if (bytes >= most) cancelled = cancelled || ftp.CancelTransfer();
    };
    const bool whole = ftp.DownloadFile(words[1], "Z:" + words[2], 0);
    ftp.DownloadProgress = nullptr;
    return cancelled && !whole;
  }
  if (verb == "pwd") {
    const bool done = ftp.GetCurrentDirectory();
    brought = ftp.CurrentDirectory();
    return done;
  }
  if (verb != "list") return false;
  CFTPFiles files;
  const bool done = ftp.EnumFiles(files);
  for (const CFTPFile& file : files) brought += Told(file);
  return done;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 5) return EXIT_FAILURE;
  posix::PosixLoop loop;
  posix::PosixSocketHost sockets(loop);
  posix::PosixFiles files;
  posix::PosixClock clock;
  NobodyWaits boxes;
  CFtpConnection ftp({loop, sockets, files, clock, boxes});
  ftp.FtpServer = "127.0.0.1";
  ftp.FtpServerPort = static_cast<std::uint16_t>(std::atoi(arguments[1]));
  ftp.UserName = arguments[2];
  ftp.Password = arguments[3];
  ftp.PassiveMode = arguments[4] == std::string("passive");
  const auto tell = [&ftp](bool done, const std::string& brought) {
    std::printf("%s %s%s\n", done ? "true" : "false", brought.c_str(),
                ftp.GetFtpErrorDescription().c_str());
    return done;
  };
  if (!tell(ftp.Connect(), "")) return EXIT_FAILURE;
  for (int i = 5; i < count; ++i) {
    std::string brought;
    const bool done = Do(ftp, Split(arguments[i], ':'), brought);
    tell(done, brought);
  }
  return tell(ftp.CloseConnection(), "") ? EXIT_SUCCESS : EXIT_FAILURE;
}
