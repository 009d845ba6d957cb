// The data connection of one FTP client, and the one transfer that may run over it. The server
// connects to the client, or the client to the server (then it may do so before it says what for).
// Waiting for that is a state of the transfer, with no other time limit than that of the client's
// policy: what comes after it is done when the connection is there.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/EventLoop.h"
#include "platform/File.h"
#include "platform/net/TcpSocket.h"
#include "remote/ftpserver/ClientRecord.h"
#include "remote/ftpserver/file_control.h"

namespace orvanto {

class DataTransfer {
 public:
  struct Services {
    EventLoop& loop;
    SocketHost& sockets;
    Files& files;
    std::function<void(const std::string&)> log;
    std::function<void(const std::string&)> reply;
    std::function<void()> moved;  // some bytes
    // Another transfer may begin. May be called from inside the calls that begin one.
    std::function<void()> ended;
  };
  // The record belongs to the client and outlives this.
  DataTransfer(const Services& services, ClientRecord& record);

  bool Running() const { return task_ != Task::None; }
  // What runs and how far, for people; empty when nothing does.
  std::string Describe() const;

  // How the next data connections are made. Not while a transfer runs. The server listens for one
  // connection and for one transfer, on a port that it returns, or 0 where it cannot.
  void ConnectTo(int port);
  std::uint16_t ListenOn(const std::string& address);

  // Each waits for its data connection, does its work and ends with a reply. Not while another
  // runs.
  void SendListing(const ListingForm& form);
  void SendFile(const std::string& path, std::uint64_t offset);
  void ReceiveFile(const std::string& path) { Begin(Task::Receive, path); }

  // Ends it at once, without a reply; with one.
  void Cancel();
  void Abort();

 private:
  enum class Task { None, List, Send, Receive };

  void Begin(Task task, const std::string& path);
  void StartClock();
  void OnRequest(TcpSocket::RequestId request);
  void OnConnected();
  void Start();
  bool OpenToReceive();
  void SendNext();
  void SendChunk();
  void OnArrival();
  void Fail(const std::string& what);
  void ForgetConnection();
  void NobodyComes(int error);
  void Forget();
  void End(const std::string& reply);

  const Services services_;
  ClientRecord& record_;
  const std::unique_ptr<TcpSocket> dataSock_;
  const std::unique_ptr<TcpSocket> listener_;
  const std::unique_ptr<Timer> clock_;  // runs while a data connection is waited for
  Task task_ = Task::None;
  bool connected_ = false;  // may be before there is a task
  std::unique_ptr<File> file_;
  ListingForm form_;
  std::string listing_;
  std::size_t listed_ = 0;      // of it
  std::uint64_t received_ = 0;  // into the file, from its beginning
};

}  // namespace orvanto
