#include "download/HttpDownload.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "core/Convert.h"
#include "download/Url.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::string_view kEndOfHeader = "\r\n\r\n";
constexpr std::size_t kSchemeLength = 7;  // of "http://"

bool Holds(std::string_view text, std::string_view what) {
  return text.find(what) != std::string_view::npos;
}

// What lies beyond all numbers is as high as they go.
std::optional<std::uint64_t> Number(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range) return UINT64_MAX;
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string ParseHeaderValue(std::string_view headers, std::string_view name) {
  const std::size_t at = headers.find(name);
  if (at == std::string_view::npos) return {};
  headers.remove_prefix(std::min(at + name.size() + 1, headers.size()));
  return std::string(headers.substr(0, headers.find(kCrLf)));
}

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
  Close();
  sckDownload_->Connect(state_.ConnectHost,
                        static_cast<std::uint16_t>(Number(state_.ConnectPort).value_or(0)));
}

void HttpDownload::Close() {
  sckDownload_->Close();
  received_ = headerTaken_ = false;
  waiting_.clear();
  closesWhenWhole_ = false;
}

// A file that is fetched by FTP through a proxy must not name a port.
std::optional<std::string> HttpDownload::Request() const {
  std::string url = state_.Url;
  if (SchemeOf(url) == Scheme::Ftp) {
    const std::size_t at = url.find('@', kSchemeLength - 1);
    const std::size_t colon = url.find(':', at == std::string::npos ? kSchemeLength - 1 : at);
    if (colon != std::string::npos && at != std::string::npos) return std::nullopt;
    url.resize(std::min(colon, url.size()));
  }
  url.erase(0, kSchemeLength + state_.ConnectHost.size());
  return "GET " + url + " HTTP/1.0" + kCrLf + "Accept: *.*, */*" + kCrLf +
         (state_.Resuming ? services_.policy.RangeLine(state_) : "") +
         "User-Agent: Tarnwell Downloader" + kCrLf + "Referer: " + state_.ConnectHost + kCrLf +
         "Host: " + state_.ConnectHost + kCrLf + kCrLf;
}

void HttpDownload::OnConnected() {
  const std::optional<std::string> request = Request();
  if (!request) return Stop(Trouble::BadAddress);
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
  std::string arrival = std::exchange(waiting_, {}).append(bytes);
  std::string lower = LowerCase(arrival);
  const std::size_t end = arrival.find(kEndOfHeader);
  if (!services_.policy.HasHeader(lower)) {
    Store(arrival);
  } else if (end != std::string::npos) {
    lower.resize(end);
    if (TakeHeader(arrival.substr(0, end), lower)) {
      Store(std::string_view(arrival).substr(end + kEndOfHeader.size()));
    }
  } else if (arrival.size() < kLongestHeader) {
    waiting_ = std::move(arrival);
  } else {
    Store(arrival);
  }
}

bool HttpDownload::TakeHeader(const std::string& header, const std::string& lower) {
  if (state_.Resuming && (!Holds(lower, "206 partial content") || IsOfAnotherPart(lower))) {
    Stop(Trouble::NoResuming);
    return false;
  }
  if (Holds(lower, "404 not found")) {
    Stop(Trouble::NotFound);
    return false;
  }
  headerTaken_ = true;
  state_.TotalSize = LeadingSingle(ParseHeaderValue(header, "Content-Length:"));
  // The figure may be of a line with a longer name, or lack its first digit. The file's end is not.
  state_.length = Number(ParseHeaderValue(lower, "\ncontent-length"));
  if (state_.Resuming) {
    state_.SetPosition(state_.resumeOffset);
    state_.TotalSize += state_.ResumeOffset;
    if (state_.length) {
      state_.length = std::max(*state_.length, *state_.length + state_.resumeOffset);
    }
  }
  services_.header(header);
  return true;
}

bool HttpDownload::IsOfAnotherPart(const std::string& lower) const {
  const std::string range = ParseHeaderValue(lower, "\ncontent-range");
  const auto first =
      Number(range.substr(std::min(range.find_first_of("0123456789*"), range.size())));
  return first && *first != state_.resumeOffset;
}

// Opens and closes the file each time: others may use it meanwhile. With no bytes, too, there is a
// file then. False when the download has been stopped.
bool HttpDownload::Store(std::string_view bytes) {
  const std::uint64_t at =
      state_.Resuming ? std::max(state_.position, state_.resumeOffset) : state_.position;
  const Files::Opened opened = services_.files.Open(state_.LocalPath, Files::Access::Write);
  if (!opened.file || opened.file->WriteAt(at, bytes) != kNoError) {
    Stop(Trouble::CannotWrite);
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
  if (waiting_.empty() || Store(std::exchange(waiting_, {}))) services_.ended();
}

void HttpDownload::Stop(Trouble trouble) {
  Close();
  services_.trouble(trouble);
}

}  // namespace orvanto
