#include "download/ftp/CFtpConnection.h"

#include <charconv>
#include <utility>

#include "download/ftp/Listing.h"

namespace orvanto {
namespace {

constexpr const char* kAnonymous = "anonymous";
constexpr const char* kAnonymousPassword = "anonymous@example.com";
constexpr const char* kMask = "**********";

constexpr FtpCommand kUser{"USER", 331};
constexpr FtpCommand kPass{"PASS", 230};
constexpr FtpCommand kPwd{"PWD", 257};
constexpr FtpCommand kCwd{"CWD", 250};
constexpr FtpCommand kCdup{"CDUP", 250};
constexpr FtpCommand kType{"TYPE", 200};
constexpr FtpCommand kRest{"REST", 350};
constexpr FtpCommand kDele{"DELE", 250};
constexpr FtpCommand kMkd{"MKD", 257};
constexpr FtpCommand kRmd{"RMD", 250};
constexpr FtpCommand kRnfr{"RNFR", 350};
constexpr FtpCommand kRnto{"RNTO", 250};
constexpr FtpCommand kSize{"SIZE", 213};
constexpr FtpCommand kQuit{"QUIT", 221};
constexpr FtpCommand kAbor{"ABOR", 226};
constexpr FtpCommand kList{"LIST", 150};
constexpr FtpCommand kRetr{"RETR", 150};
constexpr FtpCommand kStor{"STOR", 150};

constexpr int kReady = 220;
constexpr int kAborted = 426;
constexpr int kNothingToAbort = 225;
constexpr int kComplete = 226;

// Of a reply to PWD: what stands in quotes, where two of them mean one; else all behind the code.
std::string DirectoryIn(const std::string& reply) {
  std::string directory;
  std::size_t at = reply.find('"');
  if (at == std::string::npos) {
    return reply.substr(4, reply.find_first_of("\r\n", 4) - 4);
  }
  while (reply[++at] != '\r') {
    if (reply[at] == '"' && reply[++at] != '"') break;
    directory += reply[at];
  }
  return directory;
}

}  // namespace

CFtpConnection::CFtpConnection(const Services& services)
    : services_(services),
      control_({services.loop, services.sockets, services.messageBoxes,
                [this](const std::string& lines) { Report(lines); },
                [this](int code) {
                  if (code == kAborted) transfer_.End();
                }}),
      transfer_({services.sockets, services.files, control_,
                 [this](const std::string& lines) { Report(lines); },
                 [this] { Tell(State::EstablishingDataConnection); },
                 [this] { Tell(State::DataConnectionEstablished); },
                 [this](FtpTransfer::Kind kind, std::uint64_t bytes) {
                   const auto& event =
                       kind == FtpTransfer::Kind::Upload ? UploadProgress : DownloadProgress;
                   if (event) event(bytes);
                 }}) {}

void CFtpConnection::Tell(State state) {
  if (StateChanged) StateChanged(state);
}

void CFtpConnection::Report(const std::string& lines) {
  if (ReplyMessage) ReplyMessage(lines);
}

bool CFtpConnection::Run(const std::function<bool()>& method) {
  if (busy_) return control_.Fail(kFtpBusy);
  struct Scope {
    explicit Scope(CFtpConnection& connection)
        : self(connection), alive(connection.control_.Alive()) {
      self.busy_ = true;
      self.control_.Begin(self.Timeout);
    }
    ~Scope() {
      if (alive.expired()) return;
      self.transfer_.End();
      self.busy_ = false;
    }
    CFtpConnection& self;
    const std::weak_ptr<const void> alive;
  } const scope(*this);
  if (!method()) return false;
  control_.ForgetError();
  return true;
}

bool CFtpConnection::Connect() {
  return Run([this] {
    const std::weak_ptr<const void> alive = control_.Alive();
    Tell(State::ResolvingHost);
    control_.SetStep("Connect");
    currentDirectory_.clear();
    if (control_.Open(FtpServer, FtpServerPort) && AwaitGreeting() && LogIn()) return true;
    if (!alive.expired()) control_.Close();
    return false;
  });
}

// A server may say first that it takes a while.
bool CFtpConnection::AwaitGreeting() {
  Tell(State::HostResolved);
  Tell(State::Connected);
  do {
    if (!control_.TakeReply()) return false;
  } while (control_.Reply().code / 100 == 1);
  return control_.Reply().code == kReady || control_.FailByReply();
}

bool CFtpConnection::LogIn() {
  Tell(State::Authentication);
  if (UserName.empty()) UserName = kAnonymous;
  if (Password.empty()) {
    if (UserName != kAnonymous) return control_.Fail(kFtpNoPassword);
    Password = kAnonymousPassword;
  }
  if (!control_.Send(kUser, UserName) || !control_.TakeReply()) return false;
  if (control_.Reply().code != kPass.expected) {
    if (control_.Reply().code != kUser.expected) return control_.FailByReply();
    if (!control_.Send(kPass, Password, kMask) || !control_.TakeReply()) return false;
    if (control_.Reply().code != kPass.expected) return control_.FailByReply();
  }
  Tell(State::UserLoggedIn);
  return true;
}

bool CFtpConnection::CloseConnection() {
  if (transfer_.Runs()) return control_.Fail(kFtpTransferRuns);
  return Run([this] {
    const std::weak_ptr<const void> alive = control_.Alive();
    const bool done = control_.Ask(kQuit);
    if (!alive.expired()) control_.Close();
    return done;
  });
}

bool CFtpConnection::BreakeConnection() {
  control_.Interrupt(kFtpBrokenOff);
  control_.Close();
  transfer_.End();
  return true;
}

bool CFtpConnection::SetCurrentDirectory(const std::string& directory) {
  return Run([&] {
    if (directory.empty()) return true;
    if (!control_.Ask(kCwd, directory)) return false;
    currentDirectory_ =
        directory.starts_with('/') ? directory : JoinRemotePath(currentDirectory_, directory);
    return true;
  });
}

bool CFtpConnection::GetCurrentDirectory() {
  return Run([this] {
    if (!control_.Ask(kPwd)) return false;
    currentDirectory_ = DirectoryIn(control_.Reply().text);
    return true;
  });
}

bool CFtpConnection::SetParentAsCurrentDirectory() {
  return Run([this] {
    if (!control_.Ask(kCdup)) return false;
    const std::size_t slash = currentDirectory_.rfind('/');
    currentDirectory_.resize(slash == std::string::npos ? 0 : slash == 0 ? 1 : slash);
    return true;
  });
}

bool CFtpConnection::CreateDirectory(const std::string& name) {
  return Run([&] { return control_.Ask(kMkd, name); });
}

bool CFtpConnection::RemoveDirectory(const std::string& name) {
  return Run([&] { return control_.Ask(kRmd, name); });
}

bool CFtpConnection::DeleteFile(const std::string& name) {
  return Run([&] { return control_.Ask(kDele, name); });
}

bool CFtpConnection::RenameFile(const std::string& from, const std::string& to) {
  return Run([&] { return control_.Ask(kRnfr, from) && control_.Ask(kRnto, to); });
}

bool CFtpConnection::GetFileSize(const std::string& name, std::uint64_t& size) {
  return Run([&] {
    if (!SayType() || !control_.Ask(kSize, name)) return false;
    const std::string& reply = control_.Reply().text;
    return std::from_chars(reply.data() + 4, reply.data() + reply.size(), size).ec == std::errc() ||
           control_.Fail(kFtpBadSize);
  });
}

bool CFtpConnection::SayType() {
  return control_.Ask(kType, std::string(1, static_cast<char>(TransferMode)));
}

bool CFtpConnection::ConnectData() {
  return SayType() && (PassiveMode ? transfer_.ConnectToServer(CorrectsPassiveAddress)
                                   : transfer_.ListenForServer());
}

bool CFtpConnection::EnumFiles(CFTPFiles& files) {
  return Run([&] {
    transfer_.Begin(FtpTransfer::Kind::Listing);
    if (!ConnectData()) return false;
    Tell(State::RetrievingDirectory);
    if (!transfer_.Command(kList) || !transfer_.Finish()) return false;
    Tell(State::DirectoryCompleted);
    ParseListing(transfer_.Listing(), currentDirectory_, services_.clock.Now().year, files);
    return true;
  });
}

bool CFtpConnection::DownloadFile(const std::string& remote, const std::string& local,
                                  std::uint64_t offset) {
  return Run([&] {
    transfer_.Begin(FtpTransfer::Kind::Download);
    if (!ConnectData()) return false;
    if (offset > 0 && !control_.Ask(kRest, std::to_string(offset))) return false;
    if (!transfer_.Command(kRetr, remote)) return false;
    Tell(State::TransferStarting);
    if (!transfer_.OpenLocal(local, offset) || !transfer_.Finish()) return false;
    Tell(State::TransferCompleted);
    return true;
  });
}

bool CFtpConnection::UploadFile(const std::string& local, const std::string& remote) {
  return Run([&] {
    transfer_.Begin(FtpTransfer::Kind::Upload);
    if (!transfer_.OpenLocal(local, 0) || !ConnectData()) return false;
    if (!transfer_.Command(kStor, remote)) return false;
    Tell(State::TransferStarting);
    transfer_.SendFile();
    if (!transfer_.Finish()) return false;
    Tell(State::TransferCompleted);
    return true;
  });
}

bool CFtpConnection::CancelTransfer() {
  if (!busy_) return Run([this] { return Abort(1); });
  // It and the transfer are answered.
  return transfer_.Runs() ? Abort(2) : control_.Fail(kFtpBusy);
}

bool CFtpConnection::Abort(std::size_t replies) {
  if (!transfer_.Pause()) return control_.Fail(kFtpBusy);
  if (!control_.Send(kAbor)) return false;
  control_.Interrupt(kFtpTransferAborted);
  const auto answers = [this] { return control_.Waiting({kAborted, kNothingToAbort, kComplete}); };
  for (int i = 0; i < 2; ++i) {
    const auto ended = control_.WaitBriefly([&] { return answers() >= replies; });
    if (ended == EventLoop::Waited::OwnerGone) return false;
    if (ended != EventLoop::Waited::TimedOut) break;
    // Some servers do not look at a command before they can send no more.
    transfer_.CloseData();
  }
  transfer_.End();
  if (answers() > 0) return true;
  if (const FtpReply* const reply = control_.NextFinal()) {
    return control_.Fail(ErrorOfReply(reply->code));
  }
  return control_.Fail(control_.IsConnected() ? kFtpTimeOut : kFtpNotConnected);
}

}  // namespace orvanto
