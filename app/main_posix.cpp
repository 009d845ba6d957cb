// The console host: the scheduler of a machine without the desktop program.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "app/Program.h"
#include "app/console/Commands.h"
#include "app/console/ConsoleChat.h"
#include "app/console/ConsoleDownloads.h"
#include "core/Convert.h"
#include "core/ProgramTitle.h"
#include "core/Sched.h"
#include "platform/forms/forms.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileRegistry.h"
#include "platform/posix/NoDesktop.h"
#include "platform/posix/NoFileDialogs.h"
#include "platform/posix/NoTrayIcon.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixLoop.h"
#include "platform/posix/PosixSession.h"
#include "platform/posix/PosixShell.h"
#include "platform/posix/PosixSocket.h"
#include "platform/posix/PosixSound.h"
#include "platform/posix/TerminalMessageBoxes.h"
#include "platform/text/Case.h"
#include "platform/text/PrintableLine.h"
#include "platform/text/WholeNumber.h"
#include "remote/ftpserver/server_control.h"

namespace orvanto {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRegistryFile = "registry.txt";
constexpr const char* kLockFile = "orvanto.lock";

struct Arguments {
  std::string home;
  std::optional<std::uint16_t> ftpPort;
  std::vector<std::string> words;  // what is left
};

fs::path DefaultHome() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && *data == '/') return fs::path(data) / "orvanto";
  const char* home = std::getenv("HOME");
  return fs::path(home != nullptr ? home : "/") / ".local/share/orvanto";
}

// Options come first. False when the words make no sense.
bool ParseArguments(int argc, char** argv, Arguments& arguments) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    const bool home = word == "--home";
    if (!arguments.words.empty() || (!home && word != "--ftp-port")) {
      arguments.words.push_back(word);
      continue;
    }
    if (++i == argc || *argv[i] == '\0') return false;
    if (home) {
      arguments.home = argv[i];
    } else if (arguments.ftpPort = WholeNumber<std::uint16_t>(argv[i]); !arguments.ftpPort) {
      return false;
    }
  }
  if (arguments.home.empty()) arguments.home = DefaultHome();
  return true;
}

// A new home begins with the sample scripts, where they are beside the program as an installation
// puts them.
void CopySamples(const fs::path& scripts) {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path().parent_path();
  const fs::path samples = folder / "share/orvanto/scripts";
  if (!fs::is_directory(samples, error)) return;
  fs::copy(samples, scripts, error);
  if (error) std::cerr << "The sample scripts were not copied: " << error.message() << std::endl;
}

// One scheduler at a time in one home, or every task would run twice. Says why when it has none.
posix::Descriptor LockHome(const std::string& home) {
  posix::Descriptor lock(::open(kLockFile, O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  if (lock && ::flock(lock.Get(), LOCK_EX | LOCK_NB) == 0) return lock;
  if (lock && errno == EWOULDBLOCK) {
    std::cerr << "A scheduler runs in " << home << " already." << std::endl;
  } else {
    std::cerr << "The home " << home << " cannot be locked: " << std::strerror(errno) << std::endl;
  }
  return {};
}

// What is written to a terminal or a pipe that has gone, or beyond a limit on file sizes, must not
// end the program, nor must a file that it opens be taken for one of the standard streams.
void SecureStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    // The lowest free number is taken, so these become the missing ones in turn.
    if (::fcntl(fd, F_GETFD) < 0 && errno == EBADF && ::open("/dev/null", O_RDWR) < 0) std::abort();
  }
}

// Services of this system, in the order in which they need each other.
struct PosixPlatform {
  explicit PosixPlatform(posix::FileRegistry::OnDamage onDamage)
      : registry(
            kRegistryFile, [](const std::string& message) { std::cerr << message << std::endl; },
            onDamage) {}

  posix::PosixLoop loop;
  posix::PosixClock clock;
  posix::FileRegistry registry;
  posix::PosixFiles files;
  posix::Notices notices;
  posix::PosixShell shell{loop, notices};
  posix::PosixSession session{notices};
  posix::NoDesktop desktop{notices};
  posix::NoKeyboard keyboard;
  posix::NoClipboard clipboard;
  posix::PosixSound sound{notices};
  posix::TerminalMessageBoxes messageBoxes{loop};
  posix::NoFileDialogs fileDialogs;
  posix::NoTrayIcon trayIcon;
  posix::PosixSocketHost sockets{loop};
  forms::HeadlessFormHost forms;
  Platform platform{loop,         clock,       registry, files,     shell,
                    session,      desktop,     keyboard, clipboard, sound,
                    messageBoxes, fileDialogs, trayIcon, sockets,   forms};
};

// What scripts show and cannot do is told here: there are no windows for it.
void TellOfScripts(Program& program, PosixPlatform& host) {
  program.onPopup = [&host](const std::string& text) {
    host.messageBoxes.Tell(text, kProgramTitle);
  };
  host.notices.commandAtWork = [&program] { return program.ScriptCommand(); };
}

// Hands the lines typed at the terminal on, as long as this process owns it.
class TerminalLines {
 public:
  TerminalLines(posix::PosixLoop& loop, std::function<void(const std::string&)> onLine)
      : onLine_(std::move(onLine)) {
    if (!MayRead()) return;
    watch_ = loop.WatchFd(STDIN_FILENO, POLLIN, [this](short) { Read(); });
  }

 private:
  // In the background, reading would stop the whole process.
  static bool MayRead() {
    return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0 &&
           ::tcgetpgrp(STDIN_FILENO) == ::getpgrp();
  }

  void Read() {
    std::array<char, 1024> buffer;
    const ssize_t count = MayRead() ? ::read(STDIN_FILENO, buffer.data(), buffer.size()) : 0;
    if (count <= 0) {
      watch_->SetEvents(0);
      return;
    }
    typed_.append(buffer.data(), static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = typed_.find('\n')) != std::string::npos;) {
      const std::string line = typed_.substr(0, end);
      typed_.erase(0, end + 1);
      onLine_(line);
    }
  }

  std::function<void(const std::string&)> onLine_;
  std::string typed_;
  std::unique_ptr<posix::PosixLoop::Watch> watch_;
};

int RunScheduler(const std::string& home, const std::string& commandLine,
                 std::optional<std::uint16_t> ftpPort) {
  const posix::Descriptor lock = LockHome(home);
  if (!lock) return kExitRefused;
  // Alone in its home, so a damaged registry may be set aside.
  PosixPlatform host(posix::FileRegistry::OnDamage::SetAside);
  Program program(host.platform, {commandLine, posix::FromNative(home), ftpPort});
  program.onTaskRun = [&](const TaskRecord& task) {
    std::cout << TimeOfDay(host.clock.Now()) << "  " << PrintableLine(task.name) << " ("
              << TaskTypeName(task.taskType) << ")" << std::endl;
  };
  TellOfScripts(program, host);
  program.onScriptFailure = [](const std::string& message) {
    std::cerr << PrintableLine(message) << std::endl;
  };
  const Subscription ftpLog = program.Ftp().logged.Subscribe(
      [](const std::string& line) { std::cout << "FTP: " << PrintableLine(line) << std::endl; });
  ConsoleChat chat(program, std::cout);
  const ConsoleDownloads downloads(program.GetDownloads(), host.clock, std::cout, std::cerr,
                                   ::isatty(STDOUT_FILENO) != 0);
  const TerminalLines lines(host.loop, [&](const std::string& line) { chat.Line(line); });
  host.loop.OnSignals({SIGINT, SIGTERM, SIGHUP}, [&](int) { program.Quit(); });
  program.Start();
  std::cout << "Orvanto runs the tasks in " << home << " at their minute. Ctrl+C ends it.\n"
            << "Scripts are in scripts/ there, settings and tasks in " << kRegistryFile << ".\n"
            << "A task, from another terminal: orvanto add \"Tea\" --at 16:00 --every \"Every Day\""
            << " --message \"Time for tea\"" << std::endl;
  host.loop.Run();
  return 0;
}

// A file as the user names it, as a task stores it. A relative name is looked for in the scripts
// folder, then where the user stands. Scripts are run from their folder; everything else is opened
// from wherever the scheduler stands, so its path is stored whole.
std::string TaskPath(const fs::path& home, const fs::path& start, const std::string& text,
                     std::int16_t taskType) {
  std::error_code ignored;
  if (text.empty() || text[0] == '/') return posix::FromNative(text);
  const fs::path there = home / "scripts" / text;
  if (fs::exists(there, ignored)) {
    return posix::FromNative(taskType == kRunScript ? text : there.string());
  }
  const fs::path here = start / text;
  return posix::FromNative(fs::exists(here, ignored) ? here.string() : text);
}

int RunOneCommand(const fs::path& home, const fs::path& start,
                  const std::vector<std::string>& words) {
  PosixPlatform host(posix::FileRegistry::OnDamage::Refuse);
  Program program(host.platform, {"", posix::FromNative(home)});
  try {
    program.Prepare();
  } catch (const Error& error) {
    std::cerr << "Users_Share does not hold a number; per-user tasks are used." << std::endl;
  }
  TellOfScripts(program, host);
  return RunCommand(words, {program, std::cout, std::cerr, host.clock, ::isatty(STDOUT_FILENO) != 0,
                            [&](const std::string& text, std::int16_t taskType) {
                              return TaskPath(home, start, text, taskType);
                            }});
}

int Main(int argc, char** argv) {
  SecureStandardStreams();
  Arguments arguments;
  if (!ParseArguments(argc, argv, arguments)) {
    PrintUsage(std::cerr);
    return kExitUsage;
  }
  const auto& words = arguments.words;
  if (!words.empty() && (words[0] == "--help" || words[0] == "-h")) {
    PrintUsage(std::cout);
    return 0;
  }
  const bool command = !words.empty() && IsCommand(words[0]);
  if (!command && (words.size() > 1 || (words.size() == 1 && LowerCase(words[0]) != "invisible"))) {
    std::cerr << "What is \"" << words[0] << "\"?\n";
    PrintUsage(std::cerr);
    return kExitUsage;
  }
  std::error_code error;
  const fs::path start = fs::current_path(error);
  fs::path home = fs::weakly_canonical(fs::absolute(arguments.home), error);
  if (!home.has_filename()) home = home.parent_path();  // written with a slash at its end
  if (home.string().find('\\') != std::string::npos) {
    std::cerr << "The home's path may not hold a backslash: " << home.string() << std::endl;
    return kExitRefused;
  }
  if (fs::create_directories(home / "scripts", error)) CopySamples(home / "scripts");
  // Everything that is named without a directory, the logs among it, belongs into the home.
  if (!error) fs::current_path(home, error);
  if (error) {
    std::cerr << "The home " << home.string() << " cannot be used: " << error.message()
              << std::endl;
    return kExitRefused;
  }
  return command ? RunOneCommand(home, start, words)
                 : RunScheduler(home.string(), words.empty() ? "" : words[0], arguments.ftpPort);
}

}  // namespace
}  // namespace orvanto

int main(int argc, char** argv) { return orvanto::Main(argc, argv); }
