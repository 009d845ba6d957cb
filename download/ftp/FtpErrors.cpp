#include "download/ftp/FtpErrors.h"

#include <span>

#include "platform/net/SocketError.h"

namespace orvanto {
namespace {

struct Row {
  int code;
  int number;
  const char* text = "";
};

constexpr Row kReplies[] = {
    {331, 38},
    {332, 39},
    {350, 40},
    {421, 41, "Service not available, closing control connection."},
    {425, 42, "Can't open data connection."},
    {426, kFtpTransferAborted, "Connection closed; transfer aborted."},
    {450, 46, "Requested file action not taken."},
    {451, 45, "Requested action aborted: local error in processing."},
    {452, 46, "Requested action not taken. Insufficient storage space in system."},
    {500, 47, "Syntax error, command unrecognized."},
    {501, kFtpBadArgument, "Syntax error in parameters or arguments."},
    {502, 49, "Command not implemented."},
    {503, 50, "Bad sequence of commands."},
    {504, 51, "Command not implemented for that parameter."},
    {530, 52, "Not logged in."},
    {532, 53, "Need account for storing files."},
    {550, 54, "Requested action not taken. File unavailable (e.g., file not found, no access)."},
    {551, 55, "Requested action aborted: page type unknown."},
    {552, 56,
     "Requested file action aborted. Exceeded storage allocation (for current directory or "
     "dataset)."},
    {553, 57, "Requested action not taken. File name not allowed."},
};

// The last of these are the numbers that socket controls have had for a wrong state or argument.
constexpr Row kSockets[] = {
    {kSocketAccessDenied, 2},
    {kTooManySockets, 3},
    {kAddressInUse, 4},
    {kAddressNotAvailable, 5},
    {kNetworkDown, 6},
    {kNetworkUnreachable, 7},
    {kConnectionAborted, 8},
    {kConnectionReset, 9},
    {kNoBufferSpace, 10},
    {kConnectTimedOut, 11},
    {kConnectionRefused, 12},
    {kHostUnreachable, 13},
    {10093, 14},
    {kHostNotFound, 15},
    {11002, 16},
    {11003, 17},
    {11004, 18},
    {40006, kFtpNotConnected},
    {40014, 20},
    {40017, 21},
    {40018, 22},
    {40019, 23},
    {40020, 24},
    {40021, 25},
    {40022, 26},
    {40023, 27},
    {40024, 28},
    {40025, 29},
    {40026, 30},
};

constexpr Row kOwn[] = {
    {0, kFtpNotConnected, "There is no connection to the server."},
    {0, kFtpTimeOut, "The server took too long to respond."},
    {0, kFtpTransferRuns, "Can't close control connection. Transfer in progress."},
    {0, kFtpBusy, "Another command is being carried out."},
    {0, kFtpBrokenOff, "The connection was broken off."},
    {0, kFtpNoPassword, "A user other than anonymous needs a password."},
    {0, kFtpBadAddress, "The server names no address for the data connection."},
    {0, kFtpLocalFile, "The local file cannot be opened, read or written."},
    {0, kFtpListingTooLong, "The listing is too long."},
    {0, kFtpBadSize, "The server names no size of the file."},
};

}  // namespace

FtpError ErrorOfReply(int code) {
  for (const Row& row : kReplies) {
    if (row.code == code) return {row.number, row.text, {}};
  }
  return {};
}

FtpError ErrorOfSocket(int error) {
  for (const Row& row : kSockets) {
    if (row.code == error) return {row.number, SocketErrorText(error), {}};
  }
  return {kFtpOther, SocketErrorText(error), {}};
}

FtpError ErrorOfFtp(FtpErrorNumber number) {
  for (const auto& table : {std::span<const Row>(kReplies), std::span<const Row>(kOwn)}) {
    for (const Row& row : table) {
      if (row.number == number) return {number, row.text, {}};
    }
  }
  return {number, {}, {}};
}

}  // namespace orvanto
