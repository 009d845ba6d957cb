#include "download/ftp/FtpReplies.h"

#include <algorithm>
#include <utility>

#include "platform/text/Lines.h"
#include "platform/text/WholeNumber.h"

namespace orvanto {
namespace {

constexpr std::size_t kCodeLength = 3;

int CodeOf(std::string_view line) {
  if (line.size() < kCodeLength) return 0;
  return std::max(WholeNumber<int>(line.substr(0, kCodeLength)).value_or(0), 0);
}

}  // namespace

FtpReplies::Arrived FtpReplies::Feed(std::string_view arrival) {
  Arrived arrived;
  lines_.Feed(std::string(arrival));
  while (const auto piece = lines_.Next()) {
    if (!piece->complete) continue;
    arrived.lines += piece->text + kCrLf;
    if (auto reply = AddLine(piece->text)) arrived.replies.push_back(*std::move(reply));
  }
  return arrived;
}

std::optional<FtpReply> FtpReplies::AddLine(const std::string& line) {
  const bool first = last_.empty();
  if (first) {
    if (line.size() < 2) return std::nullopt;
    reply_.code = CodeOf(line);
  }
  if (reply_.text.size() + line.size() <= kLongestReply) reply_.text += line + kCrLf;
  const bool ends =
      first ? reply_.code == 0 || line.substr(kCodeLength, 1) != "-" : line.starts_with(last_);
  if (!ends) {
    if (first) last_ = line.substr(0, kCodeLength) + " ";
    return std::nullopt;
  }
  last_.clear();
  return std::exchange(reply_, {});
}

void FtpReplies::Clear() {
  lines_.Restart();
  lines_.SetLine("");
  reply_ = {};
  last_.clear();
}

}  // namespace orvanto
