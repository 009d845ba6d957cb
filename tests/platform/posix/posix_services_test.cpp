#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>
#include <optional>
#include <thread>

#include "platform/posix/Descriptor.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixSession.h"
#include "platform/posix/PosixShell.h"
#include "platform/posix/PosixSound.h"
#include "platform/posix/TerminalMessageBoxes.h"
#include "tests/support/TemporaryDirectory.h"

namespace orvanto::posix {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;

class Environment {
 public:
  Environment(const char* name, const std::string& value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    ::setenv(name, value.c_str(), 1);
  }
  ~Environment() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

 private:
  const char* const name_;
  std::optional<std::string> old_;
};

TEST(PosixClock, TellsLocalTimeAndTheShortDate) {
  const Environment zone("TZ", "TEST-05:30");
  const PosixClock clock("C");
  std::int64_t before = 0;
  DateTime now;
  do {
    before = clock.UnixMilliseconds() / 1000;
    now = clock.Now();
  } while (clock.UnixMilliseconds() / 1000 != before);
  const time_t local = before + 5 * 3600 + 30 * 60;
  const tm* is = std::gmtime(&local);
  EXPECT_EQ((std::array{now.year - 1900, now.month - 1, now.day, now.hour, now.minute, now.second,
                        now.weekday - 1}),
            (std::array{is->tm_year, is->tm_mon, is->tm_mday, is->tm_hour, is->tm_min, is->tm_sec,
                        is->tm_wday}));
  EXPECT_EQ(clock.ShortDate(1958, 8, 25), "08/25/58");
  EXPECT_EQ(PosixClock("no such locale").ShortDate(2026, 1, 2), "01/02/26");
}

TEST(PosixFiles, TakesBytesForWindows1252) {
  EXPECT_EQ(PosixFiles().FromCodePage("a\xe4\x80\x9f"), "a\u00e4\u20ac\u0178");
}

TEST(PosixFiles, KnowsWhatOnlyThisSystemHas) {
  const TemporaryDirectory directory;
  fs::create_directory(directory / "folder");
  fs::create_symlink("folder", directory / "link");
  fs::create_symlink("nothing", directory / "broken");
  for (const char* name : {".hidden", "back\\slash"}) WriteFile(directory / name, "");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  for (const std::string& endless : {FromNative(directory / "pipe"), FromNative("/dev/null")}) {
    std::string text;
    EXPECT_FALSE(PosixFiles().Read(endless, text)) << endless;
  }
  std::map<std::string, Files::EntryKind> listed;
  PosixFiles().ListFolder(FromNative(directory / ""), [&](const std::string& name, auto kind) {
    return listed.emplace(name, kind).second;
  });
  EXPECT_EQ(listed, (decltype(listed){{"folder", Files::EntryKind::Folder},
                                      {"link", Files::EntryKind::FolderLink},
                                      {"broken", Files::EntryKind::File},
                                      {"pipe", Files::EntryKind::File},
                                      {".hidden", Files::EntryKind::Hidden}}));
}

TEST(Paths, FindTheBranchInWhichTheWholePathExists) {
  const TemporaryDirectory directory;
  for (const char* made : {"D/foo", "d/FOO/sub", "d/Foo/Bin", "d/foo", "d/hidden/Dir"}) {
    fs::create_directories(directory / made);
  }
  for (const char* made : {"d/FOO/same.txt", "d/Foo/Bin/run.sh", "d/Foo/same.txt", "d/Fool"}) {
    WriteFile(directory / made, "");
  }
  fs::create_symlink("nothing", directory / "d/FOOL");
  fs::permissions(directory / "d/hidden", fs::perms::owner_exec);
  const std::pair<const char*, const char*> cases[] = {
      {"d/fOO/bin/RUN.SH", "d/Foo/Bin/run.sh"},
      {"d/fOO/same.txt", "d/FOO/same.txt"},
      {"d/Foo/SAME.txt", "d/Foo/same.txt"},
      // One that is spelt as given is meant, whatever the others hold.
      {"d/foo/same.txt", "d/foo/same.txt"},
      {"D/FOO/bin/run.sh", "D/foo/bin/run.sh"},
      {"d/fOO/SUB/New.txt", "d/FOO/sub/New.txt"},
      {"D/Foo/", "D/foo/"},
      {"d/fool", "d/Fool"},
      {"d/FOOL", "d/FOOL"},
      {"d/HIDDEN/Dir", "d/hidden/Dir"},
      {"none/Foo", "none/Foo"},
  };
  for (const auto& [asked, found] : cases) {
    EXPECT_EQ(ToNative(directory / asked), directory / found);
  }
  fs::permissions(directory / "d/hidden", fs::perms::owner_all);
}

TEST(Paths, MapBetweenTheTwoForms) {
  const std::pair<const char*, const char*> cases[] = {{"Z:\\", "/"},
                                                       {"z:\\no\\Such", "/no/Such"},
                                                       {"no\\such", "no/such"},
                                                       {"C:\\no\\such", "C:/no/such"},
                                                       {"/no/such", "/no/such"},
                                                       {"", ""}};
  for (const auto& [shown, native] : cases) EXPECT_EQ(ToNative(shown), native);
  EXPECT_EQ(FromNative("/a/b") + FromNative("a/b"), "Z:\\a\\ba\\b");
}

// Programs that write down how they were called.
class ProgramsTest : public testing::Test {
 protected:
  ProgramsTest() : path_("PATH", directory_ / "bin"), record_("RECORD", directory_ / "record") {
    fs::create_directories(directory_ / "bin");
  }

  void MakeProgram(const std::string& name) {
    const std::string path = directory_ / name;
    std::ofstream(path) << "#!/bin/sh\n"
                           "{ printf '%s' \"${0##*/}\"; for a; do printf '|%s' \"$a\"; done\n"
                           "echo; pwd; /bin/readlink /proc/$$/fd/0\n"
                           "[ -e /proc/$$/fd/57 ] && echo leaked\n"
                           "/usr/bin/cut -d' ' -f6 /proc/$$/stat; } > \"$RECORD.part\"\n"
                           "/bin/mv \"$RECORD.part\" \"$RECORD\"\n";
    fs::permissions(path, fs::perms::owner_all);
  }

  // The lines of the next record; the first is the program and its arguments.
  std::vector<std::string> Record() {
    const std::string record = directory_ / "record";
    for (int i = 0; i < 10000 && ReadFile(record).empty(); ++i) ::usleep(1000);
    std::vector<std::string> lines;
    std::ifstream file(record);
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    fs::remove(record);
    if (lines.empty()) lines.push_back("nothing was started");
    return lines;
  }

  TemporaryDirectory directory_;
  Notices notices_;
  const Environment path_, record_;
};

TEST_F(ProgramsTest, FindsTheTargetInTheText) {
  for (const char* name : {"bin/tool", "bin/two words", "two"}) MakeProgram(name);
  WriteFile(directory_ / "two words.txt", "");
  const std::string dir = FromNative(directory_ / "");
  const struct {
    std::string text;
    std::string path;
    std::vector<std::string> arguments;
  } cases[] = {{"tool", "bin/tool", {}},
               {"tool  a \"b  c\"d \"\"", "bin/tool", {"a", "b  cd", ""}},
               {"two words x", "bin/two words", {"x"}},
               {dir + "two words.txt", "two words.txt", {}},
               {dir + "TWO WORDS.TXT", "two words.txt", {}},
               {dir + "two words.txt more", "two", {"words.txt", "more"}},
               {'"' + dir + "two words.txt\" more", "two words.txt", {"more"}},
               {"tool " + dir + "TWO", "bin/tool", {directory_ / "two"}}};
  for (const auto& c : cases) {
    EXPECT_EQ(FindShellTarget(c.text), (ShellTarget{directory_ / c.path, c.arguments})) << c.text;
  }
  for (const std::string& none : {dir + "bin tool", std::string("none"),
                                  std::string("\"none\" tool"), std::string(" "), std::string()}) {
    EXPECT_FALSE(FindShellTarget(none)) << none;
  }
  const auto folder = FindShellTarget(dir);
  EXPECT_TRUE(folder && fs::equivalent(folder->path, directory_ / ""));
}

TEST_F(ProgramsTest, RunsProgramsAndHandsDocumentsOn) {
  for (const char* name : {"tool", "bin/xdg-open", "bin/lpr"}) MakeProgram(name);
  const std::string text = directory_ / "text.txt";
  WriteFile(text, "");
  WriteFile(directory_ / "bad", "#!/no/such/interpreter\n");
  fs::permissions(directory_ / "bad", fs::perms::owner_all);
  PosixLoop loop;
  const auto execute = [&](const std::string& operation, const std::string& file,
                           const std::string& parameters = "", const std::string& in = "") {
    return PosixShell(loop, notices_)
        .Execute({operation, file, parameters, in, ShowCommand::Normal});
  };
  const std::string tool = FromNative(directory_ / "TOOL");
  ASSERT_TRUE(execute("open", tool + " a b", "c \"d e\"", "Z:\\"));
  const auto lines = Record();
  EXPECT_EQ(lines[0], "tool|a|b|c|d e");
  EXPECT_EQ(lines.at(1), "/");
  ASSERT_TRUE(execute("Open", FromNative(text)));
  EXPECT_EQ(Record()[0], "xdg-open|" + text);
  for (const char* printer : {"lpr", "lp"}) {
    MakeProgram(std::string("bin/") + printer);
    ASSERT_TRUE(execute("print", FromNative(text)));
    EXPECT_EQ(Record()[0], printer + ('|' + text));
  }
  EXPECT_FALSE(execute("open", FromNative(directory_ / "bad")));
  ASSERT_TRUE(execute("open", tool, "", "0")) << "a folder that is none is passed over";
  Record();
  EXPECT_FALSE(execute("print", "none"));
  EXPECT_FALSE(execute("explore", tool));
}

TEST_F(ProgramsTest, WhatIsStartedBeginsClean) {
  MakeProgram("tool");
  const Descriptor leaky(::fcntl(STDERR_FILENO, F_DUPFD, 57));
  ASSERT_EQ(leaky.Get(), 57);
  const Descriptor input(::dup(STDIN_FILENO));
  ::dup2(Descriptor(::open("/", O_RDONLY)).Get(), STDIN_FILENO);
  const auto handler = std::signal(SIGPIPE, SIG_IGN);
  PosixLoop loop;
  loop.OnSignals({SIGTERM}, [&](int) { loop.Quit(); });
  PosixShell shell(loop, notices_);
  ASSERT_TRUE(shell.Start(directory_ / "tool", ShowCommand::Normal));
  const auto lines = Record();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[2], "/dev/null");
  EXPECT_NE(lines[3], std::to_string(::getsid(0)));
  // Not by a shell, which sets its signals in order itself.
  ASSERT_TRUE(
      shell.Start("/bin/cp /proc/self/status " + (directory_ / "record"), ShowCommand::Normal));
  const auto status = Record();
  ::dup2(input.Get(), STDIN_FILENO);
  std::signal(SIGPIPE, handler);
  EXPECT_THAT(status, Contains("SigBlk:\t0000000000000000"));
  EXPECT_THAT(status, Contains("SigIgn:\t0000000000000000"));
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child is left";
  // A signal that comes while a program is waited for has been handled after that.
  const std::string kill = "/bin/kill -TERM " + std::to_string(::getpid());
  EXPECT_TRUE(shell.StartAndWait(kill, ShowCommand::Normal));
  EXPECT_TRUE(loop.QuitRequested());
}

TEST_F(ProgramsTest, SessionCallsShutdown) {
  PosixSession session(notices_);
  testing::internal::CaptureStderr();
  for (int i = 0; i < 2; ++i) EXPECT_FALSE(session.End(kShutdown));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "orvanto: the program shutdown is not on PATH; the system is not ended\n");
  MakeProgram("bin/shutdown");
  EXPECT_TRUE(session.End(kReboot));
  EXPECT_EQ(Record()[0], "shutdown|-r|now");
  EXPECT_FALSE(session.End(kShutdown | kReboot));
}

TEST_F(ProgramsTest, SoundUsesTheFirstPlayer) {
  const std::string file = directory_ / "-s.wav";
  WriteFile(file, "RIFF");
  PosixSound sound(notices_);
  testing::internal::CaptureStderr();
  for (int i = 0; i < 2; ++i) EXPECT_FALSE(sound.Play(FromNative(file)));
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "orvanto: no sound: neither paplay, pw-play nor aplay is on PATH\n");
  for (const char* player : {"aplay", "pw-play", "paplay"}) {
    MakeProgram(std::string("bin/") + player);
    ASSERT_TRUE(sound.Play(FromNative(file)));
    EXPECT_EQ(Record()[0], player + ('|' + file));
  }
  EXPECT_FALSE(sound.Play("SystemAsterisk"));
  const fs::path before = fs::current_path();
  fs::current_path(directory_ / "");
  EXPECT_TRUE(sound.Play("-s.wav"));
  fs::current_path(before);
  EXPECT_EQ(Record()[0], "paplay|./-s.wav") << "no option of the player's";
}

// What comes up to the expected text, or whatever has come instead.
std::string Shown(int fd, const std::string& expected) {
  std::string text;
  pollfd waited{fd, POLLIN, 0};
  for (char c = 0; !text.ends_with(expected) && ::poll(&waited, 1, 1000) > 0; text += c) {
    if (::read(fd, &c, 1) != 1) break;
  }
  return text;
}

// Boxes on a terminal of their own.
class TerminalTest : public testing::Test {
 protected:
  TerminalTest() {
    EXPECT_EQ(::openpty(&user_, &program_, nullptr, nullptr, nullptr), 0);
    termios quiet;
    ::tcgetattr(user_, &quiet);
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(user_, TCSANOW, &quiet);
  }
  ~TerminalTest() override {
    ::close(user_);
    ::close(program_);
  }
  Answer Show(Buttons buttons) {
    return TerminalMessageBoxes(loop_, program_, program_)
        .Show("Sure?\r\n\x1B[2J\t\xC2\x9B\xFF", "Title\n", buttons, BoxIcon::None);
  }

  int user_, program_;
  PosixLoop loop_;
};

TEST_F(TerminalTest, AsksUntilItUnderstands) {
  const std::map<Buttons, std::string> prompts = {{Buttons::Ok, "[Enter] "},
                                                  {Buttons::OkCancel, "[o]k/[c]ancel: "},
                                                  {Buttons::YesNo, "[y]es/[n]o: "}};
  const struct {
    Buttons buttons;
    const char* typed;  // \x04 ends the input
    Answer answer;
    int asked = 1;
  } cases[] = {{Buttons::Ok, "\n", Answer::Ok},
               {Buttons::Ok, "\x04", Answer::Ok},
               {Buttons::OkCancel, "o\n", Answer::Ok},
               {Buttons::OkCancel, "\nyes\n Cancel \n", Answer::Cancel, 3},
               {Buttons::OkCancel, "\x04", Answer::Cancel},
               {Buttons::YesNo, "Y\n", Answer::Yes},
               {Buttons::YesNo, "maybe\nno\n", Answer::No, 2},
               {Buttons::YesNo, "x\n\x04", Answer::No, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.typed);
    ASSERT_TRUE(WriteAll(user_, c.typed, std::strlen(c.typed)));
    EXPECT_EQ(Show(c.buttons), c.answer);
    std::string expected = "Title?\r\nSure?\r\n?[2J ??\r\n";
    for (int i = 0; i < c.asked; ++i) expected += prompts.at(c.buttons);
    if (std::string(c.typed).ends_with('\x04')) expected += "\r\n";
    EXPECT_EQ(Shown(user_, expected), expected);
  }
}

TEST_F(TerminalTest, ASignalTakesTheSafeAnswerAndIsHandledBeforeTheReturn) {
  int signals = 0;
  loop_.OnSignals({SIGTERM}, [&](int) { ++signals; });
  std::raise(SIGTERM);
  EXPECT_EQ(Show(Buttons::YesNo), Answer::No);
  EXPECT_EQ(signals, 1);
  // Boxes of somebody who holds the loop leave it to the loop.
  {
    const EventLoop::Hold hold(loop_);
    std::raise(SIGTERM);
    EXPECT_EQ(Show(Buttons::YesNo), Answer::No);
    EXPECT_EQ(signals, 1);
  }
  loop_.DoEvents();
  EXPECT_EQ(signals, 2);
}

TEST_F(TerminalTest, WhereNobodyCanAnswerTheSafeAnswerIsTaken) {
  const Descriptor nobody(::open("/dev/null", O_RDWR));
  TerminalMessageBoxes boxes(loop_, nobody.Get(), program_);
  for (const auto& [buttons, answer] : {std::pair(Buttons::Ok, Answer::Ok),
                                        {Buttons::OkCancel, Answer::Cancel},
                                        {Buttons::YesNo, Answer::No},
                                        {Buttons::NoUnlessYes, Answer::No}}) {
    EXPECT_EQ(boxes.Show("text", "Title", buttons, BoxIcon::None), answer);
    EXPECT_EQ(Shown(user_, "\n"), "Title: text\r\n");
  }
}

}  // namespace
}  // namespace orvanto::posix
