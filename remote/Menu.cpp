// The remote control's menu: what a complete line does in each state, and the chat.
#include <array>
#include <set>

#include "core/Convert.h"
#include "core/ProgramFolder.h"
#include "core/ProgramTitle.h"
#include "core/TaskExecution.h"
#include "core/modTaskOperations.h"
#include "platform/Files.h"
#include "platform/MessageBoxes.h"
#include "platform/text/Case.h"
#include "platform/text/Lines.h"
#include "remote/Internet.h"

namespace orvanto {
namespace {

const std::string kTitle = std::string(kProgramTitle) + " " + kProgramVersion;
constexpr int kMenuItems = 7;
constexpr std::array<const char*, kMenuItems> kMenuTexts{
    "New Task", "Delete Task", "Run Task", "Edit Task", "View Scripts Folder", "Chat", "Logout"};

// Names stand in the order of Windows' file system: by their capital letters, so "_" is after "Z".
std::string OrderOf(const std::string& name) {
  std::string capitals = FoldCase(name);
  for (char& c : capitals) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - ('a' - 'A'));
  }
  return capitals;
}

}  // namespace

void TelnetServer::MenuItem(int count, int number, const std::string& text,
                            const std::string& title) {
  if (count == 0 || number > count) return;
  if (number == 1) {
    SendAll({kCrLf, kCrLf});
    Send(title);
    Send(kCrLf);
  }
  Send(kCrLf);
  Send(std::to_string(number) + ") " + text);
  if (number == count) SendAll({kCrLf, ">"});
}

void TelnetServer::ShowMainMenu() {
  for (int number = 1; number <= kMenuItems; ++number) {
    MenuItem(kMenuItems, number, kMenuTexts[static_cast<std::size_t>(number - 1)],
             number == 1 ? kTitle : "");
  }
  Log("Main Menu");
  state_ = SessionState::MainMenu;
}

void TelnetServer::Dispatch(const std::string& line) {
  const bool back = line == "q";
  switch (state_) {
    case SessionState::Start:
      return ShowMainMenu();
    case SessionState::Password:
      return Login(line);
    case SessionState::MainMenu:
      return MainMenuChoice(line);
    case SessionState::NewTask:
      return back ? ShowMainMenu() : wizard_.WizardStep(line);
    case SessionState::DeleteTask:
      return back ? ShowMainMenu() : OnSlot(line, &TelnetServer::DeleteTask);
    case SessionState::RunTask:
      return back ? ShowMainMenu() : OnSlot(line, &TelnetServer::RunTask);
    case SessionState::EditTaskStart:
      return back ? ShowMainMenu() : OnSlot(line, &TelnetServer::EditTask);
    case SessionState::EditTask:
      return back ? ShowMainMenu() : wizard_.EditStep(line);
    case SessionState::ListScripts:
      if (back) ShowMainMenu();
      return;
    case SessionState::Chat:
      return ChatLine(line);
  }
}

void TelnetServer::MainMenuChoice(const std::string& line) {
  switch (ToInt16(line)) {
    case 1:
      ChooseNewTask();
      break;
    case 2:
      OpenTaskList("Which task do you want to delete?", "Delete Task", SessionState::DeleteTask);
      break;
    case 3:
      OpenTaskList("Which task do you want to run?", "Run Task", SessionState::RunTask);
      break;
    case 4:
      OpenTaskList("Which task do you want to edit?", "Edit Task", SessionState::EditTaskStart);
      break;
    case 5:
      SendScriptsList();
      SendAll({kCrLf, "Press 'q' for Main Menu", kCrLf});
      Log("View Scripts Folder");
      state_ = SessionState::ListScripts;
      break;
    case 6:
      RequestChat();
      break;
    case 7:
      Disconnect();
      break;
    default:
      ShowMainMenu();
      break;
  }
}

void TelnetServer::ChooseNewTask() {
  SendTaskList();
  SendAll({kCrLf, "Create a new task(y/n)?"});
  Log("Create New Task");
  state_ = SessionState::NewTask;
  wizard_.BeginNew();
}

void TelnetServer::OpenTaskList(const char* question, const char* log, SessionState state) {
  SendTaskList();
  SendAll({kCrLf, "Press 'q' for Main Menu", kCrLf, question});
  Log(log);
  state_ = state;
}

void TelnetServer::SendTaskList() {
  TaskStore& store = services_.store;
  if (store.NoTasks() == 0) return;
  SendAll({kCrLf, kCrLf, "Task List", kCrLf, "---------", kCrLf, kCrLf});
  for (const std::int16_t slot : store.Slots()) {
    Send(std::to_string(slot) + ") " + store.TaskName(slot) + kCrLf);
  }
}

void TelnetServer::SendScriptsList() {
  SendAll({kCrLf, kCrLf, "Scripts Folder", kCrLf, "--------------", kCrLf, kCrLf});
  std::set<std::pair<std::string, std::string>> names;
  services_.files.ListFolder(services_.store.Folder().Scripts(),
                             [&](const std::string& name, Files::EntryKind kind) {
                               if (kind == Files::EntryKind::File) {
                                 names.emplace(OrderOf(name), name);
                               }
                               return true;
                             });
  // Every second name is consumed by the look whether there is one more, and where there is none
  // then, an empty one is sent: kept as it is.
  bool shown = true;
  for (const auto& [order, name] : names) {
    Send(shown ? name : kCrLf);
    shown = !shown;
  }
}

void TelnetServer::OnSlot(const std::string& line, void (TelnetServer::*act)(std::int16_t slot)) {
  std::int16_t slot = 0;
  try {
    slot = ToInt16(line);
  } catch (const Error& error) {
    if (error.Number() != kTypeMismatch) throw;
    return ShowMainMenu();
  }
  (this->*act)(slot);
}

void TelnetServer::DeleteTask(std::int16_t slot) {
  TaskStore& store = services_.store;
  if (slot <= store.NoTasks()) {
    store.LoadTask(slot);
    Send(kCrLf + ("Deleted Task: " + store.CurrentTask.name) + kCrLf);
    store.DeleteTask(slot);
  }
  ShowMainMenu();
}

void TelnetServer::RunTask(std::int16_t slot) {
  TaskStore& store = services_.store;
  if (slot <= store.NoTasks()) {
    const std::uint64_t connection = connection_;
    Flush();
    services_.execution.RunTask(slot);
    // A task may take long and let other events run; the client may be another one by now.
    if (connection != connection_) return;
    store.LoadTask(slot);
    Send(kCrLf + ("Started Task: " + store.CurrentTask.name) + kCrLf);
  }
  ShowMainMenu();
}

void TelnetServer::EditTask(std::int16_t slot) {
  TaskStore& store = services_.store;
  // Every number is let through, one after the last task too: kept as it is.
  store.LoadTask(slot);
  state_ = SessionState::EditTask;
  wizard_.BeginEdit();
}

void TelnetServer::SendTilde() {
  Send("~");
  Flush();
}

void TelnetServer::StartChat() {
  if (!Connected()) return;
  state_ = SessionState::Chat;
  Log("Server Started Chat");
  SendAll({kCrLf, kCrLf, "Server Started Chat...\r\n", kCrLf, "Press '/' to Quit...\r\n", kCrLf});
  Flush();
  services_.chat.Open();
}

void TelnetServer::RequestChat() {
  if (remote_.chatAutoAccept == 1) {
    Log("Client Started Chat");
    SendAll({kCrLf, kCrLf, "Starting Chat...\r\n", kCrLf, "Press '/' and then Enter to Quit...\r\n",
             kCrLf});
  } else {
    Log("Client Requesting Chat");
    SendAll({kCrLf, kCrLf, "Asking for Chat...\r\n"});
    const std::uint64_t connection = connection_;
    Flush();
    const Answer answer = services_.messageBoxes.Show("Accept Chat Request?", "Chat Request",
                                                      Buttons::NoUnlessYes, BoxIcon::Question);
    if (connection != connection_) return;
    if (answer != Answer::Yes) return ShowMainMenu();
    SendAll({kCrLf, kCrLf, "Chat Request Accepted\r\n", kCrLf, kCrLf, "Starting Chat...\r\n", kCrLf,
             "Press '/' to Quit...\r\n", kCrLf});
  }
  services_.chat.Open();
  state_ = SessionState::Chat;
}

void TelnetServer::ChatLine(const std::string& line) {
  if (line == "/") return EndChat("\r\nChat Ended by Client\r\n\r\n");
  services_.chat.Append(kCrLf + ("Client: " + line) + kCrLf);
  Send(kCrLf);
}

void TelnetServer::LocalChatLine(const std::string& line) {
  const std::string text = kCrLf + ("Server: " + line) + kCrLf;
  Send(text);
  Heard();
  services_.chat.Append(text);
}

void TelnetServer::EndChat(const char* text) {
  Send(text);
  loggedIn_ || policy_.chatLetsIn ? ShowMainMenu() : AskForPassword();
  services_.chat.Unload();
}

}  // namespace orvanto
