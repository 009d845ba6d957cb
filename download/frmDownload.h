// The window through which a file is fetched: one download at a time, its figures and its buttons.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "download/DownloadOptions.h"
#include "download/Figures.h"
#include "download/FtpDownload.h"
#include "download/HttpDownload.h"
#include "platform/forms/forms.h"

namespace orvanto {

class Clipboard;
class ProgramFolder;
class Shell;
class TextLog;
struct RemoteSettings;

struct DownloadServices {
  EventLoop& loop;
  SocketHost& sockets;
  Files& files;
  const Clock& clock;
  Clipboard& clipboard;
  Shell& shell;
  MessageBoxes& messageBoxes;
  Registry& registry;
  Settings& settings;
  const RemoteSettings& remoteSettings;
  const ProgramFolder& folder;
  // False while somebody below handles events: the FTP path would keep him from going on.
  std::function<bool()> mayWait;
};

// How a download has ended.
struct DownloadEnd {
  std::string url;
  std::string path;    // empty where it has not come so far
  bool whole = false;  // it is there, and of the length that was told
  std::string trouble;
};

struct DownloadRequest {
  std::string url;
  bool replace = false;  // a file that is there is an old one, not a part; as the policy goes
};

class frmDownload : public forms::Form {
 public:
  // Those of all downloads, and what is the window's own.
  struct Services : DownloadServices {
    DownloadOptions& options;
    TextLog& log;  // of headers and FTP
  };
  // The state outlives it. Destroyed while an FTP download runs it is lost: end that first.
  frmDownload(forms::FormHost& host, const Services& services, DownloadState& state);

  // Shows the window.
  void Open();
  // Opens the window and fetches the file into the program's folder, by the policy, which outlives
  // it. Not while a download runs. From the loop: boxes may come.
  void Begin(const DownloadRequest& request, const DownloadPolicy& policy);
  // From Begin until onEnded; also while it is paused, and when its connection has failed.
  bool Running() const { return phase_ != Phase::Idle; }

  // Takes the URL over as what is fetched next; during a download only as a text.
  void StartUpdate(const std::string& url);
  void StartDownload(const std::string& localPath);
  void Reset();

  // `percent` of the box is filled by a bar that inverts the text.
  static void DrawProgress(forms::PictureBox& box, std::int16_t percent, bool showText);

  // The button; or that to resume what was cut short.
  std::function<void(const DownloadRequest& request)> onDownload;
  std::function<void()> onProgress;  // the figures have been renewed
  // The connection has failed, or could not be made: nothing more happens until Stop.
  std::function<void(int error)> onStalled;
  std::function<void(const DownloadEnd& end)> onEnded;

  forms::MenuItem mnuDownload, mnuOptions, mnuFtpOptions, mnuProxy, mnuSeparator, mnuHeader,
      mnuSave;
  forms::Label lblURL;
  forms::TextBox txtURL;
  forms::PictureBox picDownloadProgress;
  forms::Label lblStatus;
  forms::Label lblRecieveTitle, lblRecieve, lblSizeTitle, lblSize, lblSpeedTitle, lblSpeed;
  forms::Label lblElapsedTitle, lblElapsed, lblRemainingTitle, lblRemaining;
  forms::Button cmdDownload, cmdPause, cmdStop, cmdRun;

 private:
  // Shown: the window says that it is complete, and the last bytes are still to come.
  enum class Phase { Idle, Running, Paused, Shown };

  void WireButtons();
  void FillFromClipboard();
  void TakeUrl(const std::string& url);
  void BeginTransfer();
  void RunFtp();
  void OnReceived();
  void OnTrouble(DownloadTrouble trouble, const std::string& detail);
  void OnStall(int error);
  void OnEndOfConnection();
  void EndCutShort();
  std::string WrongLength() const;
  void RenewFigures();
  void CountTime();
  void PauseOrResume();
  void Stop();
  void Abort();
  void ForgetTransfer();
  void Finish(bool whole, std::string trouble);
  bool PutInPlace(bool whole);
  void ShowBox(bool shown);
  void ShowStatus(const std::string& text);
  void ShowTrouble(DownloadTrouble trouble, const std::string& detail = {});
  void ShowCompletion();
  float SecondsOfDay() const;

  const Services services_;
  DownloadState& state_;
  HttpDownload http_;
  FtpDownload ftp_;
  const std::unique_ptr<Timer> tmrUpdateProgress_;
  const std::unique_ptr<Timer> tmrTimeLeft_;
  const std::unique_ptr<Deferred> ftpStart_;
  const std::unique_ptr<Timer> tmrFtpStart_;  // as long as it may not wait
  Phase phase_ = Phase::Idle;
  DownloadRequest request_;
  std::string replaced_;  // what the file takes the place of; empty for nothing
  bool FtpMode_ = false;
  bool ProxyFtp_ = false;  // nothing sets it
  bool ftpAgain_ = false;  // as soon as the path that was paused has returned
  std::string trouble_;    // that ends the download
  float StartTime_ = 0;
  float SpeedKbps_ = 0;
  std::int16_t Percent_ = 0;
  ElapsedTime Elapsed_;
};

}  // namespace orvanto
