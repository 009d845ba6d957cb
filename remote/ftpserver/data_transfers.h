// The data connection of one FTP client, and the one transfer that may run over it. The server
// connects to the client. Waiting for that is a state of the transfer, without a time limit of its
// own: what comes after it is done when the connection is there.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/File.h"
#include "platform/net/TcpSocket.h"
#include "remote/ftpserver/client_control.h"

namespace orvanto {

class DataTransfer {
 public:
  struct Services {
    SocketHost& sockets;
    Files& files;
    std::function<void(const std::string&)> log;
    std::function<void(const std::string&)> reply;
    // Another transfer may begin. May be called from inside the calls that begin one.
    std::function<void()> ended;
  };
  // The record belongs to the client and outlives this.
  DataTransfer(const Services& services, ClientRecord& record);

  bool Running() const { return task_ != Task::None; }
  // What runs and how far, for people; empty when nothing does.
  std::string Describe() const;

  // Each connects to the client's data port, does its work and ends with a reply. Not while another
  // runs.
  void SendListing() { Begin(Task::List, {}); }
  void SendFile(const std::string& path) { Begin(Task::Send, path); }
  void ReceiveFile(const std::string& path) { Begin(Task::Receive, path); }

  // Ends it at once, without a reply.
  void Cancel();

 private:
  enum class Task { None, List, Send, Receive };

  void Begin(Task task, const std::string& path);
  void OnConnected();
  void SendNext();
  void SendChunk();
  void OnArrival();
  void Fail(const std::string& what);
  void Forget();
  void End(const std::string& reply);

  const Services services_;
  ClientRecord& record_;
  const std::unique_ptr<TcpSocket> dataSock_;
  Task task_ = Task::None;
  bool connected_ = false;
  std::unique_ptr<File> file_;
  std::string listing_;
  std::size_t listed_ = 0;      // of it
  std::uint64_t received_ = 0;  // into the file, from its beginning
};

}  // namespace orvanto
