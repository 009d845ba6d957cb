#include "remote/ftpserver/server_control.h"

#include <vector>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "platform/net/SocketError.h"
#include "platform/text/WholeNumber.h"
#include "remote/Access.h"
#include "remote/ftpserver/FtpPolicy.h"
#include "remote/ftpserver/frmFtpserver.h"

namespace orvanto {
namespace {

constexpr const char* kGreeting = "Quellmark FTP ready...";

}  // namespace

FtpServer::FtpServer(const Services& services, const RemoteSettings& remote)
    : services_(services),
      remote_(remote),
      failedLogins_(services.clock),
      listener_(services.sockets.NewSocket(SocketHost::Use::Conversation)),
      errorSock_(services.sockets.NewSocket(SocketHost::Use::Conversation)) {
  listener_->onConnectionRequest = [this](TcpSocket::RequestId request) {
    OnConnectionRequest(request);
  };
  errorSock_->onError = [this](int error) {
    Log("ERROR - errorSock: " + NumberedErrorText(error));
  };
}

FtpServer::~FtpServer() = default;

void FtpServer::Load() {
  if (services_.window.Loaded()) return;
  services_.window.Load();
  Relisten();
}

void FtpServer::Relisten() {
  if (!services_.window.Loaded()) return;
  const auto policy = MakeFtpPolicy(remote_);
  if (const std::string warning = policy->Warning(); !warning.empty()) Log(warning);
  if (listener_->GetState() == TcpSocket::State::Listening &&
      WantedPort() == listener_->LocalPort() &&
      ListeningAddress(remote_) == listener_->BoundAddress()) {
    return;
  }
  listener_->Close();
  StartServer();
}

void FtpServer::Unload() {
  listener_->Close();
  errorSock_->Close();
  for (const auto& client : clients_) {
    if (client) client->Drop();
  }
  RefreshClients();
  services_.window.Unload();
}

std::optional<std::uint16_t> FtpServer::WantedPort() const {
  if (port_) return port_;
  const auto port = WholeNumber<std::uint16_t>(TrimBlanks(MakeFtpPolicy(remote_)->ListeningPort()));
  return port != 0 ? port : std::nullopt;
}

void FtpServer::StartServer() {
  const auto port = WantedPort();
  if (!port) {
    const std::string setting = MakeFtpPolicy(remote_)->ListeningPort();
    return Log("ERROR - start_server: \"" + setting + "\" is no port.");
  }
  if (listener_->GetState() != TcpSocket::State::Listening &&
      !listener_->Listen(*port, ListeningAddress(remote_))) {
    const int error = listener_->LastError();
    return Log("ERROR - start_server: " + (error == kAddressInUse
                                               ? "port " + std::to_string(*port) + " is in use."
                                               : NumberedErrorText(error)));
  }
  Log("Server started - Listening on port " + std::to_string(listener_->LocalPort()));
}

void FtpServer::OnConnectionRequest(TcpSocket::RequestId request) {
  Log("Connection requested...");
  if (FtpClient* const client = FreeClient(); client != nullptr) {
    client->Accept(request, MakeFtpPolicy(remote_), services_.folder.Scripts(), kGreeting);
  } else {
    TurnAway(request);
  }
}

FtpClient* FtpServer::FreeClient() {
  FtpClient* taken = nullptr;
  for (std::size_t i = 0; i < clients_.size(); ++i) {
    auto& client = clients_[i];
    if (!client) {
      client = std::make_unique<FtpClient>(
          FtpClient::Services{.loop = services_.loop,
                              .sockets = services_.sockets,
                              .files = services_.files,
                              .clock = services_.clock,
                              .remote = remote_,
                              .failedLogins = failedLogins_,
                              .log = [this](const std::string& message) { Log(message); },
                              .announceServer = [this] { StartServer(); }},
          static_cast<std::int16_t>(i));
    }
    if (client->IsFree()) return client.get();
    // Its goodbye has been sent; better it is cut short than nobody can come.
    if (!client->InUse()) taken = client.get();
  }
  return taken;
}

void FtpServer::TurnAway(TcpSocket::RequestId request) {
  if (!errorSock_->Accept(request)) return;
  errorSock_->Send("421 Too many users.\r\n");
  errorSock_->CloseGently();
}

void FtpServer::RefreshClients() {
  std::vector<std::string> lines;
  for (const auto& client : clients_) {
    if (client && client->InUse()) lines.push_back(client->Describe());
  }
  services_.window.ShowClients(lines);
}

void FtpServer::Log(const std::string& message) {
  const std::string line = TimeOfDay(services_.clock.Now()) + " - " + message;
  services_.window.AddToLog(line);
  logged.Raise(line);
}

}  // namespace orvanto
