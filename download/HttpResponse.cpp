#include "download/HttpResponse.h"

#include <algorithm>
#include <charconv>

#include "platform/text/Case.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::string_view kProtocol = "HTTP/";
constexpr const char* kBlanks = " \t";

std::string_view WithoutBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

}  // namespace

HeaderPlace FindHttpHeader(std::string_view arrived) {
  const std::size_t begun = std::min(arrived.size(), kProtocol.size());
  if (!EqualIgnoringCase(arrived.substr(0, begun), kProtocol.substr(0, begun))) return {};
  const std::string_view looked = arrived.substr(0, kLongestHeader);
  for (std::size_t line = looked.find('\n'); line != std::string_view::npos;
       line = looked.find('\n', line + 1)) {
    const std::string_view rest = looked.substr(line + 1);
    const std::size_t blank = rest.starts_with(kCrLf) ? 2 : rest.starts_with('\n') ? 1 : 0;
    if (blank == 0) continue;
    const bool return_ = line > 0 && looked[line - 1] == '\r';
    return {HeaderPlace::Found::Whole, line - (return_ ? 1 : 0), line + 1 + blank};
  }
  return {arrived.size() < kLongestHeader ? HeaderPlace::Found::Unfinished
                                          : HeaderPlace::Found::None};
}

std::string ParseHeaderValue(std::string_view headers, std::string_view name) {
  const std::size_t at = headers.find(name);
  if (at == std::string_view::npos) return {};
  headers.remove_prefix(std::min(at + name.size() + 1, headers.size()));
  return std::string(headers.substr(0, headers.find(kCrLf)));
}

std::optional<std::uint64_t> ByteCount(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range) return UINT64_MAX;
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

std::string_view HttpResponse::StatusLine() const {
  return LineReader(header_).Next().value_or(header_);
}

int HttpResponse::Status() const {
  const std::string_view line = StatusLine();
  const std::string_view status = line.substr(std::min(line.find_first_of(kBlanks), line.size()));
  return static_cast<int>(std::min<std::uint64_t>(ByteCount(status).value_or(0), 1000));
}

std::optional<std::string_view> HttpResponse::Field(std::string_view name) const {
  LineReader lines(header_);
  lines.Next();
  while (const auto line = lines.Next()) {
    const std::size_t colon = line->find(':');
    if (colon == std::string_view::npos) continue;
    if (EqualIgnoringCase(WithoutBlanks(line->substr(0, colon)), name)) {
      return WithoutBlanks(line->substr(colon + 1));
    }
  }
  return std::nullopt;
}

ContentRange ParseContentRange(std::string_view value) {
  const auto from = [value](std::size_t at) {
    return ByteCount(value.substr(std::min(at, value.size())));
  };
  const std::size_t slash = std::min(value.find('/'), value.size());
  return {from(value.find_first_of("0123456789*")), from(slash + 1)};
}

}  // namespace orvanto
