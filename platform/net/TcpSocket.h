// An event-driven TCP socket: it listens, or it is one end of a connection.
//
// Events come from the loop, never from inside a call, and never after Close or from a destroyed
// socket. Inside an event any call is allowed, Close and Accept included; the socket itself must
// not be destroyed there.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvanto {

class TcpSocket {
 public:
  enum class State { Closed, Listening, Connecting, Connected };
  using RequestId = std::intptr_t;

  // What may wait to be sent. A peer that does not read does not cost more memory than this: the
  // connection ends with onError.
  static constexpr std::size_t kMostUnsent = 4 << 20;
  // The most that one onDataArrival brings.
  static constexpr std::size_t kMostPerArrival = 16 << 10;
  // A peer that is silent for so long is asked by the system whether it is there, again and again;
  // when it never answers, the connection ends with onError.
  static constexpr std::chrono::seconds kSilence{60};
  static constexpr std::chrono::seconds kBetweenQuestions{15};

  virtual ~TcpSocket() = default;

  virtual State GetState() const = 0;

  // Listens on all addresses of this machine; 0 lets the system choose the port. Closes first what
  // was open. False when the system refuses (the port is taken); the socket is closed then.
  virtual bool Listen(std::uint16_t port) = 0;
  virtual std::uint16_t LocalPort() const = 0;  // 0 when closed

  // Takes a connection that onConnectionRequest of this or another socket of the host has
  // announced. Only inside that event: a request that nobody has taken is turned away after it.
  // Closes first what was open, the listener itself too. False when the client has gone.
  virtual bool Accept(RequestId request) = 0;

  // Begins to connect; onConnected or onError follows. The host is a name or an address.
  virtual void Connect(const std::string& host, std::uint16_t port) = 0;

  // Queues the bytes; never blocks. Nothing happens without a connection.
  virtual void Send(std::string_view bytes) = 0;

  // What has arrived since the last call; in onClosed and after it too. While kMostPerArrival wait
  // to be fetched, nothing more is read.
  virtual std::string GetData() = 0;

  // Ends everything at once; what is still queued is handed to the system if it takes it. No event
  // follows.
  virtual void Close() = 0;

  // Numeric addresses; empty without a connection.
  virtual std::string RemoteAddress() const = 0;
  // The address of this machine as others see it, as far as the system tells; "127.0.0.1"
  // otherwise.
  virtual std::string LocalAddress() const = 0;

  std::function<void(RequestId request)> onConnectionRequest;
  std::function<void()> onConnected;
  std::function<void()> onDataArrival;
  // The system has taken everything that was sent since this was set.
  std::function<void()> onSendComplete;
  // The peer has closed. The socket is closed already, and what had arrived has been announced.
  std::function<void()> onClosed;
  // The connection has failed or could not be made. The socket is closed already.
  std::function<void(int systemError)> onError;
};

class SocketHost {
 public:
  virtual ~SocketHost() = default;
  // The host must outlive its sockets.
  virtual std::unique_ptr<TcpSocket> NewSocket() = 0;
};

}  // namespace orvanto
