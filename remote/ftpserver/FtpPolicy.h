// What the FTP server decides in more than one way. A connection keeps the policy that it began
// with.
#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/net/LineAssembler.h"
#include "remote/ftpserver/ClientRecord.h"
#include "remote/ftpserver/client_control.h"

namespace orvanto {

// This one is the default: it is as open as the program has always been, and knows no limit of
// time (0).
class FtpPolicy {
 public:
  virtual ~FtpPolicy() = default;

  // As it is set: it may be no port.
  virtual std::string ListeningPort() const { return "22"; }
  // Of what somebody who switches the server on should know; empty: nothing.
  virtual std::string Warning() const { return ""; }

  virtual LineAssembler::Policy LineEnds() const { return LineAssembler::Policy::Commands; }
  // The command in the first word of a line.
  virtual std::string_view CommandOf(std::string_view word) const { return word; }
  // Come before those that all clients have.
  virtual std::span<const FtpClient::Command> MoreCommands() const { return {}; }
  // Of a command that there is none of; empty: nothing is sent.
  virtual std::string ReplyToUnknown() const { return ""; }

  // `command` is in capitals; empty: there is none of that name.
  virtual bool IsAllowedBeforeLogin(std::string_view) const { return true; }
  virtual bool TakesLoginsHereOnly() const { return false; }  // from this computer
  virtual bool SlowsFailedLogins() const { return false; }
  // Without a command, or a byte of a transfer.
  virtual std::chrono::milliseconds IdleLimit() const { return {}; }

  // Whether the folder could be changed. Nothing ever changes, and that counts as done.
  virtual bool ChangeDirectory(const std::string&) const { return true; }
  // Of a file or folder as the client names it; empty: it may not be reached. Nothing keeps it
  // below the root folder.
  virtual std::string PathOf(const Files&, const ClientRecord& client,
                             const std::string& name) const {
    return client.currentFolder + name;
  }
  // What was in a file that is stored anew goes; otherwise it stays behind what is stored.
  virtual bool ReplacesFiles() const { return false; }

  virtual int LowestDataPort() const { return 1; }
  virtual int HighestDataPort() const { return 32767; }
  // Whether the client's data may go to that address, and come from there.
  virtual bool TrustsDataPeer(const ClientRecord&, const std::string&) const { return true; }
  // Until there is a data connection.
  virtual std::chrono::milliseconds DataLimit() const { return {}; }
};

// By the switches. The settings must outlive it: what is no switch is read when it is needed.
std::shared_ptr<const FtpPolicy> MakeFtpPolicy(const RemoteSettings& remote);

}  // namespace orvanto
