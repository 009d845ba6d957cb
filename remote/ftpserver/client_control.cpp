#include "remote/ftpserver/client_control.h"

#include <optional>

#include "core/Convert.h"
#include "core/ProgramSettings.h"
#include "platform/Files.h"
#include "platform/net/SocketError.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"
#include "platform/text/WholeNumber.h"
#include "remote/Access.h"
#include "remote/ftpserver/FailedLogins.h"
#include "remote/ftpserver/FtpPolicy.h"
#include "remote/ftpserver/data_transfers.h"
#include "remote/ftpserver/file_control.h"

namespace orvanto {
namespace {

constexpr const char* kNoResuming = "504 Resuming is currently unsupported";
constexpr const char* kPermissionDenied = "550 Permission denied.";

// Of "h1,h2,h3,h4,p1,p2": the address with points and the port; nothing when it is none.
std::optional<std::pair<std::string, int>> DataAddress(std::string_view numbers) {
  std::string address;
  int port = 0;
  for (std::size_t i = 0; i < 6; ++i) {
    const std::size_t comma = i < 5 ? numbers.find(',') : numbers.size();
    const auto part = WholeNumber<std::uint8_t>(numbers.substr(0, comma));
    if (comma == std::string_view::npos || !part) return std::nullopt;
    numbers.remove_prefix(std::min(comma + 1, numbers.size()));
    if (i < 4) {
      address += (i > 0 ? "." : "") + std::to_string(*part);
    } else {
      port = port * 256 + *part;
    }
  }
  return std::pair(address, port);
}

// A number's beginning counts; what is none is 0.
bool IsAboveZero(std::string_view text) {
  text = TrimBlanks(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  const std::size_t digit = std::min(text.find_first_not_of("0."), text.size());
  return digit < text.size() && text[digit] >= '1' && text[digit] <= '9';
}

}  // namespace

// By name; DELE disturbs a transfer only of its own file.
const FtpClient::Command FtpClient::kCommands[] = {
    {"USER", &FtpClient::User, nullptr},
    {"PASS", &FtpClient::Pass, nullptr},
    {"TYPE", &FtpClient::Type, nullptr},
    {"REST", &FtpClient::Rest, nullptr},
    {"PWD", &FtpClient::Pwd, nullptr},
    {"CWD", &FtpClient::Cwd, nullptr},
    {"CDUP", &FtpClient::Cdup, nullptr},
    {"PORT", &FtpClient::Port, &FtpClient::Always},
    {"LIST", &FtpClient::List, &FtpClient::Always},
    {"STOR", &FtpClient::Stor, &FtpClient::Always},
    {"RETR", &FtpClient::Retr, &FtpClient::Always},
    {"NOOP", &FtpClient::Ok, nullptr},
    {"DELE", &FtpClient::Dele, &FtpClient::IsOfTransfer},
    {"RMD", &FtpClient::Rmd, nullptr},
    {"MKD", &FtpClient::Mkd, nullptr},
    {"SYST", &FtpClient::Ok, nullptr},
    {"QUIT", &FtpClient::Quit, nullptr},
};

FtpClient::FtpClient(const Services& services, std::int16_t index)
    : services_(services),
      commandSock_(services.sockets.NewSocket(SocketHost::Use::Conversation)),
      pause_(services.loop.NewTimer([this] {
        pause_->Stop();
        (this->*afterPause_)();
        GoOn();
      })),
      idle_(services.loop.NewTimer([this] { SayGoodbye("421 Idle for too long."); })),
      transfer_(std::make_unique<DataTransfer>(
          DataTransfer::Services{.loop = services.loop,
                                 .sockets = services.sockets,
                                 .files = services.files,
                                 .log = services.log,
                                 .reply = [this](const std::string& text) { Reply(text); },
                                 .moved = [this] { Stir(); },
                                 .ended = [this] { GoOn(); }},
          record_)) {
  record_.socketIndex = index;
  commandSock_->onDataArrival = [this] { GoOn(); };
  commandSock_->onClosed = [this] { EndRecord(); };
  commandSock_->onError = [this](int error) {
    services_.log("ERROR - commandSock: " + NumberedErrorText(error));
    EndRecord();
  };
}

FtpClient::~FtpClient() = default;

bool FtpClient::IsFree() const {
  return !InUse() && commandSock_->GetState() != TcpSocket::State::Closing;
}

void FtpClient::Accept(TcpSocket::RequestId request, std::shared_ptr<const FtpPolicy> policy,
                       const std::string& rootFolder, const std::string& greeting) {
  if (!commandSock_->Accept(request)) return;
  lines_ = LineAssembler(policy->LineEnds(), kLongestLine);
  record_.policy = std::move(policy);
  record_.address = commandSock_->RemoteAddress();
  record_.rootFolder = record_.currentFolder = rootFolder;
  record_.currentDirectory = "/";
  since_ = services_.clock.Now();
  services_.log("Connected to " + record_.address + ", logging in...");
  Stir();
  Reply("220 " + greeting);
}

void FtpClient::Drop() {
  commandSock_->Close();
  if (InUse()) EndRecord();
}

void FtpClient::EndRecord() {
  transfer_->Cancel();
  services_.log("User " + record_.userName + " logged out.");
  const std::int16_t index = record_.socketIndex;
  record_ = {};
  record_.socketIndex = index;
  pause_->Stop();
  idle_->Stop();
  waiting_.clear();
}

std::string FtpClient::Describe() const {
  const std::string who = record_.userName.empty() ? "(no name yet)" : record_.userName;
  return who + "  " + record_.address + "  since " + TimeOfDay(since_) + transfer_->Describe();
}

// Takes what has arrived and what has waited, as far as it goes. Comes again with every arrival and
// at the end of every transfer and of a pause, which may be while it is at work.
void FtpClient::GoOn() {
  if (std::exchange(goingOn_, true)) return;
  while (InUse() && !pause_->Enabled() && (RunWaiting() || TakePiece())) {
  }
  goingOn_ = false;
}

bool FtpClient::RunWaiting() {
  if (transfer_->Running() || waiting_.empty()) return false;
  const std::string line = std::move(waiting_.front());
  waiting_.pop_front();
  OnLine(line, Order::Waited);
  return true;
}

bool FtpClient::TakePiece() {
  if (const auto piece = lines_.Next()) {
    if (piece->complete) OnLine(piece->text, Order::Fresh);
    return true;
  }
  std::string arrival(commandSock_->GetData());
  if (arrival.empty()) return false;
  lines_.Feed(std::move(arrival));
  return true;
}

void FtpClient::OnLine(const std::string& line, Order order) {
  Stir();
  const FtpPolicy& policy = *record_.policy;
  const std::size_t blank = std::min(line.find(' '), line.size());
  const std::string argument = blank < line.size() ? line.substr(blank + 1) : "";
  const Command* const command = Find(policy.CommandOf(std::string_view(line).substr(0, blank)));
  const bool allowed =
      record_.loggedIn || policy.IsAllowedBeforeLogin(command == nullptr ? "" : command->name);
  if (!allowed) return Refuse();
  if (command == nullptr) {
    if (const std::string reply = policy.ReplyToUnknown(); !reply.empty()) Reply(reply);
    return;
  }
  // Behind others that wait it waits as well, so that a PORT comes before its RETR.
  const bool waits = order == Order::Fresh && (transfer_->Running() || !waiting_.empty()) &&
                     command->disturbs != nullptr && (this->*command->disturbs)(argument);
  if (!waits) return (this->*command->run)(argument);
  if (waiting_.size() == kMostWaiting) return SayGoodbye("421 Too many commands are waiting.");
  waiting_.push_back(line);
}

const FtpClient::Command* FtpClient::Find(std::string_view name) const {
  for (const std::span<const Command> commands :
       {record_.policy->MoreCommands(), std::span<const Command>(kCommands)}) {
    for (const Command& command : commands) {
      if (EqualIgnoringCase(name, command.name)) return &command;
    }
  }
  return nullptr;
}

void FtpClient::Pause(std::chrono::milliseconds time, void (FtpClient::*then)()) {
  afterPause_ = then;
  pause_->Start(time);
}

void FtpClient::Stir() {
  const auto limit = record_.policy->IdleLimit();
  if (limit.count() > 0) idle_->Start(limit);
}

void FtpClient::Reply(const std::string& text) { commandSock_->Send(text + kCrLf); }

void FtpClient::ReplyWhether(bool done, const std::string& reply, const std::string& failure) {
  Reply(done ? reply : failure);
}

std::string FtpClient::PathOf(Argument name) const {
  return record_.policy->PathOf(services_.files, record_, name);
}

bool FtpClient::IsOfTransfer(Argument name) const {
  return EqualIgnoringCase(PathOf(name), record_.transferPath);
}

void FtpClient::User(Argument name) {
  record_.userName = name;
  Reply("331 User name ok, need password.");
}

void FtpClient::Pass(Argument password) {
  record_.password = password;
  LogIn();
}

// Nobody looks at a password while its address has to wait: whoever guesses cannot do so over
// several connections at a time.
void FtpClient::LogIn() {
  const FtpPolicy& policy = *record_.policy;
  const std::string& address = record_.address;
  FailedLogins& failed = services_.failedLogins;
  if (policy.SlowsFailedLogins() && failed.WaitOf(address).count() > 0) {
    return Pause(failed.WaitOf(address), &FtpClient::LogIn);
  }
  const RemoteSettings& remote = services_.remote;
  record_.loggedIn = (!policy.TakesLoginsHereOnly() || IsFromThisComputer(*commandSock_)) &&
                     (!remote.passwordRequired || SamePassword(record_.password, remote.password));
  if (record_.loggedIn) {
    failed.Forget(address);
    services_.log("User " + record_.userName + " logged in.");
    return Reply("230 User logged in, proceed.");
  }
  if (!policy.SlowsFailedLogins()) return Refuse();
  failed.Add(address);
  Pause(failed.WaitOf(address), &FtpClient::Refuse);
}

void FtpClient::Refuse() { Reply("530 Not logged in."); }

void FtpClient::Type(Argument type) { Reply("200 Type set to " + type); }

void FtpClient::Rest(Argument offset) {
  ReplyWhether(!IsAboveZero(offset), "350 Restarting at 0", kNoResuming);
}

void FtpClient::Pwd(Argument) {
  Reply("257 \"" + record_.currentDirectory + "\" is current directory.");
}

void FtpClient::Cwd(Argument folder) {
  const bool changed = record_.policy->ChangeDirectory(folder);
  ReplyWhether(changed, "250 Directory changed to " + record_.currentDirectory,
               "550 " + folder + kNoSuchFile);
}

void FtpClient::Cdup(Argument) { Cwd(".."); }

void FtpClient::Port(Argument numbers) {
  const auto peer = DataAddress(numbers);
  peer ? SetDataPort(peer->first, peer->second) : Reply(kSyntaxError);
}

void FtpClient::SetDataPort(const std::string& address, int port) {
  if (port <= 0 || port > 65535 || record_.onlyEpsv) return Reply(kSyntaxError);
  const FtpPolicy& policy = *record_.policy;
  if (port < policy.LowestDataPort() || !policy.TrustsDataPeer(record_, address)) {
    return Reply("504 Only your own address, and ports from " +
                 std::to_string(policy.LowestDataPort()) + ".");
  }
  const int highest = policy.HighestDataPort();
  if (port > highest) {
    const std::string limit = "data port " + std::to_string(port) + " is above " +
                              std::to_string(highest) + ", the highest that can be used.";
    services_.log("ERROR - PORT: " + limit);
    return Reply("501 The " + limit);
  }
  transfer_->ConnectTo(port);
  Reply("200 Port command successful.");
}

void FtpClient::List(Argument) {
  Reply("150 Opening ASCII mode data connection for /bin/ls.");
  transfer_->SendListing({});
}

void FtpClient::Stor(Argument name) {
  const std::string path = PathOf(name);
  if (path.empty()) return Reply(kPermissionDenied);
  if (std::exchange(record_.restartAt, 0) > 0) return Reply(kNoResuming);
  Reply("150 Opening BINARY mode data connection for " + name);
  transfer_->ReceiveFile(path);
}

void FtpClient::Retr(Argument name) {
  const std::uint64_t offset = std::exchange(record_.restartAt, 0);
  const std::string path = PathOf(name);
  if (!IsFile(services_.files, path)) return Reply("550 " + name + kNoSuchFile);
  Reply("150 Opening BINARY mode data connection for " + name);
  transfer_->SendFile(path, offset);
}

void FtpClient::Ok(Argument) { Reply("200 Command ok."); }

void FtpClient::Dele(Argument name) {
  const bool done = DeleteOneFile(services_.files, PathOf(name));
  ReplyWhether(done, "250 DELE command successful.", kPermissionDenied);
}

void FtpClient::Rmd(Argument name) {
  const bool done = !name.empty() && RemoveOneFolder(services_.files, PathOf(name));
  ReplyWhether(done, "250 RMD command successful.", "550 Delete directory failed.");
}

void FtpClient::Mkd(Argument name) { Reply("550 Failed to create " + name); }

void FtpClient::Quit(Argument) {
  SayGoodbye("200 Command ok.");
  services_.announceServer();
}

void FtpClient::SayGoodbye(const std::string& reply) {
  Reply(reply);
  commandSock_->CloseGently();
  EndRecord();
}

}  // namespace orvanto
