// The HTTP side of a download: the connection, the request, the response, the file.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "download/DownloadPolicy.h"
#include "platform/Files.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

// Nothing where there is no file that can be read.
std::optional<std::uint64_t> LengthOf(Files& files, const std::string& path);

// A file is never cut, and while it is resumed nothing below the offset is written.
class HttpDownload {
 public:
  // All but `received` may close it. It must not be destroyed in any of them.
  struct Services {
    SocketHost& sockets;
    Files& files;
    std::function<void()> requested;  // the request has been sent
    std::function<void(const std::string& header)> header;
    std::function<void()> received;  // the file has grown
    // The connection is closed already.
    std::function<void(DownloadTrouble trouble, const std::string& detail)> trouble;
    std::function<void()> ended;             // the other side has closed; see CloseWhenWhole, too
    std::function<void(int error)> stalled;  // it has failed, or could not be made
  };
  // The state outlives it.
  HttpDownload(const Services& services, DownloadState& state);

  // Begins anew.
  void Connect();
  void Close();
  // From Connect to Close, or the end; also when it has failed.
  bool IsOpen() const { return sckDownload_->GetState() != TcpSocket::State::Closed; }
  // Anything since Connect.
  bool HasReceived() const { return received_; }
  // Ends, to be closed, as soon as all that was told of is in the file, which may be now.
  void CloseWhenWhole();

 private:
  static constexpr int kMostRedirections = 5;

  std::optional<std::string> Request() const;
  void OnConnected();
  void OnArrival();
  void OnClosed();
  void Open();
  void OnFirstBytes(std::string_view bytes);
  void Follow(const HttpVerdict& verdict, std::string_view rest);
  void GoTo(const std::string& url);
  bool Store(std::string_view bytes);
  void Stop(DownloadTrouble trouble, const std::string& detail = {});

  const Services services_;
  DownloadState& state_;
  const std::unique_ptr<TcpSocket> sckDownload_;
  bool received_ = false;
  bool headerTaken_ = false;
  std::string waiting_;  // what may be half a header
  bool closesWhenWhole_ = false;
  int redirections_ = 0;
};

}  // namespace orvanto
