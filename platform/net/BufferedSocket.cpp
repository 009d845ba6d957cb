#include "platform/net/BufferedSocket.h"

#include <optional>
#include <utility>

#include "platform/net/Octets.h"
#include "platform/net/SocketError.h"

namespace orvanto {
namespace {

constexpr int kCompletedAtOnce = 16;
// Of memory for what waits to be sent: more is given back when it has gone out.
constexpr std::size_t kMostIdle = 16 << 10;

std::optional<Ipv4> NumericAddress(std::string_view text) {
  const auto octets = ParseOctets<4>(text, '.');
  if (!octets) return std::nullopt;
  Ipv4 address = 0;
  for (const std::uint8_t octet : *octets) address = address << 8 | octet;
  return address;
}

}  // namespace

BufferedSocket::BufferedSocket(const SocketGround& ground, SocketHost::Use use)
    : ground_(ground),
      use_(use),
      complete_(ground.loop.NewDeferred([this] { SendCompleted(); })),
      later_(ground.loop.NewDeferred([this] { GoOnLater(); })) {}

BufferedSocket::~BufferedSocket() {
  if (ground_.arrivals.user == this) ground_.arrivals.user = nullptr;
}

void BufferedSocket::Connect(const std::string& host, std::uint16_t port) {
  Close();
  state_ = State::Connecting;
  port_ = port;
  if (const auto address = NumericAddress(host)) return Found({*address}, 0);
  // To some systems it is a name of this machine.
  host.empty() ? Found({}, kHostNotFound) : SystemLookUp(host);
}

void BufferedSocket::Found(std::vector<Ipv4> addresses, int error) {
  addresses_.assign(addresses.rbegin(), addresses.rend());
  TryNextAddress(error);
}

void BufferedSocket::ConnectFailed(int error) {
  if (state_ != State::Connecting) return;
  SystemClose();
  TryNextAddress(error);
}

void BufferedSocket::TryNextAddress(int error) {
  while (!addresses_.empty()) {
    const Ipv4 address = addresses_.back();
    addresses_.pop_back();
    error = SystemConnect(address, port_);
    if (error == 0) return;
  }
  lastError_ = error;
  later_->Post();
}

bool BufferedSocket::Listen(std::uint16_t port, const std::string& address) {
  Close();
  const auto own = NumericAddress(address);
  lastError_ = own ? SystemListen(*own, port) : kAddressNotAvailable;
  return lastError_ == 0;
}

void BufferedSocket::Connected() {
  state_ = State::Connected;
  addresses_.clear();
  WantsChanged();
  Raise(onConnected);
}

void BufferedSocket::Send(std::string_view bytes) {
  if (state_ != State::Connected || failing_ || bytes.empty()) return;
  // Until the system refuses: only then does every system tell when it can take more.
  while (!WantsToSend() && !bytes.empty()) {
    const Moved moved = SystemSend(bytes.data(), bytes.size());
    if (moved.error != 0) return FailSending(moved.error);
    if (moved.count == 0) break;
    bytes.remove_prefix(moved.count);
  }
  if (Unsent() + bytes.size() > kMostUnsent) return FailSending(kNoBufferSpace);
  if (sent_ > 0 && sent_ >= unsent_.size() / 2) {
    unsent_.erase(0, sent_);
    sent_ = 0;
  }
  unsent_.append(bytes);
  if (WantsToSend()) {
    completing_ = true;
    WantsChanged();
  } else if (onSendComplete) {
    completing_ = true;
    complete_->Post();
  }
}

int BufferedSocket::SendUnsent() {
  while (WantsToSend()) {
    const Moved moved = SystemSend(unsent_.data() + sent_, Unsent());
    sent_ += moved.count;
    if (moved.error != 0) return moved.error;
    if (moved.count == 0) return 0;
  }
  DropUnsent();
  return 0;
}

void BufferedSocket::DropUnsent() {
  unsent_.clear();
  sent_ = 0;
  if (unsent_.capacity() > kMostIdle) unsent_.shrink_to_fit();
}

void BufferedSocket::SendMore() {
  if (!IsOpen() || !WantsToSend()) return;
  if (const int error = SendUnsent(); error != 0) {
    return state_ == State::Closing ? Close() : FailSending(error);
  }
  if (state_ == State::Closing) Linger();
  if (WantsToSend()) return;
  WantsChanged();
  if (state_ == State::Connected) return SendCompleted();
  SystemEndSending();
  CloseIfOver();
}

// Small pieces that are sent one after the other go out some at a time, before it is another
// connection's turn.
void BufferedSocket::SendCompleted() {
  for (int i = 0; i < kCompletedAtOnce; ++i) {
    if (WantsToSend() || !std::exchange(completing_, false)) return;
    complete_->Cancel();
    if (ended_) later_->Post();  // when it is over, even if the handler fails
    if (!Raise(onSendComplete) || !completing_) return;
  }
}

std::string_view BufferedSocket::GetData() {
  if (std::exchange(paused_, false) && state_ == State::Connected) {
    WantsChanged();
    // Where reports are edge-triggered (one for each arrival), this one has come already.
    later_->Post();
  }
  if (kept_.empty()) return std::exchange(fresh_, {});
  KeepArrivals();
  fetched_ = std::exchange(kept_, {});
  return fetched_;
}

void BufferedSocket::KeepArrivals() { kept_ += std::exchange(fresh_, {}); }

// One read for each call, so that a flood on one connection leaves room for the others.
void BufferedSocket::Receive() {
  if (!IsOpen() || paused_) return;
  if (ended_) return CloseIfOver();
  const Moved moved = ReceiveSome();
  if (paused_) return;
  if (moved.count > 0) {
    // A full read leaves more behind, most likely; no report need be waited for.
    if (readingOut_ || failing_ || moved.count == kMostDataPerArrival) later_->Post();
    if (state_ == State::Connected) Raise(onDataArrival);
    return;
  }
  if (moved.error != 0) return Fail(moved.error);
  if (moved.end || readingOut_) {
    ended_ = true;
    WantsChanged();
    CloseIfOver();
  } else if (failing_) {
    Fail(lastError_);
  }
}

BufferedSocket::Moved BufferedSocket::ReceiveSome() {
  SharedArrivals& shared = ground_.arrivals;
  if (shared.user != nullptr) shared.user->KeepArrivals();
  shared.user = this;
  if (state_ == State::Closing) kept_.clear();
  const std::size_t most = IsForData() ? kMostDataPerArrival : kMostPerArrival;
  if (kept_.size() >= most) {
    paused_ = true;
    WantsChanged();
    return {};
  }
  if (!shared.bytes) {
    shared.bytes = std::make_unique_for_overwrite<char[]>(kMostDataPerArrival);
  }
  const Moved moved = SystemReceive(shared.bytes.get(), most - kept_.size());
  if (state_ == State::Connected) fresh_ = {shared.bytes.get(), moved.count};
  return moved;
}

void BufferedSocket::ReceiveRest() {
  readingOut_ = true;
  later_->Post();
}

void BufferedSocket::FailSending(int error) {
  if (state_ == State::Closing) return Close();
  if (state_ != State::Connected || failing_) return;
  failing_ = true;
  lastError_ = error;
  completing_ = false;
  DropUnsent();
  WantsChanged();
  later_->Post();
}

// What has not waited for the system to report it.
void BufferedSocket::GoOnLater() {
  // A peer that lets the buffers fill may go on sending, so this does not wait for its end.
  if (state_ == State::Connecting || (failing_ && lastError_ == kNoBufferSpace)) {
    return Fail(lastError_);
  }
  Receive();
}

// The peer's end has been read; what was sent before that still goes out.
void BufferedSocket::CloseIfOver() {
  if (!ended_ || WantsToSend() || completing_) return;
  if (state_ == State::Closing) return Close();
  End();
  Raise(onClosed);
}

void BufferedSocket::Fail(int error) {
  if (state_ == State::Closing) return Close();
  // In good order after all: it has said so, and does not take the rest.
  const bool closed = ended_;
  DropUnsent();
  End();
  if (closed) {
    Raise(onClosed);
    return;
  }
  state_ = State::Failed;
  lastError_ = error;
  Raise(onError, error);
}

// What has been announced can still be fetched.
void BufferedSocket::End() {
  KeepArrivals();
  std::string kept = std::move(kept_);
  Close();
  kept_ = std::move(kept);
}

void BufferedSocket::CloseGently() {
  if (state_ == State::Closing) return;
  if (state_ != State::Connected || failing_) return Close();
  ++generation_;
  state_ = State::Closing;
  kept_ = {};
  fresh_ = {};
  paused_ = false;
  completing_ = false;
  Linger();
  WantsChanged();
  if (!WantsToSend()) SystemEndSending();
  later_->Post();
}

void BufferedSocket::Linger() {
  if (!linger_) linger_ = ground_.loop.NewTimer([this] { Close(); });
  linger_->Start(kLinger);
}

void BufferedSocket::Close() {
  if (IsOpen()) SendUnsent();
  ++generation_;
  SystemClose();
  state_ = State::Closed;
  addresses_.clear();
  DropUnsent();
  completing_ = false;
  kept_ = {};
  fresh_ = {};
  paused_ = false;
  ended_ = false;
  readingOut_ = false;
  failing_ = false;
  lastError_ = 0;
  complete_->Cancel();
  later_->Cancel();
  if (linger_) linger_->Stop();
}

}  // namespace orvanto
