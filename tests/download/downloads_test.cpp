#include <utility>
#include <vector>

#include "tests/download/DownloadDesk.h"

namespace orvanto {
namespace {

constexpr const char* kHeader = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\nContent-Type: x\r\n\r\n";
constexpr const char* kRest = "Range: bytes=6-\r\n";
std::string RequestFor(const std::string& path, const std::string& range, const std::string& host) {
  return "GET " + path + " HTTP/1.0\r\nAccept: *.*, */*\r\n" + range +
         "User-Agent: Tarnwell Downloader\r\nReferer: " + host + "\r\nHost: " + host + "\r\n\r\n";
}

// What is on the disk, the rollback and its amount, and the line of the request.
TEST(Download, AsksForTheRest) {
  const struct {
    std::size_t length;
    const char* rollback;
    const char* amount;
    const char* range;
    bool compat = false;
  } kCases[] = {{0, "", "", "Range: bytes=0-\r\n"},
                {5000, "0", "1024", "Range: bytes=5000-\r\n"},
                {5000, "1", "1024", "Range: bytes=3976-\r\n"},
                {5000, "1", "5000", "Range: bytes=5000-\r\n"},
                {5000, "-1", "many", "Range: bytes=3976-\r\n"},
                {5000, "x", "1", "Range: bytes=5000-\r\n"},
                {10'000'001, "0", "", "Range: bytes=1E+07-\r\n"},
                {10'000'001, "0", "", "Range: bytes=10000001-\r\n", true}};
  for (const auto& [length, rollback, amount, range, compat] : kCases) {
    DownloadDesk desk;
    desk.switches.compat = compat;
    desk.files.contents[kPath] = std::string(length, 'o');
    desk.settings.WriteSetting("Internet", "Rollback", rollback);
    desk.settings.WriteSetting("Internet", "Rollback Amount", amount);
    EXPECT_EQ(desk.Begin(), RequestFor("/dir/file", range, "host"));
  }
  DownloadDesk desk;
  EXPECT_EQ(desk.Begin("HTTP://host//a b?c"), RequestFor("//a b?c", "", "host"));
  EXPECT_EQ(desk.Http().tried.back(), std::pair(Ipv4{0x01020304}, std::uint16_t{80}));
}

// What is there, what arrives before the other side closes (in pieces between bars, "~" ends a
// line), what is there then, and how it ends.
struct Stream {
  const char* before;
  std::string pieces;
  std::string outcome;
};

void RunAll(const std::vector<Stream>& streams, bool compat) {
  for (const auto& [before, pieces, outcome] : streams) {
    DownloadDesk desk;
    desk.switches.compat = compat;
    if (*before != '\0') desk.files.contents[kPath] = before;
    desk.files.diskLeft = 30;
    desk.messageBoxes.answersAll = true;
    desk.Begin();
    desk.Hear(pieces);
    if (desk.Http().GetState() == TcpSocket::State::Connected) desk.Http().PeerCloses();
    EXPECT_EQ(desk.File() + desk.ends, outcome) << pieces;
  }
}

TEST(Download, PutsEveryByteWhereItBelongs) {
  const std::string ok = "HTTP/1.1 200 OK~Content-Length: 10~Content-Type: x~~";
  const std::string typed = "HTTP/1.0 200 OK~content-type: x~~";
  const std::string part = "HTTP/1.1 206 Partial Content~Content-Type: x~Content-Length: ";
  RunAll(
      {{"", ok + "0123456789", "0123456789[whole]"},
       {"", ok + "|01|content-type: ", "01content-type: [The connection ended at byte 16 of 10.]"},
       {"", ok + "0123", "0123[The connection ended at byte 4 of 10.]"},
       {"", typed + "404 not found", "404 not found[whole]"},
       {"", "plain| data", "plain data[whole]"},
       {"", "Content-Type: never ends", "Content-Type: never ends[whole]"},
       {"", typed, "[whole]"},
       {"", "", "none[The server has sent nothing.]"},
       {"abcdef", "", "abcdef[The server has sent nothing.]"},
       {"", typed + std::string(31, 'x'),
        "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxx[The file cannot be written.]"},
       {"", "HTTP/1.1 200 OK~content-length:12~Content-Type: x~~0123",
        "0123[The connection ended at byte 4 of 12.]"},
       {"abcdef", part + "99999999999999999999~~ghij",
        "abcdefghij[The connection ended at byte 10 of 18446744073709551615.]"},
       {"", "HTTP/1.1 404 Not Found~Content-Type: x~~sorry", "none[File Not Found]"},
       {"abcdef", part + "4~~ghij", "abcdefghij[whole]"},
       {"abcdef", part + "4~Content-Range: bytes 6-9/10~~ghij", "abcdefghij[whole]"},
       {"abcdef", part + "4~Content-Range:  bytes 0-9/10~~ghij", "abcdef[No Resuming Support]"},
       {"abcdef", ok + "206 partial content", "abcdef[No Resuming Support]"},
       {"abcdef", "no header", "abcdefno header[whole]"}},
      false);
}

// The same with today's servers.
TEST(Download, BelievesWhatTheHeaderSays) {
  const std::string part = "HTTP/1.1 206 x~content-range:\tBytes ";
  const auto to = [](const char* status, const std::string& location) {
    return "HTTP/1.1 " + std::string(status) + " x~location: " + location + "~~|";
  };
  const auto moved = [](const char* there) {
    return std::string(
               "none[The file has moved to an address that cannot be fetched from (https is "
               "not spoken): ") +
           there + "]";
  };
  RunAll(
      {{"", "hTTp/1.0 200\ncontent-LENGTH : 4\n\n0123", "0123[whole]"},
       {"", "HTTP/1.1 102 a~x: y~~HTTP/1.1 100 b~~HTTP/1.1 200 c~~|01", "01[whole]"},
       {"", "HTTP/1.1 200 x~Content-Length: 4~~012", "012[The connection ended at byte 3 of 4.]"},
       {"", "HTTP/1.1 200 x~X-Content-Length: 9~~012", "012[whole]"},
       {"", "HTTP/1.1 200 x~Content-Length: 0~~", "[whole]"},
       {"", "HTTP/1.1 404 gone~~sorry", "none[File Not Found]"},
       {"", "HTTP/1.1 403 No~~sorry",
        "none[The server does not send the file. It says: HTTP/1.1 403 No]"},
       {"", "HTTP/1.1 304 x~~", "none[The server does not send the file. It says: HTTP/1.1 304 x]"},
       {"", "HT|ML", "none[The server's answer is no HTTP response.]"},
       {"", "HTTP/1.1 200 OK~x: y~", "none[The server's answer is no HTTP response.]"},
       {"", "HTTP/1.1 200 " + std::string(64 << 10, 'x') + "~~01",
        "none[The server's answer is no HTTP response.]"},
       {"", "HTTP/1.1 OK~~", "none[The server's answer is no HTTP response.]"},
       {"abcdef", "", "abcdef[The server's answer is no HTTP response.]"},
       {"abcdef", part + "6-9/10~Content-Length: 9~~ghij", "abcdefghij[whole]"},
       {"abcdef", part + "6-9/*~Content-Length: 9~~ghij",
        "abcdefghij[The connection ended at byte 10 of 15.]"},
       {"abcdef", part + "5-9/10~~ghij", "abcdef[No Resuming Support]"},
       {"abcdef", part + "*/10~~ghij", "abcdef[No Resuming Support]"},
       {"abcdef", part + "6-9/5~~ghij", "abcdef[No Resuming Support]"},
       {"", "HTTP/1.1 200 x~Content-Range: bytes 0-1/2~~0123", "0123[whole]"},
       {"", "HTTP/1.1 204 x~~", "none[The server does not send the file. It says: HTTP/1.1 204 x]"},
       {"abcdef", "HTTP/1.1 200 OK~~ghij", "abcdef[No Resuming Support]"},
       {"abcdef", "HTTP/1.1 416 x~Content-Range: bytes */6~~", "abcdef[whole]"},
       {"abcdef", "HTTP/1.1 416 x~Content-Range: bytes */5~~",
        "abcdef[The server does not send the file. It says: HTTP/1.1 416 x]"},
       {"", to("302", "/x") + to("301", "y?a/b") + "HTTP/1.1 200 x~~01", "01[whole]"},
       {"", "HTTP/1.1 302 x~~sorry",
        "none[The server does not send the file. It says: HTTP/1.1 302 x]"},
       {"", to("302", "https://u:p@host/x"), moved("https://host/x")},
       {"", to("302", "http://host:0/x"), moved("http://host:0/x")},
       {"", to("302", "/\x01"), moved("http://host/\x01")},
       {"",
        to("301", "1") + to("302", "2") + to("303", "3") + to("307", "4") + to("308", "5") +
            to("302", "6"),
        "none[The server sends the download from one address to the next, at last to "
        "http://host/dir/6]"}},
      true);
}

// An address, where that sends us on to, where we connect to then, and what we ask for.
TEST(Download, GoesWhereTheServerSaysThatTheFileIs) {
  const struct {
    const char* url;
    const char* location;
    std::uint16_t port;
    std::string request;
  } kCases[] = {
      {"http://host:8080/a b/file", "../x?y#z", 8080,
       RequestFor("/a%20b/../x?y", kRest, "host:8080")},
      {"http://host:8080/a?b/file", "?d", 8080, RequestFor("/a?d", kRest, "host:8080")},
      {"http://host:8080/a/file", "", 8080, RequestFor("/a/file", kRest, "host:8080")},
      {"http://host/a/file", "#b", 80, RequestFor("/a/file", kRest, "host")},
      {"http://host/a/file", "//10.1.1.1:81/b", 81, RequestFor("/b", kRest, "10.1.1.1:81")},
      {"http://host/a/file", "//host?b", 80, RequestFor("/?b", kRest, "host")},
      {"http://host/a/file", "http://host?b", 80, RequestFor("/?b", kRest, "host")}};
  DownloadDesk desk;
  desk.files.contents[kPath] = "abcdef";
  for (const auto& [url, location, port, request] : kCases) {
    desk.switches.compat = true;
    desk.Begin(url);
    desk.switches.compat = false;
    desk.Hear(std::string("HTTP/1.1 307 x~Location: ") + location + "~~");
    desk.Http().Connected();
    EXPECT_EQ(desk.Http().Sent(), request);
    EXPECT_EQ(desk.Http().tried.back().second, port);
    EXPECT_TRUE(desk.window.cmdStop.Press());
  }
}

// By default an arrival without its type is not known for a header.
TEST(Download, TakesAHeaderThatIsCutAnywhere) {
  const std::string stream = std::string(kHeader) + "0123456789";
  const std::size_t type = stream.find("Content-Type:");
  for (std::size_t cut = 1; cut < stream.size(); ++cut) {
    for (const bool compat : {false, true}) {
      DownloadDesk desk;
      desk.switches.compat = compat;
      desk.Begin();
      desk.Http().PeerSends(stream.substr(0, cut));
      desk.Http().PeerSends(stream.substr(cut));
      desk.Http().PeerCloses();
      EXPECT_EQ(desk.File(), (compat || cut >= type + 13 ? "0123456789"
                              : cut > type               ? stream
                                                         : stream.substr(0, cut) + "0123456789"))
          << cut;
    }
  }
  DownloadDesk desk;
  desk.Begin();
  desk.Http().PeerSends("Content-Type:" + std::string(64 << 10, 'x'));
  EXPECT_EQ(desk.File().size(), (64U << 10) + 13);
  desk.loop.Advance(500);
  EXPECT_EQ(desk.window.lblSize.Text(), "Unknown");
}

// What arrives before the figures say that it is complete and what after that ("!" breaks the
// connection), and how it ends: by what was told of the length, whatever the figures say.
TEST(Download, EndsWithTheLastByteWhateverTheFiguresSay) {
  const std::string other = "X-Content-Length: 4\r\n";
  const struct {
    std::string header;
    const char* early;
    const char* late;
    const char* ends;
  } kCases[] = {{kHeader, "12345678", "!", "012345678[The connection ended at byte 9 of 10.]"},
                {kHeader, "12345678!!", "", "012345678!![The connection ended at byte 11 of 10.]"},
                {other + kHeader, "123", "456789", "0123456789[whole]"}};
  for (const auto& [header, early, late, ends] : kCases) {
    DownloadDesk desk;
    desk.Begin();
    desk.Http().PeerSends(header + "0");
    desk.loop.Advance(1000);
    desk.Http().PeerSends(early);
    desk.loop.Advance(1000);
    EXPECT_EQ(desk.Shown(), "---x Download Completed");
    desk.Http().receiveError = *late == '!' ? 10054 : 0;
    if (*late == '!') {
      desk.Http().Receive();
    } else if (*late != '\0') {
      desk.Http().PeerSends(late);
    }
    EXPECT_EQ(desk.File() + desk.ends, ends);
    EXPECT_EQ(desk.Http().GetState(), TcpSocket::State::Closed);
  }
}

// The figures say early that it is complete; the last bytes still come.
TEST(Download, ShowsCompletionEarlyAndKeepsTheLastByte) {
  DownloadDesk desk;
  const frmDownload& window = desk.window;
  desk.Begin();
  desk.Http().PeerSends("HTTP/1.1 200 OK\r\nContent-Length: 204800\r\nContent-Type: x\r\n\r\n");
  desk.loop.Advance(1000);
  desk.Http().PeerSends(std::string(1999, 'x'));
  desk.loop.Advance(1000);
  EXPECT_EQ(desk.Shown(), "-xx- box");
  EXPECT_EQ(window.lblRecieve.Text() + " of " + window.lblSize.Text(), "1.95 KB of 200.00 KB");
  EXPECT_EQ(window.picDownloadProgress.Drawings().front().text, "1%");
  EXPECT_EQ(window.lblSpeed.Text() + " " + window.lblElapsed.Text(), "2.00 Kbps 00:00:01");
  EXPECT_EQ(window.lblRemaining.Text(), "00:01:39");
  desk.Http().PeerSends(std::string(204800 - 2000, 'x'));
  desk.loop.Advance(1000);
  EXPECT_EQ(desk.Shown() + window.lblSpeed.Text() + desk.ends, "---x Download Completed0");
  desk.Http().PeerSends("9");
  EXPECT_EQ(desk.File().substr(204798) + desk.ends, "x9[whole]");
  EXPECT_TRUE(desk.window.cmdRun.Press());
  EXPECT_EQ(desk.done.back(), "Open C:\\Orvanto\\file in '' 1");
}

TEST(Download, SavesACopyOfTheFinishedFile) {
  DownloadDesk desk;
  desk.Begin();
  EXPECT_FALSE(desk.window.mnuSave.Choose());
  desk.Http().PeerSends(kHeader + std::string("0123456789"));
  desk.Http().PeerCloses();
  desk.window.Open();
  EXPECT_TRUE(desk.window.mnuSave.Choose());
  desk.downloads.BeginDownload("http://host/next");
  desk.loop.DoEvents();
  desk.downloads.save.txtPath.Type("C:\\copy");
  desk.downloads.save.cmdOK.Press();
  EXPECT_EQ(desk.files.contents["C:\\copy"], "0123456789");
}

TEST(Download, WaitsForTheOneBefore) {
  DownloadDesk desk;
  desk.Begin();
  desk.downloads.BeginDownload(" ftp://host ");
  desk.downloads.BeginDownload("http://host/second");
  desk.window.StartUpdate("http://host/other");
  desk.Http().PeerSends(kHeader + std::string("0123456789"));
  desk.Http().PeerCloses();
  EXPECT_FALSE(desk.window.Loaded());
  desk.messageBoxes.expected.push_back(
      {"This is no address of a file that can be downloaded.\r\nftp://host", Answer::Ok,
       [&] { EXPECT_EQ(desk.Shown().substr(0, 4), "x---"); }});
  desk.loop.DoEvents();
  desk.loop.DoEvents();
  ASSERT_EQ(desk.Http().GetState(), TcpSocket::State::Connecting);
  EXPECT_TRUE(desk.window.Visible());
  desk.Http().Connected();
  EXPECT_EQ(desk.Http().Sent(), RequestFor("/second", "", "host"));
  EXPECT_EQ(desk.ends, "[whole][This is no address of a file that can be downloaded.]");
}

// Each button in each state: what it does to what is shown and to the connection.
TEST(Download, ButtonsDoWhatTheStateAllows) {
  using State = TcpSocket::State;
  const struct {
    const char* steps;  // h header, d data, P pause or resume, S stop, c closes, e fails, u unloads
    const char* shown;
    State state;
    const char* ends;
  } kCases[] = {
      {"", "-xx- box", State::Connected, ""},
      {"P", "-xx- box", State::Connected, ""},
      {"S", "x--- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hd", "-xx- box", State::Connected, ""},
      {"hdP", "-x-- Download Paused", State::Closed, ""},
      {"hdPS", "-x-- Download Paused", State::Closed, ""},
      {"hdPP", "-xx- box", State::Connecting, ""},
      {"hdPPS", "x--- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hdPPnS", "x--- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hdS", "x--- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hde", "-xx- box", State::Failed, ""},
      {"hdeS", "x--- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hdeP", "-x-- Download Paused", State::Closed, ""},
      {"hdu", "---- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hdPu", "---- Download Aborted", State::Closed, "[Download Aborted]"},
      {"hdc", "---- Download Completed", State::Closed, "[The connection ended at byte 5 of 10.]"}};
  for (const auto& [steps, shown, state, ends] : kCases) {
    DownloadDesk desk;
    desk.Begin();
    for (const char step : std::string(steps)) {
      if (step == 'h') desk.Http().PeerSends(kHeader);
      if (step == 'd') desk.Http().PeerSends("01234");
      if (step == 'n') desk.Http().Connected();
      if (step == 'P') desk.window.cmdPause.Press();
      if (step == 'S') desk.window.cmdStop.Press();
      if (step == 'c') desk.Http().PeerCloses();
      if (step == 'u') desk.window.Close();
      desk.Http().receiveError = step == 'e' ? 10054 : 0;
      if (step == 'e') desk.Http().Receive();
      desk.loop.Advance(1000);
    }
    EXPECT_EQ(desk.Shown(), shown) << steps;
    EXPECT_EQ(desk.Http().GetState(), state) << steps;
    EXPECT_EQ(desk.ends, ends) << steps;
  }
}

// While it is paused the file decides where it goes on.
TEST(Download, GoesOnAfterAPauseWhereTheFileEnds) {
  DownloadDesk desk;
  desk.settings.WriteSetting("Internet", "Rollback", "1");
  desk.settings.WriteSetting("Internet", "Rollback Amount", "2");
  desk.Begin();
  desk.Http().PeerSends(kHeader + std::string("01234"));
  desk.window.cmdPause.Press();
  desk.window.txtURL.Type("http://else/where");
  desk.window.cmdPause.Press();
  desk.Http().Connected();
  EXPECT_EQ(desk.Http().Sent(), RequestFor("/dir/file", "Range: bytes=5-\r\n", "host"));
  desk.loop.Advance(1000);
  const std::string most(1981, '5');
  desk.Hear("HTTP/1.1 206 Partial Content~Content-Type: x~Content-Length: 1985~~" + most);
  desk.loop.Advance(1000);
  EXPECT_EQ(desk.window.lblSize.Text() + " " + desk.window.lblSpeed.Text(), "1.94 KB 1.98 Kbps");
  desk.Hear("6789");
  desk.Http().PeerCloses();
  EXPECT_EQ(desk.File() + desk.ends, "01234" + most + "6789[whole]");
}

TEST(Download, OffersToResumeWhatWasCutShort) {
  for (const bool broken : {false, true}) {
    DownloadDesk desk;
    desk.switches.compat = true;
    desk.Begin();
    desk.Http().PeerSends(std::string(kHeader) + "012345");
    desk.Http().receiveError = 10054;
    broken ? desk.Http().Receive() : desk.Http().PeerCloses();
    EXPECT_EQ(desk.Shown(), "xx-- The connection ended at byte 6 of 10.");
    EXPECT_TRUE(desk.window.Visible() && desk.window.cmdPause.Text() == "&Resume");
    EXPECT_TRUE(desk.window.cmdPause.Press() && !desk.window.cmdPause.Press());
    desk.loop.DoEvents();
    desk.Http().Connected();
    EXPECT_EQ(desk.Shown() + desk.window.cmdPause.Text(), "-xx- box&Pause");
    EXPECT_EQ(desk.Http().Sent(), RequestFor("/dir/file", kRest, "host"));
    desk.Http().receiveError = 0;
    desk.Hear("HTTP/1.1 206 x~Content-Length: 4~~6789");
    desk.Http().PeerCloses();
    EXPECT_EQ(desk.File() + desk.ends, "0123456789[The connection ended at byte 6 of 10.][whole]");
  }
}

// Whether the switch is on, what arrives, and what is there then.
TEST(Download, ReplacesAnOldFileByAWholeOne) {
  const struct {
    bool compat;
    const char* pieces;
    const char* held;
    const char* box = "";
    const char* locked = "";
  } kCases[] = {{false, "HTTP/1.1 206 Partial Content~Content-Type: x~~new", "oldnew"},
                {true, "HTTP/1.1 200 OK~Content-Length: 2~~no", "no"},
                {true, "HTTP/1.1 200 OK~~half of the disk", "half of the disk"},
                {true, "HTTP/1.1 200 OK~~new", "old", "The file cannot be written.", kPath},
                {true, "HTTP/1.1 200 OK~Content-Length: 4~~new", "old"},
                {true, "HTTP/1.1 200 OK~~this is more than the disk takes", "old",
                 "The file cannot be written."}};
  for (const auto& [compat, pieces, held, box, locked] : kCases) {
    DownloadDesk desk;
    desk.switches.compat = compat;
    if (*box != '\0') desk.Expect(box);
    desk.files.locked = {locked};
    desk.files.contents = {{kPath, "old"}, {std::string(kPath) + ".new", "left"}};
    desk.files.diskLeft = 20;
    desk.downloads.BeginDownload(kUrl, true);
    desk.loop.DoEvents();
    desk.Hear(pieces);
    if (desk.Http().GetState() == TcpSocket::State::Connected) desk.Http().PeerCloses();
    EXPECT_EQ(desk.File(), held) << desk.ends;
    EXPECT_EQ(desk.files.contents.size(), compat ? 1 : 2);
  }
}

TEST(Download, TakesUrlsFromTheClipboardAndFromDrops) {
  DownloadDesk desk;
  for (const std::string url : {"see ftp://host/x", "see http://host/x"}) {
    desk.clipboard.text = "  " + url + " \r\n";
    desk.window.Close();
    desk.window.Open();
    EXPECT_EQ(desk.window.txtURL.Text(), url);
  }
  desk.window.txtURL.Drop(" http://host/a ");
  EXPECT_EQ(desk.window.txtURL.Text(), "http://host/a");
  desk.window.Close();
  CRegister(desk.registry)
      .REGSaveSetting("HKLM", "\\Software\\Orvanto\\Settings", "Clipboard", "0");
  desk.window.txtURL.SetText("");
  desk.window.Open();
  EXPECT_EQ(desk.window.txtURL.Text(), "");
}

}  // namespace
}  // namespace orvanto
