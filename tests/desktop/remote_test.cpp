// The remote control of the finished program: a telnet client at one end, the windows at the other.
#include <winsock2.h>

#include <filesystem>
#include <fstream>

#include "platform/win32/Text.h"
#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

using win32::ToUtf8;

constexpr const char* kMenuEnd = "7) Logout\r\n>";
constexpr const wchar_t* kWaiting = L"Waiting for Connection...";

sockaddr_in Loopback(u_short port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// A telnet client as small as can be: keys one at a time, each waited for.
class Client {
 public:
  // Refused as long as another client is there.
  explicit Client(u_short port) {
    const sockaddr_in address = Loopback(port);
    const bool connected = WaitFor([&] {
      socket_ = socket(AF_INET, SOCK_STREAM, 0);
      if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) {
        return true;
      }
      closesocket(socket_);
      return false;
    });
    EXPECT_TRUE(connected);
    const DWORD patience = 20000;
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&patience),
               sizeof patience);
  }
  ~Client() { closesocket(socket_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // What came up to the end of this text.
  std::string Expect(const std::string& text) {
    while (seen_.find(text) == std::string::npos) {
      char bytes[4096];
      const int count = recv(socket_, bytes, sizeof bytes, 0);
      if (count <= 0) {
        ADD_FAILURE() << text << " did not come: " << seen_;
        return {};
      }
      seen_.append(bytes, static_cast<std::size_t>(count));
    }
    const std::size_t end = seen_.find(text) + text.size();
    const std::string came = seen_.substr(0, end);
    seen_.erase(0, end);
    return came;
  }

  // Types a line and Enter, and waits for a text behind it. A password is echoed by stars.
  std::string Line(const std::string& line, const std::string& then, bool stars = false) {
    for (const char key : line) {
      send(socket_, &key, 1, 0);
      Expect(stars ? "*" : std::string(1, key));
    }
    send(socket_, "\r\n", 2, 0);
    return Expect(then);
  }

  // The server has ended the connection.
  bool Ended() const {
    char byte;
    return recv(socket_, &byte, 1, 0) == 0;
  }

 private:
  SOCKET socket_ = INVALID_SOCKET;
  std::string seen_;
};

class RemoteTest : public DesktopTest {
 protected:
  RemoteTest() {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    // A port that is free: the system chooses one.
    const SOCKET probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = Loopback(0);
    int size = sizeof address;
    bind(probe, reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
    closesocket(probe);
    port_ = ntohs(address.sin_port);
    Store(L"General", L"Inet_ServerPort", std::to_wstring(port_));
    Store(L"General", L"Inet_ServerOn", L"1");
  }
  ~RemoteTest() override { WSACleanup(); }

  static HWND Log(const RunningProgram& program) {
    return RunningProgram::Children(program.MainWindow(), L"Edit").at(0);
  }

  // The lamps, the address and the two buttons.
  static bool Shows(const RunningProgram& program, bool connected) {
    const HWND main = program.MainWindow();
    return WaitFor([&] {
      auto texts = RunningProgram::Children(main, L"Static");
      std::erase_if(texts, [](HWND text) { return !IsWindowVisible(text); });
      return texts.size() == 5 && TextOf(texts[1]) == (connected ? L"127.0.0.1" : L"0.0.0.0") &&
             TextOf(texts[3]) == (connected ? L"on" : L"off") &&
             TextOf(texts[4]) == (connected ? L"off" : L"on") &&
             !IsWindowEnabled(program.Button(L"&Chat")) == !connected &&
             !IsWindowEnabled(program.Button(L"&Kick")) == !connected;
    });
  }

  static void AnswerChatRequest(const RunningProgram& program, bool yes) {
    ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
    EXPECT_EQ(TextOf(program.Box()), L"Chat Request");
    EXPECT_EQ(TextOf(GetDlgItem(program.Box(), 0xFFFF)), L"Accept Chat Request?");
    EXPECT_TRUE(IsTopMost(program.Box())) << "as the main window is";
    ASSERT_TRUE(WaitFor([&] { return GetForegroundWindow() == program.Box(); }));
    // What is typed when it comes is no consent.
    if (yes) PressKeys({VK_LEFT});
    PressKeys({VK_RETURN});
  }

  u_short port_ = 0;
};

TEST_F(RemoteTest, AClientLogsInAndDoesEverythingWithATask) {
  Store(L"General", L"Inet_Passwd_Required", L"1");
  Store(L"General", L"Inet_Passwd", L"Secret");
  const std::filesystem::path script = Beside(L"scripts\\night.txt");
  std::filesystem::remove_all(script.parent_path());
  std::filesystem::create_directories(script.parent_path());
  std::ofstream(script) << "*(nothing)\r\n";
  const RunningProgram program;
  ASSERT_TRUE(Shows(program, false));
  EXPECT_EQ(TextOf(Log(program)), kWaiting);
  {
    Client client(port_);
    client.Expect("Enter Password: ");
    EXPECT_TRUE(Shows(program, true));
    client.Line("secret", "\r\n\r\nEnter Password: ", true);
    client.Line("Secret", kMenuEnd, true);
    EXPECT_EQ(
        client.Line("5", "Press 'q' for Main Menu"),
        "\r\n\r\nScripts Folder\r\n--------------\r\n\r\nnight.txt\r\nPress 'q' for Main Menu");
    client.Line("q", kMenuEnd);

    client.Line("1", "Create a new task(y/n)?");
    client.Line("y", "Enter Name for New Task: ");
    client.Line("Far away", "(xx:xx)\r\n>");
    client.Line("07:05", "One day in every month\r\n>");
    client.Line("3", "(1-31)?");
    client.Line("31", "7) Play Sound\r\n>");
    client.Line("6", "popup\r\n\r\n>");
    client.Line("Hello", "Keep this task(y/n)?");
    client.Line("y", kMenuEnd);
    EXPECT_EQ(program.Tree().at(1).text.substr(0, 9), L"Far away ");

    client.Line("3", "Which task do you want to run?");
    client.Line("1", "");  // answered when the message has been read
    ASSERT_TRUE(WaitFor([&] { return program.Box() != nullptr; }));
    EXPECT_EQ(TextOf(GetDlgItem(program.Box(), 0xFFFF)), L"Hello");
    PostMessageW(program.Box(), WM_COMMAND, IDOK, 0);
    client.Expect("\r\nStarted Task: Far away\r\n");
    client.Expect(kMenuEnd);

    client.Line("4", "Which task do you want to edit?");
    client.Line("1", "Do you want this option changed(y/n)?");
    client.Line("y", "Enter Name for New Task: ");
    client.Line("Renamed", "Do you want this option changed(y/n)?");
    for (int i = 0; i < 2; ++i) client.Line("n", "Do you want this option changed(y/n)?");
    client.Line("n", "Keep these changes(y/n)?");
    client.Line("y", kMenuEnd);
    EXPECT_EQ(program.Tree().at(1).text.substr(0, 8), L"Renamed ");
    const std::pair<const wchar_t*, const wchar_t*> values[] = {
        {L"TaskType", L"6"},    {L"Path", L"Hello"}, {L"TimeHour", L"07"},
        {L"TimeMinute", L"05"}, {L"TimeType", L"3"}, {L"DayNo", L"31"}};
    for (const auto& [name, value] : values) EXPECT_EQ(Stored(L"Renamed", name), value);
    EXPECT_EQ(Stored(L"General", L"Task1"), L"Renamed");
    const std::wstring log = TextOf(Log(program));
    EXPECT_TRUE(log.starts_with(
        std::wstring(kWaiting) + L"\r\n127.0.0.1: Connection from(hostname): 127.0.0.1\r\n" +
        L"127.0.0.1: Connection from(IP): 127.0.0.1\r\n" +
        L"127.0.0.1: Incorrect Password: Attempt 1\r\n127.0.0.1: Main Menu\r\n"))
        << ToUtf8(log);

    client.Line("2", "Which task do you want to delete?");
    client.Line("1", "\r\nDeleted Task: Renamed\r\n");
    client.Expect(kMenuEnd);
    EXPECT_TRUE(program.Tree().empty());
    EXPECT_EQ(Stored(L"General", L"NoTasks"), L"0");
    client.Line("7", "");
    EXPECT_TRUE(client.Ended());
  }
  std::filesystem::remove(script);
  EXPECT_TRUE(Shows(program, false));
  EXPECT_EQ(TextOf(Log(program)), kWaiting);

  // Off and on again.
  for (const bool on : {false, true}) {
    program.Press(on ? L"&On" : L"O&ff");
    EXPECT_TRUE(WaitFor([&] { return IsWindowVisible(Log(program)) == on; }));
  }
  Client(port_).Expect("Enter Password: ");
  Exit(program);
}

TEST_F(RemoteTest, TheChatWindowTalksWithTheClient) {
  Store(L"General", L"OnTop", L"1");
  const RunningProgram program;
  ASSERT_NE(program.MainWindow(), nullptr);
  Client client(port_);
  client.Expect(kMenuEnd);
  client.Line("6", "Asking for Chat...\r\n");
  AnswerChatRequest(program, false);
  client.Expect(kMenuEnd);
  client.Line("6", "Asking for Chat...\r\n");
  AnswerChatRequest(program, true);
  client.Expect("Chat Request Accepted\r\n");
  client.Expect("Press '/' to Quit...\r\n\r\n");

  HWND chat = program.InFront(L"Chat");
  ASSERT_NE(chat, nullptr);
  EXPECT_TRUE(IsTopMost(chat));
  HWND txtChat = nullptr;
  HWND txtSend = nullptr;
  for (const HWND text : RunningProgram::Children(chat, L"Edit")) {
    (GetWindowLongPtrW(text, GWL_STYLE) & ES_READONLY ? txtChat : txtSend) = text;
  }
  TypeText(L"Good evening");
  PressKeys({VK_RETURN});
  client.Expect("\r\nServer: Good evening\r\n");
  EXPECT_TRUE(WaitFor([&] { return TextOf(txtSend).empty(); }));
  // The newest line is in sight, wherever the keyboard is; a letter beside the box ends no chat.
  PressWith(VK_SHIFT, VK_TAB);
  PressKeys({'Q'});
  std::wstring transcript = L"Server: Good evening\r\n";
  for (int i = 0; i < 12; ++i) {
    client.Line("Hi", "\r\n");
    transcript += L"\r\nClient: Hi\r\n";
  }
  EXPECT_TRUE(WaitFor([&] { return TextOf(txtChat) == transcript; })) << ToUtf8(TextOf(txtChat));
  EXPECT_GT(SendMessageW(txtChat, EM_GETFIRSTVISIBLELINE, 0, 0), 5);

  // Closed by its frame it is only hidden: the client still talks, and is the one to end it.
  PostMessageW(chat, WM_CLOSE, 0, 0);
  EXPECT_TRUE(WaitFor([&] { return !IsWindowVisible(chat); }));
  client.Line("Hello?", "\r\n");
  client.Line("/", "\r\nChat Ended by Client\r\n\r\n");
  client.Expect(kMenuEnd);
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(chat); }));

  // Begun here, ended here; begun again, and ended by throwing the client out.
  for (const bool kick : {false, true}) {
    SCOPED_TRACE(kick);
    program.Press(L"&Chat");
    client.Expect("Server Started Chat...\r\n");
    chat = program.InFront(L"Chat");
    ASSERT_NE(chat, nullptr);
    EXPECT_NE(IsTopMost(chat), kick);
    if (kick) {
      program.Press(L"&Kick");
      EXPECT_TRUE(Shows(program, false));
    } else {
      PressKeys({VK_ESCAPE, VK_TAB, VK_RETURN});  // Esc ends no conversation
      client.Expect("\r\nChat Ended by Server\r\n\r\n");
      client.Expect(kMenuEnd);
    }
    EXPECT_TRUE(WaitFor([&] { return !IsWindow(chat); }));
    EXPECT_TRUE(WaitFor([&] { return GetForegroundWindow() == program.MainWindow(); }));
    if (!kick) program.ChooseMenu(L's', 1);
  }
  Exit(program);
}

TEST_F(RemoteTest, ConnectionsLeaveNothingBehind) {
  Store(L"General", L"Inet_Chat_Auto", L"1");
  const RunningProgram program;
  ASSERT_TRUE(Shows(program, false));
  const auto connect = [&](int times) {
    for (int i = 0; i < times; ++i) {
      Client client(port_);
      client.Expect(kMenuEnd);
      if (i % 10 == 0) client.Line("6", "Quit...\r\n\r\n");
    }
    EXPECT_TRUE(Shows(program, false));
  };
  connect(10);  // whatever is made once and kept
  const GuiObjects before = program.CountGuiObjects();
  const DWORD handles = program.CountHandles();
  EXPECT_GT(handles, 0u);
  connect(100);
  EXPECT_TRUE(WaitFor([&] { return program.CountGuiObjects().user == before.user; }));
  EXPECT_LE(program.CountHandles(), handles + 5);
  Exit(program);
}

}  // namespace
}  // namespace orvanto::desktop
