#include "download/frmDownload.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/ProgramTitle.h"
#include "core/TextLog.h"
#include "core/modRegistry.h"
#include "platform/Clipboard.h"
#include "platform/Shell.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::chrono::milliseconds kFigures(500);
constexpr std::chrono::seconds kSecond(1);
constexpr std::chrono::milliseconds kUntilItMayWait(50);

constexpr int kTextHeight = 240;
constexpr forms::Bounds kProgress{120, 540, 6360, 2 * kTextHeight};
constexpr forms::Column kTitles{{120, 1170, 1320, kTextHeight}, 285};
constexpr forms::Column kValues{{1500, 1170, 1620, kTextHeight}, 285};
constexpr forms::Column kTitles2{{3300, 1170, 1320, kTextHeight}, 285};
constexpr forms::Column kValues2{{4680, 1170, 1800, kTextHeight}, 285};

constexpr const char* kBeside = ".new";  // a file that replaces another, until it is whole
constexpr const char* kPause = "&Pause";
constexpr const char* kResume = "&Resume";
constexpr const char* kCompleted = "Download Completed";
constexpr const char* kAborted = "Download Aborted";
constexpr const char* kUnknown = "Unknown";
constexpr std::uint32_t kTextColour = 0x000000;
constexpr std::uint32_t kBarColour = 0x000080;

// What is copied from elsewhere often ends with its line.
std::string Trimmed(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

}  // namespace

frmDownload::frmDownload(forms::FormHost& host, const Services& services, DownloadState& state)
    : Form(host, "Download", {6600, 2760}),
      mnuDownload(*this, "&File"),
      mnuOptions(mnuDownload, "&Options..."),
      mnuFtpOptions(mnuDownload, "&FTP Options..."),
      mnuProxy(mnuDownload, "&Proxy..."),
      mnuSeparator(mnuDownload, "-"),
      mnuHeader(mnuDownload, "&Header && FTP Log"),
      mnuSave(mnuDownload, "Save &As..."),
      lblURL(*this, nullptr, "URL:", {120, 165, 600, kTextHeight}),
      txtURL(*this, nullptr, {}, {780, 120, 5700, 345}),
      picDownloadProgress(*this, nullptr, kProgress),
      lblStatus(*this, nullptr, "", {120, 660, 6360, kTextHeight}),
      lblRecieveTitle(*this, nullptr, "Recieved Size:", kTitles[0]),
      lblRecieve(*this, nullptr, "", kValues[0]),
      lblSizeTitle(*this, nullptr, "Total Size:", kTitles[1]),
      lblSize(*this, nullptr, "", kValues[1]),
      lblSpeedTitle(*this, nullptr, "Speed:", kTitles[2]),
      lblSpeed(*this, nullptr, "", kValues[2]),
      lblElapsedTitle(*this, nullptr, "Elapsed Time:", kTitles2[0]),
      lblElapsed(*this, nullptr, "", kValues2[0]),
      lblRemainingTitle(*this, nullptr, "Time Left:", kTitles2[1]),
      lblRemaining(*this, nullptr, "", kValues2[1]),
      cmdDownload(*this, nullptr, "&Download", {120, 2220, 1500, 375}),
      cmdPause(*this, nullptr, kPause, {1740, 2220, 1500, 375}),
      cmdStop(*this, nullptr, "&Stop", {3360, 2220, 1500, 375}),
      cmdRun(*this, nullptr, "Ru&n", {4980, 2220, 1500, 375}),
      services_(services),
      state_(state),
      http_(
          {.sockets = services.sockets,
           .files = services.files,
           .requested = [this] { StartTime_ = SecondsOfDay(); },
           .header =
               [this](const std::string& header) { services_.log.Append(header + kCrLf + kCrLf); },
           .received = [this] { OnReceived(); },
           .trouble = [this](DownloadTrouble trouble,
                             const std::string& detail) { OnTrouble(trouble, detail); },
           .ended = [this] { OnEndOfConnection(); },
           .stalled = [this](int error) { OnStall(error); }},
          state),
      ftp_({.ftp = {services.loop, services.sockets, services.files, services.clock,
                    services.messageBoxes},
            .settings = services.settings,
            .log = [this](const std::string& lines) { services_.log.Append(lines); },
            .starting = [this] { StartTime_ = SecondsOfDay(); },
            .received = [this] { OnReceived(); },
            .refused = [this] { ShowTrouble(DownloadTrouble::NoResuming); }},
           state),
      tmrUpdateProgress_(services.loop.NewTimer([this] { RenewFigures(); })),
      tmrTimeLeft_(services.loop.NewTimer([this] { CountTime(); })),
      ftpStart_(services.loop.NewDeferred([this] { RunFtp(); })),
      tmrFtpStart_(services.loop.NewTimer([this] {
        tmrFtpStart_->Stop();
        RunFtp();
      })) {
  helpPage = "downloads";
  WireButtons();
  Reset();
  cmdRun.SetEnabled(false);
  mnuSave.SetEnabled(false);
  ShowBox(false);
}

void frmDownload::WireButtons() {
  defaultButton = &cmdDownload;
  txtURL.onChange = [this] {
    const std::string trimmed = Trimmed(txtURL.Text());
    if (trimmed != txtURL.Text()) txtURL.SetText(trimmed);
  };
  txtURL.onDrop = [this](const std::string& text) {
    const std::string trimmed = Trimmed(text);
    txtURL.SetText(trimmed);
    if (services_.options.IsOn(DownloadOptions::kDownloadDrop)) StartUpdate(trimmed);
  };
  cmdDownload.onClick = [this] {
    if (onDownload) onDownload({txtURL.Text()});
  };
  cmdPause.onClick = [this] { PauseOrResume(); };
  cmdStop.onClick = [this] { Stop(); };
  cmdRun.onClick = [this] {
    services_.shell.Execute({"Open", state_.LocalPath, "", "", ShowCommand::Normal});
  };
  onUnload = [this] { Abort(); };
}

void frmDownload::Open() {
  if (!Loaded()) {
    FillFromClipboard();
    if (phase_ == Phase::Idle) cmdDownload.SetEnabled(true);
    CentreOnScreen();
  }
  Activate();
}

void frmDownload::FillFromClipboard() {
  if (!services_.options.IsOn(DownloadOptions::kClipboard)) return;
  const std::string text = services_.clipboard.Text();
  const auto holds = [&text](const char* what) { return text.find(what) != std::string::npos; };
  if (holds("http://") || holds("ftp://")) txtURL.SetText(Trimmed(text));
}

void frmDownload::Begin(const DownloadRequest& request, const DownloadPolicy& policy) {
  const std::string& url = request.url;
  Open();
  phase_ = Phase::Running;
  request_ = request;
  state_.policy = &policy;
  cmdPause.SetText(kPause);
  cmdPause.SetEnabled(false);
  cmdRun.SetEnabled(false);
  mnuSave.SetEnabled(false);
  if (const std::string refusal = policy.Refusal(url); !refusal.empty()) {
    state_.Url = url;
    state_.LocalPath.clear();
    txtURL.SetText(url);
    services_.messageBoxes.Show(refusal + kCrLf + url, kProgramTitle, Buttons::Ok,
                                BoxIcon::Critical);
    if (Running()) Finish(false, refusal);  // the window may have been closed meanwhile
    return;
  }
  if (state_.UseProxy) {
    state_.ConnectHost = services_.options.Text(DownloadOptions::kProxyIP);
    state_.ConnectPort = services_.options.Text(DownloadOptions::kProxyPort);
  } else {
    state_.ConnectHost = url;
    state_.ConnectPort = "80";
  }
  TakeUrl(url);
  std::string path = services_.folder.AppDir + LocalFileName(state_.UrlFileName);
  if (request.replace && policy.Replaces()) {
    replaced_ = path;
    path += kBeside;
    services_.files.Remove(path);
  }
  StartDownload(path);
  if (Running()) ShowBox(true);
}

void frmDownload::StartUpdate(const std::string& url) {
  Running() ? txtURL.SetText(url) : TakeUrl(url);
}

void frmDownload::TakeUrl(const std::string& url) {
  state_.SetPosition(0);
  if (url.empty()) return;
  state_.Url = state_.Location = url;
  txtURL.SetText(url);
  ParseUrl(url, state_);
}

void frmDownload::StartDownload(const std::string& localPath) {
  cmdPause.SetEnabled(true);
  cmdStop.SetEnabled(true);
  cmdDownload.SetEnabled(false);
  const std::int16_t rollback = services_.settings.ReadNumber(kInternet, "Rollback", 0);
  const std::int16_t amount = services_.settings.ReadNumber(kInternet, "Rollback Amount", 1024);
  if (const auto length = LengthOf(services_.files, localPath)) {
    state_.Resuming = true;
    const bool back = rollback != 0 && amount >= 1 && std::uint64_t(amount) < *length;
    state_.SetResumeOffset(*length - (back ? std::uint64_t(amount) : 0));
  }
  state_.LocalPath = localPath;
  SpeedKbps_ = 0;
  Elapsed_.Restart();
  for (forms::Label* label : {&lblRecieve, &lblSize, &lblSpeed, &lblElapsed, &lblRemaining}) {
    label->SetText("");
  }
  tmrUpdateProgress_->Start(kFigures);
  tmrTimeLeft_->Start(kSecond);
  // Fetched by HTTP through a proxy is what the user has not been asked about.
  FtpMode_ = SchemeOf(txtURL.Text()) == Scheme::Ftp && !ProxyFtp_;
  BeginTransfer();
}

void frmDownload::BeginTransfer() {
  if (!FtpMode_) return http_.Connect();
  ftpAgain_ = ftp_.IsRunning();
  // From the loop, with no frame of anybody's below it.
  if (!ftpAgain_) ftpStart_->Post();
}

void frmDownload::RunFtp() {
  if (!services_.mayWait()) return tmrFtpStart_->Start(kUntilItMayWait);
  trouble_.clear();
  const bool done = ftp_.Run();
  if (std::exchange(ftpAgain_, false)) return ftpStart_->Post();
  if (phase_ == Phase::Paused) return;
  if (done && !state_.policy->IsComplete(state_)) return EndCutShort();
  const std::string wrong = WrongLength();
  ShowStatus(done ? kCompleted : kAborted);
  Reset();
  cmdRun.SetEnabled(done);
  Finish(done && wrong.empty(), done               ? wrong
                                : trouble_.empty() ? "The file was not fetched."
                                                   : trouble_);
}

void frmDownload::OnReceived() {
  const float bytes = state_.Resuming ? state_.WritePos - state_.ResumeOffset : state_.WritePos;
  SpeedKbps_ = SpeedKbps(bytes, StartTime_, SecondsOfDay(), SpeedKbps_);
}

void frmDownload::OnTrouble(DownloadTrouble trouble, const std::string& detail) {
  ShowTrouble(trouble, detail);
  if (!Running()) return;  // the window has been closed meanwhile
  Reset();
  Finish(false, trouble_);
}

void frmDownload::ShowTrouble(DownloadTrouble trouble, const std::string& detail) {
  const TroubleBox& box = BoxOf(trouble);
  trouble_ = std::string_view(box.title) == kProgramTitle ? box.text + detail : box.title;
  services_.messageBoxes.Show(box.text + detail, box.title, Buttons::Ok, box.icon);
}

void frmDownload::OnStall(int error) {
  if (!state_.policy->IsComplete(state_)) return EndCutShort();
  // Once it is shown to be complete, Stop is gone.
  if (phase_ == Phase::Shown || state_.policy->IsWhole(state_)) return OnEndOfConnection();
  if (onStalled) onStalled(error);
}

void frmDownload::OnEndOfConnection() {
  if (!state_.policy->IsComplete(state_)) return EndCutShort();
  const std::string trouble = http_.HasReceived() ? WrongLength() : "The server has sent nothing.";
  const bool shown = phase_ == Phase::Shown;
  DrawProgress(picDownloadProgress, 100, true);
  ShowStatus(kCompleted);
  ForgetTransfer();
  cmdDownload.SetEnabled(!shown);
  cmdRun.SetEnabled(true);
  Finish(trouble.empty(), trouble);
  if (!shown && !Running()) Unload();  // the next one may have begun in a box
}

// What has come stays; a request of its own fetches the rest.
void frmDownload::EndCutShort() {
  const std::string trouble = WrongLength();
  ShowStatus(trouble);
  Reset();
  cmdRun.SetEnabled(false);
  cmdPause.SetText(kResume);
  cmdPause.SetEnabled(true);
  Finish(false, trouble);
}

std::string frmDownload::WrongLength() const {
  if (state_.length.value_or(state_.position) == state_.position) return {};
  return "The connection ended at byte " + std::to_string(state_.position) + " of " +
         std::to_string(*state_.length) + ".";
}

void frmDownload::Reset() {
  ForgetTransfer();
  DrawProgress(picDownloadProgress, 0, false);
  cmdDownload.SetEnabled(true);
}

void frmDownload::ForgetTransfer() {
  http_.Close();
  Percent_ = 0;
  StartTime_ = 0;
  state_.position = 0;
  state_.WritePos = 0;
  state_.TotalSize = 0;
  state_.length.reset();
  state_.Resuming = false;
  cmdPause.SetText(kPause);
  cmdPause.SetEnabled(false);
  cmdStop.SetEnabled(false);
}

void frmDownload::Finish(bool whole, std::string trouble) {
  if (!replaced_.empty() && !PutInPlace(whole)) {
    ShowTrouble(DownloadTrouble::CannotWrite);
    if (!Running()) return;  // the window has been closed meanwhile
    whole = false;
    trouble = trouble_;
  }
  phase_ = Phase::Idle;
  tmrUpdateProgress_->Stop();
  tmrTimeLeft_->Stop();
  ftpStart_->Cancel();
  tmrFtpStart_->Stop();
  mnuSave.SetEnabled(whole);
  if (onEnded) onEnded({state_.Url, state_.LocalPath, whole, trouble});
}

// Of the file beside another nothing stays.
bool frmDownload::PutInPlace(bool whole) {
  const std::string beside = state_.LocalPath;
  state_.LocalPath = std::exchange(replaced_, {});
  if (whole && services_.files.Replace(beside, state_.LocalPath).empty()) return true;
  services_.files.Remove(beside);
  return !whole;
}

float frmDownload::SecondsOfDay() const {
  const DateTime now = services_.clock.Now();
  const auto milliseconds = static_cast<float>(services_.clock.UnixMilliseconds() % 1000);
  return static_cast<float>(now.hour * 3600 + now.minute * 60 + now.second) + milliseconds / 1000;
}

void frmDownload::ShowBox(bool shown) {
  picDownloadProgress.SetVisible(shown);
  lblStatus.SetVisible(!shown);
}

void frmDownload::ShowStatus(const std::string& text) {
  lblStatus.SetText(text);
  ShowBox(false);
}

void frmDownload::DrawProgress(forms::PictureBox& box, std::int16_t percent, bool showText) {
  const auto [left, top, width, height] = box.GetBounds();
  box.Clear();
  if (showText) {
    box.AddText(FormatNumber(percent, "###0") + "%", {0, 0, width, height}, kTextColour,
                forms::PictureBox::Align::Centre);
  }
  box.AddInvertingBar({0, 0, width * percent / 100, height}, kBarColour);
}

void frmDownload::RenewFigures() {
  if (phase_ == Phase::Idle || !(state_.WritePos > 0)) return;
  lblRecieve.SetText(FormatSize(state_.WritePos));
  lblSize.SetText(state_.TotalSize == 0 ? kUnknown : FormatSize(state_.TotalSize));
  if (lblSize.Text() != kUnknown) {
    Percent_ = PercentOf(state_.WritePos, state_.TotalSize);
    DrawProgress(picDownloadProgress, Percent_, true);
  }
  if (onProgress) onProgress();
}

void frmDownload::CountTime() {
  if (http_.IsOpen() && state_.policy->IsWhole(state_)) return ShowCompletion();
  if (!(state_.TotalSize > 0 && state_.WritePos > 0 && SpeedKbps_ > 0)) return;
  if (state_.TotalSize <= state_.WritePos) return ShowCompletion();
  Elapsed_.Tick();
  cmdRun.SetEnabled(false);
  lblElapsed.SetText(Elapsed_.Text());
  const float seconds = (state_.TotalSize - state_.WritePos) / 1024 / SpeedKbps_;
  lblRemaining.SetText(ConvertTime(static_cast<std::int32_t>(std::min(seconds, 1e9F))));
  lblSpeed.SetText(FormatNumber(SpeedKbps_, "##.#0#") + " Kbps");
}

// The figures are not exact, and count the next byte: what is missing still goes into the file.
void frmDownload::ShowCompletion() {
  lblSpeed.SetText("0");
  lblElapsed.SetText(Elapsed_.Text());
  ShowStatus(kCompleted);
  cmdPause.SetEnabled(false);
  cmdStop.SetEnabled(false);
  cmdDownload.SetEnabled(false);
  cmdRun.SetEnabled(true);
  phase_ = Phase::Shown;
  tmrUpdateProgress_->Stop();
  tmrTimeLeft_->Stop();
  http_.CloseWhenWhole();
}

void frmDownload::PauseOrResume() {
  if (phase_ == Phase::Idle) {
    cmdPause.SetEnabled(false);
    if (onDownload) onDownload(request_);
    return;
  }
  if (!(state_.TotalSize > state_.WritePos)) return;
  const bool pause = cmdPause.Text() == kPause;
  cmdStop.SetEnabled(!pause);
  cmdPause.SetText(pause ? kResume : kPause);
  if (pause) {
    phase_ = Phase::Paused;
    tmrTimeLeft_->Stop();
    ShowStatus("Download Paused");
    FtpMode_ ? ftp_.Pause() : http_.Close();
    return;
  }
  phase_ = Phase::Running;
  tmrTimeLeft_->Start(kSecond);
  ShowBox(true);
  state_.Resuming = true;
  state_.SetResumeOffset(LengthOf(services_.files, state_.LocalPath).value_or(0));
  BeginTransfer();
}

void frmDownload::Stop() {
  if (FtpMode_ || http_.IsOpen()) Abort();
}

// An FTP download ends when its path has returned.
void frmDownload::Abort() {
  if (!Running()) return;
  phase_ = Phase::Running;
  ftpAgain_ = false;
  trouble_ = kAborted;
  ShowStatus(kAborted);
  Reset();
  ftp_.IsRunning() ? ftp_.Stop() : Finish(false, kAborted);
}

}  // namespace orvanto
