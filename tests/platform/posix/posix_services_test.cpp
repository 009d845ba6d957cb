// What the services of this host do beyond their contracts.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>

#include <array>
#include <csignal>
#include <set>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixSession.h"
#include "platform/posix/PosixShell.h"
#include "platform/posix/PosixSocket.h"
#include "platform/posix/PosixSound.h"
#include "platform/posix/TerminalMessageBoxes.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::posix {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::HasSubstr;
using testing::StartsWith;

TEST(PosixClock, TellsLocalTimeAndTheShortDate) {
  ::setenv("TZ", "TEST-05:30", 1);
  const PosixClock clock("C");
  std::int64_t second = 0;
  DateTime now;
  do {
    second = clock.UnixMilliseconds() / 1000;
    now = clock.Now();
  } while (clock.UnixMilliseconds() / 1000 != second);
  ::unsetenv("TZ");
  EXPECT_EQ((now.hour * 60 + now.minute) * 60 + now.second, (second + 19'800) % 86'400);
  EXPECT_EQ(clock.ShortDate(1958, 8, 25), "08/25/58");
  EXPECT_EQ(PosixClock("no such locale").ShortDate(2026, 1, 2), "01/02/26");
}

TEST(PosixFiles, FindTheBranchInWhichTheWholePathExistsAndKnowWhatOnlyThisSystemHas) {
  const TemporaryDirectory directory;
  for (const char* made : {"d/FOO/sub", "d/Foo/Bin", "d/foo"}) {
    fs::create_directories(directory / made);
  }
  for (const char* made : {"d/FOO/same.txt", "d/Foo/Bin/run.sh", "d/Foo/same.txt", "d/Fool",
                           "d/.hidden", "d/back\\slash"}) {
    WriteFile(directory / made, "");
  }
  fs::create_symlink("nothing", directory / "d/FOOL");
  fs::create_symlink("Foo", directory / "d/link");
  ASSERT_EQ(::mkfifo((directory / "d/pipe").c_str(), 0600), 0);
  const std::string in = directory / "";
  // What is asked for, what is meant; one that is spelt as given is.
  const std::pair<std::string, std::string> cases[] = {
      {in + "d/fOO/bin/RUN.SH", in + "d/Foo/Bin/run.sh"},
      {in + "d/fOO/same.txt", in + "d/FOO/same.txt"},
      {in + "d/foo/same.txt", in + "d/foo/same.txt"},
      {in + "d/fOO/SUB/New.txt", in + "d/FOO/sub/New.txt"},
      {in + "d/fOO/New.txt", in + "d/FOO/New.txt"},
      {in + "d/fool", in + "d/Fool"},
      {in + "d/FOOL", in + "d/FOOL"},
      {"z:\\no\\Such", "/no/Such"},
      {"Z:no\\such", "/no/such"}};
  for (const auto& [shown, native] : cases) EXPECT_EQ(ToNative(shown), native);
  EXPECT_EQ(FromNative("/a/b") + FromNative("a/b"), "Z:\\a\\ba\\b");

  PosixFiles files;
  std::string text;
  EXPECT_FALSE(files.Read(FromNative(in + "d/pipe"), text));
  std::set<std::string> listed;
  files.ListFolder(FromNative(in + "d"), [&](const std::string& name, auto kind) {
    return listed.insert(name + " *\\@"[static_cast<int>(kind)]).second;
  });
  EXPECT_THAT(listed, testing::ElementsAre(".hidden*", "FOOL ", "FOO\\", "Foo\\", "Fool ", "foo\\",
                                           "link@", "pipe "));
  EXPECT_EQ(files.FromCodePage("a\xe4\x80\x9f"), "a\u00e4\u20ac\u0178");
}

// Writes down its name and its arguments, its folder, its standard input, and what it should not
// have got from us.
constexpr const char* kProgram = R"(#!/bin/sh
PATH=/bin:/usr/bin; exec >"$RECORD.part"
printf %s "${0##*/}"; printf '|%s' "$@"; echo; pwd; readlink /proc/$$/fd/0
[ -e /proc/$$/fd/57 ] && echo leaked
cut -d' ' -f6 /proc/$$/stat | grep -x "$SESSION"
mv "$RECORD.part" "$RECORD"
)";

class ProgramsTest : public testing::Test {
 protected:
  ProgramsTest() {
    fs::create_directory(directory_ / "bin");
    ::setenv("PATH", (directory_ / "bin").c_str(), 1);
    ::setenv("RECORD", record_.c_str(), 1);
    ::setenv("SESSION", std::to_string(::getsid(0)).c_str(), 1);
  }
  ~ProgramsTest() override { ::setenv("PATH", pathBefore_.c_str(), 1); }

  void MakePrograms(std::initializer_list<std::string> names) {
    for (const auto& name : names) {
      WriteFile(directory_ / name, kProgram);
      fs::permissions(directory_ / name, fs::perms::owner_all);
    }
  }
  std::string Record() {
    for (int i = 0; i < 10000 && !fs::exists(record_); ++i) ::usleep(1000);
    const std::string text = ReadFile(record_);
    fs::remove(record_);
    return text;
  }

  const std::string pathBefore_ = std::getenv("PATH");
  const TemporaryDirectory directory_;
  const std::string record_ = directory_ / "record";
  Notices notices_;
  PosixLoop loop_;
  PosixShell shell_{loop_, notices_};
};

TEST_F(ProgramsTest, FindsTheTargetInTheText) {
  MakePrograms({"bin/tool", "bin/two words", "two"});
  for (const char* name : {"two words.txt", "bin/plain"}) WriteFile(directory_ / name, "");
  fs::create_directory(directory_ / "bin/folder");
  const std::string dir = FromNative(directory_ / "");
  const std::tuple<std::string, std::string, std::vector<std::string>> cases[] = {
      {"tool  a \"b  c\"d \"\"", "bin/tool", {"a", "b  cd", ""}},
      {"two words x", "bin/two words", {"x"}},
      {dir + "TWO WORDS.TXT", "two words.txt", {}},
      {dir + "two words.txt more", "two", {"words.txt", "more"}},
      {'"' + dir + "two words.txt\" more", "two words.txt", {"more"}},
      {"tool " + dir + "TWO", "bin/tool", {directory_ / "two"}},
      {dir, "", {}}};
  for (const auto& [text, path, arguments] : cases) {
    EXPECT_EQ(FindShellTarget(text), (ShellTarget{directory_ / path, arguments})) << text;
  }
  for (const std::string& none :
       {dir + "bin tool", "folder"s, "plain"s, "\"none\" tool"s, " "s, ""s}) {
    EXPECT_FALSE(FindShellTarget(none)) << none;
  }
}

TEST_F(ProgramsTest, RunsProgramsAndHandsDocumentsOn) {
  MakePrograms({"tool", "bin/xdg-open", "bin/lpr", "bad"});
  for (const char* name : {"text.txt", "bad"}) WriteFile(directory_ / name, "#!/no/interpreter\n");
  const std::string text = directory_ / "text.txt";
  const std::string tool = FromNative(directory_ / "TOOL");
  const auto execute = [&](const std::string& operation, const std::string& file,
                           const std::string& parameters = "", const std::string& in = "") {
    return shell_.Execute({operation, file, parameters, in, ShowCommand::Normal});
  };
  const Descriptor leaky(::fcntl(Descriptor(::open("/", O_RDONLY)).Get(), F_DUPFD, 57));
  const Descriptor input(::dup(STDIN_FILENO));
  ::dup2(leaky.Get(), STDIN_FILENO);
  ASSERT_TRUE(execute("open", tool + " a b", "c \"d e\"", "Z:\\"));
  ::dup2(input.Get(), STDIN_FILENO);
  EXPECT_EQ(Record(), "tool|a|b|c|d e\n/\n/dev/null\n");
  ASSERT_TRUE(execute("Open", FromNative(text)));
  EXPECT_THAT(Record(), StartsWith("xdg-open|" + text + '\n'));
  for (const std::string printer : {"lpr", "lp"}) {
    MakePrograms({"bin/" + printer});
    ASSERT_TRUE(execute("print", FromNative(text)));
    EXPECT_THAT(Record(), StartsWith(printer + '|' + text + '\n'));
  }
  EXPECT_FALSE(execute("open", FromNative(directory_ / "bad")));
  ASSERT_TRUE(execute("open", tool, "", "0")) << "a folder that is none is passed over";
  Record();
  EXPECT_FALSE(execute("print", "none"));
  EXPECT_FALSE(execute("explore", tool));
}

TEST_F(ProgramsTest, SignalsAreInOrderForWhatIsStartedAndForUsAfterIt) {
  const auto handler = std::signal(SIGPIPE, SIG_IGN);
  loop_.OnSignals({SIGTERM}, [&](int) { loop_.Quit(); });
  // Not by a shell, which sets its signals in order itself.
  ASSERT_TRUE(shell_.StartAndWait("/bin/cp /proc/self/status " + record_, ShowCommand::Normal));
  std::signal(SIGPIPE, handler);
  const std::string status = Record();
  EXPECT_THAT(status, HasSubstr("SigBlk:\t0000000000000000"));
  EXPECT_THAT(status, HasSubstr("SigIgn:\t0000000000000000"));
  const std::string kill = "/bin/kill -TERM " + std::to_string(::getpid());
  ASSERT_TRUE(shell_.Start("/bin/true", ShowCommand::Normal));
  EXPECT_TRUE(shell_.StartAndWait(kill, ShowCommand::Normal));
  EXPECT_TRUE(loop_.QuitRequested());
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child is left";
}

TEST_F(ProgramsTest, EndingTheSystemAndPlayingASoundAreOtherPrograms) {
  WriteFile(directory_ / "-s.wav", "RIFF");
  const std::string file = FromNative(directory_ / "-s.wav");
  PosixSession session(notices_);
  PosixSound sound(notices_);
  notices_.commandAtWork = [] { return "sdown"; };
  testing::internal::CaptureStderr();
  for (int i = 0; i < 2; ++i) EXPECT_FALSE(session.End(kShutdown) || sound.Play(file));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "orvanto: sdown: the program shutdown is not on PATH; the system is not ended\n"
            "orvanto: sdown: no sound: neither paplay, pw-play nor aplay is on PATH\n");
  MakePrograms({"bin/shutdown"});
  EXPECT_TRUE(session.End(kReboot));
  EXPECT_THAT(Record(), StartsWith("shutdown|-r|now\n"));
  EXPECT_FALSE(session.End(kShutdown | kReboot));
  for (const std::string player : {"aplay", "pw-play", "paplay"}) {
    MakePrograms({"bin/" + player});
    ASSERT_TRUE(sound.Play(file));
    EXPECT_THAT(Record(), StartsWith(player + '|' + (directory_ / "-s.wav") + '\n'));
  }
  EXPECT_FALSE(sound.Play("SystemAsterisk"));
}

constexpr char kEnd = 4;  // ends the input

// Boxes on a terminal of their own.
class TerminalTest : public testing::Test {
 protected:
  TerminalTest() {
    termios lines{};
    lines.c_lflag = ICANON;
    lines.c_cc[VEOF] = kEnd;
    EXPECT_EQ(::openpty(&user_, &program_, nullptr, &lines, nullptr), 0);
  }
  ~TerminalTest() override {
    ::close(user_);
    ::close(program_);
  }
  Answer Show(Buttons buttons, int input) {
    return TerminalMessageBoxes(loop_, input, program_)
        .Show("Sure?\r\n\x1B[2J\t\xC2\x9B\xFF", "Title\n", buttons, BoxIcon::None);
  }
  // What comes up to the expected text, or whatever has come instead.
  std::string Shown(const std::string& expected) const {
    std::string text;
    pollfd waited{user_, POLLIN, 0};
    for (char c = 0; text != expected && ::poll(&waited, 1, 1000) > 0; text += c) {
      if (::read(user_, &c, 1) != 1) break;
    }
    return text;
  }

  int user_, program_;
  PosixLoop loop_;
};

TEST_F(TerminalTest, AsksUntilItUnderstands) {
  const std::string kOk = "[Enter] ", kOkCancel = "[o]k/[c]ancel: ", kYesNo = "[y]es/[n]o: ";
  const std::tuple<Buttons, std::string, Answer, std::string> cases[] = {
      {Buttons::Ok, "\n", Answer::Ok, kOk},
      {Buttons::OkCancel, "o\n", Answer::Ok, kOkCancel},
      {Buttons::OkCancel, "yes\n Cancel \n", Answer::Cancel, kOkCancel + kOkCancel},
      {Buttons::OkCancel, {kEnd}, Answer::Cancel, kOkCancel + '\n'},
      {Buttons::YesNo, "Y\n", Answer::Yes, kYesNo},
      {Buttons::YesNo, "\nno\n", Answer::No, kYesNo + kYesNo},
      {Buttons::RetryCancel, "R\n", Answer::Retry, "[r]etry/[c]ancel: "}};
  for (const auto& [buttons, typed, answer, asked] : cases) {
    ASSERT_TRUE(WriteAll(user_, typed.data(), typed.size()));
    EXPECT_EQ(Show(buttons, program_), answer) << typed;
    const std::string shown = "Title?\nSure?\n?[2J ??\n" + asked;
    EXPECT_EQ(Shown(shown), shown);
  }
  // Where nobody can answer.
  const std::string told = "Title?: Sure?\n?[2J ??\n";
  EXPECT_EQ(Show(Buttons::NoUnlessYes, Descriptor(::open("/dev/null", O_RDWR)).Get()), Answer::No);
  EXPECT_EQ(Shown(told), told);
}

TEST_F(TerminalTest, ASignalTakesTheSafeAnswerAndIsHandledBeforeTheReturnUnlessTheLoopIsHeld) {
  int signals = 0;
  loop_.OnSignals({SIGTERM}, [&](int) { ++signals; });
  std::optional<EventLoop::Hold> hold;
  for (const bool held : {false, true}) {
    if (held) hold.emplace(loop_);
    std::raise(SIGTERM);
    EXPECT_EQ(Show(Buttons::YesNo, program_), Answer::No);
    EXPECT_EQ(signals, 1);
  }
  hold.reset();
  loop_.DoEvents();
  EXPECT_EQ(signals, 2);
}

TEST(PosixLoop, AHandlerMayTakeWhatIsReportedAndEndAWatchThatIsReady) {
  PosixLoop loop;
  std::vector<Descriptor> ready(3);
  for (Descriptor& each : ready) each = Descriptor(::eventfd(1, EFD_NONBLOCK));
  std::string taken;
  const auto take = [&](std::size_t which) {
    eventfd_t count = 0;
    EXPECT_EQ(::eventfd_read(ready[which].Get(), &count), 0);
    taken += std::to_string(which);
  };
  const auto first = loop.WatchFd(ready[0].Get(), POLLIN, [&](short) {
    take(0);
    loop.DoEvents();  // the next comes in here, and not once more
  });
  std::unique_ptr<PosixLoop::Watch> last;
  const auto next = loop.WatchFd(ready[1].Get(), POLLIN, [&](short) {
    take(1);
    last.reset();
    loop.Quit();
  });
  last = loop.WatchFd(ready[2].Get(), POLLIN, [&](short) { take(2); });
  loop.Run();
  EXPECT_EQ(taken, "01");
}

TEST(PosixLoop, HandsSignalsToTheHandlerFromTheLoop) {
  std::multiset<int> signals;
  const auto interrupt = std::signal(SIGINT, SIG_IGN);
  {
    PosixLoop loop;
    loop.OnSignals({SIGTERM, SIGINT}, [&](int signal) {
      signals.insert(signal);
      loop.Quit();
    });
    for (const int signal : {SIGINT, SIGTERM}) std::raise(signal);
    EXPECT_TRUE(signals.empty());
    loop.Run();
  }
  std::signal(SIGINT, interrupt);
  EXPECT_EQ(signals, std::multiset<int>{SIGTERM}) << "the other is ignored";
  sigset_t blocked;
  ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
  EXPECT_EQ(::sigismember(&blocked, SIGTERM), 0);
}

TEST(PosixSocket, WaitsForNothingButAsksSilentPeers) {
  PosixLoop loop;
  PosixSocketHost host(loop);
  const auto listener = host.NewSocket(SocketHost::Use::Conversation);
  const int next = Descriptor(::dup(STDERR_FILENO)).Get();  // the number that is free again
  ASSERT_TRUE(listener->Listen(0));
  const std::array<int, 3> expected[] = {{IPPROTO_TCP, TCP_NODELAY, 1},
                                         {SOL_SOCKET, SO_OOBINLINE, 1},
                                         {SOL_SOCKET, SO_KEEPALIVE, 1},
                                         {IPPROTO_TCP, TCP_KEEPIDLE, 60},
                                         {IPPROTO_TCP, TCP_KEEPINTVL, 15}};
  for (const auto& [level, name, value] : expected) {
    int is = 0;
    socklen_t size = sizeof is;
    EXPECT_EQ(::getsockopt(next, level, name, &is, &size), 0);
    EXPECT_EQ(is, value) << level << ' ' << name;
  }
}

}  // namespace
}  // namespace orvanto::posix
