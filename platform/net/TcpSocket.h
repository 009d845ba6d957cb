// An event-driven TCP socket over IPv4: it listens, or it is one end of a connection.
//
// Events come from the loop, never from inside a call, and never after Close or from a destroyed
// socket. Inside an event any call is allowed, Close and Accept included; the socket itself must
// not be destroyed there.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvanto {

class TcpSocket {
 public:
  // Closing: see CloseGently. Failed: as Closed, after onError and until something is opened or
  // Close is called.
  enum class State { Closed, Listening, Connecting, Connected, Closing, Failed };
  using RequestId = std::intptr_t;

  // What may wait to be sent. A peer that does not read does not cost more memory than this: the
  // connection ends with onError.
  static constexpr std::size_t kMostUnsent = 4 << 20;
  // The most that one onDataArrival brings, by the socket's use.
  static constexpr std::size_t kMostPerArrival = 16 << 10;
  static constexpr std::size_t kMostDataPerArrival = 256 << 10;
  // A peer that is silent for so long is asked by the system whether it is there, again and again;
  // when it never answers, the connection ends with onError.
  static constexpr std::chrono::seconds kSilence{60};
  static constexpr std::chrono::seconds kBetweenQuestions{15};
  // How long CloseGently waits for a peer that takes nothing more and does not close.
  static constexpr std::chrono::seconds kLinger{30};

  virtual ~TcpSocket() = default;

  virtual State GetState() const = 0;

  // Listens on one numeric address of this machine, or on all; port 0 lets the system choose.
  // Closes first what was open. False when the system refuses (the port is taken, or no such
  // address); the socket is closed then, and LastError tells why.
  static constexpr const char* kAllAddresses = "0.0.0.0";
  virtual bool Listen(std::uint16_t port, const std::string& address) = 0;
  bool Listen(std::uint16_t port) { return Listen(port, kAllAddresses); }

  // The error (SocketError) with which Listen was refused or the connection ended; 0 for none.
  virtual int LastError() const = 0;

  // Of a listener or a connection: where this end is bound. 0 and an empty text otherwise.
  virtual std::uint16_t LocalPort() const = 0;
  virtual std::string BoundAddress() const = 0;

  // Takes a connection that onConnectionRequest of this or another socket of the host has
  // announced. Only inside that event: a request that nobody has taken is turned away after it.
  // Closes first what was open, the listener itself too. False when the client has gone.
  virtual bool Accept(RequestId request) = 0;

  // Begins to connect; onConnected or onError follows, always by event. The host is a numeric
  // address, or a name: all its addresses are tried, one after the other. Looking a name up blocks
  // nothing, and Close takes it back.
  virtual void Connect(const std::string& host, std::uint16_t port) = 0;

  // Queues the bytes; never blocks. Nothing happens without a connection.
  virtual void Send(std::string_view bytes) = 0;

  // What has arrived since the last call; in onClosed and after it too. It is the socket's memory,
  // and stays valid until events are handled or a member that is not const is called. While the
  // most that one arrival brings waits to be fetched, nothing more is read.
  virtual std::string_view GetData() = 0;

  // Ends everything at once; what is still queued is handed to the system if it takes it. No event
  // follows.
  virtual void Close() = 0;

  // Ends a connection so that the peer gets all that was sent: sends the rest, says that no more
  // comes, and drops what still arrives until the peer has closed as well. Closing meanwhile, then
  // Closed; no event follows. What is no connection is closed at once. A second call changes
  // nothing; Close, and the socket's end, cut it short.
  virtual void CloseGently() = 0;

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
  // The peer has closed. What had arrived has been announced, what was sent before has gone out as
  // far as the peer took it, and the socket is closed already.
  std::function<void()> onClosed;
  // The connection has failed or could not be made. The state is Failed already.
  std::function<void(int error)> onError;
};

class SocketHost {
 public:
  virtual ~SocketHost() = default;
  // What is sent for a conversation goes out at once, and arrives in small pieces; data are put
  // together to full packets on their way (Nagle's algorithm) and arrive in large ones.
  enum class Use { Conversation, Data };
  // The host must outlive its sockets.
  virtual std::unique_ptr<TcpSocket> NewSocket(Use use) = 0;
};

}  // namespace orvanto
