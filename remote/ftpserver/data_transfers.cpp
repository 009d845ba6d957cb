#include "remote/ftpserver/data_transfers.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/Files.h"
#include "platform/net/SocketError.h"
#include "remote/ftpserver/file_control.h"

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
      dataSock_(services.sockets.NewSocket(SocketHost::Use::Data)) {
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

void DataTransfer::Begin(Task task, const std::string& path) {
  dataSock_->Close();
  task_ = task;
  record_.transferPath = path;
  if (record_.dataPort == 0) return Fail("No PORT was given (0)");
  dataSock_->Connect(record_.address, static_cast<std::uint16_t>(record_.dataPort));
}

void DataTransfer::OnConnected() {
  connected_ = true;
  if (task_ == Task::List) {
    listing_ = ListingOf(services_.files, record_.currentFolder);
    return SendNext();
  }
  const auto access = task_ == Task::Send ? Files::Access::Read : Files::Access::Write;
  file_ = OpenFile(services_.files, record_.transferPath, access);
  if (!file_) return End(kCannotOpen);
  if (task_ == Task::Receive) return;
  record_.transferLength = file_->Size();
  record_.bytesSent = 0;
  SendNext();
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
  dataSock_->Send({chunk.data(), count});
}

void DataTransfer::OnArrival() {
  const std::string_view bytes = dataSock_->GetData();
  if (task_ != Task::Receive || !file_) return;
  if (file_->WriteAt(received_, bytes) != kNoError) {
    return End("452 Requested action not taken.");
  }
  received_ += bytes.size();
}

void DataTransfer::Fail(const std::string& what) {
  services_.log("ERROR - dataSock: " + what);
  End(connected_ ? "426 Connection closed; transfer aborted." : "425 Can't open data connection.");
}

void DataTransfer::Cancel() {
  dataSock_->Close();
  Forget();
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
