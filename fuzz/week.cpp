// A week of the program in simulated time, with all services busy: a hundred tasks a day, and in
// each minute a telnet session, an FTP session that stores, lists, fetches and deletes a file, and
// now and then a download. Ends with 1 where something did not happen, or where the last day left
// memory that the first had not.
//
// Usage: week [DAYS]
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "app/Program.h"
#include "core/ProgramSettings.h"
#include "core/modRegistry.h"
#include "core/modTaskOperations.h"
#include "download/Downloads.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using Socket = FakeSocketHost::Socket;

constexpr int kTasks = 100;
constexpr int kMinutesPerDay = 24 * 60;
constexpr std::size_t kMostGrowth = 256 << 10;  // what logs of bounded length come and go by

class Week {
 public:
  Week() {
    fake_.messageBoxes.answersAll = true;
    fake_.sockets.names["host"] = {Ipv4{0x0A010101}};
    Settings& settings = program_.GetSettings();
    settings.WriteSetting(kGeneral, "Inet_ServerOn", "1");
    settings.WriteUserSetting(kGeneral, "Inet_Compat", "1");
    fake_.files.contents["C:\\Home\\scripts\\busy.txt"] =
        "copy('C:\\from\\file',C:\\to)\nmsgbox('done',nostop)\n";
    fake_.files.contents["C:\\from\\file"] = "contents";
    fake_.files.contents["C:\\tool.exe"] = "";
    program_.onTaskRun = [this](const TaskRecord&) { ++count_["tasks"]; };
    ended_ = program_.GetDownloads().ended.Subscribe(
        [this](const DownloadEnd& end) { count_["downloads"] += end.whole; });
    program_.Start();
    AddTasks();
  }

  // False when something has not happened.
  bool Run(int days) {
    std::size_t first = 0;
    std::size_t last = 0;
    for (int day = 0; day < days; ++day) {
      for (int minute = 0; minute < kMinutesPerDay; ++minute) Minute(day * kMinutesPerDay + minute);
      last = InUse();
      if (day == 0) first = last;
    }
    for (const auto& [what, times] : count_) std::printf("%d %s, ", times, what.c_str());
    std::printf("%zu bytes in use after the first day, %zu after the last\n", first, last);
    const int minutes = days * kMinutesPerDay;
    return count_["tasks"] == kTasks * days && count_["telnet sessions"] == minutes &&
           count_["FTP sessions"] == minutes && count_["downloads"] == minutes / 10 && first > 0 &&
           last <= first + kMostGrowth;
  }

 private:
  static std::size_t InUse() {
    ::malloc_trim(0);
    return ::mallinfo2().uordblks;
  }

  void AddTasks() {
    for (int i = 0; i < kTasks; ++i) {
      constexpr TaskType kTypes[] = {kRunScript, kRunProgram, kPopupMessage, kPlaySound};
      constexpr const char* kPaths[] = {"busy.txt", "C:\\tool.exe", "Hello", "C:\\tool.exe"};
      TaskEntry entry;
      entry.name = "Task " + std::to_string(i);
      entry.index = static_cast<std::int16_t>(i + 1);
      entry.group = "Group " + std::to_string(i % 7);
      entry.hour = std::to_string(i % 24);
      entry.minute = std::to_string(i * 37 % 60);
      entry.timeType = kTimeRecurring;
      entry.every = entry.in = entry.winStyle = 1;
      entry.taskType = kTypes[i % 4];
      entry.path = kPaths[i % 4];
      if (program_.Store().StoreEntry(entry, "") == 0) std::abort();
    }
  }

  void Minute(int number) {
    const std::int64_t end = fake_.clock.UnixMilliseconds() + 60'000;
    fake_.loop.Advance(20'000);
    count_["telnet sessions"] += TelnetSession();
    fake_.loop.Advance(20'000);
    count_["FTP sessions"] += FtpSession();
    if (number % 10 == 0) Download(number);
    fake_.loop.Advance(end - fake_.clock.UnixMilliseconds());
    fake_.done.clear();
  }

  Socket* With(TcpSocket::State state, std::uint16_t port) {
    for (Socket* socket : fake_.sockets.sockets) {
      if (socket->GetState() == state && socket->LocalPort() == port) return socket;
    }
    return nullptr;
  }

  static std::string Say(Socket& socket, const std::string& line) {
    socket.PeerSends(line + "\r\n");
    return socket.Sent();
  }

  bool TelnetSession() {
    Socket* const client = With(TcpSocket::State::Listening, 600);
    if (client == nullptr || !client->PeerConnects()) return false;
    bool fine = client->Sent().find("7) Logout") != std::string::npos;
    for (const char* line : {"8", "5", "q", "3", "q", "1", "q"}) {
      fine = fine && !Say(*client, line).empty();
    }
    client->PeerCloses();
    return fine;
  }

  bool FtpSession() {
    Socket* const listener = With(TcpSocket::State::Listening, 21);
    if (listener == nullptr) return false;
    listener->PeerConnects();
    Socket* const client = With(TcpSocket::State::Connected, 0);
    if (client == nullptr) return false;
    std::string said = client->Sent();
    for (const char* line : {"USER a", "PASS b"}) said += Say(*client, line);
    said += Transfer(*client, "STOR week.bin", "what is stored");
    said += Transfer(*client, "LIST", "");
    said += Transfer(*client, "RETR week.bin", "");
    for (const char* line : {"DELE week.bin", "QUIT"}) said += Say(*client, line);
    client->PeerCloses();
    fake_.loop.Advance(100);
    // What was stored has been listed and has come back.
    return said.find("what is stored") != std::string::npos &&
           said.find("250 DELE") != std::string::npos;
  }

  std::string Transfer(Socket& client, const std::string& command, const std::string& upload) {
    std::string said = Say(client, "PASV");
    Socket* const passive = With(TcpSocket::State::Listening, 5000);
    if (passive == nullptr) return said;
    passive->PeerConnects();
    Socket* data = nullptr;
    for (Socket* socket : fake_.sockets.sockets) {
      if (socket->GetState() == TcpSocket::State::Connected && socket != &client) data = socket;
    }
    if (data == nullptr) return said;
    said += Say(client, command);
    if (!upload.empty()) {
      data->PeerSends(upload);
      data->PeerCloses();
    }
    fake_.loop.Advance(100);
    said += data->Sent() + client.Sent();
    data->PeerCloses();
    return said;
  }

  void Download(int number) {
    const std::string name = "file" + std::to_string(number);
    program_.GetDownloads().BeginDownload("http://host/" + name);
    fake_.loop.Advance(100);
    Socket* const server = With(TcpSocket::State::Connecting, 0);
    if (server == nullptr) return;
    server->Connected();
    server->PeerSends("HTTP/1.0 200 OK\r\nContent-Length: 5\r\n\r\n01234");
    server->PeerCloses();
    fake_.loop.Advance(3'000);
    std::erase_if(fake_.files.contents,
                  [&](const auto& file) { return file.first.find(name) != std::string::npos; });
  }

  FakePlatform fake_;
  Program program_{fake_.platform, {"", "C:\\Home"}};
  std::map<std::string, int> count_;
  Subscription ended_;
};

}  // namespace
}  // namespace orvanto

int main(int argc, char** argv) {
  const int days = argc > 1 ? std::atoi(argv[1]) : 7;
  orvanto::Week week;
  return days > 0 && week.Run(days) ? 0 : 1;
}
