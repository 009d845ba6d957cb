// The remote control: one telnet client at a time logs in, reads a menu, and lists, makes, changes,
// deletes and runs tasks, or chats with the person at the machine.
//
// One socket listens and then becomes the client's connection, so while a client is there nothing
// listens. The session state, the input line and the count of wrong passwords outlive connections.
//
// While a line is carried out (a task may run long, and let other events in) what its client sends
// meanwhile waits. What one event sends goes out in one piece.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "core/ProgramSettings.h"
#include "core/TextLog.h"
#include "platform/Event.h"
#include "platform/net/LineAssembler.h"
#include "platform/net/TcpSocket.h"
#include "remote/Remote.h"
#include "remote/TaskWizard.h"
#include "remote/TelnetPolicy.h"
#include "remote/TelnetProtocol.h"
#include "remote/frmChat.h"

namespace orvanto {

class EventLoop;
class Files;
class MessageBoxes;
class Settings;
class TaskExecution;
class Timer;

class TelnetServer : public Conversation {
 public:
  struct Services {
    EventLoop& loop;
    SocketHost& sockets;
    Settings& settings;
    TaskStore& store;
    TaskExecution& execution;
    const Clock& clock;
    Files& files;
    MessageBoxes& messageBoxes;
    ServerArea& area;
    frmChat& chat;
  };
  // `remote` is read whenever its values are needed: the settings dialog changes them.
  TelnetServer(const Services& services, const RemoteSettings& remote);
  ~TelnetServer() override;

  void ServerOn();
  void ServerOff();
  // The port that is stored has changed: ends the connection, and listens there, if it is on.
  void Restart();
  // The address to listen on, or the password, may have changed: a connection goes on.
  void Relisten();
  bool Listening() const { return sck_->GetState() == TcpSocket::State::Listening; }
  bool Connected() const { return sck_->GetState() == TcpSocket::State::Connected; }
  std::uint16_t Port() const { return sck_->LocalPort(); }
  SessionState State() const { return state_; }
  TextLog& ServerLog() { return log_; }

  // The commands of the main window.
  void Kick() { Disconnect(); }
  void StartChat();
  void SendTilde();       // what the menu item "Chat" does
  void RefreshCaption();  // on every tick while the area is shown

  // What is switched on and off together with this server.
  Event<bool> switched;

  // Conversation
  void Send(const std::string& text) override;
  void ShowMainMenu() override;
  void MenuItem(int count, int number, const std::string& text, const std::string& title) override;

 private:
  // The input line is not kept longer than this; what comes after that is echoed and dropped.
  static constexpr std::size_t kLongestLine = 64 << 10;
  // Arrivals that are kept apart while they wait; what comes after those waits in the socket.
  static constexpr std::size_t kMostWaiting = 256;
  // Lines that are carried out one inside the other, those of clients who have gone meanwhile.
  static constexpr int kMostOpenLines = 8;

  void ReadPort();
  void SayWaiting();
  void ListenIfIdle();
  void EndConnection();
  void Disconnect();
  void OnConnectionRequest(TcpSocket::RequestId request);
  void FetchArrival();
  void HandleArrival();
  void CarryOut(const std::string& line);
  void Echo(const LineAssembler::Piece& piece);
  void Dispatch(const std::string& line);
  bool MayLogIn() const;
  void Login(const std::string& line);
  void Refuse();
  void Heard();  // somebody has said something
  void AskForPassword();
  void EndChat(const char* text);
  void MainMenuChoice(const std::string& line);
  void OpenTaskList(const char* question, const char* log, SessionState state);
  void ChooseNewTask();
  // Acts on the slot of that number; shows the menu for what is none.
  void OnSlot(const std::string& line, void (TelnetServer::*act)(std::int16_t slot));
  void DeleteTask(std::int16_t slot);
  void RunTask(std::int16_t slot);
  void EditTask(std::int16_t slot);
  void SendTaskList();
  void SendScriptsList();
  void RequestChat();
  void ChatLine(const std::string& line);
  void LocalChatLine(const std::string& line);
  void SendAll(std::initializer_list<const char*> pieces);
  // Hands what was sent to the socket: at the end of an event, and before what may take long.
  void Flush();
  void Log(const std::string& message);  // of the client

  Services services_;
  const RemoteSettings& remote_;
  std::unique_ptr<TcpSocket> sck_;
  TextLog log_;
  TelnetProtocol protocol_;
  TaskWizard wizard_;
  std::string clientAddress_ = "0.0.0.0";
  bool on_ = false;
  std::int32_t serverPort_ = 0;
  TelnetPolicy policy_;
  const std::unique_ptr<Timer> tmrRefusal_;  // of the password that was wrong
  const std::unique_ptr<Timer> tmrSilence_;
  LineAssembler input_{LineAssembler::Policy::Keys, kLongestLine};
  std::string outgoing_;             // sent, and not flushed
  std::deque<std::string> waiting_;  // what has arrived from the client, as it arrived
  bool lineOpen_ = false;            // a line of the client is being carried out
  int openLines_ = 0;                // with those of former clients
  std::int16_t failedAttempts_ = 0;  // over the life of the program
  bool dropsRefused_ = false;        // whose password was wrong, and so were three before
  std::uint64_t refused_ = 0;        // his connection
  bool loggedIn_ = false;
  SessionState state_ = SessionState::Start;
  // Counts connections, so that what a line let happen meanwhile is noticed.
  std::uint64_t connection_ = 0;
};

}  // namespace orvanto
