// What a download decides in more than one way.
#pragma once

#include <string>
#include <string_view>

#include "core/Convert.h"
#include "download/DownloadState.h"
#include "platform/text/Lines.h"

namespace orvanto {

// This one is the default: downloads are as they have always been.
class DownloadPolicy {
 public:
  virtual ~DownloadPolicy() = default;

  // Of a request that resumes; from 10,000,000 bytes on its number has an exponent, which no server
  // takes.
  virtual std::string RangeLine(const DownloadState& state) const {
    return "Range: bytes=" + SingleText(state.ResumeOffset) + "-" + kCrLf;
  }
  // Whether an arrival, in small letters, has the header of the response in it: before one has been
  // taken, any other is the file's.
  virtual bool HasHeader(std::string_view arrival) const {
    return arrival.find("content-type:") != std::string_view::npos;
  }
  // The other side has closed: whether that is the end of the file, however long it was told to be.
  virtual bool IsComplete(const DownloadState&) const { return true; }
  // Of FTP; as the user has set it.
  virtual bool UsesPassiveMode(bool set) const { return set; }
};

}  // namespace orvanto
