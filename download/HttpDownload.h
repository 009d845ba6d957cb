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

// The text behind `name` and one more character, up to the end of the line. Empty when the name,
// spelt exactly so, does not occur.
std::string ParseHeaderValue(std::string_view headers, std::string_view name);

// Nothing where there is no file that can be read.
std::optional<std::uint64_t> LengthOf(Files& files, const std::string& path);

// A file is never cut, and while it is resumed nothing below the offset is written.
class HttpDownload {
 public:
  enum class Trouble {
    NoResuming,   // the server sends the whole file, or another part of it
    NotFound,     // 404
    CannotWrite,  // the file
    BadAddress,   // of a file to be fetched by FTP through a proxy
  };
  // All but `received` may close it. It must not be destroyed in any of them.
  struct Services {
    SocketHost& sockets;
    Files& files;
    const DownloadPolicy& policy;
    std::function<void()> requested;  // the request has been sent
    std::function<void(const std::string& header)> header;
    std::function<void()> received;          // the file has grown
    std::function<void(Trouble)> trouble;    // the connection is closed already
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
  // A header that is longer is taken for the file's.
  static constexpr std::size_t kLongestHeader = 64 << 10;

  std::optional<std::string> Request() const;
  void OnConnected();
  void OnArrival();
  void OnClosed();
  void OnFirstBytes(std::string_view bytes);
  bool TakeHeader(const std::string& header, const std::string& lower);
  bool IsOfAnotherPart(const std::string& lower) const;
  bool Store(std::string_view bytes);
  void Stop(Trouble trouble);

  const Services services_;
  DownloadState& state_;
  const std::unique_ptr<TcpSocket> sckDownload_;
  bool received_ = false;
  bool headerTaken_ = false;
  std::string waiting_;  // what may be half a header
  bool closesWhenWhole_ = false;
};

}  // namespace orvanto
