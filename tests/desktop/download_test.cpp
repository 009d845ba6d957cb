// Downloads of the finished program, from a server of the test's own.
#include <filesystem>

#include "platform/win32/Text.h"
#include "platform/win32/Win32Clipboard.h"
#include "platform/win32/Win32Socket.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::desktop {
namespace {

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
