// Connection, login and data; the menu is in Menu.cpp.
#include "remote/Internet.h"

#include <algorithm>
#include <utility>

#include "core/Convert.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "platform/EventLoop.h"
#include "platform/text/Lines.h"
#include "platform/text/Utf8.h"
#include "remote/Access.h"

namespace orvanto {
namespace {

constexpr std::int16_t kAllowedFailures = 3;
constexpr const char* kNoAddress = "0.0.0.0";
constexpr const char* kPasswordPrompt = "Enter Password: ";

std::size_t Characters(const std::string& text) {
  return text.size() -
         static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

}  // namespace

TelnetServer::TelnetServer(const Services& services, const RemoteSettings& remote)
    : services_(services),
      remote_(remote),
      sck_(services.sockets.NewSocket(SocketHost::Use::Conversation)),
      wizard_(*this, services.store, services.clock),
      tmrRefusal_(services.loop.NewTimer([this] { Refuse(); })),
      tmrSilence_(services.loop.NewTimer([this] {
        if (lineOpen_) return;  // it is we who are silent
        Log("Silent for too long.");
        Disconnect();
      })) {
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
    EndChat("\r\nChat Ended by Server\r\n\r\n");
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
  ReadPort();
  ListenIfIdle();
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
  ReadPort();
  Disconnect();
}

void TelnetServer::Relisten() {
  if (!on_ || Connected()) return;
  if (Listening() && sck_->BoundAddress() == ListeningAddress(remote_)) return SayWaiting();
  sck_->Close();
  ListenIfIdle();
}

void TelnetServer::RefreshCaption() { services_.area.SetCaption(sck_->LocalAddress()); }

void TelnetServer::ReadPort() {
  serverPort_ = ToInt32(SettingOf("Inet_ServerPort").Text(services_.settings));
}

void TelnetServer::SayWaiting() {
  log_.Begin("Waiting for Connection...");
  const bool open = !TelnetPolicyFor(remote_).needsPassword || HasPassword(remote_);
  if (!open) log_.Append(std::string(kCrLf) + kNoPassword);
}

void TelnetServer::ListenIfIdle() {
  if (sck_->GetState() != TcpSocket::State::Closed) return;
  SayWaiting();
  const bool port = serverPort_ > 0 && serverPort_ <= 65535;
  const std::string address = ListeningAddress(remote_);
  if (port && sck_->Listen(static_cast<std::uint16_t>(serverPort_), address)) return;
  log_.Begin("Port " + std::to_string(serverPort_) +
             (address == TcpSocket::kAllAddresses ? "" : " of " + address) + " cannot be used.");
}

void TelnetServer::EndConnection() {
  ++connection_;
  Flush();
  sck_->Close();
  tmrSilence_->Stop();
  waiting_.clear();
  input_.Restart();
  lineOpen_ = loggedIn_ = false;
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
  policy_ = TelnetPolicyFor(remote_);
  clientAddress_ = sck_->RemoteAddress();
  if (!MayLogIn()) {
    Log(kNoPassword);
    return Disconnect();
  }
  ++connection_;
  protocol_.Reset();
  const std::string left = policy_.keepsLine ? input_.Line() : "";
  input_ = LineAssembler(policy_.lines, kLongestLine);
  input_.SetLine(left);
  services_.area.SetLamps(true, false);
  services_.area.SetClient(clientAddress_);
  services_.area.EnableClientCommands(true);
  // No name service is asked: it could hold the whole program for seconds.
  Log("Connection from(hostname): " + clientAddress_);
  Log("Connection from(IP): " + clientAddress_);
  if (policy_.offersCharacterMode) outgoing_ += protocol_.OfferCharacterMode();
  Heard();
  loggedIn_ = !remote_.passwordRequired;
  if (!loggedIn_) return AskForPassword();
  state_ = SessionState::Start;
  ShowMainMenu();
}

void TelnetServer::Heard() {
  if (policy_.longestSilence) tmrSilence_->Start(*policy_.longestSilence);
}

void TelnetServer::AskForPassword() {
  state_ = SessionState::Password;
  Send(kPasswordPrompt);
}

void TelnetServer::FetchArrival() {
  if (waiting_.size() == kMostWaiting) return;
  if (std::string arrival(sck_->GetData()); !arrival.empty()) {
    waiting_.push_back(std::move(arrival));
    Heard();
  }
}

// One arrival, or one line, at a time: the loop, and its end, come between two.
void TelnetServer::HandleArrival() {
  if (lineOpen_ || openLines_ == kMostOpenLines) return;
  if (state_ == SessionState::Password && tmrRefusal_->Enabled()) return;
  if (!input_.HasMore()) {
    if (waiting_.empty()) return;
    const std::string arrival = std::move(waiting_.front());
    waiting_.pop_front();
    input_.Feed(protocol_.Receive(arrival, outgoing_));
  }
  while (const auto piece = input_.Next()) {
    if (piece->complete) {
      CarryOut(piece->text);
      break;
    }
    Echo(*piece);
  }
  Flush();
  FetchArrival();
  if (input_.HasMore() || !waiting_.empty()) services_.loop.Post([this] { HandleArrival(); });
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
    const bool stays = error.Number() != kTypeMismatch && policy_.keepsLine;
    if (stays && connection == connection_) input_.SetLine(line);
  }
}

void TelnetServer::Echo(const LineAssembler::Piece& piece) {
  if (policy_.offersCharacterMode && !protocol_.Echoes()) return;
  const std::string& chunk = piece.text;
  if (piece.erased) {
    Send("\b \b");
  } else if (state_ == SessionState::Password) {
    Send(std::string(policy_.offersCharacterMode ? Characters(chunk) : 1, '*'));
  } else if (state_ == SessionState::Chat && input_.Line().size() == 1) {
    // The first character of a line.
    Send(std::string(kCrLf) + "Client: " + chunk);
  } else {
    Send(chunk);
  }
}

// The password may go while somebody is being asked for it.
bool TelnetServer::MayLogIn() const {
  return !policy_.needsPassword || HasPassword(remote_) || IsFromThisComputer(*sck_);
}

void TelnetServer::Login(const std::string& line) {
  if (MayLogIn() && SamePassword(line, remote_.password)) {
    loggedIn_ = true;
    SendAll({kCrLf, kCrLf});
    return ShowMainMenu();
  }
  dropsRefused_ = failedAttempts_ == kAllowedFailures;
  if (!dropsRefused_) ++failedAttempts_;
  Log("Incorrect Password: Attempt " + std::to_string(failedAttempts_ + (dropsRefused_ ? 1 : 0)));
  refused_ = connection_;
  const auto delay = policy_.afterWrongPassword * (1 << (failedAttempts_ - 1));
  delay.count() == 0 ? Refuse() : tmrRefusal_->Start(delay);
}

// He may have gone, to be quicker with another connection: until then no password is looked at.
void TelnetServer::Refuse() {
  tmrRefusal_->Stop();
  const bool there = refused_ == connection_ && Connected();
  if (there && dropsRefused_) return Disconnect();
  // A chat that has begun meanwhile asks at its end.
  if (there && state_ == SessionState::Password) {
    SendAll({kCrLf, kCrLf});
    AskForPassword();
    Flush();
  }
  HandleArrival();
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
