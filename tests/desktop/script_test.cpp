// Scripts in the finished program, with Notepad as the program they act on; downloads, from a
// server of the test's own.
#include <filesystem>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/Win32Socket.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::desktop {
namespace {

namespace fs = std::filesystem;
using win32::ToUtf8;

constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

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
  Import({{L"Errand", L"1", L"errand.txt"}}, due);
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

TEST_F(DesktopTest, FetchesWhatIsTypedPastedAndAskedForByAScript) {
  win32::Win32Loop loop;
  win32::Win32SocketHost sockets(loop);
  const std::shared_ptr<TcpSocket> listener = sockets.NewSocket(SocketHost::Use::Conversation);
  const auto client = sockets.NewSocket(SocketHost::Use::Data);
  std::string file(300000, 'x');  // grows with each request
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
  win32::Win32Clipboard clipboard;
  std::filesystem::create_directories(Beside(L"scripts"));
  const std::string script = win32::ToUtf8(Beside(L"scripts\\fetch.txt"));
  WriteFile(script, "download('http://127.0.0.1/a/script.bin',)");
  Import({{L"Fetch", L"1", L"fetch.txt"}});
  const RunningProgram program;
  const HWND main = program.MainWindow();
  for (const std::string how : {"script", "typed", "pasted"}) {
    const std::string url = "http://127.0.0.1/a/" + how + ".bin";
    const std::string path = win32::ToUtf8(Beside(win32::ToWide(how + ".bin")));
    std::filesystem::remove(path);
    clipboard.SetText(how == "pasted" ? " " + url : "");
    if (how == "script") {
      PostMessageW(program.TreeWindow(), WM_KEYDOWN, VK_END, 0);
      program.Press(L"&Run Task");
    } else {
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
      if (how == "typed") Type(url);
      EXPECT_TRUE(wait([&] { return TextOf(box) == win32::ToWide(url); })) << how;
      Type("~");
    }
    // Its window closes when the server has.
    EXPECT_TRUE(wait([&] {
      return FindWindowW(nullptr, L"Download") == nullptr && GetForegroundWindow() == main &&
             ReadFile(path) == file;
    })) << how;
    std::filesystem::remove(path);
  }
  std::filesystem::remove(script);
}

}  // namespace
}  // namespace orvanto::desktop
