#include "download/HttpDownload.h"

#include <algorithm>
#include <utility>

#include "download/Url.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::size_t kSchemeLength = 7;  // of "http://"

}  // namespace

std::optional<std::uint64_t> LengthOf(Files& files, const std::string& path) {
  const Files::Opened opened = files.Open(path, Files::Access::Read);
  return opened.file ? std::optional(opened.file->Size()) : std::nullopt;
}

HttpDownload::HttpDownload(const Services& services, DownloadState& state)
    : services_(services),
      state_(state),
      sckDownload_(services.sockets.NewSocket(SocketHost::Use::Data)) {
  sckDownload_->onConnected = [this] { OnConnected(); };
  sckDownload_->onDataArrival = [this] { OnArrival(); };
  sckDownload_->onClosed = [this] { OnClosed(); };
  sckDownload_->onError = [this](int error) { services_.stalled(error); };
}

void HttpDownload::Connect() {
  redirections_ = 0;
  Open();
}

void HttpDownload::Open() {
  Close();
  const auto [host, port] = state_.policy->PeerOf(state_);
  sckDownload_->Connect(host, port);
}

void HttpDownload::Close() {
  sckDownload_->Close();
  received_ = headerTaken_ = false;
  waiting_.clear();
  closesWhenWhole_ = false;
}

// A file that is fetched by FTP through a proxy must not name a port.
std::optional<std::string> HttpDownload::Request() const {
  std::string url = state_.Location;
  if (SchemeOf(url) == Scheme::Ftp) {
    const std::size_t at = url.find('@', kSchemeLength - 1);
    const std::size_t colon = url.find(':', at == std::string::npos ? kSchemeLength - 1 : at);
    if (colon != std::string::npos && at != std::string::npos) return std::nullopt;
    url.resize(std::min(colon, url.size()));
  }
  url.erase(0, kSchemeLength + state_.ConnectHost.size());
  return "GET " + state_.policy->Target(url) + " HTTP/1.0" + kCrLf + "Accept: *.*, */*" + kCrLf +
         (state_.Resuming ? state_.policy->RangeLine(state_) : "") +
         "User-Agent: Tarnwell Downloader" + kCrLf + "Referer: " + state_.ConnectHost + kCrLf +
         "Host: " + state_.ConnectHost + kCrLf + kCrLf;
}

void HttpDownload::OnConnected() {
  const std::optional<std::string> request = Request();
  if (!request) return Stop(DownloadTrouble::BadAddress);
  sckDownload_->Send(*request);
  services_.requested();
}

void HttpDownload::OnArrival() {
  const std::string_view bytes = sckDownload_->GetData();
  received_ = true;
  if (!headerTaken_) return OnFirstBytes(bytes);
  Store(bytes);
}

void HttpDownload::OnFirstBytes(std::string_view bytes) {
  const std::string arrival = std::exchange(waiting_, {}).append(bytes);
  for (std::string_view left = arrival; !left.empty();) {
    const HeaderPlace place = state_.policy->FindHeader(left);
    if (place.found == HeaderPlace::Found::Unfinished) {
      waiting_ = left;
      return;
    }
    if (place.found == HeaderPlace::Found::None) {
      if (state_.policy->NeedsHeader()) return Stop(DownloadTrouble::NoHeader);
      Store(left);
      return;
    }
    const std::string header(left.substr(0, place.end));
    left.remove_prefix(place.body);
    const HttpVerdict verdict = state_.policy->Judge(header, state_);
    if (verdict.what == HttpVerdict::What::Refuse) return Stop(verdict.trouble, verdict.detail);
    services_.header(header);
    if (verdict.what != HttpVerdict::What::PassOver) return Follow(verdict, left);
  }
}

void HttpDownload::Follow(const HttpVerdict& verdict, std::string_view rest) {
  if (verdict.what == HttpVerdict::What::GoTo) return GoTo(verdict.detail);
  if (verdict.what == HttpVerdict::What::IsWhole) {
    // Before the offset was rolled back, the file may have been longer.
    if (LengthOf(services_.files, state_.LocalPath) != state_.length) {
      return Stop(DownloadTrouble::NoResuming);
    }
    return services_.ended();
  }
  headerTaken_ = true;
  Store(rest);
}

void HttpDownload::GoTo(const std::string& url) {
  if (++redirections_ > kMostRedirections) return Stop(DownloadTrouble::InCircles, url);
  DownloadState there;
  ParseUrl(url, there);
  state_.Location = url;
  state_.ConnectHost = there.ConnectHost;
  Open();
}

// Opens and closes the file each time: others may use it meanwhile. With no bytes, too, there is a
// file then. False when the download has been stopped.
bool HttpDownload::Store(std::string_view bytes) {
  const std::uint64_t at =
      state_.Resuming ? std::max(state_.position, state_.resumeOffset) : state_.position;
  const Files::Opened opened = services_.files.Open(state_.LocalPath, Files::Access::Write);
  if (!opened.file || opened.file->WriteAt(at, bytes) != kNoError) {
    Stop(DownloadTrouble::CannotWrite);
    return false;
  }
  state_.SetPosition(at + bytes.size());
  services_.received();
  if (closesWhenWhole_) CloseWhenWhole();
  return true;
}

void HttpDownload::CloseWhenWhole() {
  closesWhenWhole_ = true;
  if (!IsOpen() || !state_.length || state_.position < *state_.length) return;
  services_.ended();
}

void HttpDownload::OnClosed() {
  closesWhenWhole_ = false;  // it ends here, once
  if (!headerTaken_ && state_.policy->NeedsHeader()) return Stop(DownloadTrouble::NoHeader);
  if (waiting_.empty() || Store(std::exchange(waiting_, {}))) services_.ended();
}

void HttpDownload::Stop(DownloadTrouble trouble, const std::string& detail) {
  Close();
  services_.trouble(trouble, detail);
}

}  // namespace orvanto
