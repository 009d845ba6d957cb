// The remote control of the finished program: a telnet client at one end, the windows at the other.
#include <winsock2.h>

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
    EXPECT_TRUE(WaitFor([&] {
      closesocket(socket_);
      socket_ = socket(AF_INET, SOCK_STREAM, 0);
      return connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }));
    const DWORD patience = 20000;
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&patience),
               sizeof patience);
  }
  ~Client() { closesocket(socket_); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Waits for what comes up to the end of this text.
  void Expect(const std::string& text) {
    while (seen_.find(text) == std::string::npos) {
      char bytes[4096];
      const int count = recv(socket_, bytes, sizeof bytes, 0);
      ASSERT_GT(count, 0) << text << " did not come: " << seen_;
      seen_.append(bytes, static_cast<std::size_t>(count));
    }
    seen_.erase(0, seen_.find(text) + text.size());
  }

  // Types a line and Enter, and waits for a text behind it.
  void Line(const std::string& line, const std::string& then) {
    for (const char key : line) {
      send(socket_, &key, 1, 0);
      Expect(std::string(1, key));
    }
    send(socket_, "\r\n", 2, 0);
    Expect(then);
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

TEST_F(RemoteTest, TheWindowsTellOfTheClientAndTalkWithHim) {
  Store(L"General", L"OnTop", L"1");
  const RunningProgram program;
  ASSERT_TRUE(Shows(program, false));
  EXPECT_EQ(TextOf(Log(program)), kWaiting);
  Client client(port_);
  client.Expect(kMenuEnd);
  EXPECT_TRUE(Shows(program, true));
  EXPECT_TRUE(
      WaitFor([&] { return TextOf(Log(program)).find(L"1: Main Menu") != std::wstring::npos; }));
  for (const bool accepted : {false, true}) {
    client.Line("6", "Asking for Chat...\r\n");
    AnswerChatRequest(program, accepted);
    client.Expect(accepted ? "Press '/' to Quit...\r\n\r\n" : kMenuEnd);
  }
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
  client.Line("/", "\r\nChat Ended by Client\r\n\r\n");
  client.Expect(kMenuEnd);

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
  // Off and on again.
  for (const bool on : {false, true}) {
    program.Press(on ? L"&On" : L"O&ff");
    EXPECT_TRUE(WaitFor([&] { return IsWindowVisible(Log(program)) == on; }));
  }
  Client(port_).Expect(kMenuEnd);
  Exit(program);
}

}  // namespace
}  // namespace orvanto::desktop
