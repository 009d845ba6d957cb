// Scripts in the finished program, with Notepad as the program they act on; downloads, from a
// server of the test's own; the remote control, with a client of its own.
#include <algorithm>
#include <filesystem>

#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/Win32Socket.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::desktop {
namespace {

namespace fs = std::filesystem;
using win32::ToUtf8;

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

// With a socket of the test's own, whose events come while it waits.
class ServicesTest : public DesktopTest {
 protected:
  bool Wait(const std::function<bool()>& condition, int seconds = 20) {
    return loop_.WaitFor(socket_, condition, std::chrono::seconds(seconds)) ==
           EventLoop::Waited::Met;
  }

  win32::Win32Loop loop_;
  win32::Win32SocketHost sockets_{loop_};
  const std::shared_ptr<TcpSocket> socket_ = sockets_.NewSocket(SocketHost::Use::Conversation);
};

int MinuteOfTheDay(int secondsFromNow = 0) {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return (now.wHour * 60 + now.wMinute + (now.wSecond + secondsFromNow) / 60) % (24 * 60);
}

// One minute's wait: a task does an errand at its time, and nobody is there.
TEST_F(DesktopTest, AScriptDoesAnErrandAtItsMinuteThoughInvisible) {
  const TemporaryDirectory folder;
  for (const char* made : {"out", "pause", "tree\\a\\b"}) fs::create_directories(folder / made);
  const std::string errand = folder / "tree\\a\\b\\orvanto-errand.txt";
  WriteFile(errand, kByteOrderMark);
  // A program that takes as long as Notepad needs to open, or to save.
  WriteFile(folder / "pause\\pause.bat", "@ping -n 5 127.0.0.1 >nul\r\n");
  const std::string pause = "findopenwait('pause.bat'," + (folder / "pause") + ")\r\n";
  const std::string types = "sendkeys('orvanto-errand.txt - Notepad',";
  const std::string script = ToUtf8(Beside(L"scripts\\errand.txt"));
  fs::create_directories(Beside(L"scripts"));
  WriteFile(script, "findopen('orvanto-errand.txt'," + (folder / "tree") + ")\r\n" + pause + types +
                        "Done while +you were {(}äß€{)} away.~)\r\n" + types + "^s)\r\n" + types +
                        "%{F4})\r\n" + pause + "copy('" + errand + "'," + (folder / "out") +
                        ")\r\n");

  // A minute that begins too soon would be over before the program has started.
  const int due = MinuteOfTheDay(70);
  Store(L"General", {L"NoTasks=1", L"Task1=Errand"});
  Store(L"Errand",
        {L"TimeType=2", L"Every=1", L"In=1", L"TaskType=1", L"Path=errand.txt",
         L"TimeHour=" + std::to_wstring(due / 60), L"TimeMinute=" + std::to_wstring(due % 60)});
  const RunningProgram program(L"INVISIBLE");
  const std::string text = std::string(kByteOrderMark) + "Done while You were (äß€) away.\r\n";
  bool everShown = false;
  int began = -1;
  ASSERT_TRUE(WaitFor(
      [&] {
        everShown |= std::ranges::any_of(program.Windows(L"OrvantoForm"), IsWindowVisible);
        if (began < 0 && FindWindowW(L"Notepad", nullptr) != nullptr) began = MinuteOfTheDay();
        return ReadFile(folder / "out\\orvanto-errand.txt") == text;
      },
      std::chrono::seconds(130)));
  EXPECT_FALSE(everShown);
  EXPECT_EQ(began, due);
  EXPECT_EQ(FindWindowW(L"Notepad", nullptr), nullptr);
  fs::remove(script);
}

TEST_F(ServicesTest, FetchesWhatIsOnTheClipboard) {
  std::string file(300000, 'x');  // and the request
  socket_->onConnectionRequest = [&](auto id) {
    socket_->Close();
    socket_->Accept(id);
  };
  socket_->onDataArrival = [&] {
    file += socket_->GetData();
    socket_->Send("HTTP/1.0 200 OK\r\nContent-Type: text/plain\r\n\r\n" + file);
    socket_->CloseGently();
  };
  if (!socket_->Listen(80, "127.0.0.1")) GTEST_SKIP() << "port 80 is not free";
  // Sleeping would hold up the server, and everybody who looks at our clipboard.
  const auto alarm = loop_.NewTimer([] {});
  alarm->Start(std::chrono::milliseconds(20));
  const std::string path = ToUtf8(Beside(L"file.bin")), url = "http://127.0.0.1/a/file.bin";
  const RunningProgram program;
  const HWND main = program.MainWindow();
  fs::remove(path);
  win32::Win32Clipboard().SetText(" " + url);  // which the window takes
  const auto boxHoldsIt = [&] { return ToUtf8(TextOf(FocusBeside(GetForegroundWindow()))) == url; };
  // A menu that has only just come may take the first key before it has chosen its first item.
  EXPECT_TRUE(Wait([&] {
    if (FindWindowW(nullptr, L"Download") == nullptr) Type("{ESC 3}%i{UP}~");
    return Wait(boxHoldsIt, 1);
  }));
  Type("~");
  // Its window closes when the server has.
  EXPECT_TRUE(Wait([&] {
    return FindWindowW(nullptr, L"Download") == nullptr && GetForegroundWindow() == main &&
           ReadFile(path) == file;
  }));
}

TEST_F(ServicesTest, TheWindowsTellOfTheClientAndTalkWithHim) {
  std::string seen;
  socket_->onDataArrival = [&] { seen += socket_->GetData(); };
  // Waits for what comes up to the end of this text.
  const auto expect = [&](const std::string& text) {
    EXPECT_TRUE(Wait([&] { return seen.find(text) != seen.npos; })) << text << " not in " << seen;
    seen.erase(0, seen.find(text) + text.size());
  };
  Store(L"General", {L"Inet_ServerOn=1", L"Inet_Compat=1", L"OnTop=1"});
  const RunningProgram program;
  const HWND main = program.MainWindow();
  socket_->Connect("127.0.0.1", 600);
  expect("7) Logout\r\n>");
  EXPECT_TRUE(WaitFor([&] {
    std::wstring texts;
    for (const HWND text : Children(main, WC_STATICW)) {
      if (IsWindowVisible(text)) texts += TextOf(text) + L"|";
    }
    return texts.find(L"|127.0.0.1|") != texts.npos && texts.ends_with(L"|on|off|");
  })) << "the address and the lamps";
  for (const bool accepted : {false, true}) {
    socket_->Send("6\r\n");
    expect("Asking for Chat...\r\n");
    EXPECT_EQ(BoxInFront(L"Chat Request"), L"Accept Chat Request?");
    EXPECT_TRUE(HasStyle(GetForegroundWindow(), WS_EX_TOPMOST)) << "as the main window is";
    // What is typed when it comes is no consent.
    Type(accepted ? "{LEFT}~" : "~");
    expect(accepted ? "Press '/' to Quit...\r\n\r\n" : "7) Logout\r\n>");
  }
  // A box has just gone, and the window manager may yet give the front to what was below it.
  const HWND chat = InFront(L"Chat", 50);
  Type("Good evening~");
  expect("\r\nServer: Good evening\r\n");
  Type("+{TAB}q");  // a letter beside the box ends no chat
  socket_->Send("Hi\r\n");
  const HWND transcript = Children(chat, WC_EDITW).at(1);
  const std::wstring said = L"Server: Good evening\r\n\r\nClient: Hi\r\n";
  EXPECT_TRUE(WaitFor([&] { return TextOf(transcript) == said; }));
  Type("{ESC}");  // ends no conversation
  Type("%q");
  expect("\r\nChat Ended by Server\r\n\r\n");
  EXPECT_TRUE(program.MainIsInFront());
}

}  // namespace
}  // namespace orvanto::desktop
