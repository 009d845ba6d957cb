// What is known of one client of the FTP server.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orvanto {

class FtpPolicy;

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
  std::int32_t dataPort = 0;     // 0 before PORT, and after PASV
  std::string transferPath;      // of the file that is sent or received
  std::uint64_t transferLength = 0;
  std::uint64_t bytesSent = 0;

  std::shared_ptr<const FtpPolicy> policy;  // that the connection began with; none: not in use
  bool loggedIn = false;
  std::uint64_t restartAt = 0;  // of the next RETR
  bool onlyEpsv = false;        // the client has said that it sets up data connections so
};

}  // namespace orvanto
