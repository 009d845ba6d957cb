// What the TCP sockets of all hosts have in common: the buffers with their limits, the order of the
// last events of a connection, and that nothing is raised for a connection that is over.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/EventLoop.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

// A host derives from it, closes in its destructor, and calls the protected functions from the
// loop. Each of them may have closed the socket, or opened it anew, when it returns.
class BufferedSocket : public TcpSocket {
 public:
  State GetState() const override { return state_; }
  void Send(std::string_view bytes) override;
  std::string GetData() override;
  void Close() override;

 protected:
  // What the system has moved; nothing and no error: it would have had to wait. A receive that
  // comes to the end of the stream says so.
  struct Moved {
    std::size_t count = 0;
    int error = 0;
    bool end = false;
  };

  // `tooMuch` is the system's error for buffers that are full.
  BufferedSocket(EventLoop& loop, int tooMuch) : loop_(loop), tooMuch_(tooMuch) {}

  virtual Moved SystemSend(const char* bytes, std::size_t size) = 0;
  virtual Moved SystemReceive(char* bytes, std::size_t size) = 0;
  virtual void SystemClose() = 0;
  // What a connection waits for has changed: for systems whose reports are level-triggered, that
  // is, come again and again as long as there is something to do.
  virtual void WantsChanged() {}
  bool WantsToReceive() const { return !paused_; }
  bool WantsToSend() const { return unsent_.size() > sent_; }

  void SetState(State state) { state_ = state; }
  // The events of a connection.
  void Connected();
  void Receive();   // there may be something to read
  void SendMore();  // there may be room
  // Nothing more can be sent: the peer has closed, or a send has failed with `error`. What can
  // still be read is announced first, then onClosed or onError is raised.
  void Finish(int error);
  void Fail(int error);       // at once
  void FailLater(int error);  // before there is a connection: from the loop

  // Of what is open; changes with every Close.
  std::uint64_t Generation() const { return generation_; }

  // Raises an event. False when the socket has been closed or opened anew in it.
  template <typename Event, typename... Arguments>
  bool Raise(const Event& event, Arguments... arguments) {
    const std::uint64_t generation = generation_;
    if (auto handler = event) handler(arguments...);
    return generation == generation_;
  }

 private:
  void Later(void (BufferedSocket::*work)());
  void ReceiveLater();
  void ReceiveAsPosted();
  void Pause();
  Moved ReceiveSome();
  int SendUnsent();  // the system's error
  void SendCompleted();
  void FailFull() { Fail(tooMuch_); }
  void FailAsPosted() { Fail(lastError_); }
  void End();

  EventLoop& loop_;
  const int tooMuch_;
  State state_ = State::Closed;
  std::string unsent_;
  std::size_t sent_ = 0;  // of unsent_
  std::string arrived_;
  bool paused_ = false;  // arrived_ is full; GetData goes on
  bool receivePosted_ = false;
  bool completing_ = false;  // onSendComplete is due
  bool finishing_ = false;   // no more sending; see Finish
  int lastError_ = 0;
  std::uint64_t generation_ = 0;
  std::shared_ptr<int> alive_ = std::make_shared<int>();  // for what is posted
};

// The connections of a host that are being announced.
template <typename Owner>
class ConnectionRequests {
 public:
  // Calls announce(id), then drops the connection unless it was taken.
  template <typename Announce>
  void Offer(Owner connection, const Announce& announce) {
    const TcpSocket::RequestId id = ++last_;
    struct Forget {
      ~Forget() { all.erase(id); }
      std::map<TcpSocket::RequestId, Owner>& all;
      TcpSocket::RequestId id;
    } const forget{waiting_, id};
    waiting_.emplace(id, std::move(connection));
    announce(id);
  }

  // No connection when there is none of that number.
  Owner Take(TcpSocket::RequestId id) {
    const auto found = waiting_.find(id);
    return found == waiting_.end() ? Owner() : std::exchange(found->second, Owner());
  }

 private:
  std::map<TcpSocket::RequestId, Owner> waiting_;
  TcpSocket::RequestId last_ = 0;
};

}  // namespace orvanto
