// An FTP client on the program's one thread. Every method that speaks to the server sends its
// commands and handles events until it has been answered; it returns whether all went well, and
// the last error tells what did not.
//
// One method runs at a time: another one fails, but BreakeConnection, DoEvents2 and, while a
// transfer runs, CancelTransfer. The object may be destroyed while a method waits, though not in an
// event of its own: the method returns false then and touches nothing any more.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "download/ftp/CFTPFiles.h"
#include "download/ftp/FtpControl.h"
#include "download/ftp/FtpTransfer.h"

namespace orvanto {

class CFtpConnection {
 public:
  struct Services {
    EventLoop& loop;
    SocketHost& sockets;
    Files& files;
    const Clock& clock;
    MessageBoxes& messageBoxes;  // asks whether to wait longer for the server
  };
  enum class Type : char { Binary = 'I', Ascii = 'A' };
  enum class State {
    ResolvingHost,
    HostResolved,
    Connected,
    Authentication,
    UserLoggedIn,
    EstablishingDataConnection,  // only where the server connects
    DataConnectionEstablished,
    RetrievingDirectory,
    DirectoryCompleted,
    TransferStarting,
    TransferCompleted,
  };

  // What the services refer to must outlive it.
  explicit CFtpConnection(const Services& services);
  CFtpConnection(const CFtpConnection&) = delete;
  CFtpConnection& operator=(const CFtpConnection&) = delete;

  std::string FtpServer;             // a name or a numeric address
  std::uint16_t FtpServerPort = 21;  // from 1
  std::string UserName;              // empty: Connect makes it "anonymous"
  std::string Password;              // which gets a password, too, when there is none
  Type TransferMode = Type::Binary;  // only said to the server: the bytes stay as they are
  bool PassiveMode = false;          // the client makes the data connection
  // Then an address of the server that is private or zero gives way to that of the connection.
  bool CorrectsPassiveAddress = false;
  std::int32_t Timeout = 30;  // seconds that the server may be silent
  bool Busy() const { return busy_; }
  bool IsConnected() const { return control_.IsConnected(); }
  // As far as it is known: what PWD told, or where CWD and CDUP have led since.
  const std::string& CurrentDirectory() const { return currentDirectory_; }

  std::function<void(State state)> StateChanged;
  // The bytes of this transfer so far, without those before its offset.
  std::function<void(std::uint64_t bytes)> DownloadProgress;
  std::function<void(std::uint64_t bytes)> UploadProgress;
  // Lines of both sides, each with its end; the password is masked.
  std::function<void(const std::string& text)> ReplyMessage;

  // Closes first what was open. When it fails, nothing is open.
  bool Connect();
  // Says goodbye and closes, whatever the server answers. Refused while a transfer runs.
  bool CloseConnection();
  // Closes at once. A method that waits fails.
  bool BreakeConnection();

  // An empty directory is the present one, and sends nothing.
  bool SetCurrentDirectory(const std::string& directory);
  bool GetCurrentDirectory();
  bool SetParentAsCurrentDirectory();
  bool CreateDirectory(const std::string& name);
  bool RemoveDirectory(const std::string& name);
  bool DeleteFile(const std::string& name);
  bool RenameFile(const std::string& from, const std::string& to);
  // As it is transferred: in TransferMode.
  bool GetFileSize(const std::string& name, std::uint64_t& size);

  // Adds what is in the current directory.
  bool EnumFiles(CFTPFiles& files);
  // Fetches a file from `offset` on, and writes it there. What the local file holds behind that is
  // written over, and not cut.
  bool DownloadFile(const std::string& remote, const std::string& local, std::uint64_t offset);
  bool UploadFile(const std::string& local, const std::string& remote);
  // Ends the transfer that runs; its method fails.
  bool CancelTransfer();

  const std::string& GetFtpErrorDescription() const { return control_.LastError().text; }
  int FtpGetLastError() const { return control_.LastError().number; }
  // "CFtpConnection." and the step that failed.
  const std::string& GetFtpErrorSource() const { return control_.LastError().source; }
  // The last reply, all its lines, each with its end.
  const std::string& GetLastServerResponse() const { return control_.LastResponse(); }
  void DoEvents2() { services_.loop.DoEvents(); }

 private:
  bool Run(const std::function<bool()>& method);
  void Tell(State state);
  void Report(const std::string& lines);
  bool AwaitGreeting();
  bool LogIn();
  bool SayType();
  bool ConnectData();
  bool Abort(std::size_t replies);

  const Services services_;
  FtpControl control_;
  FtpTransfer transfer_;
  bool busy_ = false;
  std::string currentDirectory_;
};

}  // namespace orvanto
