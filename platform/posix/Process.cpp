#include "platform/posix/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "platform/posix/Descriptor.h"

namespace orvanto::posix {
namespace {

constexpr unsigned kFirstFreeDescriptor = 3;

void ResetSignals() {
  struct sigaction standard = {};
  standard.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) ::sigaction(signal, &standard, nullptr);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// What the new process does until it is another program; after fork only system calls are safe.
// `errors` is closed by a successful exec and otherwise told why there was none.
[[noreturn]] void Become(const char* program, char* const* arguments, const char* directory,
                         Output output, int errors) {
  const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  ::dup2(nothing, STDIN_FILENO);
  if (output == Output::Discard) {
    ::dup2(nothing, STDOUT_FILENO);
    ::dup2(nothing, STDERR_FILENO);
  }
  // Ours are close-on-exec anyway; this is for those that we were started with ourselves.
  ::close_range(kFirstFreeDescriptor, ~0u, CLOSE_RANGE_CLOEXEC);
  ResetSignals();
  if (*directory == '\0' || ::chdir(directory) == 0) ::execv(program, arguments);
  const int error = errno;
  WriteAll(errors, reinterpret_cast<const char*>(&error), sizeof error);
  ::_exit(127);
}

std::vector<char*> Argv(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  return argv;
}

int WaitFor(pid_t child) {
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

// Nothing comes through the pipe of a child that became the program: it is closed.
bool WasExecuted(int errors) {
  int error = 0;
  ssize_t count = 0;
  while ((count = ::read(errors, &error, sizeof error)) < 0 && errno == EINTR) {
  }
  return count == 0;
}

// Runs `inChild`, which does not return, in a child, and waits for the child's end. False when the
// program it was to become could not be executed.
template <typename InChild>
bool Fork(int& status, const InChild& inChild) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return false;
  const Descriptor errors(ends[0]);
  Descriptor childErrors(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) return false;
  if (child == 0) inChild(childErrors.Get());
  childErrors.Close();
  const bool executed = WasExecuted(errors.Get());
  status = WaitFor(child);
  return executed;
}

}  // namespace

std::string FindProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  if (path == nullptr || name.empty() || name.find('/') != std::string::npos) return "";
  for (std::string_view rest = path;;) {
    const std::size_t end = rest.find(':');
    const std::string directory(rest.substr(0, end));
    std::string candidate = (directory.empty() ? "." : directory) + '/' + name;
    struct stat status;
    if (::stat(candidate.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        ::access(candidate.c_str(), X_OK) == 0) {
      return candidate;
    }
    if (end == std::string_view::npos) return "";
    rest.remove_prefix(end + 1);
  }
}

bool StartDetached(const std::string& program, const std::vector<std::string>& arguments,
                   const std::string& directory, Output output) {
  std::vector<char*> argv = Argv(program, arguments);
  int status = 0;
  const bool executed = Fork(status, [&](int errors) {
    // The child of our child belongs to init, so nobody has to wait for it.
    ::setsid();
    const pid_t grandchild = ::fork();
    if (grandchild == 0) {
      Become(program.c_str(), argv.data(), directory.c_str(), output, errors);
    }
    ::_exit(grandchild < 0 ? 1 : 0);
  });
  return executed && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool RunToEnd(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<char*> argv = Argv(program, arguments);
  int status = 0;
  return Fork(status, [&](int errors) {
    Become(program.c_str(), argv.data(), "", Output::Inherit, errors);
  });
}

}  // namespace orvanto::posix
