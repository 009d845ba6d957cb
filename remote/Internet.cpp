// Connection, login and data; the menu is in Menu.cpp.
#include "remote/Internet.h"

#include <utility>

#include "core/Convert.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "platform/EventLoop.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::int16_t kAllowedFailures = 3;
constexpr const char* kNoAddress = "0.0.0.0";
constexpr const char* kPasswordPrompt = "Enter Password: ";

}  // namespace

TelnetServer::TelnetServer(const Services& services, const RemoteSettings& remote)
    : services_(services),
      remote_(remote),
      sck_(services.sockets.NewSocket(SocketHost::Use::Conversation)),
      wizard_(*this, services.store, services.clock) {
  sck_->onConnectionRequest = [this](TcpSocket::RequestId request) {
    OnConnectionRequest(request);
    Flush();
  };
  sck_->onDataArrival = [this] {
    FetchArrival();
    HandleArrival();
  };
  sck_->onClosed = [this] { Disconnect(); };
  sck_->onError = [this](int) { Disconnect(); };
  wizard_.repeatFirstQuestion = [this] { ChooseNewTask(); };
  services_.chat.onLine = [this](const std::string& line) {
    LocalChatLine(line);
    Flush();
  };
  services_.chat.onQuit = [this] {
    EndChatLocally();
    Flush();
  };
}

TelnetServer::~TelnetServer() = default;

void TelnetServer::ServerOn() {
  EndConnection();
  services_.area.ShowServer(true);
  // The longer text never stays long enough to be read.
  services_.area.SetCaption("Internet Server Status:" + sck_->LocalAddress());
  RefreshCaption();
  services_.area.SetLamps(false, true);
  on_ = true;
  switched.Raise(true);
  StartListening();
}

void TelnetServer::ServerOff() {
  on_ = false;
  EndConnection();
  switched.Raise(false);
  services_.area.SetLamps(false, false);
  services_.area.ShowServer(false);
}

void TelnetServer::Restart() {
  if (!on_) return;
  Disconnect();
  sck_->Close();
  StartListening();
}

void TelnetServer::RefreshCaption() { services_.area.SetCaption(sck_->LocalAddress()); }

void TelnetServer::StartListening() {
  serverPort_ = ToInt32(services_.settings.ReadSetting(kGeneral, "Inet_ServerPort", "600"));
  ListenIfIdle();
}

void TelnetServer::ListenIfIdle() {
  if (sck_->GetState() != TcpSocket::State::Closed) return;
  log_.Begin("Waiting for Connection...");
  const bool port = serverPort_ > 0 && serverPort_ <= 65535;
  if (port && sck_->Listen(static_cast<std::uint16_t>(serverPort_))) return;
  log_.Begin("Port " + std::to_string(serverPort_) + " cannot be used.");
}

void TelnetServer::EndConnection() {
  ++connection_;
  Flush();
  sck_->Close();
  waiting_.clear();
  lineOpen_ = false;
  clientAddress_ = kNoAddress;
  services_.area.SetClient(clientAddress_);
  services_.area.EnableClientCommands(false);
  services_.chat.Unload();
}

void TelnetServer::Disconnect() {
  Log("Connection Terminated.");
  EndConnection();
  services_.area.SetLamps(false, true);
  ListenIfIdle();
}

void TelnetServer::OnConnectionRequest(TcpSocket::RequestId request) {
  sck_->Close();
  if (!sck_->Accept(request)) {
    ListenIfIdle();
    return;
  }
  ++connection_;
  protocol_.Reset();
  input_.Restart();
  clientAddress_ = sck_->RemoteAddress();
  services_.area.SetLamps(true, false);
  services_.area.SetClient(clientAddress_);
  services_.area.EnableClientCommands(true);
  // No name service is asked: it could hold the whole program for seconds.
  Log("Connection from(hostname): " + clientAddress_);
  Log("Connection from(IP): " + clientAddress_);
  if (remote_.passwordRequired == 1) {
    state_ = SessionState::Password;
    Send(kPasswordPrompt);
  } else {
    state_ = SessionState::Start;
    ShowMainMenu();
  }
}

void TelnetServer::FetchArrival() {
  if (waiting_.size() == kMostWaiting) return;
  if (std::string arrival(sck_->GetData()); !arrival.empty()) {
    waiting_.push_back(std::move(arrival));
  }
}

// One at a time: the loop, and its end, come between two.
void TelnetServer::HandleArrival() {
  if (waiting_.empty() || lineOpen_ || openLines_ == kMostOpenLines) return;
  const std::string arrival = std::move(waiting_.front());
  waiting_.pop_front();
  input_.Feed(protocol_.Receive(arrival, outgoing_));
  if (const auto piece = input_.Next()) {
    piece->complete ? CarryOut(piece->text) : Echo(piece->text);
  }
  Flush();
  FetchArrival();
  if (!waiting_.empty()) services_.loop.Post([this] { HandleArrival(); });
}

void TelnetServer::CarryOut(const std::string& line) {
  struct Open {
    explicit Open(TelnetServer& opened) : server(opened) {
      server.lineOpen_ = true;
      ++server.openLines_;
    }
    ~Open() {
      // A client who has come meanwhile has none open: it would have ended first.
      server.lineOpen_ = false;
      --server.openLines_;
    }
    TelnetServer& server;
  } const open(*this);
  const std::uint64_t connection = connection_;
  try {
    Dispatch(line);
  } catch (const Error& error) {
    // Text where a number belongs is skipped over; after any other error the line stays, if its
    // client is still there.
    if (error.Number() != kTypeMismatch && connection == connection_) input_.SetLine(line);
  }
}

void TelnetServer::Echo(const std::string& chunk) {
  if (state_ == SessionState::Password) {
    Send("*");
  } else if (state_ == SessionState::Chat && input_.Line().size() == 1) {
    // The first character of a line.
    Send(std::string(kCrLf) + "Client: " + chunk);
  } else {
    Send(chunk);
  }
}

void TelnetServer::Login(const std::string& line) {
  if (line == remote_.password) {
    SendAll({kCrLf, kCrLf});
    ShowMainMenu();
    return;
  }
  if (failedAttempts_ == kAllowedFailures) {
    Log("Incorrect Password: Attempt 4");
    Disconnect();
    return;
  }
  ++failedAttempts_;
  Log("Incorrect Password: Attempt " + std::to_string(failedAttempts_));
  SendAll({kCrLf, kCrLf, kPasswordPrompt});
}

void TelnetServer::Send(const std::string& text) { outgoing_ += TelnetProtocol::Escape(text); }

void TelnetServer::Flush() { sck_->Send(std::exchange(outgoing_, {})); }

void TelnetServer::SendAll(std::initializer_list<const char*> pieces) {
  for (const char* piece : pieces) Send(piece);
}

void TelnetServer::Log(const std::string& message) {
  log_.Append(kCrLf + clientAddress_ + ": " + message);
}

}  // namespace orvanto
