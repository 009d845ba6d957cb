// The remote control of the finished program: a telnet client at one end, the windows at the other.
#include "platform/text/Lines.h"
#include "platform/win32/Win32Socket.h"
#include "tests/desktop/DesktopTest.h"

namespace orvanto::desktop {
namespace {

// The lamps and the address.
bool Shows(const RunningProgram& program, bool connected) {
  return WaitFor([&] {
    auto texts = Children(program.MainWindow(), WC_STATICW);
    std::erase_if(texts, [](HWND text) { return !IsWindowVisible(text); });
    return texts.size() == 5 && TextOf(texts[1]) == (connected ? L"127.0.0.1" : L"0.0.0.0") &&
           TextOf(texts[3]) == (connected ? L"on" : L"off") &&
           TextOf(texts[4]) == (connected ? L"off" : L"on");
  });
}

TEST_F(DesktopTest, TheWindowsTellOfTheClientAndTalkWithHim) {
  win32::Win32Loop loop;
  win32::Win32SocketHost host(loop);
  const std::shared_ptr<TcpSocket> client = host.NewSocket(SocketHost::Use::Conversation);
  std::string seen;
  client->onDataArrival = [&] { seen += client->GetData(); };
  // Waits for what comes up to the end of this text.
  const auto expect = [&](const std::string& text) {
    const auto came = [&] { return seen.find(text) != seen.npos; };
    loop.WaitFor(client, came, std::chrono::seconds(20));
    EXPECT_TRUE(came()) << text << " did not come: " << seen;
    seen.erase(0, came() ? seen.find(text) + text.size() : 0);
  };
  const auto line = [&](const std::string& text, const std::string& then) {
    client->Send(text + kCrLf);
    expect(then);
  };
  for (const wchar_t* on : {L"Inet_ServerOn", L"Inet_Compat", L"OnTop"}) {
    Store(L"General", on, L"1");
  }
  const RunningProgram program;
  ASSERT_TRUE(Shows(program, false));
  client->Connect("127.0.0.1", 600);
  expect("7) Logout\r\n>");
  EXPECT_TRUE(Shows(program, true));
  for (const bool accepted : {false, true}) {
    line("6", "Asking for Chat...\r\n");
    EXPECT_EQ(program.BoxInFront(), L"Accept Chat Request?");
    EXPECT_TRUE(IsTopMost(program.Box())) << "as the main window is";
    // What is typed when it comes is no consent.
    Type(accepted ? "{LEFT}~" : "~");
    expect(accepted ? "Press '/' to Quit...\r\n\r\n" : "7) Logout\r\n>");
  }
  // A box has just gone, and the window manager may yet give the front to what was below it.
  const HWND chat = InFront(L"Chat", 50);
  const HWND transcript = Children(chat, WC_EDITW).at(1);
  Type("Good evening~");
  expect("\r\nServer: Good evening\r\n");
  // The newest line is in sight, wherever the keyboard is; a letter beside the box ends no chat.
  Type("+{TAB}q");
  std::wstring said = L"Server: Good evening\r\n";
  for (int i = 0; i < 12; ++i) {
    line("Hi", "\r\n");
    said += L"\r\nClient: Hi\r\n";
  }
  EXPECT_TRUE(WaitFor([&] { return TextOf(transcript) == said; }));
  EXPECT_GT(SendMessageW(transcript, EM_GETFIRSTVISIBLELINE, 0, 0), 5);
  Type("{ESC}");  // ends no conversation
  Type("%q");
  expect("\r\nChat Ended by Server\r\n\r\n");
  EXPECT_TRUE(WaitFor([&] { return !IsWindow(chat); }));
  EXPECT_TRUE(program.MainIsInFront());

  Type("%i{UP 2}~");
  EXPECT_NE(InFront(L"Brisk FTP Server ver .1a"), nullptr);
  Type("{ESC}");
  EXPECT_TRUE(program.MainIsInFront());
}

}  // namespace
}  // namespace orvanto::desktop
