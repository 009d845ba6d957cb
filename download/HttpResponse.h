// The header of an HTTP response, as it is in what arrives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvanto {

// A header that is longer is none.
inline constexpr std::size_t kLongestHeader = 64 << 10;

// Where a header is in what has arrived.
struct HeaderPlace {
  enum class Found { None, Unfinished, Whole } found = Found::None;
  std::size_t end = 0;   // of a whole one, without the blank line
  std::size_t body = 0;  // what follows begins here
};
// From the status line to the blank line, which may end in LF alone. None where no status line can
// become of what has arrived.
HeaderPlace FindHttpHeader(std::string_view arrived);

// The text behind `name` and one more character, up to the end of the line. Empty when the name,
// spelt exactly so, does not occur.
std::string ParseHeaderValue(std::string_view headers, std::string_view name);

// The number that a text begins with, blanks before it; nothing for none. What lies beyond all
// numbers is as high as they go.
std::optional<std::uint64_t> ByteCount(std::string_view text);

// Of a header up to the blank line. It refers to the text.
class HttpResponse {
 public:
  explicit HttpResponse(std::string_view header) : header_(header) {}

  std::string_view StatusLine() const;
  // 0 where the status line tells none.
  int Status() const;
  // Of the first field of that name, in any case, without the blanks around it.
  std::optional<std::string_view> Field(std::string_view name) const;

 private:
  std::string_view header_;
};

// Of the field Content-Range: "bytes 5-9/10", "bytes 5-9/*", "bytes */10".
struct ContentRange {
  std::optional<std::uint64_t> first;
  std::optional<std::uint64_t> total;
};
ContentRange ParseContentRange(std::string_view value);

}  // namespace orvanto
