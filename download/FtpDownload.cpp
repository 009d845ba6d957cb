#include "download/FtpDownload.h"

#include "core/ProgramTitle.h"
#include "core/modRegistry.h"
#include "download/HttpDownload.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::int16_t kDefaultTimeout = 30;

constexpr const char* kStates[] = {"FTP_CONNECTION_RESOLVING_HOST",
                                   "FTP_CONNECTION_HOST_RESOLVED",
                                   "FTP_CONNECTION_CONNECTED",
                                   "FTP_CONNECTION_AUTHENTICATION",
                                   "FTP_USER_LOGGED",
                                   "FTP_ESTABLISHING_DATA_CONNECTION",
                                   "FTP_DATA_CONNECTION_ESTABLISHED",
                                   "FTP_RETRIEVING_DIRECTORY_INFO",
                                   "FTP_DIRECTORY_INFO_COMPLETED",
                                   "FTP_TRANSFER_STARTING",
                                   "FTP_TRANSFER_COMLETED"};

}  // namespace

FtpDownload::FtpDownload(const Services& services, DownloadState& state)
    : services_(services), state_(state), client_(services.ftp) {
  client_.StateChanged = [this](CFtpConnection::State now) {
    if (now == CFtpConnection::State::TransferStarting) services_.starting();
    if (now == CFtpConnection::State::TransferCompleted) transferDone_ = true;
    services_.log(std::string(kStates[static_cast<std::size_t>(now)]) + kCrLf);
  };
  client_.ReplyMessage = [this](const std::string& lines) { services_.log(lines); };
  client_.DownloadProgress = [this](std::uint64_t bytes) {
    state_.SetPosition((state_.Resuming ? state_.resumeOffset : 0) + bytes);
    services_.received();
  };
}

void FtpDownload::Pause() {
  stopRequested_ = true;
  if (!client_.CancelTransfer()) client_.BreakeConnection();
}

void FtpDownload::Stop() {
  stopRequested_ = true;
  client_.BreakeConnection();
}

bool FtpDownload::Run() {
  running_ = true;
  if (const auto length = LengthOf(services_.ftp.files, state_.LocalPath)) {
    if (!state_.Resuming) services_.ftp.files.Remove(state_.LocalPath);
    state_.SetResumeOffset(*length);
  }
  stopRequested_ = transferDone_ = false;
  const FtpAddress address = ParseFtpUrl(state_.Url);
  const std::int16_t timeout =
      services_.settings.ReadNumber(kInternet, "FTP Timeout", kDefaultTimeout);
  client_.Timeout = timeout == 0 ? kDefaultTimeout : timeout;
  client_.PassiveMode =
      state_.policy->UsesPassiveMode(services_.settings.ReadNumber(kInternet, "FTP PASV", 0) > 0);
  client_.CorrectsPassiveAddress = state_.policy->CorrectsPassiveAddress();
  client_.UserName = address.user;
  client_.Password = address.password;
  client_.FtpServer = address.host;
  client_.FtpServerPort = address.port;
  const bool done = Arrive(address) && Fetch(address);
  client_.BreakeConnection();
  running_ = false;
  return done;
}

bool FtpDownload::Persist(const std::function<bool()>& step,
                          const std::function<std::string()>& trouble) {
  while (!IsOver()) {
    if (step()) return true;
    if (!IsOver() && !AskToRetry(trouble())) stopRequested_ = true;
  }
  return false;
}

bool FtpDownload::AskToRetry(const std::string& trouble) {
  return services_.ftp.messageBoxes.Show(trouble, kProgramTitle, Buttons::RetryCancel,
                                         BoxIcon::Critical) == Answer::Retry;
}

bool FtpDownload::Arrive(const FtpAddress& address) {
  const auto connect = [this] { return client_.Connect(); };
  return Persist(connect,
                 [&] {
                   return std::string("Error occured while conencting to server: ") + kCrLf +
                          address.host;
                 }) &&
         Persist(
             [&] {
               return (client_.IsConnected() || connect()) &&
                      client_.SetCurrentDirectory(address.directory);
             },
             [&] {
               return std::string("Error occured while changing server directory to: ") + kCrLf +
                      address.directory;
             });
}

bool FtpDownload::Fetch(const FtpAddress& address) {
  const auto fetch = [&] {
    // A failure may have cost the connection.
    if (!client_.IsConnected() && !Arrive(address)) return false;
    const std::uint64_t offset = state_.Resuming ? state_.resumeOffset : 0;
    std::uint64_t size = 0;
    if (state_.policy->AsksForSize() && client_.GetFileSize(address.file, size)) {
      state_.length = size;
      state_.TotalSize = static_cast<float>(size);
      state_.SetPosition(offset);
    }
    if (client_.DownloadFile(address.file, state_.LocalPath, offset)) return true;
    if (!IsOver() && client_.GetLastServerResponse().starts_with("504")) {
      services_.refused();
      stopRequested_ = true;
    }
    return false;
  };
  return Persist(fetch, [this] { return Trouble(); });
}

// The server's word, where it is one of failure.
std::string FtpDownload::Trouble() const {
  const std::string& reply = client_.GetLastServerResponse();
  const bool theirs = reply.starts_with('4') || reply.starts_with('5');
  return std::string("Server returned the following error:") + kCrLf +
         (theirs ? reply : client_.GetFtpErrorDescription() + kCrLf);
}

}  // namespace orvanto
