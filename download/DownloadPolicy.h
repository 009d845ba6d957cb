// What a download decides in more than one way.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "download/DownloadState.h"
#include "download/DownloadTrouble.h"
#include "download/HttpResponse.h"

namespace orvanto {

// What becomes of a response.
struct HttpVerdict {
  enum class What {
    Take,      // what follows is the file's
    PassOver,  // another header follows
    GoTo,      // the file is at the address of the detail
    IsWhole,   // the file is there already, and of the length that was told
    Refuse
  } what = What::Take;
  DownloadTrouble trouble = {};  // that it is refused for
  std::string detail = {};
};

// This one is the default: downloads are as they have always been.
class DownloadPolicy {
 public:
  virtual ~DownloadPolicy() = default;

  // Why no file can be fetched from there; empty when one can be.
  virtual std::string Refusal(const std::string& url) const;

  // Where the socket connects to.
  struct Peer {
    std::string host;
    std::uint16_t port;  // 0: a bad one
  };
  virtual Peer PeerOf(const DownloadState& state) const;
  // What the request asks the host for, out of what the URL says behind it.
  virtual std::string Target(const std::string& rest) const { return rest; }
  // Of a request that resumes; from 10,000,000 bytes on its number has an exponent, which no server
  // takes.
  virtual std::string RangeLine(const DownloadState& state) const;
  // Before a header has been taken, what arrives without one is the file's.
  virtual HeaderPlace FindHeader(std::string_view arrived) const;
  virtual bool NeedsHeader() const { return false; }
  // What is taken tells `state` the lengths, and where the next byte lands.
  virtual HttpVerdict Judge(const std::string& header, DownloadState& state) const;

  // The other side has closed: whether that is the end of the file, however long it was told to be.
  virtual bool IsComplete(const DownloadState&) const { return true; }
  // All that was told is there: it is the end, though the other side has not closed.
  virtual bool IsWhole(const DownloadState&) const { return false; }
  // A file that is to replace another is fetched beside it.
  virtual bool Replaces() const { return false; }

  // Of FTP; as the user has set it.
  virtual bool UsesPassiveMode(bool set) const { return set; }
  virtual bool CorrectsPassiveAddress() const { return false; }  // see CFtpConnection
  virtual bool AsksForSize() const { return false; }
};

}  // namespace orvanto
