// The FTP client's error numbers.
#pragma once

#include <string>

namespace orvanto {

struct FtpError {
  int number = 0;  // 0: none, or a reply that the tables do not know
  std::string text;
  std::string source;  // "CFtpConnection." and the step that failed
};

// 1 to 30 are those of sockets, 38 to 57 those of replies.
enum FtpErrorNumber : int {
  kFtpNoError = 0,
  kFtpOther = 1,  // of a socket
  kFtpNotConnected = 19,
  kFtpFirstOfReplies = 38,
  kFtpTransferAborted = 43,
  kFtpBadArgument = 48,
  kFtpTimeOut = 58,
  kFtpTransferRuns = 59,
  kFtpBusy = 60,
  kFtpBrokenOff = 61,  // by our own side
  kFtpNoPassword = 62,
  kFtpBadAddress = 63,
  kFtpLocalFile = 64,
  kFtpListingTooLong = 65,
  kFtpBadSize = 66,
};

// A code that is known and no error, or not known at all, has neither number nor text.
FtpError ErrorOfReply(int code);
// The system's number of a socket's failure.
FtpError ErrorOfSocket(int error);
// With that text.
FtpError ErrorOfFtp(FtpErrorNumber number);

}  // namespace orvanto
