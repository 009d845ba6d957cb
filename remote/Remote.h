// What the parts of the remote control share, and what they need of the rest of the program.
#pragma once

#include <string>

namespace orvanto {

enum class SessionState {
  Start,
  Password,
  MainMenu,
  NewTask,
  DeleteTask,
  EditTaskStart,
  EditTask,
  RunTask,
  ListScripts,
  Chat,
};

// The conversation with the one client, as the wizard sees it.
class Conversation {
 public:
  virtual ~Conversation() = default;
  virtual void Send(const std::string& text) = 0;
  virtual void ShowMainMenu() = 0;

  // Sends nothing for a count of 0 or a number above it. Item 1 brings the title with it, the last
  // item the prompt.
  virtual void MenuItem(int count, int number, const std::string& text,
                        const std::string& title) = 0;
};

// The server's area on the main window.
class ServerArea {
 public:
  virtual ~ServerArea() = default;
  virtual void ShowServer(bool on) = 0;  // with the option buttons and the tree's height
  virtual void SetCaption(const std::string& caption) = 0;
  virtual void SetLamps(bool connected, bool waiting) = 0;
  virtual void SetClient(const std::string& address) = 0;
  virtual void EnableClientCommands(bool enabled) = 0;  // Chat and Kick
};

}  // namespace orvanto
