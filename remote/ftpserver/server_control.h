// The FTP server: fetches and stores scripts from another computer. It runs while its window is
// loaded, from the switching on of the remote control to its switching off.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/Event.h"
#include "platform/net/TcpSocket.h"
#include "remote/ftpserver/FailedLogins.h"
#include "remote/ftpserver/client_control.h"

namespace orvanto {

class ProgramFolder;
class frmFtpserver;

class FtpServer {
 public:
  struct Services {
    EventLoop& loop;
    SocketHost& sockets;
    Files& files;
    const Clock& clock;
    const ProgramFolder& folder;
    frmFtpserver& window;
  };
  // `remote` is read whenever its values are needed. What begins to listen or connects takes its
  // switches; who is connected keeps those he began with.
  FtpServer(const Services& services, const RemoteSettings& remote);
  ~FtpServer();

  // Instead of the port that is set; 0 lets the system choose. Before Load.
  void SetPort(std::optional<std::uint16_t> port) { port_ = port; }
  std::uint16_t Port() const { return listener_->LocalPort(); }  // 0: it does not listen

  // Loads the window and starts, or ends and unloads it. Nothing happens when it is so already.
  void Load();
  void Unload();
  // The switches, the port or the address may have changed: who is connected goes on.
  void Relisten();
  // On every tick while the window is shown.
  void RefreshClients();

  // A line of the log.
  Event<const std::string&> logged;

 private:
  static constexpr std::size_t kMostClients = 101;

  std::optional<std::uint16_t> WantedPort() const;  // none when what is set is none
  void StartServer();
  void OnConnectionRequest(TcpSocket::RequestId request);
  FtpClient* FreeClient();
  void TurnAway(TcpSocket::RequestId request);
  void Log(const std::string& message);

  const Services services_;
  const RemoteSettings& remote_;
  FailedLogins failedLogins_;
  std::optional<std::uint16_t> port_;
  const std::unique_ptr<TcpSocket> listener_;
  const std::unique_ptr<TcpSocket> errorSock_;                    // for those who are too many
  std::array<std::unique_ptr<FtpClient>, kMostClients> clients_;  // made when they are needed
};

}  // namespace orvanto
