#include "remote/ftpserver/data_transfers.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/Files.h"
#include "platform/net/SocketError.h"
#include "remote/ftpserver/FtpPolicy.h"

namespace orvanto {
namespace {

constexpr std::size_t kChunk = 1024;  // of a file
constexpr std::size_t kListingChunk = 64 << 10;

constexpr const char* kComplete = "226 Transfer complete.";
constexpr const char* kCannotOpen = "550 Permission denied.";

}  // namespace

DataTransfer::DataTransfer(const Services& services, ClientRecord& record)
    : services_(services),
      record_(record),
      dataSock_(services.sockets.NewSocket(SocketHost::Use::Data)),
      listener_(services.sockets.NewSocket(SocketHost::Use::Data)),
      clock_(services.loop.NewTimer([this] { NobodyComes(kConnectTimedOut); })) {
  listener_->onConnectionRequest = [this](TcpSocket::RequestId request) { OnRequest(request); };
  dataSock_->onConnected = [this] { OnConnected(); };
  dataSock_->onSendComplete = [this] { SendNext(); };
  dataSock_->onDataArrival = [this] { OnArrival(); };
  // A download that the client breaks off ends like one that is whole.
  dataSock_->onClosed = [this] { End(kComplete); };
  dataSock_->onError = [this](int error) { Fail(NumberedErrorText(error)); };
}

std::string DataTransfer::Describe() const {
  if (Running() && !connected_) return "  waits for its data connection";
  const std::string& path = record_.transferPath;
  const std::string name = path.substr(path.find_last_of("\\/") + 1);
  switch (task_) {
    case Task::List:
      return "  lists the folder";
    case Task::Send:
      return "  fetches " + name + ": " + std::to_string(record_.bytesSent) + " of " +
             std::to_string(record_.transferLength) + " bytes";
    case Task::Receive:
      return "  stores " + name + ": " + std::to_string(received_) + " bytes";
    default:
      return "";
  }
}

void DataTransfer::ConnectTo(int port) {
  ForgetConnection();
  record_.dataPort = port;
}

std::uint16_t DataTransfer::ListenOn(const std::string& address) {
  ConnectTo(0);
  if (!listener_->Listen(0, address)) {
    services_.log("ERROR - dataSock: " + NumberedErrorText(listener_->LastError()));
    return 0;
  }
  StartClock();
  return listener_->LocalPort();
}

void DataTransfer::SendListing(const ListingForm& form) {
  form_ = form;
  Begin(Task::List, {});
}

void DataTransfer::SendFile(const std::string& path, std::uint64_t offset) {
  record_.bytesSent = offset;
  Begin(Task::Send, path);
}

void DataTransfer::Begin(Task task, const std::string& path) {
  task_ = task;
  record_.transferPath = path;
  if (connected_) return Start();
  StartClock();
  if (listener_->GetState() == TcpSocket::State::Listening) return;
  dataSock_->Close();
  if (record_.dataPort == 0) return Fail("No PORT was given (0)");
  dataSock_->Connect(record_.address, static_cast<std::uint16_t>(record_.dataPort));
}

void DataTransfer::StartClock() {
  const auto limit = record_.policy->DataLimit();
  if (limit.count() > 0) clock_->Start(limit);
}

void DataTransfer::OnRequest(TcpSocket::RequestId request) {
  if (!dataSock_->Accept(request)) {
    // It has gone again, and the system does not tell any more whose it was. Where the wait has a
    // limit another may come.
    if (record_.policy->DataLimit().count() == 0) NobodyComes(kConnectionReset);
    return;
  }
  const std::string peer = dataSock_->RemoteAddress();
  if (!record_.policy->TrustsDataPeer(record_, peer)) {
    services_.log("ERROR - dataSock: turned away " + peer);
    return dataSock_->Close();
  }
  listener_->Close();
  OnConnected();
}

void DataTransfer::OnConnected() {
  clock_->Stop();
  connected_ = true;
  if (Running()) Start();
}

void DataTransfer::Start() {
  // The client may have sent all of a file before it says what it is.
  const bool over = dataSock_->GetState() != TcpSocket::State::Connected;
  if (over && (task_ != Task::Receive || dataSock_->LastError() != 0)) {
    return Fail(NumberedErrorText(dataSock_->LastError()));
  }
  if (task_ == Task::List) {
    listing_ = ListingOf(services_.files, record_.currentFolder, form_);
    return SendNext();
  }
  if (task_ == Task::Receive) {
    if (!OpenToReceive()) return End(kCannotOpen);
    OnArrival();
    return over ? End(kComplete) : void();
  }
  file_ = OpenFile(services_.files, record_.transferPath, Files::Access::Read);
  if (!file_) return End(kCannotOpen);
  record_.transferLength = file_->Size();
  if (record_.bytesSent > record_.transferLength) return End("554 The file is shorter than that.");
  SendNext();
}

bool DataTransfer::OpenToReceive() {
  Files& files = services_.files;
  const std::string& path = record_.transferPath;
  const bool replaces = record_.policy->ReplacesFiles() && IsFile(files, path);
  if (replaces && !DeleteOneFile(files, path)) return false;
  file_ = OpenFile(files, path, Files::Access::Write);
  return file_ != nullptr;
}

// Also raised when nothing is sent.
void DataTransfer::SendNext() {
  if (task_ == Task::Send) {
    return record_.bytesSent == record_.transferLength ? End(kComplete) : SendChunk();
  }
  if (task_ != Task::List) return;
  if (listed_ == listing_.size()) return End(kComplete);
  const std::string_view chunk = std::string_view(listing_).substr(listed_, kListingChunk);
  listed_ += chunk.size();
  services_.moved();
  dataSock_->Send(chunk);
}

void DataTransfer::SendChunk() {
  std::array<char, kChunk> chunk;
  const std::uint64_t left = record_.transferLength - record_.bytesSent;
  const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(left, chunk.size()));
  const auto [count, error] = file_->ReadAt(record_.bytesSent, chunk.data(), size);
  // The file cannot be read, or somebody has cut it.
  if (count == 0) return End("451 Requested action aborted: local error in processing.");
  record_.bytesSent += count;
  services_.moved();
  dataSock_->Send({chunk.data(), count});
}

void DataTransfer::OnArrival() {
  if (!Running()) return;  // it waits for its command
  const std::string_view bytes = dataSock_->GetData();
  if (task_ != Task::Receive || !file_ || bytes.empty()) return;
  if (file_->WriteAt(received_, bytes) != kNoError) {
    return End("452 Requested action not taken.");
  }
  received_ += bytes.size();
  services_.moved();
}

void DataTransfer::Fail(const std::string& what) {
  services_.log("ERROR - dataSock: " + what);
  End(connected_ ? "426 Connection closed; transfer aborted." : "425 Can't open data connection.");
}

void DataTransfer::Cancel() {
  ForgetConnection();
  dataSock_->Close();
  Forget();
}

void DataTransfer::Abort() {
  ForgetConnection();
  dataSock_->Close();
  End("426 Connection closed; transfer aborted.");
}

void DataTransfer::NobodyComes(int error) {
  ForgetConnection();
  if (Running()) Fail(NumberedErrorText(error));
}

// That the client was to make, or has made before its command.
void DataTransfer::ForgetConnection() {
  clock_->Stop();
  listener_->Close();
  if (std::exchange(connected_, false)) dataSock_->Close();
}

void DataTransfer::Forget() {
  task_ = Task::None;
  connected_ = false;
  file_.reset();
  listing_ = {};
  listed_ = 0;
  received_ = 0;
  record_.transferPath.clear();
  record_.transferLength = record_.bytesSent = 0;
}

void DataTransfer::End(const std::string& reply) {
  if (!Running()) return;
  // Everything has been sent, and is to arrive.
  dataSock_->CloseGently();
  Forget();
  services_.reply(reply);
  services_.ended();
}

}  // namespace orvanto
