// The control connection of the FTP client: commands, their replies, and the waits between them.
//
// A function that waits handles events meanwhile. It returns whether it got what it waited for; the
// error tells what it did not. This object may be destroyed inside: false comes back then as well,
// and Alive() has expired.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>

#include "download/ftp/CTimeout.h"
#include "download/ftp/FtpErrors.h"
#include "download/ftp/FtpReplies.h"
#include "platform/MessageBoxes.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

struct FtpCommand {
  const char* verb;
  int expected;  // the code of its reply
};

class FtpControl {
 public:
  struct Services {
    EventLoop& loop;
    SocketHost& sockets;
    MessageBoxes& messageBoxes;
    std::function<void(const std::string& lines)> report;  // of both sides
    std::function<void(int code)> replied;                 // before the reply is taken
  };
  explicit FtpControl(const Services& services);

  std::weak_ptr<const void> Alive() const { return alive_; }

  // Closes what was open, connects and waits for that.
  bool Open(const std::string& host, std::uint16_t port);
  void Close();
  bool IsConnected() const { return wscControl_->GetState() == TcpSocket::State::Connected; }
  std::string OwnAddress() const { return wscControl_->BoundAddress(); }
  std::string ServerAddress() const { return wscControl_->RemoteAddress(); }

  // For a method that begins: forgets the error and the interruption. `seconds` is what it waits
  // for a sign of life before somebody is asked.
  void Begin(std::int32_t seconds);
  // Lets every wait of the method that runs fail with that error.
  void Interrupt(FtpErrorNumber why) { interruption_ = why; }

  // The step that errors name as their source.
  const std::string& Step() const { return step_; }
  void SetStep(const std::string& step) { step_ = step; }
  // Always false.
  bool Fail(FtpError error);
  bool Fail(FtpErrorNumber number) { return Fail(ErrorOfFtp(number)); }
  bool FailByReply() { return Fail(ErrorOfReply(reply_.code)); }
  const FtpError& LastError() const { return error_; }
  void ForgetError() { error_ = {}; }

  // Handles what is pending, which is no reply to it, and sends a command, of which `shown` is
  // reported where it is to differ.
  bool Send(const FtpCommand& command, const std::string& argument = {},
            const std::string& shown = {});
  bool TakeReply();
  // Both, and the reply is the expected one.
  bool Ask(const FtpCommand& command, const std::string& argument = {});

  // The reply that was taken last, and the last one that came.
  const FtpReply& Reply() const { return reply_; }
  const std::string& LastResponse() const { return lastResponse_; }
  // The next one that nobody has taken, beyond those that only announce another; null for none.
  const FtpReply* NextFinal();
  std::size_t Waiting(std::initializer_list<int> codes) const;
  void PutBack() { replies_.push_front(reply_); }

  // Something has come, if not here: the server is alive.
  void KeepWaiting() { timeout_.Reset(); }
  bool WaitUntil(const std::function<bool()>& condition);
  // For two seconds at most; asks nobody and sets no error.
  EventLoop::Waited WaitBriefly(const std::function<bool()>& condition);

 private:
  // Nobody asks for more than a few.
  static constexpr std::size_t kMostReplies = 64;

  void OnArrival();
  void OnTimeout();

  const Services services_;
  const std::unique_ptr<TcpSocket> wscControl_;
  CTimeout timeout_;
  bool connected_ = false;  // once
  bool timedOut_ = false;   // and nobody wants to wait
  int lost_ = 0;            // the connection, with that error
  FtpErrorNumber interruption_ = kFtpNoError;
  FtpReplies incoming_;
  std::deque<FtpReply> replies_;  // that nobody has taken
  FtpReply reply_;
  std::string lastResponse_;
  FtpError error_;
  std::string step_;
  const std::shared_ptr<char> alive_ = std::make_shared<char>();
};

}  // namespace orvanto
