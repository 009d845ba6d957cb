#include "platform/posix/PosixLoop.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <thread>
#include <vector>

#include "platform/posix/PosixSocket.h"
#include "tests/platform/contracts.h"

namespace orvanto::posix {
namespace {

struct Pipe {
  Pipe() : ends(), made(::pipe2(ends, O_NONBLOCK)), out(ends[0]), in(ends[1]) {}
  int Out() const { return out.Get(); }
  void Put(char c) const { EXPECT_EQ(::write(in.Get(), &c, 1), 1); }
  char Take() const {
    char c = 0;
    EXPECT_EQ(::read(Out(), &c, 1), 1);
    return c;
  }
  int ends[2];
  const int made;
  const Descriptor out, in;
};

// DoEvents looks at the descriptors only now and then.
void LookAgain(PosixLoop& loop) {
  std::this_thread::sleep_for(std::chrono::microseconds(150));
  loop.DoEvents();
}

TEST(PosixLoop, CallsWatchesWhileTheirDescriptorsAreReady) {
  PosixLoop loop;
  Pipe a;
  Pipe b;
  std::string taken;
  std::unique_ptr<PosixLoop::Watch> watchB;
  const auto watchA = loop.WatchFd(a.Out(), POLLIN, [&](short events) {
    EXPECT_EQ(events, POLLIN);
    taken += a.Take();
    watchB.reset();  // ready as well, but ended by now
  });
  watchB = loop.WatchFd(b.Out(), POLLIN, [&](short) { taken += b.Take(); });
  for (const char c : {'a', 'A'}) a.Put(c);
  b.Put('b');
  LookAgain(loop);
  watchA->SetEvents(0);
  LookAgain(loop);
  watchA->SetEvents(POLLIN);
  {
    const EventLoop::Hold hold(loop);
    LookAgain(loop);
  }
  EXPECT_EQ(taken, "a");
  LookAgain(loop);
  EXPECT_EQ(taken, "aA");

  // One may end in its own handler, and another begin there.
  watchB = loop.WatchFd(b.Out(), POLLIN, [&](short) {
    watchB.reset();
    watchB = loop.WatchFd(b.Out(), POLLIN, [&](short) {
      taken += b.Take();
      loop.Quit();
    });
  });
  loop.Run();
  EXPECT_EQ(taken, "aAb");

  // What an event inside another has taken does not come again.
  watchB.reset();
  watchB = loop.WatchFd(b.Out(), POLLIN, [&](short) {
    taken += b.Take();
    LookAgain(loop);
  });
  LookAgain(loop);  // so that they are reported in this order
  for (const Pipe* pipe : {&b, &a}) pipe->Put('c');
  LookAgain(loop);
  EXPECT_EQ(taken, "aAbcc");
}

TEST(PosixLoop, HandsSignalsToTheHandlerFromTheLoop) {
  std::vector<int> signals;
  sigset_t before;
  ::sigprocmask(SIG_BLOCK, nullptr, &before);
  const auto interrupt = std::signal(SIGINT, SIG_IGN);
  const auto hangUp = std::signal(SIGHUP, SIG_DFL);
  {
    PosixLoop loop;
    loop.OnSignals({SIGTERM, SIGHUP, SIGINT}, [&](int signal) {
      signals.push_back(signal);
      if (signals.size() == 2) loop.Quit();
    });
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::raise(signal);
    EXPECT_TRUE(signals.empty());
    loop.Run();
  }
  std::signal(SIGINT, interrupt);
  std::signal(SIGHUP, hangUp);
  EXPECT_THAT(signals, testing::UnorderedElementsAre(SIGTERM, SIGHUP)) << "the other is ignored";
  sigset_t after;
  ::sigprocmask(SIG_BLOCK, nullptr, &after);
  EXPECT_EQ(::sigismember(&after, SIGTERM), ::sigismember(&before, SIGTERM));
}

std::unique_ptr<TcpSocket> NewSocket(PosixSocketHost& host) {
  return host.NewSocket(SocketHost::Use::Conversation);
}

TEST(PosixSocket, WaitsForNothingButAsksSilentPeers) {
  PosixLoop loop;
  PosixSocketHost host(loop);
  const auto socket = NewSocket(host);
  const int next = Descriptor(::dup(STDERR_FILENO)).Get();  // the number that is free again
  ASSERT_TRUE(socket->Listen(0));
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

TEST(PosixSocket, AListenerWithoutDescriptorsTriesAgain) {
  PosixLoop loop;
  PosixSocketHost host(loop);
  const auto listener = NewSocket(host);
  const auto client = NewSocket(host);
  ASSERT_TRUE(listener->Listen(0));
  listener->onConnectionRequest = [&](TcpSocket::RequestId) { loop.Quit(); };
  client->Connect("127.0.0.1", listener->LocalPort());
  const auto patience = loop.NewTimer([&] {
    ADD_FAILURE() << "it has given up";
    loop.Quit();
  });
  patience->Start(std::chrono::seconds(10));
  // A sanitizer that meets a type for the first time needs descriptors itself.
  loop.WatchFd(STDERR_FILENO, 0, [](short) {})->SetEvents(0);
  rlimit before;
  ::getrlimit(RLIMIT_NOFILE, &before);
  const auto used = static_cast<rlim_t>(Descriptor(::dup(STDERR_FILENO)).Get());
  const rlimit none{used, before.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  for (int i = 0; i < 3; ++i) LookAgain(loop);
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_FALSE(loop.QuitRequested());
  loop.Run();
}

}  // namespace
}  // namespace orvanto::posix
