// The replies of an FTP server, out of what arrives.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/net/LineAssembler.h"

namespace orvanto {

struct FtpReply {
  int code = 0;      // the number in the first three characters; 0 for none
  std::string text;  // all its lines, each with its end
};

// A reply whose first line has a hyphen behind its code goes on to the line that begins with the
// code and a blank; any other is one line. It does not matter where the arrivals are cut. Lines of
// fewer than two characters between replies are none.
class FtpReplies {
 public:
  // What more of a line, or of a reply, is dropped.
  static constexpr std::size_t kLongestLine = 4 << 10;
  static constexpr std::size_t kLongestReply = 64 << 10;

  struct Arrived {
    std::string lines;              // that are complete now, each with its end
    std::vector<FtpReply> replies;  // likewise
  };
  Arrived Feed(std::string_view arrival);

  // Nothing that came before counts any more.
  void Clear();

 private:
  std::optional<FtpReply> AddLine(const std::string& line);

  LineAssembler lines_{LineAssembler::Policy::Lines, kLongestLine};
  FtpReply reply_;    // that has begun
  std::string last_;  // what its last line begins with; empty: none has begun
};

}  // namespace orvanto
