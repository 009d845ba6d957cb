// The one download in progress.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvanto {

class DownloadPolicy;

// Its figures are single-precision numbers, exact up to 16,777,216. They are shown, and asked for
// in a Range line; where a byte lands is decided by the exact counts beside them.
struct DownloadState {
  const DownloadPolicy* policy = nullptr;  // of who has begun it; there is one from then on

  std::string Url;          // as given
  std::string Location;     // the same, unless the server has sent us on
  std::string ConnectHost;  // where the socket connects to
  std::string ConnectPort = "80";
  std::string UrlFileName;  // the last part of the URL's path
  std::string LocalPath;
  bool UseProxy = false;  // nothing sets it: downloads go direct
  bool Resuming = false;  // what the file holds already is kept
  float ResumeOffset = 0;
  float WritePos = 1;   // where the next byte lands, from 1
  float TotalSize = 0;  // of the whole file; 0: not known

  std::uint64_t resumeOffset = 0;
  std::uint64_t position = 0;  // from 0
  std::optional<std::uint64_t> length;

  void SetResumeOffset(std::uint64_t offset) {
    resumeOffset = offset;
    ResumeOffset = static_cast<float>(offset);
  }
  void SetPosition(std::uint64_t next) {
    position = next;
    WritePos = static_cast<float>(next + 1);
  }
};

}  // namespace orvanto
