// One client of the FTP server: what is known of it, and the commands that it sends.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "platform/Clock.h"
#include "platform/net/LineAssembler.h"
#include "platform/net/TcpSocket.h"

namespace orvanto {

class DataTransfer;
class Files;
class FtpPolicy;
struct RemoteSettings;

// Lives in the client table, one for each index.
struct ClientRecord {
  std::string userName;
  std::string password;
  std::string address;
  std::string spare1;
  std::string spare2;
  std::int16_t socketIndex = 0;
  std::string rootFolder;
  std::string currentDirectory;  // as it is shown to the client
  std::string currentFolder;     // where file commands work
  std::int32_t dataPort = 0;     // 0 before PORT
  std::string transferPath;      // of the file that is sent or received
  std::uint64_t transferLength = 0;
  std::uint64_t bytesSent = 0;
};

class FtpClient {
 public:
  // What all clients share.
  struct Services {
    SocketHost& sockets;
    Files& files;
    const Clock& clock;
    const RemoteSettings& remote;
    std::function<void(const std::string&)> log;
    std::function<void()> announceServer;  // after QUIT
  };
  FtpClient(const Services& services, std::int16_t index);
  ~FtpClient();

  // From the acceptance until the connection has closed.
  bool InUse() const { return policy_ != nullptr; }
  // Whether the goodbye to a former client has reached it.
  bool IsFree() const;

  // Only inside the event that announces the request. Nothing happens when the client has gone.
  void Accept(TcpSocket::RequestId request, const FtpPolicy& policy, const std::string& rootFolder,
              const std::string& greeting);
  // Closes what is open; the record is cleared.
  void Drop();

  const ClientRecord& Record() const { return record_; }
  // Who it is, since when, and what is being transferred, for people.
  std::string Describe() const;

 private:
  // An endless line is cut here.
  static constexpr std::size_t kLongestLine = 4 << 10;
  // Commands that wait for the end of a transfer. Who sends more has to go: whoever stops reading
  // would not see him go either.
  static constexpr std::size_t kMostWaiting = 256;

  using Argument = const std::string&;
  struct Command {
    const char* name;
    void (FtpClient::*run)(Argument);
    bool (FtpClient::*disturbs)(Argument) const;  // a transfer that runs; null: it never does
  };
  static const Command kCommands[];

  void GoOn();
  bool RunWaiting();
  bool TakePiece();
  enum class Order { Fresh, Waited };
  void OnLine(const std::string& line, Order order);
  void Reply(const std::string& text);
  void ReplyWhether(bool done, const std::string& reply, const std::string& failure);
  void EndRecord();

  bool Always(Argument) const { return true; }
  bool IsOfTransfer(Argument name) const;

  void User(Argument name);
  void Pass(Argument password);
  void Type(Argument type);
  void Rest(Argument offset);
  void Pwd(Argument);
  void Cwd(Argument folder);
  void Port(Argument numbers);
  void List(Argument);
  void Stor(Argument name);
  void Retr(Argument name);
  void Ok(Argument);
  void Dele(Argument name);
  void Rmd(Argument name);
  void Mkd(Argument name);
  void Quit(Argument);
  void SayGoodbye(const std::string& reply);

  const Services services_;
  const std::unique_ptr<TcpSocket> commandSock_;
  const FtpPolicy* policy_ = nullptr;  // none: not in use
  ClientRecord record_;
  DateTime since_;
  bool loggedIn_ = false;
  LineAssembler lines_{LineAssembler::Policy::Commands, kLongestLine};
  std::deque<std::string> waiting_;
  bool goingOn_ = false;
  const std::unique_ptr<DataTransfer> transfer_;
};

}  // namespace orvanto
