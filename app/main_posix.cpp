// The console host: the scheduler of a machine without the desktop program.
#include <fcntl.h>
#include <sys/file.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "app/Program.h"
#include "app/console/Commands.h"
#include "core/Convert.h"
#include "core/Sched.h"
#include "platform/forms.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileRegistry.h"
#include "platform/posix/NoFileDialogs.h"
#include "platform/posix/NoTrayIcon.h"
#include "platform/posix/Paths.h"
#include "platform/posix/PosixClock.h"
#include "platform/posix/PosixFiles.h"
#include "platform/posix/PosixLoop.h"
#include "platform/posix/PosixSession.h"
#include "platform/posix/PosixShell.h"
#include "platform/posix/PosixSound.h"
#include "platform/posix/TerminalMessageBoxes.h"

namespace orvanto {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRegistryFile = "registry.txt";
constexpr const char* kLockFile = "orvanto.lock";

struct Arguments {
  std::string home;
  std::vector<std::string> words;  // what is left
};

fs::path DefaultHome() {
  const char* data = std::getenv("XDG_DATA_HOME");
  if (data != nullptr && *data == '/') return fs::path(data) / "orvanto";
  const char* home = std::getenv("HOME");
  return fs::path(home != nullptr ? home : "/") / ".local/share/orvanto";
}

// False when the words make no sense.
bool ParseArguments(int argc, char** argv, Arguments& arguments) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word != "--home" || !arguments.words.empty()) {
      arguments.words.push_back(word);
    } else if (++i < argc) {
      arguments.home = argv[i];
    } else {
      return false;
    }
  }
  if (arguments.home.empty()) arguments.home = DefaultHome();
  return true;
}

// One scheduler at a time in one home, or every task would run twice.
posix::Descriptor LockHome() {
  posix::Descriptor lock(::open(kLockFile, O_RDWR | O_CREAT | O_CLOEXEC, 0666));
  if (lock.Get() >= 0 && ::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0) lock.Close();
  return lock;
}

// Services of this system, in the order in which they need each other.
struct PosixPlatform {
  posix::PosixLoop loop;
  posix::PosixClock clock;
  posix::FileRegistry registry{
      kRegistryFile, [](const std::string& message) { std::cerr << message << std::endl; }};
  posix::PosixFiles files;
  posix::PosixShell shell;
  posix::PosixSession session;
  posix::PosixSound sound;
  posix::TerminalMessageBoxes messageBoxes{loop};
  posix::NoFileDialogs fileDialogs;
  posix::NoTrayIcon trayIcon;
  forms::HeadlessFormHost forms;
  Platform platform{loop,  clock,        registry,    files,    shell, session,
                    sound, messageBoxes, fileDialogs, trayIcon, forms};
};

int RunScheduler(const std::string& home, const std::string& commandLine) {
  const posix::Descriptor lock = LockHome();
  if (lock.Get() < 0) {
    std::cerr << "A scheduler runs in " << home << " already." << std::endl;
    return kExitRefused;
  }
  PosixPlatform host;
  Program program(host.platform, {commandLine, posix::FromNative(home)});
  program.onTaskRun = [&](const TaskRecord& task) {
    const DateTime now = host.clock.Now();
    std::cout << TwoDigits(now.hour) << ":" << TwoDigits(now.minute) << ":" << TwoDigits(now.second)
              << "  " << task.name << " (" << TaskTypeName(task.taskType) << ")" << std::endl;
  };
  host.loop.OnSignals({SIGINT, SIGTERM, SIGHUP}, [&](int) { program.Quit(); });
  program.Start();
  std::cout << "Orvanto runs the tasks in " << home << " at their minute. Ctrl+C ends it.\n"
            << "Scripts are in scripts/ there, settings and tasks in " << kRegistryFile << ".\n"
            << "A task, from another terminal: orvanto add \"Tea\" --at 16:00 --every \"Every Day\""
            << " --message \"Time for tea\"" << std::endl;
  host.loop.Run();
  return 0;
}

// A file as the user names it, as a task stores it. Relative names belong to the scripts folder,
// unless there is such a file where the user stands and none there.
std::string TaskPath(const fs::path& home, const fs::path& start, const std::string& text) {
  std::error_code ignored;
  if (text.empty()) return text;
  if (text[0] == '/') return posix::FromNative(text);
  const fs::path here = (start / text).lexically_normal();
  if (!fs::exists(home / "scripts" / text, ignored) && fs::exists(here, ignored)) {
    return posix::FromNative(here);
  }
  return posix::FromNative(text);
}

int RunOneCommand(const fs::path& home, const fs::path& start,
                  const std::vector<std::string>& words) {
  PosixPlatform host;
  Program program(host.platform, {"", posix::FromNative(home)});
  try {
    program.Prepare();
  } catch (const Error& error) {
    std::cerr << "Users_Share does not hold a number; per-user tasks are used." << std::endl;
  }
  return RunCommand(words, {program, std::cout, std::cerr,
                            [&](const std::string& text) { return TaskPath(home, start, text); }});
}

int Main(int argc, char** argv) {
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
  fs::path home = fs::absolute(arguments.home, error).lexically_normal();
  if (!home.has_filename()) home = home.parent_path();  // written with a slash at its end
  fs::create_directories(home / "scripts", error);
  // Everything that is named without a directory, the logs among it, belongs into the home.
  if (!error) fs::current_path(home, error);
  if (error) {
    std::cerr << "The home " << home.string() << " cannot be used: " << error.message()
              << std::endl;
    return kExitRefused;
  }
  return command ? RunOneCommand(home, start, words)
                 : RunScheduler(home.string(), words.empty() ? "" : words[0]);
}

}  // namespace
}  // namespace orvanto

int main(int argc, char** argv) { return orvanto::Main(argc, argv); }
