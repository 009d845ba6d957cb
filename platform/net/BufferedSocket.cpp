#include "platform/net/BufferedSocket.h"

namespace orvanto {

// From the loop, unless what is open now has been closed by then.
void BufferedSocket::Later(void (BufferedSocket::*work)()) {
  loop_.Post([this, work, generation = generation_, alive = std::weak_ptr<int>(alive_)] {
    if (!alive.expired() && generation == generation_) (this->*work)();
  });
}

void BufferedSocket::Send(std::string_view bytes) {
  if (state_ != State::Connected || finishing_ || bytes.empty()) return;
  // Until the system refuses: only then does every system tell when it can take more.
  while (!WantsToSend() && !bytes.empty()) {
    const Moved moved = SystemSend(bytes.data(), bytes.size());
    if (moved.error != 0) return Finish(moved.error);
    if (moved.count == 0) break;
    bytes.remove_prefix(moved.count);
  }
  if (unsent_.size() - sent_ + bytes.size() > kMostUnsent) {
    // The peer may go on sending, so this does not wait for its end.
    Finish(tooMuch_);
    return Later(&BufferedSocket::FailFull);
  }
  if (sent_ > 0 && sent_ >= unsent_.size() / 2) {
    unsent_.erase(0, sent_);
    sent_ = 0;
  }
  unsent_.append(bytes);
  if (WantsToSend()) {
    completing_ = true;
    WantsChanged();
  } else if (onSendComplete && !std::exchange(completing_, true)) {
    Later(&BufferedSocket::SendCompleted);
  }
}

int BufferedSocket::SendUnsent() {
  while (WantsToSend()) {
    const Moved moved = SystemSend(unsent_.data() + sent_, unsent_.size() - sent_);
    sent_ += moved.count;
    if (moved.error != 0) return moved.error;
    if (moved.count == 0) return 0;
  }
  unsent_.clear();
  sent_ = 0;
  return 0;
}

void BufferedSocket::SendMore() {
  if (state_ != State::Connected || !WantsToSend()) return;
  if (const int error = SendUnsent(); error != 0) return Finish(error);
  if (WantsToSend()) return;
  WantsChanged();
  SendCompleted();
}

void BufferedSocket::SendCompleted() {
  if (!WantsToSend() && std::exchange(completing_, false)) Raise(onSendComplete);
}

std::string BufferedSocket::GetData() {
  if (std::exchange(paused_, false) && state_ == State::Connected) {
    WantsChanged();
    // Where reports are edge-triggered (one for each arrival), this one has come already.
    ReceiveLater();
  }
  return std::exchange(arrived_, {});
}

void BufferedSocket::ReceiveLater() {
  if (!std::exchange(receivePosted_, true)) Later(&BufferedSocket::ReceiveAsPosted);
}

void BufferedSocket::ReceiveAsPosted() {
  receivePosted_ = false;
  Receive();
}

void BufferedSocket::Pause() {
  paused_ = true;
  WantsChanged();
}

void BufferedSocket::Connected() {
  state_ = State::Connected;
  WantsChanged();
  Raise(onConnected);
}

// One read for each call, so that a flood on one connection leaves room for the others.
void BufferedSocket::Receive() {
  if (state_ != State::Connected || paused_) return;
  if (arrived_.size() == kMostPerArrival) return Pause();
  const Moved moved = ReceiveSome();
  if (moved.count > 0) {
    // The system reports nothing more of a connection that is finishing: it reads on by itself.
    if (finishing_) ReceiveLater();
    Raise(onDataArrival);
    return;
  }
  // Nothing is left to read. A failed read ends the connection; one that is finishing ends with the
  // error that ended its sending, unless the peer has closed in good order.
  const int error = moved.error != 0 ? moved.error : finishing_ && !moved.end ? lastError_ : 0;
  if (error != 0) {
    Fail(error);
  } else if (moved.end || finishing_) {
    End();
    Raise(onClosed);
  }
}

// The buffer is not on the stack, because the events of sockets may nest.
BufferedSocket::Moved BufferedSocket::ReceiveSome() {
  const std::size_t room = kMostPerArrival - arrived_.size();
  const auto buffer = std::make_unique_for_overwrite<char[]>(room);
  const Moved moved = SystemReceive(buffer.get(), room);
  arrived_.append(buffer.get(), moved.count);
  return moved;
}

void BufferedSocket::Finish(int error) {
  if (state_ != State::Connected || finishing_) return;
  finishing_ = true;
  lastError_ = error;
  completing_ = false;
  if (error != 0) {
    unsent_ = {};
    sent_ = 0;
  }
  WantsChanged();
  ReceiveLater();
}

void BufferedSocket::Fail(int error) {
  unsent_ = {};
  sent_ = 0;
  End();
  Raise(onError, error);
}

void BufferedSocket::FailLater(int error) {
  state_ = State::Connecting;
  lastError_ = error;
  Later(&BufferedSocket::FailAsPosted);
}

// What has been announced can still be fetched.
void BufferedSocket::End() {
  std::string arrived = std::move(arrived_);
  Close();
  arrived_ = std::move(arrived);
}

void BufferedSocket::Close() {
  if (state_ == State::Connected) SendUnsent();
  ++generation_;
  SystemClose();
  state_ = State::Closed;
  unsent_ = {};
  sent_ = 0;
  arrived_ = {};
  paused_ = false;
  receivePosted_ = false;
  completing_ = false;
  finishing_ = false;
  lastError_ = 0;
}

}  // namespace orvanto
