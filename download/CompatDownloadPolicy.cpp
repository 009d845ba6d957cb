#include "download/CompatDownloadPolicy.h"

#include <algorithm>

#include "download/Url.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"
#include "platform/text/WholeNumber.h"

namespace orvanto {
namespace {

using What = HttpVerdict::What;

constexpr std::size_t kShownOfServer = 200;  // characters

HttpVerdict Refuse(DownloadTrouble trouble, std::string_view detail = {}) {
  return {What::Refuse, trouble, std::string(detail.substr(0, kShownOfServer))};
}

bool IsRedirection(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

HttpVerdict Redirect(const DownloadPolicy& policy, const std::string& from,
                     std::string_view location) {
  const std::string url = ResolveUrl(from, std::string(location));
  DownloadState next;
  ParseUrl(url, next);
  if (SchemeOf(url) != Scheme::Http || HasControls(url) || next.ConnectHost.empty() ||
      policy.PeerOf(next).port == 0) {
    return Refuse(DownloadTrouble::Moved, WithoutLogin(url));
  }
  return {What::GoTo, {}, url};
}

}  // namespace

std::string CompatDownloadPolicy::Refusal(const std::string& url) const {
  if (LowerCase(url).starts_with("https:")) {
    return "https is not spoken: files come by http and ftp only.";
  }
  DownloadState parsed;
  ParseUrl(url, parsed);
  const bool bad = SchemeOf(url) == Scheme::Http && PeerOf(parsed).port == 0;
  return DownloadPolicy::Refusal(bad ? "" : url);
}

DownloadPolicy::Peer CompatDownloadPolicy::PeerOf(const DownloadState& state) const {
  Peer peer = DownloadPolicy::PeerOf(state);
  const std::size_t colon = peer.host.rfind(':');
  if (colon == std::string::npos) return peer;
  peer.port = WholeNumber<std::uint16_t>(peer.host.substr(colon + 1)).value_or(0);
  peer.host.resize(colon);
  return peer;
}

std::string CompatDownloadPolicy::Target(const std::string& rest) const {
  std::string target;
  for (const char c : rest.substr(0, rest.find('#'))) {
    target += c == ' ' ? "%20" : std::string(1, c);
  }
  return target;
}

std::string CompatDownloadPolicy::RangeLine(const DownloadState& state) const {
  return "Range: bytes=" + std::to_string(state.resumeOffset) + "-" + kCrLf;
}

HttpVerdict CompatDownloadPolicy::Judge(const std::string& header, DownloadState& state) const {
  const HttpResponse response(header);
  const int status = response.Status();
  const std::uint64_t offset = state.Resuming ? state.resumeOffset : 0;
  // Elsewhere it means nothing.
  const auto rangeField =
      status == 206 || status == 416 ? response.Field("content-range") : std::nullopt;
  const ContentRange range = ParseContentRange(rangeField.value_or(""));
  if (status / 100 == 1) return {What::PassOver};
  if (status < 100 || status > 599) return Refuse(DownloadTrouble::NoHeader);
  if (const auto location = response.Field("location"); location && IsRedirection(status)) {
    return Redirect(*this, state.Location, *location);
  }
  if (status == 404) return Refuse(DownloadTrouble::NotFound);
  const bool whole = status == 416 && state.Resuming && range.total == offset;
  const bool holdsFile = status / 100 == 2 && status != 204 && status != 205;
  if (!holdsFile && !whole) return Refuse(DownloadTrouble::Refused, response.StatusLine());
  const std::uint64_t first =
      status == 206 ? range.first.value_or(rangeField ? ~offset : offset) : 0;
  const bool ours = first == offset && range.total.value_or(offset) >= offset;
  if (!whole && !ours) return Refuse(DownloadTrouble::NoResuming);
  const auto length = ByteCount(response.Field("content-length").value_or(""));
  state.length = range.total;
  if (!state.length && length) state.length = std::max(*length, *length + offset);
  state.TotalSize = static_cast<float>(state.length.value_or(0));
  state.SetPosition(offset);
  return {whole ? What::IsWhole : What::Take};
}

}  // namespace orvanto
