// What the TCP sockets of all hosts have in common: the buffers with their limits, the addresses of
// a name one after the other, the order of the last events of a connection, and that nothing is
// raised for a connection that is over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/EventLoop.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

class BufferedSocket;

// What all sockets of a host receive into, one after the other. What a socket has not fetched when
// another receives becomes its own.
struct SharedArrivals {
  std::unique_ptr<char[]> bytes;  // TcpSocket::kMostDataPerArrival, made when the first arrive
  BufferedSocket* user = nullptr;
};

// What the sockets of a host share.
struct SocketGround {
  EventLoop& loop;
  SharedArrivals& arrivals;
};

// In host byte order.
using Ipv4 = std::uint32_t;

// A host derives from it, closes in its destructor, and calls the protected functions from the
// loop. Each of them may have closed the socket, or opened it anew, when it returns.
class BufferedSocket : public TcpSocket {
 public:
  ~BufferedSocket() override;
  State GetState() const override { return state_; }
  int LastError() const override { return lastError_; }
  bool Listen(std::uint16_t port, const std::string& address) override;
  void Connect(const std::string& host, std::uint16_t port) override;
  void Send(std::string_view bytes) override;
  std::string_view GetData() override;
  void Close() override;
  void CloseGently() override;

 protected:
  // All errors are SocketErrors. What the system has moved; nothing and no error: it would have had
  // to wait. A receive that comes to the end of the stream says so.
  struct Moved {
    std::size_t count = 0;
    int error = 0;
    bool end = false;
  };

  BufferedSocket(const SocketGround& ground, SocketHost::Use use);

  // Listens, or returns why not.
  virtual int SystemListen(Ipv4 address, std::uint16_t port) = 0;
  // Of a name. Calls Found, at once or from the loop and then not after SystemClose.
  virtual void SystemLookUp(const std::string& host) = 0;
  // Begins to connect. Connected or ConnectFailed follows unless it returns an error.
  virtual int SystemConnect(Ipv4 address, std::uint16_t port) = 0;
  virtual Moved SystemSend(const char* bytes, std::size_t size) = 0;
  virtual Moved SystemReceive(char* bytes, std::size_t size) = 0;
  virtual void SystemEndSending() = 0;
  virtual void SystemClose() = 0;
  // What a connection waits for has changed: for systems whose reports are level-triggered, that
  // is, come again and again as long as there is something to do.
  virtual void WantsChanged() {}
  bool WantsToReceive() const { return !paused_ && !ended_; }
  bool WantsToSend() const { return unsent_.size() > sent_; }
  bool IsForData() const { return use_ == SocketHost::Use::Data; }

  void SetState(State state) { state_ = state; }

  // No address: the name is not known, for the reason `error`.
  void Found(std::vector<Ipv4> addresses, int error);
  // The events of a connection.
  void Connected();
  void ConnectFailed(int error);
  void Receive();   // there may be something to read
  void SendMore();  // there may be room
  // The system will report nothing more to read: all that is there, and the end.
  void ReceiveRest();
  // A send has failed. What can still be read is announced first, then onError is raised, or
  // onClosed where the peer has closed in good order.
  void FailSending(int error);

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
  bool IsOpen() const { return state_ == State::Connected || state_ == State::Closing; }
  void TryNextAddress(int error);
  Moved ReceiveSome();
  void KeepArrivals();
  std::size_t Unsent() const { return unsent_.size() - sent_; }
  void DropUnsent();
  int SendUnsent();  // the error
  void SendCompleted();
  void CloseIfOver();
  void Linger();
  void GoOnLater();
  void End();
  void Fail(int error);

  const SocketGround ground_;
  const SocketHost::Use use_;
  State state_ = State::Closed;

  std::vector<Ipv4> addresses_;  // still to be tried, the first one last
  std::uint16_t port_ = 0;

  std::string unsent_;
  std::size_t sent_ = 0;     // of unsent_
  bool completing_ = false;  // onSendComplete is due

  std::string_view fresh_;  // in the shared memory, not fetched yet
  std::string kept_;        // what came before that
  std::string fetched_;     // what GetData has handed out of kept_
  bool paused_ = false;     // enough waits to be fetched; GetData goes on

  bool ended_ = false;       // the peer sends nothing more
  bool readingOut_ = false;  // see ReceiveRest
  bool failing_ = false;     // see FailSending
  int lastError_ = 0;
  std::uint64_t generation_ = 0;
  const std::unique_ptr<Deferred> complete_;
  const std::unique_ptr<Deferred> later_;
  std::unique_ptr<Timer> linger_;  // made when it is needed
};

}  // namespace orvanto
