#include <vector>

#include "download/frmFetchwellOptions.h"
#include "download/frmFtpOptions.h"
#include "download/frmProxy.h"
#include "download/frmSave.h"
#include "tests/download/DownloadDesk.h"

namespace orvanto {
namespace {

constexpr const char* kHeader = "HTTP/1.1 200 OK\r\nContent-Length: 10\r\nContent-Type: x\r\n\r\n";
constexpr const char* kRest = "Range: bytes=6-\r\n";
std::string RequestFor(const std::string& path, const std::string& range, const std::string& host) {
  return "GET " + path + " HTTP/1.0\r\nAccept: *.*, */*\r\n" + range +
         "User-Agent: Tarnwell Downloader\r\nReferer: " + host + "\r\nHost: " + host + "\r\n\r\n";
}

// What is on the disk, the rollback ("!": as today) and its amount, the bytes that are asked for.
TEST(Download, AsksForTheRest) {
  const std::tuple<std::size_t, const char*, const char*, std::string> cases[] = {
      {5000, "0", "1024", "5000-"},    {5000, "1", "1024", "3976-"},
      {5000, "1", "5000", "5000-"},    {5000, "-1", "many", "3976-"},
      {10'000'001, "0", "", "1E+07-"}, {10'000'001, "0!", "", "10000001-"}};
  for (const auto& [length, rollback, amount, bytes] : cases) {
    DownloadDesk desk;
    desk.switches.compat = rollback == std::string("0!");
    desk.files.contents[kPath] = std::string(length, 'o');
    desk.settings.WriteSetting("Internet", "Rollback", rollback);
    desk.settings.WriteSetting("Internet", "Rollback Amount", amount);
    EXPECT_EQ(desk.Begin("HTTP://host//a/file"),
              RequestFor("//a/file", "Range: bytes=" + bytes + "\r\n", "host"));
  }
}

// What is there at the end and how it ends, and after which arrivals, as Hear takes them.
using Streams = std::vector<std::pair<std::string, Texts>>;

void RunAll(bool compat, const std::string& before, const Streams& streams) {
  for (const auto& [outcome, arrivals] : streams) {
    for (const std::string& pieces : arrivals) {
      DownloadDesk desk;
      desk.switches.compat = compat;
      if (!before.empty()) desk.files.contents[kPath] = before;
      desk.files.diskLeft = 30;
      desk.messageBoxes.answersAll = true;
      desk.Begin();
      desk.Hear(pieces + "|@.");
      EXPECT_EQ(desk.File() + desk.ends, outcome) << pieces;
    }
  }
}

std::string EndedAt(const std::string& byte) {
  return "[The connection ended at byte " + byte + ".]";
}

TEST(Download, PutsEveryByteWhereItBelongs) {
  const std::string ok = "HTTP/1.1 200 OK~Content-Length: 10~Content-Type: x~~";
  const std::string typed = "HTTP/1.0 200 OK~content-type: x~~";
  const std::string part = "HTTP/1.1 206 Partial Content~Content-Type: x~Content-Length: ";
  RunAll(
      false, "",
      {{"0123456789[whole]",
        {ok + "0123456789", "X-Content-Length: 4~" + ok + "0|@t|123|@t|456789",
         ok + "01234|@P|@P|" + part + "5~~56789"}},
       {"012345678" + EndedAt("9 of 10"), {ok + "0|@t|12345678|@t|@!"}},
       {"012345678!!" + EndedAt("11 of 10"), {ok + "0|@t|12345678!!|@t", ok + "012345678!|!"}},
       // An arrival without the type is not known for a header.
       {"HTTP/1.1 200 OK\r\n0123456789[whole]", {"HTTP/1.1 200 OK~|Content-Type:| x~~0123456789"}},
       {"01content-type: " + EndedAt("16 of 10"), {ok + "|01|content-type: "}},
       {"404 not found[whole]", {typed + "404 not found"}},
       {"Content-Type: never ends[whole]", {"Content-Type: never ends"}},
       {"none[The server has sent nothing.]", {""}},
       {std::string(30, 'x') + "[The file cannot be written.]", {typed + std::string(31, 'x')}},
       {"0123" + EndedAt("4 of 12"), {"HTTP/1.1 200 OK~content-length:12~Content-Type: x~~0123"}},
       {"none[File Not Found]", {"HTTP/1.1 404 Not Found~Content-Type: x~~sorry"}}});
  RunAll(false, "abcdef",
         {{"abcdefghij" + EndedAt("10 of 18446744073709551615"),
           {part + "99999999999999999999~~ghij"}},
          {"abcdefghij[whole]", {part + "4~~ghij", part + "4~Content-Range: bytes 6-9/10~~ghij"}},
          {"abcdef[No Resuming Support]",
           {part + "4~Content-Range:  bytes 0-9/10~~ghij", ok + "206 partial content"}},
          {"abcdefno header[whole]", {"no header"}}});
}

// The same with today's servers.
TEST(Download, BelievesWhatTheHeaderSays) {
  const std::string ok = "HTTP/1.1 200 x~", part = "HTTP/1.1 206 x~content-range:\tBytes ";
  const auto to = [](const char* status, const std::string& location) {
    return "HTTP/1.1 " + std::string(status) + " x~location: " + location + "~~|";
  };
  const std::string moved =
      "none[The file has moved to an address that cannot be fetched from (https is not spoken): ";
  const std::string no = "[The server does not send the file. It says: HTTP/1.1 ";
  const std::string html = "[The server's answer is no HTTP response.]";
  RunAll(true, "",
         {{"0123[whole]",
           {"hTTp/1.0 200\ncontent-LENGTH : 4\n\n0123", ok + "Content-Range: bytes 0-1/2~~0123"}},
          {"01[whole]",
           {"HTTP/1.1 102 a~x: y~~HTTP/1.1 100 b~~HTTP/1.1 200 c~~|01",
            to("302", "/x") + to("301", "y?a/b") + ok + "~01"}},
          {"012" + EndedAt("3 of 4"), {ok + "Content-Length: 4~~012"}},
          {"[whole]", {ok + "Content-Length: 0~~"}},
          {"none[File Not Found]", {"HTTP/1.1 404 gone~~sorry"}},
          {"none" + no + "204 x]", {"HTTP/1.1 204 x~~"}},
          {"none" + no + "302 x]", {"HTTP/1.1 302 x~~sorry"}},
          {"none" + html,
           {"HT|ML", ok + "x: y~", "HTTP/1.1 200 " + std::string(64 << 10, 'x') + "~~01",
            "HTTP/1.1 OK~~"}},
          {moved + "https://host/x]", {to("302", "https://u:p@host/x")}},
          {moved + "http://host:0/x]", {to("302", "http://host:0/x")}},
          {moved + "http://host/\x01]", {to("302", "/\x01")}},
          {"none[The server sends the download from one address to the next, at last to "
           "http://host/dir/6]",
           {to("301", "1") + to("302", "2") + to("303", "3") + to("307", "4") + to("308", "5") +
            to("302", "6")}}});
  RunAll(true, "abcdef",
         {{"abcdefghij[whole]", {part + "6-9/10~Content-Length: 9~~ghij"}},
          {"abcdefghij" + EndedAt("10 of 15"), {part + "6-9/*~Content-Length: 9~~ghij"}},
          {"abcdef[No Resuming Support]",
           {part + "5-9/10~~ghij", part + "*/10~~ghij", part + "6-9/5~~ghij", ok + "~ghij"}},
          {"abcdef[whole]", {"HTTP/1.1 416 x~Content-Range: bytes */6~~"}},
          {"abcdef" + no + "416 x]", {"HTTP/1.1 416 x~Content-Range: bytes */5~~"}}});
}

// An address, where that sends us on to, where we connect to then, and what we ask for.
TEST(Download, GoesWhereTheServerSaysThatTheFileIs) {
  const std::tuple<const char*, std::string, std::uint16_t, std::string> cases[] = {
      {"http://host:8080/a b/file", "../x?y#z", 8080,
       RequestFor("/a%20b/../x?y", kRest, "host:8080")},
      {"http://host:8080/a?b/file", "?d", 8080, RequestFor("/a?d", kRest, "host:8080")},
      {"http://host:8080/a/file", "", 8080, RequestFor("/a/file", kRest, "host:8080")},
      {"http://host/a/file", "#b", 80, RequestFor("/a/file", kRest, "host")},
      {"http://host/a/file", "//10.1.1.1:81/b", 81, RequestFor("/b", kRest, "10.1.1.1:81")},
      {"http://host/a/file", "http://host?b", 80, RequestFor("/?b", kRest, "host")}};
  DownloadDesk desk;
  desk.files.contents[kPath] = "abcdef";
  for (const auto& [url, location, port, request] : cases) {
    desk.switches.compat = true;
    desk.Begin(url);
    desk.switches.compat = false;
    desk.Hear("HTTP/1.1 307 x~Location: " + location + "~~|@n");
    EXPECT_EQ(desk.Http().Sent(), request);
    EXPECT_EQ(desk.Http().tried.back().second, port);
    EXPECT_TRUE(desk.window.cmdStop.Press());
  }
}

TEST(Download, TakesAHeaderThatIsCutAnywhere) {
  const std::string stream = std::string(kHeader) + "0123456789";
  for (std::size_t cut = 1; cut < stream.size(); ++cut) {
    DownloadDesk desk;
    desk.switches.compat = true;
    desk.Begin();
    desk.Http().PeerSends(stream.substr(0, cut));
    desk.Http().PeerSends(stream.substr(cut));
    desk.Http().PeerCloses();
    EXPECT_EQ(desk.File(), "0123456789") << cut;
  }
  DownloadDesk desk;
  desk.Begin();
  desk.Http().PeerSends("Content-Type:" + std::string(64 << 10, 'x'));
  EXPECT_EQ(desk.File().size(), (64U << 10) + 13);
  desk.loop.Advance(500);
  EXPECT_EQ(desk.window.lblSize.Text(), "Unknown");
}

// The figures say early that it is complete; the last bytes still come.
TEST(Download, ShowsCompletionEarlyAndSavesACopyOfTheFinishedFile) {
  DownloadDesk desk;
  const frmDownload& window = desk.window;
  desk.Begin();
  desk.Hear("HTTP/1.1 200 OK~Content-Length: 204800~Content-Type: x~~|@t|" +
            std::string(1999, 'x') + "|@t");
  EXPECT_EQ(desk.Shown() + " " + window.lblRecieve.Text() + " of " + window.lblSize.Text(),
            "-xx- box 1.95 KB of 200.00 KB");
  EXPECT_EQ(window.picDownloadProgress.Drawings().front().text + " " + window.lblSpeed.Text(),
            "1% 2.00 Kbps");
  EXPECT_EQ(window.lblElapsed.Text() + " " + window.lblRemaining.Text(), "00:00:01 00:01:39");
  desk.Hear(std::string(204800 - 2000, 'x') + "|@t");
  EXPECT_EQ(desk.Shown() + window.lblSpeed.Text() + desk.ends, "---x Download Completed0");
  desk.Hear("9");
  EXPECT_EQ(desk.File().substr(204798) + desk.ends, "x9[whole]");
  EXPECT_TRUE(desk.window.cmdRun.Press());
  EXPECT_EQ(desk.done.back(), "Open C:\\Orvanto\\file in '' 1");
  desk.window.Open();
  EXPECT_TRUE(desk.window.mnuSave.Choose());
  desk.Begin("http://host/next");
  desk.downloads.save.txtPath.Type("C:\\copy");
  desk.downloads.save.cmdOK.Press();
  EXPECT_TRUE(desk.files.contents["C:\\copy"] == desk.File());
}

TEST(Download, RefusesWhatIsNoAddressAndGoesOnWithTheNext) {
  DownloadDesk desk;
  const std::string refusal = "This is no address of a file that can be downloaded.";
  const auto shown = [&] { EXPECT_EQ(desk.Shown().substr(0, 4), "x---"); };
  desk.messageBoxes.expected = {{refusal + "\r\nftp://host", Answer::Ok, shown}};
  desk.Begin();
  desk.Hear(std::string(kHeader) + "0123456789|@.");
  desk.downloads.BeginDownload(" ftp://host ");
  desk.loop.DoEvents();
  EXPECT_EQ(desk.Begin("http://host/second"), RequestFor("/second", "", "host"));
  EXPECT_EQ(desk.ends, "[whole][" + refusal + "]");
}

// Each button in each state: what is shown, the connection's state and how it ends, after which
// steps. "h" is the header, "d" data; the others are acts.
TEST(Download, ButtonsDoWhatTheStateAllows) {
  const std::pair<const char*, Texts> cases[] = {
      {"-xx- box 3", {"", "P", "hd"}},
      {"-x-- Download Paused 0", {"hdP", "hdPS", "hd!P"}},
      {"-xx- box 2", {"hdPP"}},
      {"-xx- box 5", {"hd!"}},
      {"x--- Download Aborted 0[Download Aborted]", {"S", "hdS", "hdPPS", "hdPPnS", "hd!S"}},
      {"---- Download Aborted 0[Download Aborted]", {"hdu", "hdPu"}},
      {"---- Download Completed 0[The connection ended at byte 5 of 10.]", {"hd."}}};
  for (const auto& [shown, walks] : cases) {
    for (const std::string& steps : walks) {
      DownloadDesk desk;
      desk.Begin();
      for (const char step : steps) {
        desk.Hear(step == 'h' ? kHeader : step == 'd' ? "01234" : std::string("@") + step);
        desk.loop.Advance(1000);
      }
      const int state = static_cast<int>(desk.Http().GetState());
      EXPECT_EQ(desk.Shown() + " " + std::to_string(state) + desk.ends, shown) << steps;
    }
  }
}

TEST(Download, OffersToResumeWhatWasCutShort) {
  for (const char* end : {"|@.", "|@!"}) {
    DownloadDesk desk;
    desk.switches.compat = true;
    desk.Begin();
    desk.Hear(std::string(kHeader) + "012345" + end);
    EXPECT_EQ(desk.Shown() + desk.window.cmdPause.Text(),
              "xx-- The connection ended at byte 6 of 10.&Resume");
    EXPECT_TRUE(desk.window.cmdPause.Press() && !desk.window.cmdPause.Press());
    desk.loop.DoEvents();
    desk.Http().Connected();
    EXPECT_EQ(desk.Shown() + desk.window.cmdPause.Text(), "-xx- box&Pause");
    EXPECT_EQ(desk.Http().Sent(), RequestFor("/dir/file", kRest, "host"));
    desk.Hear("HTTP/1.1 206 x~Content-Length: 4~~6789|@.");
    EXPECT_EQ(desk.File() + desk.ends, "0123456789[The connection ended at byte 6 of 10.][whole]");
  }
}

TEST(Download, ShowsTheSizeOfTheWholeAndTheSpeedOfTheRestAfterAPause) {
  DownloadDesk desk;
  desk.Begin();
  desk.Hear(std::string(kHeader) + "01234|@P|@P|@n|@t|" +
            "HTTP/1.1 206 Partial Content~Content-Type: x~Content-Length: 1985~~" +
            std::string(1981, '5') + "|@t");
  EXPECT_EQ(desk.window.lblSize.Text() + " " + desk.window.lblSpeed.Text(), "1.94 KB 1.98 Kbps");
}

// Whether the switch is on, what arrives, what is there then, the box that comes, what is locked.
TEST(Download, ReplacesAnOldFileByAWholeOne) {
  const char* const full = "The file cannot be written.";
  const std::string ok = "HTTP/1.1 200 OK~";
  const std::tuple<bool, std::string, const char*, const char*, const char*> cases[] = {
      {false, "HTTP/1.1 206 Partial Content~Content-Type: x~~new", "oldnew", "", ""},
      {true, ok + "~half of the disk", "half of the disk", "", ""},
      {true, ok + "~new", "old", full, kPath},
      {true, ok + "Content-Length: 4~~new", "old", "", ""},
      {true, ok + "~this is more than the disk takes", "old", full, ""}};
  for (const auto& [compat, pieces, held, box, locked] : cases) {
    DownloadDesk desk;
    desk.switches.compat = compat;
    if (*box != '\0') desk.Expect(box);
    desk.files.locked = {locked};
    desk.files.contents = {{kPath, "old"}, {std::string(kPath) + ".new", "left"}};
    desk.files.diskLeft = 20;
    desk.downloads.BeginDownload(kUrl, true);
    desk.loop.DoEvents();
    desk.Hear(pieces + "|@.");
    EXPECT_EQ(desk.File(), held) << desk.ends;
    EXPECT_EQ(desk.files.contents.size(), compat ? 1 : 2);
  }
}

TEST(Download, TakesUrlsFromTheClipboardAndFromDrops) {
  DownloadDesk desk;
  desk.clipboard.text = "  see ftp://host/x \r\n";
  desk.window.Open();
  EXPECT_EQ(desk.window.txtURL.Text(), "see ftp://host/x");
  desk.window.txtURL.Drop(" http://host/a ");
  EXPECT_EQ(desk.window.txtURL.Text(), "http://host/a");
  desk.window.Close();
  CRegister(desk.registry)
      .REGSaveSetting("HKLM", "\\Software\\Orvanto\\Settings", "Clipboard", "0");
  desk.window.txtURL.SetText("");
  desk.window.Open();
  EXPECT_EQ(desk.window.txtURL.Text(), "");
}

struct Dialogs : testing::Test, FakePlatform {
  DownloadOptions options{registry};
  frmFetchwellOptions general{forms, options, messageBoxes};
  frmFtpOptions ftp{forms, options, messageBoxes};
  frmProxy proxy{forms, options, messageBoxes};
};

// The contents of the boxes in the tab order, in brackets those that are disabled.
std::string Shown(const forms::Form& form) {
  std::string shown;
  for (forms::Control* control : form.Controls()) {
    const auto* check = dynamic_cast<forms::CheckBox*>(control);
    if (check == nullptr && dynamic_cast<forms::TextBox*>(control) == nullptr) continue;
    const std::string text = check == nullptr ? control->Text() : check->Value() ? "1" : "0";
    shown += (control->Enabled() ? text : "(" + text + ")") + ",";
  }
  return shown;
}

void ChangeAll(const forms::Form& form) {
  for (forms::Control* control : form.Controls()) {
    if (auto* check = dynamic_cast<forms::CheckBox*>(control)) check->Press();
    auto* box = dynamic_cast<forms::TextBox*>(control);
    EXPECT_TRUE(box == nullptr || box->Press("x5"));
  }
}

TEST_F(Dialogs, ShowWhatIsStoredAndStoreAllOfItOrSayThatTheyMayNot) {
  // The dialog, what it shows at first, what after a change of all, and what is stored then.
  const std::tuple<OptionsDialog*, std::string, std::string, Texts> cases[] = {
      {&general,
       "1,1024,1,1,",
       "0,10245,0,0,",
       {"Rollback", "Rollback Amount", "Clipboard", "Download Drop"}},
      {&ftp, "30,1,", "305,0,", {"FTP Timeout", "FTP PASV"}},
      {&proxy, "0,(),(),0,", "1,x5,x5,1,", {"Proxy Use", "Proxy IP", "Proxy Port", "Proxy FTP"}}};
  for (const auto& [shown, defaults, changed, names] : cases) {
    OptionsDialog& dialog = *shown;
    dialog.Open();
    ChangeAll(dialog);
    EXPECT_TRUE(dialog.cancelButton->Press());
    dialog.Open();
    EXPECT_EQ(Shown(dialog), defaults);
    ChangeAll(dialog);
    dialog.Open();  // what was typed stays
    registry.FailWrite(1, kAccessDenied);
    messageBoxes.expected.push_back(
        {"The options were not saved. They hold for everyone who uses this computer, and the "
         "system did not let you change them."});
    EXPECT_TRUE(dialog.defaultButton->Press() && dialog.Visible());
    EXPECT_TRUE(dialog.defaultButton->Press() && !dialog.Loaded());
    dialog.Open();
    EXPECT_EQ(Shown(dialog), changed);
    EXPECT_TRUE(dialog.Close());
    std::string stored;
    for (const std::string& name : names) {
      CRegister store(registry);
      const std::string key = "Software\\Orvanto\\Settings";
      stored += store.REGGetSetting("HKLM", key, name, "none") + ",";
    }
    EXPECT_EQ(stored, changed);
  }
  for (const char32_t key : {U'0', U'9', U'\b', U'\r'}) EXPECT_TRUE(ftp.txtTimeout.takesKey(key));
}

// Each step is one act of a user and the path that is shown then.
TEST_F(Dialogs, SaveAsWalksThroughDrivesAndFoldersToAPath) {
  files.listings = {{"C:\\", {"b.txt", "Zoo\\", "a@", "A.txt", "h*"}},
                    {"C:\\Zoo\\", {"z.txt", "In\\"}},
                    {"C:\\Zoo\\In\\", {}}};
  frmSave save(forms, files);
  Texts told;
  save.onPicked = [&](const auto& path) { told.push_back(path.value_or("nothing")); };
  save.Open("c:\\Zoo\\new.txt");
  EXPECT_EQ(save.cmbDrive.Text(), "C:\\");
  const auto enter = [&](int index) {
    return save.lstFolders.Choose(index) && save.lstFolders.PressEnter();
  };
  const auto ok = [&](const char* typed) { return save.txtPath.Type(typed) && save.cmdOK.Press(); };
  const std::pair<std::function<bool()>, const char*> steps[] = {
      {[&] { return true; }, "c:\\Zoo\\new.txt"},
      {[&] { return save.cmbDrive.Choose(1); }, "D:\\new.txt"},
      {[&] { return save.cmbDrive.Choose(0); }, "C:\\new.txt"},
      {[&] { return save.lstFiles.Choose(1); }, "C:\\b.txt"},
      {[&] { return enter(1); }, "C:\\Zoo\\b.txt"},
      {[&] { return enter(1); }, "C:\\Zoo\\In\\b.txt"},
      {[&] { return enter(0); }, "C:\\Zoo\\b.txt"},
      {[&] { return save.lstFolders.SelectedIndex() == 1; }, "C:\\Zoo\\b.txt"},
      {[&] { return enter(0); }, "C:\\b.txt"},
      {[&] { return ok("zoo\\"); }, "C:\\zoo\\"},
      {[&] { return ok("\\\\server\\share\\"); }, "\\\\server\\share\\"},
      {[&] { return !enter(0) && ok("C:"); }, "C:\\"}};
  for (const auto& [act, path] : steps) {
    EXPECT_TRUE(act()) << path;
    EXPECT_EQ(save.txtPath.Text(), path);
  }
  EXPECT_EQ(save.lstFiles.Items(), (Texts{"A.txt", "b.txt"}));
  for (const char* typed :
       {"d.txt", "\\d.txt", "D:d.txt", "D:\\d.txt", "\\\\server\\share\\d.txt"}) {
    save.Open("");
    EXPECT_TRUE(ok(typed));
  }
  save.Open("C:\\");
  EXPECT_TRUE(save.lstFiles.Choose(0) && save.txtPath.Type("d") && save.lstFiles.PressEnter());
  save.Open("");
  EXPECT_TRUE(!save.lstFiles.PressEnter() && save.cmdCancel.Press() && !save.Loaded());
  EXPECT_EQ(told, (Texts{"C:\\d.txt", "C:\\d.txt", "D:\\d.txt", "D:\\d.txt",
                         "\\\\server\\share\\d.txt", "C:\\A.txt", "nothing"}));
}

}  // namespace
}  // namespace orvanto
