// The remote control of the finished program: a telnet client at one end, the windows at the other.
#include "platform/text/Lines.h"
#include "platform/win32/Win32Socket.h"
#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

constexpr const char* kHost = "127.0.0.1";

// A telnet client as small as can be: keys one at a time, each waited for.
class Client {
 public:
  // One that is free: the system chooses it.
  std::uint16_t FreePort() {
    EXPECT_TRUE(socket_->Listen(0, kHost));
    const std::uint16_t port = socket_->LocalPort();
    socket_->Close();
    return port;
  }
  void Connect(std::uint16_t port) {
    socket_->onDataArrival = [this] { seen_ += socket_->GetData(); };
    socket_->Connect(kHost, port);
  }

  // Waits for what comes up to the end of this text.
  void Expect(const std::string& text) {
    const auto at = [&] { return seen_.find(text); };
    loop_.WaitFor(
        life_, [&] { return at() != seen_.npos; }, std::chrono::seconds(20));
    ASSERT_NE(at(), seen_.npos) << text << " did not come: " << seen_;
    seen_.erase(0, at() + text.size());
  }

  // Types a line and Enter, and waits for a text after it.
  void Line(const std::string& line, const std::string& then) {
    for (const char key : line) {
      socket_->Send({&key, 1});
      Expect(std::string(1, key));
    }
    socket_->Send(kCrLf);
    Expect(then);
  }

 private:
  win32::Win32Loop loop_;
  win32::Win32SocketHost host_{loop_};
  const std::unique_ptr<TcpSocket> socket_ = host_.NewSocket(SocketHost::Use::Conversation);
  const std::shared_ptr<int> life_ = std::make_shared<int>();
  std::string seen_;
};

// The lamps and the address.
bool Shows(const RunningProgram& program, bool connected) {
  return WaitFor([&] {
    auto texts = RunningProgram::Children(program.MainWindow(), WC_STATICW);
    std::erase_if(texts, [](HWND text) { return !IsWindowVisible(text); });
    return texts.size() == 5 && TextOf(texts[1]) == (connected ? L"127.0.0.1" : L"0.0.0.0") &&
           TextOf(texts[3]) == (connected ? L"on" : L"off") &&
           TextOf(texts[4]) == (connected ? L"off" : L"on");
  });
}

TEST_F(DesktopTest, TheWindowsTellOfTheClientAndTalkWithHim) {
  Client client;
  const std::uint16_t port = client.FreePort();
  Store(L"General", L"Inet_ServerPort", std::to_wstring(port));
  Store(L"General", L"Inet_ServerOn", L"1");
  Store(L"General", L"OnTop", L"1");
  Import(std::vector<Task>(8, {L"task", L"6", L"text"}));
  const RunningProgram program;
  ASSERT_TRUE(Shows(program, false));
  const HWND log = RunningProgram::Children(program.MainWindow(), WC_EDITW).at(0);
  client.Connect(port);
  client.Expect("7) Logout\r\n>");
  EXPECT_TRUE(Shows(program, true));
  for (const bool accepted : {false, true}) {
    client.Line("6", "Asking for Chat...\r\n");
    EXPECT_EQ(program.BoxInFront(), L"Accept Chat Request?");
    EXPECT_TRUE(IsTopMost(program.Box())) << "as the main window is";
    // What is typed when it comes is no consent.
    Type(accepted ? "{LEFT}~" : "~");
    client.Expect(accepted ? "Press '/' to Quit...\r\n\r\n" : "7) Logout\r\n>");
  }
  const HWND chat = InFront(L"Chat");
  const HWND transcript = RunningProgram::Children(chat, WC_EDITW).at(1);
  Type("Good evening~");
  client.Expect("\r\nServer: Good evening\r\n");
  // The newest line is in sight, wherever the keyboard is; a letter beside the box ends no chat.
  Type("+{TAB}q");
  std::wstring said = L"Server: Good evening\r\n";
  for (int i = 0; i < 12; ++i) {
    client.Line("Hi", "\r\n");
    said += L"\r\nClient: Hi\r\n";
  }
  EXPECT_TRUE(WaitFor([&] { return TextOf(transcript) == said; }));
  EXPECT_GT(SendMessageW(transcript, EM_GETFIRSTVISIBLELINE, 0, 0), 5);
  Type("{ESC}");  // ends no conversation
  Type("%q");
  client.Expect("\r\nChat Ended by Server\r\n\r\n");
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(chat); }));
  EXPECT_TRUE(program.MainIsInFront());

  Type("%i{UP 2}~");
  EXPECT_NE(InFront(L"Brisk FTP Server ver .1a"), nullptr);
  Type("{ESC}");
  EXPECT_TRUE(program.MainIsInFront());

  // The selection stays in sight when the server's area takes its place.
  const HWND tree = program.TreeWindow();
  program.Press(L"O&ff");
  EXPECT_TRUE(WaitFor([&] { return !IsWindowVisible(log); }));
  for (const WPARAM key : {VK_HOME, VK_END}) PostMessageW(tree, WM_KEYDOWN, key, 0);
  EXPECT_EQ(TreeView_GetFirstVisible(tree), TreeView_GetRoot(tree));
  program.Press(L"&On");
  EXPECT_TRUE(Shows(program, false));
  EXPECT_TRUE(WaitFor([&] { return TreeView_GetFirstVisible(tree) != TreeView_GetRoot(tree); }));
}

}  // namespace
}  // namespace orvanto::desktop
