#include "download/ftp/FtpTransfer.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/net/Octets.h"
#include "platform/net/SocketError.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::size_t kUploadBlock = 4096;
// A hundred thousand entries; of the shortest lines a million, some 200 MB.
constexpr std::size_t kLongestListing = 8 << 20;

constexpr FtpCommand kPasv{"PASV", 227};
constexpr FtpCommand kPort{"PORT", 200};

bool IsPositive(const FtpReply& reply) { return reply.code / 100 == 2; }

// What stands between the first "(" and the ")" that follows; empty when nothing does.
std::string_view InParentheses(std::string_view text) {
  const std::size_t open = text.find('(');
  if (open == std::string_view::npos) return {};
  text.remove_prefix(open + 1);
  return text.substr(0, std::min(text.find(')'), text.size()));
}

// Seen from another network: of this host, of a local or a private network.
bool LeadsNowhere(int first, int second) {
  return first == 0 || first == 10 || first == 127 || (first == 169 && second == 254) ||
         (first == 172 && second / 16 == 1) || (first == 192 && second == 168) ||
         (first == 100 && second / 64 == 1);
}

}  // namespace

FtpTransfer::FtpTransfer(const Services& services)
    : services_(services), wscData_(services.sockets.NewSocket(SocketHost::Use::Data)) {
  wscData_->onConnectionRequest = [this](TcpSocket::RequestId request) {
    if (wscData_->Accept(request)) OnConnected();
  };
  wscData_->onConnected = [this] { OnConnected(); };
  wscData_->onDataArrival = [this] { OnData(); };
  wscData_->onSendComplete = [this] { SendBlock(); };
  wscData_->onClosed = [this] {
    OnData();
    if (kind_ == Kind::Upload) return Stop(ErrorOfSocket(kConnectionReset));
    dataEnded_ = true;
  };
  wscData_->onError = [this](int error) { Stop(ErrorOfSocket(error)); };
}

void FtpTransfer::Begin(Kind kind) {
  End();
  kind_ = kind;
}

bool FtpTransfer::ConnectToServer(bool corrected) {
  FtpControl& control = services_.control;
  if (!control.Ask(kPasv)) return false;
  const auto numbers = ParseOctets<6>(InParentheses(control.Reply().text), ',');
  const int port = numbers ? (*numbers)[4] * 256 + (*numbers)[5] : 0;
  if (port == 0) return control.Fail(kFtpBadAddress);
  std::string address;
  for (std::size_t i = 0; i < 4; ++i) {
    address += (i > 0 ? "." : "") + std::to_string((*numbers)[i]);
  }
  if (corrected && LeadsNowhere((*numbers)[0], (*numbers)[1])) address = control.ServerAddress();
  control.SetStep("MakePassiveDataConnection");
  wscData_->Connect(address, static_cast<std::uint16_t>(port));
  if (!control.WaitUntil([this] { return connected_ || fault_.number != 0; })) return false;
  if (!connected_) return control.Fail(fault_);
  services_.report("Connecting to: " + address + ":" + std::to_string(port) + kCrLf);
  return true;
}

bool FtpTransfer::ListenForServer() {
  FtpControl& control = services_.control;
  services_.connecting();
  std::string place = control.OwnAddress();
  const bool listens = wscData_->Listen(0, place);
  std::replace(place.begin(), place.end(), '.', ',');
  const int port = wscData_->LocalPort();
  control.SetStep("ProcessPORTCommand");
  if (!listens) return control.Fail(ErrorOfSocket(wscData_->LastError()));
  return control.Ask(kPort,
                     place + "," + std::to_string(port / 256) + "," + std::to_string(port % 256));
}

void FtpTransfer::OnConnected() {
  connected_ = true;
  services_.connected();
  SendBlock();
}

bool FtpTransfer::Command(const FtpCommand& command, const std::string& argument) {
  FtpControl& control = services_.control;
  if (!control.Send(command, argument) || !control.TakeReply()) return false;
  if (control.Reply().code / 100 == 1) return true;
  if (!IsPositive(control.Reply())) return control.FailByReply();
  // All is said already.
  control.PutBack();
  return true;
}

bool FtpTransfer::OpenLocal(const std::string& path, std::uint64_t offset) {
  offset_ = offset;
  const bool upload = kind_ == Kind::Upload;
  auto opened = services_.files.Open(path, upload ? Files::Access::Read : Files::Access::Write);
  file_ = std::move(opened.file);
  if (!file_ && upload) {
    services_.control.SetStep("UploadData");
    return services_.control.Fail(kFtpLocalFile);
  }
  // The server is sending already, so that it takes Finish to fail in good order.
  file_ ? OnData() : Stop(ErrorOfFtp(kFtpLocalFile));
  return true;
}

void FtpTransfer::SendFile() {
  sending_ = true;
  SendBlock();
}

void FtpTransfer::OnData() {
  if (paused_ || (kind_ == Kind::Download && !file_)) return;
  const std::string_view bytes = wscData_->GetData();
  if (bytes.empty() || kind_ == Kind::Upload) return;
  services_.control.KeepWaiting();
  count_ += bytes.size();
  if (kind_ == Kind::Listing) {
    if (count_ > kLongestListing) return Stop(ErrorOfFtp(kFtpListingTooLong));
    listing_ += bytes;
    return;
  }
  if (file_->WriteAt(offset_ + count_ - bytes.size(), bytes) != kNoError) {
    return Stop(ErrorOfFtp(kFtpLocalFile));
  }
  services_.progress(kind_, count_);
}

void FtpTransfer::SendBlock() {
  if (!sending_ || !connected_ || paused_ || dataEnded_) return;
  services_.control.KeepWaiting();
  if (count_ > 0) services_.progress(kind_, count_);
  if (!file_) return;  // that has ended it
  std::array<char, kUploadBlock> block;
  const auto [count, error] = file_->ReadAt(offset_ + count_, block.data(), block.size());
  if (error != kNoError) return Stop(ErrorOfFtp(kFtpLocalFile));
  count_ += count;
  if (count > 0) return wscData_->Send({block.data(), count});
  dataEnded_ = true;
  wscData_->CloseGently();
}

void FtpTransfer::Stop(FtpError fault) {
  if (fault_.number == 0) fault_ = std::move(fault);
  file_.reset();
  wscData_->Close();
}

bool FtpTransfer::Finish() {
  FtpControl& control = services_.control;
  if (kind_ == Kind::Upload) control.SetStep("UploadData");
  const auto over = [&] {
    if (fault_.number != 0) return true;
    const FtpReply* const reply = control.NextFinal();
    return reply != nullptr && (dataEnded_ || !IsPositive(*reply));
  };
  if (!control.WaitUntil(over)) return false;
  if (fault_.number != 0) return FailByFault();
  return control.TakeReply() && (IsPositive(control.Reply()) || control.FailByReply());
}

// The server will notice as well, and say something about it, which explains more than that the
// connection has failed.
bool FtpTransfer::FailByFault() {
  FtpControl& control = services_.control;
  const FtpError fault = fault_;
  const auto said = [&control] { return control.NextFinal() != nullptr; };
  if (control.WaitBriefly(said) == EventLoop::Waited::OwnerGone) return false;
  const FtpReply* const reply = control.NextFinal();
  const bool theirs = fault.number < kFtpFirstOfReplies && reply != nullptr && !IsPositive(*reply);
  return theirs ? control.TakeReply() && control.FailByReply() : control.Fail(fault);
}

void FtpTransfer::End() {
  wscData_->Close();
  kind_ = Kind::None;
  file_.reset();
  offset_ = count_ = 0;
  listing_ = {};
  sending_ = paused_ = connected_ = dataEnded_ = false;
  fault_ = {};
}

}  // namespace orvanto
