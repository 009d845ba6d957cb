// Downloads as today's servers expect them.
#pragma once

#include "download/DownloadPolicy.h"

namespace orvanto {

// Exact ranges, ports in addresses, redirections within http, the lengths believed; FTP in passive
// mode with the size asked for.
class CompatDownloadPolicy : public DownloadPolicy {
 public:
  std::string Refusal(const std::string& url) const override;
  Peer PeerOf(const DownloadState& state) const override;
  std::string Target(const std::string& rest) const override;
  std::string RangeLine(const DownloadState& state) const override;
  HeaderPlace FindHeader(std::string_view arrived) const override {
    return FindHttpHeader(arrived);
  }
  bool NeedsHeader() const override { return true; }
  HttpVerdict Judge(const std::string& header, DownloadState& state) const override;
  bool IsComplete(const DownloadState& state) const override {
    return state.position >= state.length.value_or(0);
  }
  bool IsWhole(const DownloadState& state) const override {
    return state.length && IsComplete(state);
  }
  bool Replaces() const override { return true; }
  bool UsesPassiveMode(bool) const override { return true; }
  bool CorrectsPassiveAddress() const override { return true; }
  bool AsksForSize() const override { return true; }
};

}  // namespace orvanto
