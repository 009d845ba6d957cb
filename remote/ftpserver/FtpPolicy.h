// What the FTP server decides in more than one way. A connection keeps the policy that it began
// with.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/net/TcpSocket.h"
#include "remote/ftpserver/client_control.h"

namespace orvanto {

// This one is the default: it is as open as the program has always been.
class FtpPolicy {
 public:
  virtual ~FtpPolicy() = default;

  virtual std::uint16_t ListeningPort() const { return 22; }
  virtual std::string ListeningAddress() const { return TcpSocket::kAllAddresses; }

  // Of a command that there is none of; empty: nothing is sent.
  virtual std::string ReplyToUnknown() const { return ""; }
  // `command` is in capitals.
  virtual bool IsAllowedBeforeLogin(std::string_view) const { return true; }
  virtual int HighestDataPort() const { return 32767; }
  // Whether the folder could be changed. Nothing ever changes, and that counts as done.
  virtual bool ChangeDirectory(ClientRecord&, const std::string&) const { return true; }
  // Of a file or folder as the client names it. Nothing keeps it below the root folder.
  virtual std::string PathOf(const ClientRecord& client, const std::string& name) const {
    return client.currentFolder + name;
  }
};

}  // namespace orvanto
