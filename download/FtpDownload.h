// The FTP side of a download: from the connection to the last byte, with a box for each failure.
#pragma once

#include <functional>
#include <string>

#include "download/DownloadPolicy.h"
#include "download/Url.h"
#include "download/ftp/CFtpConnection.h"

namespace orvanto {

class Settings;

class FtpDownload {
 public:
  struct Services {
    CFtpConnection::Services ftp;
    Settings& settings;
    std::function<void(const std::string& lines)> log;
    std::function<void()> starting;  // the transfer
    std::function<void()> received;  // the file has grown
    std::function<void()> refused;   // the server does not resume
  };
  // The state outlives it.
  FtpDownload(const Services& services, DownloadState& state);

  // Fetches state.Url into state.LocalPath, and goes on with what is there while it is being
  // resumed. Waits; from the loop only, and not while it runs. False when it has been stopped or
  // given up. It must not be destroyed meanwhile.
  bool Run();
  bool IsRunning() const { return running_; }

  // From inside Run, which ends without a box: lets the server end the transfer, or just closes.
  void Pause();
  void Stop();

 private:
  // Repeats the step, with a box after each failure, until it succeeds. False when it is given up.
  bool Persist(const std::function<bool()>& step, const std::function<std::string()>& trouble);
  bool AskToRetry(const std::string& trouble);
  bool Arrive(const FtpAddress& address);
  bool Fetch(const FtpAddress& address);
  std::string Trouble() const;
  bool IsOver() const {
    return stopRequested_ || transferDone_ || services_.ftp.loop.QuitRequested();
  }

  const Services services_;
  DownloadState& state_;
  CFtpConnection client_;
  bool running_ = false;
  bool stopRequested_ = false;
  bool transferDone_ = false;
};

}  // namespace orvanto
