// One client of the FTP server: what is known of it, and the commands that it sends.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "platform/Clock.h"
#include "platform/EventLoop.h"
#include "platform/net/LineAssembler.h"
#include "platform/net/TcpSocket.h"
#include "remote/ftpserver/ClientRecord.h"

namespace orvanto {

class DataTransfer;
class FailedLogins;
class Files;
struct RemoteSettings;

class FtpClient {
 public:
  // What all clients share.
  struct Services {
    EventLoop& loop;
    SocketHost& sockets;
    Files& files;
    const Clock& clock;
    const RemoteSettings& remote;
    FailedLogins& failedLogins;
    std::function<void(const std::string&)> log;
    std::function<void()> announceServer;  // after QUIT
  };
  FtpClient(const Services& services, std::int16_t index);
  ~FtpClient();

  // From the acceptance until the connection has closed.
  bool InUse() const { return record_.policy != nullptr; }
  // Whether the goodbye to a former client has reached it.
  bool IsFree() const;

  // Only inside the event that announces the request. Nothing happens when the client has gone.
  void Accept(TcpSocket::RequestId request, std::shared_ptr<const FtpPolicy> policy,
              const std::string& rootFolder, const std::string& greeting);
  // Closes what is open; the record is cleared.
  void Drop();

  const ClientRecord& Record() const { return record_; }
  // Who it is, since when, and what is being transferred, for people.
  std::string Describe() const;

  using Argument = const std::string&;
  struct Command {
    const char* name;
    void (FtpClient::*run)(Argument);
    bool (FtpClient::*disturbs)(Argument) const;  // a transfer that runs; null: it never does
  };
  // Those that only today's clients have, and those that do more for them.
  static std::span<const Command> TodaysCommands();

 private:
  // An endless line is cut here.
  static constexpr std::size_t kLongestLine = 4 << 10;
  // Commands that wait for the end of a transfer. Who sends more has to go: whoever stops reading
  // would not see him go either.
  static constexpr std::size_t kMostWaiting = 256;

  static constexpr const char* kSyntaxError = "501 Syntax error in parameters or arguments.";
  static constexpr const char* kNoSuchFile = ": No such file or directory";
  static const Command kCommands[];
  static const Command kTodaysCommands[];

  void GoOn();
  bool RunWaiting();
  bool TakePiece();
  enum class Order { Fresh, Waited };
  void OnLine(const std::string& line, Order order);
  const Command* Find(std::string_view name) const;
  // Does that later; the client's commands wait meanwhile.
  void Pause(std::chrono::milliseconds time, void (FtpClient::*then)());
  // Something has happened: the time until it is idle begins anew.
  void Stir();
  void Reply(const std::string& text);
  void ReplyWhether(bool done, const std::string& reply, const std::string& failure);
  void EndRecord();

  std::string PathOf(Argument name) const;
  bool Always(Argument) const { return true; }
  bool IsOfTransfer(Argument name) const;

  void User(Argument name);
  void Pass(Argument password);
  void LogIn();
  void Refuse();
  void Type(Argument type);
  void Rest(Argument offset);
  void Pwd(Argument);
  void Cwd(Argument folder);
  void Cdup(Argument);
  void Port(Argument numbers);
  void SetDataPort(const std::string& address, int port);
  void List(Argument);
  void Stor(Argument name);
  void Retr(Argument name);
  void Ok(Argument);
  void Dele(Argument name);
  void Rmd(Argument name);
  void Mkd(Argument name);
  void Quit(Argument);
  void SayGoodbye(const std::string& reply);
  // In todays_commands.cpp
  void Feat(Argument);
  void Opts(Argument option);
  void Size(Argument name);
  void Mdtm(Argument name);
  void RestAt(Argument offset);
  void ListMatching(Argument what);
  void Nlst(Argument what);
  void Eprt(Argument where);
  void Pasv(Argument);
  void Epsv(Argument protocol);
  std::uint16_t ListenForData();
  void Abor(Argument);

  const Services services_;
  const std::unique_ptr<TcpSocket> commandSock_;
  ClientRecord record_;
  DateTime since_;
  LineAssembler lines_{LineAssembler::Policy::Commands, kLongestLine};  // by the policy, in use
  std::deque<std::string> waiting_;
  bool goingOn_ = false;
  void (FtpClient::*afterPause_)() = nullptr;
  const std::unique_ptr<Timer> pause_;
  const std::unique_ptr<Timer> idle_;
  const std::unique_ptr<DataTransfer> transfer_;
};

}  // namespace orvanto
