#include "download/ftp/FtpControl.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "platform/net/SocketError.h"
#include "platform/text/Lines.h"

namespace orvanto {
namespace {

constexpr std::chrono::seconds kBriefly(2);
constexpr std::string_view kNotInAnArgument("\r\n\0", 3);

}  // namespace

FtpControl::FtpControl(const Services& services)
    : services_(services),
      wscControl_(services.sockets.NewSocket(SocketHost::Use::Conversation)),
      timeout_(services.loop) {
  wscControl_->onConnected = [this] { connected_ = true; };
  wscControl_->onDataArrival = [this] { OnArrival(); };
  wscControl_->onClosed = [this] { lost_ = kConnectionReset; };
  wscControl_->onError = [this](int error) { lost_ = error; };
}

bool FtpControl::Open(const std::string& host, std::uint16_t port) {
  Close();
  wscControl_->Connect(host, port);
  return WaitUntil([this] { return connected_; });
}

void FtpControl::Close() {
  wscControl_->Close();
  connected_ = false;
  lost_ = 0;
  incoming_.Clear();
  replies_.clear();
}

void FtpControl::Begin(std::int32_t seconds) {
  timeout_.TimeoutValue = seconds;
  interruption_ = kFtpNoError;
  ForgetError();
}

bool FtpControl::Fail(FtpError error) {
  error_ = std::move(error);
  error_.source = "CFtpConnection." + step_;
  return false;
}

void FtpControl::OnArrival() {
  FtpReplies::Arrived arrived = incoming_.Feed(wscControl_->GetData());
  timeout_.Reset();
  for (FtpReply& reply : arrived.replies) {
    lastResponse_ = reply.text;
    const int code = reply.code;
    if (replies_.size() < kMostReplies) replies_.push_back(std::move(reply));
    services_.replied(code);
  }
  if (!arrived.lines.empty()) services_.report(arrived.lines);
}

void FtpControl::OnTimeout() {
  const Answer answer = services_.messageBoxes.Show(
      "A time-out occurred while communicating with the server.The server took too long to "
      "respond.\r\n\r\nWould you like to wait for server response?",
      "Time out", Buttons::YesNo, BoxIcon::Question);
  timedOut_ = answer != Answer::Yes;
  if (timedOut_) return;
  timeout_.Reset();
  timeout_.StartTimer();
}

bool FtpControl::WaitUntil(const std::function<bool()>& condition) {
  const std::string step = step_;
  const auto over = [&] { return lost_ != 0 || interruption_ != kFtpNoError || condition(); };
  timedOut_ = false;
  // Nobody is asked while only another wait, begun inside this one, keeps it from ending.
  timeout_.Timeout = [this, &over] {
    if (!over()) OnTimeout();
  };
  timeout_.Reset();
  timeout_.StartTimer();
  const auto ended = services_.loop.WaitFor(
      alive_, [&] { return timedOut_ || over(); }, std::nullopt);
  if (ended == EventLoop::Waited::OwnerGone) return false;
  timeout_.StopTimer();
  step_ = step;
  if (interruption_ != kFtpNoError) return Fail(interruption_);
  // What came last counts, even if the connection has gone since.
  if (condition()) return true;
  if (lost_ != 0) return Fail(ErrorOfSocket(lost_));
  return Fail(ended == EventLoop::Waited::Quit ? kFtpBrokenOff : kFtpTimeOut);
}

EventLoop::Waited FtpControl::WaitBriefly(const std::function<bool()>& condition) {
  timeout_.StopTimer();
  return services_.loop.WaitFor(
      alive_, [&] { return !IsConnected() || interruption_ == kFtpBrokenOff || condition(); },
      kBriefly);
}

bool FtpControl::Send(const FtpCommand& command, const std::string& argument,
                      const std::string& shown) {
  // What has come while nobody handled events, too, is no reply.
  const std::weak_ptr<const void> alive = alive_;
  services_.loop.DoEvents();
  if (alive.expired()) return false;
  step_ = std::string("Process") + command.verb + "Command";
  if (argument.find_first_of(kNotInAnArgument) != std::string::npos) return Fail(kFtpBadArgument);
  if (interruption_ != kFtpNoError) return Fail(interruption_);
  if (!IsConnected()) return Fail(kFtpNotConnected);
  incoming_.Clear();
  replies_.clear();
  const auto line = [&command](const std::string& text) {
    return command.verb + (text.empty() ? "" : " " + text) + kCrLf;
  };
  wscControl_->Send(line(argument));
  services_.report(line(shown.empty() ? argument : shown));
  return true;
}

bool FtpControl::TakeReply() {
  if (!WaitUntil([this] { return !replies_.empty(); })) return false;
  reply_ = std::move(replies_.front());
  replies_.pop_front();
  return true;
}

bool FtpControl::Ask(const FtpCommand& command, const std::string& argument) {
  if (!Send(command, argument) || !TakeReply()) return false;
  return reply_.code == command.expected || FailByReply();
}

const FtpReply* FtpControl::NextFinal() {
  while (!replies_.empty() && replies_.front().code / 100 == 1) replies_.pop_front();
  return replies_.empty() ? nullptr : &replies_.front();
}

std::size_t FtpControl::Waiting(std::initializer_list<int> codes) const {
  return static_cast<std::size_t>(
      std::count_if(replies_.begin(), replies_.end(), [&](const FtpReply& reply) {
        return std::find(codes.begin(), codes.end(), reply.code) != codes.end();
      }));
}

}  // namespace orvanto
