// Scripts in the finished program, with Notepad as the program they act on; downloads, from a
// server of the test's own; the remote control, with a client of its own.
#include <filesystem>

#include "platform/text/Lines.h"
#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/Win32Socket.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::desktop {
namespace {

namespace fs = std::filesystem;
using win32::ToUtf8;

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

int MinuteOfTheDay(int secondsFromNow = 0) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return (now.wHour * 60 + now.wMinute + (now.wSecond + secondsFromNow) / 60) % (24 * 60);
}

// One minute's wait: a task does an errand at its time, and nobody is there.
TEST_F(DesktopTest, AScriptDoesAnErrandAtItsMinuteThoughInvisible) {
  const TemporaryDirectory folder;
  const auto in = [&](const std::string& name) { return folder / name; };
  for (const char* made : {"out", "pause", "tree\\a\\b"}) fs::create_directories(in(made));
  const std::string errand = in("tree\\a\\b\\orvanto-errand.txt");
  WriteFile(errand, kByteOrderMark);
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(in("pause\\pause.bat"), "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + in("pause") + ")\r\n";
  const std::string types = "sendkeys('orvanto-errand.txt - Notepad',";
  const std::string script = ToUtf8(Beside(L"scripts\\errand.txt"));
  const fs::path log = Beside(L"ORVSCRPT.LOG");
  fs::create_directories(Beside(L"scripts"));
  fs::remove(log);
  WriteFile(script, "findopen('orvanto-errand.txt'," + in("tree") + ")\r\n" + pause + types +
                        "Done while +you were {(}äß€{)} away.~)\r\n" + types + "^s)\r\n" + types +
                        "%{F4})\r\n" + pause + "copy('" + errand + "'," + in("out") + ")\r\n");

  // A minute that begins too soon would be over before the program has started.
  const int due = MinuteOfTheDay(70);
  Store(L"General", L"NoTasks=1 Task1=Errand");
  Store(L"Errand", L"TimeType=2 Every=1 In=1 TaskType=1 Path=errand.txt TimeHour=" +
                       std::to_wstring(due / 60) + L" TimeMinute=" + std::to_wstring(due % 60));
  const RunningProgram program(L"INVISIBLE");
  const HWND hidden = program.MainWindow();
  bool everShown = false;
  int began = -1;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown = everShown || IsWindowVisible(hidden);
        if (began < 0 && !TopLevel(0, L"Notepad").empty()) began = MinuteOfTheDay();
        return fs::exists(in("out\\orvanto-errand.txt"));
      },
      std::chrono::seconds(130)));
  EXPECT_FALSE(everShown);
  EXPECT_EQ(began, due);
  const std::string text = std::string(kByteOrderMark) + "Done while You were (äß€) away.\r\n";
  EXPECT_TRUE(WaitFor([&] { return ReadFile(in("out\\orvanto-errand.txt")) == text; }));
  EXPECT_TRUE(TopLevel(0, L"Notepad").empty());
  EXPECT_FALSE(fs::exists(log));
  fs::remove(script);
}

TEST_F(DesktopTest, FetchesWhatIsOnTheClipboard) {
  win32::Win32Loop loop;
  win32::Win32SocketHost sockets(loop);
  const std::shared_ptr<TcpSocket> listener = sockets.NewSocket(SocketHost::Use::Conversation);
  const auto client = sockets.NewSocket(SocketHost::Use::Data);
  std::string file(300000, 'x');  // and the request
  listener->onConnectionRequest = [&](auto id) { client->Accept(id); };
  client->onDataArrival = [&] {
    file += client->GetData();
    client->Send("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n" + file);
    client->CloseGently();
  };
  if (!listener->Listen(80, "127.0.0.1")) GTEST_SKIP() << "port 80 is not free";
  // Sleeping would hold up the server, and everybody who looks at our clipboard.
  const auto alarm = loop.NewTimer([] {});
  alarm->Start(std::chrono::milliseconds(20));
  const auto wait = [&](const std::function<bool()>& condition, int seconds = 20) {
    return loop.WaitFor(listener, condition, std::chrono::seconds(seconds)) ==
           EventLoop::Waited::Met;
  };
  const std::string path = ToUtf8(Beside(L"file.bin"));
  const std::string url = "http://127.0.0.1/a/file.bin";
  const RunningProgram program;
  const HWND main = program.MainWindow();
  fs::remove(path);
  win32::Win32Clipboard().SetText(" " + url);  // which the window takes
  HWND box = nullptr;
  const auto isOpen = [&] {
    const HWND window = GetForegroundWindow();
    box = FindWindowExW(window, nullptr, WC_EDITW, nullptr);
    return TextOf(window) == L"Download" && FocusBeside(window) == box;
  };
  // A menu that has only just come may take the first key before it has chosen its first item.
  EXPECT_TRUE(wait([&] {
    if (FindWindowW(nullptr, L"Download") == nullptr) Type("{ESC 3}%i{UP}~");
    return wait(isOpen, 1);
  }));
  EXPECT_TRUE(wait([&] { return ToUtf8(TextOf(box)) == url; }));
  Type("~");
  // Its window closes when the server has.
  EXPECT_TRUE(wait([&] {
    return FindWindowW(nullptr, L"Download") == nullptr && GetForegroundWindow() == main &&
           ReadFile(path) == file;
  }));
  fs::remove(path);
}

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
  Store(L"General", L"Inet_ServerOn=1 Inet_Compat=1 OnTop=1");
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
  Type("Good evening~");
  expect("\r\nServer: Good evening\r\n");
  Type("+{TAB}q");  // a letter beside the box ends no chat
  line("Hi", "\r\n");
  const HWND transcript = Children(chat, WC_EDITW).at(1);
  const std::wstring said = L"Server: Good evening\r\n\r\nClient: Hi\r\n";
  EXPECT_TRUE(WaitFor([&] { return TextOf(transcript) == said; }));
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
