#include "platform/posix/PosixLoop.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <thread>
#include <vector>

#include "tests/platform/event_loop_contract.h"
#include "tests/support/FakePlatform.h"

namespace orvanto::posix {
namespace {

using std::chrono::milliseconds;

LoopUnderTest MakePosixLoop() {
  return {[](milliseconds time) { std::this_thread::sleep_for(time); },
          std::make_unique<PosixLoop>()};
}

LoopUnderTest MakeFakeLoop() {
  auto clock = std::make_shared<FakeClock>();
  auto loop = std::make_unique<FakeLoop>(*clock);
  FakeLoop& fake = *loop;
  return {[clock, &fake](milliseconds time) { fake.Block(time.count()); }, std::move(loop)};
}

INSTANTIATE_TEST_SUITE_P(Posix, EventLoopContract, testing::Values(MakePosixLoop));
INSTANTIATE_TEST_SUITE_P(Fake, EventLoopContract, testing::Values(MakeFakeLoop));
INSTANTIATE_TEST_SUITE_P(Posix, RealLoopContract, testing::Values(MakePosixLoop));

class Pipe {
 public:
  Pipe() { EXPECT_EQ(::pipe(ends_), 0); }
  ~Pipe() {
    ::close(ends_[0]);
    ::close(ends_[1]);
  }
  int Out() const { return ends_[0]; }
  void Put(char c) const { EXPECT_EQ(::write(ends_[1], &c, 1), 1); }
  char Take() const {
    char c = 0;
    EXPECT_EQ(::read(ends_[0], &c, 1), 1);
    return c;
  }

 private:
  int ends_[2];
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
  a.Put('a');
  a.Put('A');
  b.Put('b');
  LookAgain(loop);
  EXPECT_EQ(taken, "a");
  watchA->SetEvents(0);
  LookAgain(loop);
  EXPECT_EQ(taken, "a");
  watchA->SetEvents(POLLIN);
  {
    const EventLoop::Hold hold(loop);
    LookAgain(loop);
    EXPECT_EQ(taken, "a");
  }
  LookAgain(loop);
  EXPECT_EQ(taken, "aA");
}

TEST(PosixLoop, AWatchMayEndInItsOwnHandlerAndBeginAnother) {
  PosixLoop loop;
  Pipe pipe;
  int calls = 0;
  std::unique_ptr<PosixLoop::Watch> watch;
  watch = loop.WatchFd(pipe.Out(), POLLIN, [&](short) {
    ++calls;
    watch = loop.WatchFd(pipe.Out(), POLLIN, [&](short) {
      ++calls;
      pipe.Take();
      loop.Quit();
    });
  });
  pipe.Put('x');
  loop.Run();
  EXPECT_EQ(calls, 2);
}

TEST(PosixLoop, EndsWithWorkThatOwnsTimersAndWatches) {
  Pipe pipe;
  PosixLoop loop;
  const std::shared_ptr<Timer> timer = loop.NewTimer([] {});
  const std::shared_ptr<PosixLoop::Watch> watch = loop.WatchFd(pipe.Out(), POLLIN, [](short) {});
  const std::shared_ptr<void> poster(nullptr, [&loop](void*) { loop.Post([] {}); });
  loop.Post([timer, watch, poster] {});
}

TEST(PosixLoop, HandsSignalsToTheHandlerFromTheLoop) {
  std::vector<int> signals;
  sigset_t before;
  ::sigprocmask(SIG_BLOCK, nullptr, &before);
  const auto ignoring = std::signal(SIGINT, SIG_IGN);
  {
    PosixLoop loop;
    loop.OnSignals({SIGTERM, SIGHUP, SIGINT}, [&](int signal) {
      signals.push_back(signal);
      if (signals.size() == 2) loop.Quit();
    });
    std::raise(SIGINT);
    std::raise(SIGTERM);
    std::raise(SIGHUP);
    EXPECT_TRUE(signals.empty());
    loop.Run();
  }
  std::signal(SIGINT, ignoring);
  EXPECT_THAT(signals, testing::UnorderedElementsAre(SIGTERM, SIGHUP));
  sigset_t after;
  ::sigprocmask(SIG_BLOCK, nullptr, &after);
  EXPECT_EQ(::sigismember(&after, SIGTERM), ::sigismember(&before, SIGTERM));
}

}  // namespace
}  // namespace orvanto::posix
