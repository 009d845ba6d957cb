#include "download/DownloadPolicy.h"

#include <algorithm>
#include <optional>

#include "core/Convert.h"
#include "download/Url.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::string_view kEndOfHeader = "\r\n\r\n";

bool Holds(std::string_view text, std::string_view what) {
  return text.find(what) != std::string_view::npos;
}

// Of a header in small letters.
bool IsOfAnotherPart(const std::string& lower, std::uint64_t offset) {
  const ContentRange range = ParseContentRange(ParseHeaderValue(lower, "\ncontent-range"));
  return range.first.value_or(offset) != offset;
}

}  // namespace

std::string DownloadPolicy::Refusal(const std::string& url) const {
  DownloadState parsed;
  ParseUrl(url, parsed);
  if (SchemeOf(url) == Scheme::None || HasControls(url) || parsed.ConnectHost.empty() ||
      parsed.UrlFileName.empty()) {
    return "This is no address of a file that can be downloaded.";
  }
  if (!LocalFileName(parsed.UrlFileName).empty()) return {};
  return "A file of this name cannot be kept in the program's folder.";
}

DownloadPolicy::Peer DownloadPolicy::PeerOf(const DownloadState& state) const {
  return {state.ConnectHost, static_cast<std::uint16_t>(ByteCount(state.ConnectPort).value_or(0))};
}

std::string DownloadPolicy::RangeLine(const DownloadState& state) const {
  return "Range: bytes=" + SingleText(state.ResumeOffset) + "-" + kCrLf;
}

HeaderPlace DownloadPolicy::FindHeader(std::string_view arrived) const {
  if (!Holds(LowerCase(arrived), "content-type:")) return {};
  const std::size_t end = arrived.find(kEndOfHeader);
  if (end != std::string_view::npos) {
    return {HeaderPlace::Found::Whole, end, end + kEndOfHeader.size()};
  }
  return {arrived.size() < kLongestHeader ? HeaderPlace::Found::Unfinished
                                          : HeaderPlace::Found::None};
}

HttpVerdict DownloadPolicy::Judge(const std::string& header, DownloadState& state) const {
  const std::string lower = LowerCase(header);
  if (state.Resuming &&
      (!Holds(lower, "206 partial content") || IsOfAnotherPart(lower, state.resumeOffset))) {
    return {HttpVerdict::What::Refuse, DownloadTrouble::NoResuming};
  }
  if (Holds(lower, "404 not found")) return {HttpVerdict::What::Refuse, DownloadTrouble::NotFound};
  state.TotalSize = LeadingSingle(ParseHeaderValue(header, "Content-Length:"));
  // The figure may be of a line with a longer name, or lack its first digit. The file's end is not.
  state.length = ByteCount(ParseHeaderValue(lower, "\ncontent-length"));
  if (state.Resuming) {
    state.SetPosition(state.resumeOffset);
    state.TotalSize += state.ResumeOffset;
    if (state.length) state.length = std::max(*state.length, *state.length + state.resumeOffset);
  }
  return {};
}

}  // namespace orvanto
