// The data connection of the FTP client, and what moves over it: a listing or a file. What is said
// of FtpControl about waits and destruction holds here, too.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "download/ftp/FtpControl.h"
#include "platform/Files.h"

namespace orvanto {

class FtpTransfer {
 public:
  enum class Kind { None, Listing, Download, Upload };
  struct Services {
    SocketHost& sockets;
    Files& files;
    FtpControl& control;
    std::function<void(const std::string& lines)> report;
    std::function<void()> connecting;  // the server is asked to
    std::function<void()> connected;
    std::function<void(Kind kind, std::uint64_t bytes)> progress;  // in all
  };
  explicit FtpTransfer(const Services& services);

  bool Runs() const { return kind_ != Kind::None; }

  // A transfer goes through these steps, as long as each succeeds; an upload opens its file before
  // it connects. Nothing moves before there is a file.
  void Begin(Kind kind);
  // An address of the server that is private or zero may be `corrected` to that of the control
  // connection.
  bool ConnectToServer(bool corrected);
  bool ListenForServer();
  bool Command(const FtpCommand& command, const std::string& argument = {});
  bool OpenLocal(const std::string& path, std::uint64_t offset);
  void SendFile();
  // Returns when all has been moved and the server has said so, and with the first failure.
  bool Finish();
  const std::string& Listing() const { return listing_; }

  // Takes nothing more: the server cannot go on sending. False when it was paused already.
  bool Pause() { return !std::exchange(paused_, true); }
  void CloseData() { wscData_->Close(); }
  // Closes the connection and the file, and forgets the transfer.
  void End();

 private:
  void OnConnected();
  void OnData();
  void SendBlock();
  void Stop(FtpError fault);
  bool FailByFault();

  const Services services_;
  const std::unique_ptr<TcpSocket> wscData_;
  Kind kind_ = Kind::None;
  std::unique_ptr<File> file_;
  std::uint64_t offset_ = 0;  // in it
  std::uint64_t count_ = 0;   // of bytes moved
  std::string listing_;
  bool sending_ = false;
  bool paused_ = false;
  bool connected_ = false;  // once
  bool dataEnded_ = false;  // all of it is here, or has been sent
  FtpError fault_;
};

}  // namespace orvanto
