// What every event loop keeps to.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <thread>

#include "tests/platform/contracts.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kInterval(4);

// On the host's, and on the fake.
class EventLoopContract : public testing::TestWithParam<bool> {
 protected:
  // Time passes and nothing is delivered.
  void Busy(milliseconds time) {
    GetParam() ? fake_.Block(time.count()) : std::this_thread::sleep_for(time);
  }

  FakeClock clock_;
  FakeLoop fake_{clock_};
  const std::unique_ptr<EventLoop> host_ = NewHostLoop();
  EventLoop& loop_ = GetParam() ? static_cast<EventLoop&>(fake_) : *host_;
};

INSTANTIATE_TEST_SUITE_P(Loops, EventLoopContract, testing::Bool());

TEST_P(EventLoopContract, PostedWorkComesInOrderAndNotAtOnceAndReenters) {
  std::string order;
  loop_.Post([&] {
    order += 'a';
    loop_.DoEvents();
    order += 'c';
    loop_.Post([&] { order += 'd'; });
    loop_.DoEvents();
    order += 'e';
  });
  loop_.Post([&] { order += 'b'; });
  EXPECT_EQ(order, "");
  loop_.DoEvents();
  EXPECT_EQ(order, "abcde");
}

TEST_P(EventLoopContract, ATimerComesWhenDueAndMissedPeriodsCollapse) {
  int calls = 0;
  const auto timer = loop_.NewTimer([&] { ++calls; });
  EXPECT_FALSE(timer->Enabled());
  timer->Start(milliseconds::max());
  EXPECT_TRUE(timer->Enabled());
  Busy(kInterval);
  loop_.DoEvents();
  EXPECT_EQ(calls, 0);
  timer->Start(kInterval);
  Busy(50 * kInterval);
  EXPECT_EQ(calls, 0);
  for (int i = 0; i < 2; ++i) loop_.DoEvents();
  const int before = calls;
  EXPECT_TRUE(1 <= calls && calls < 25) << "a busy machine lets some periods pass in here";
  timer->Stop();
  Busy(3 * kInterval);
  loop_.DoEvents();
  EXPECT_EQ(calls, before);
}

TEST_P(EventLoopContract, AHandlerMayStopAndRestartItsTimerAndDestroyOthers) {
  int calls = 0;
  std::unique_ptr<Timer> other = loop_.NewTimer([] { ADD_FAILURE() << "it was destroyed"; });
  std::unique_ptr<Timer> timer = loop_.NewTimer([&] {
    other.reset();  // due as well
    timer->Stop();
    if (++calls == 1) timer->Start(2 * kInterval);
  });
  timer->Start(milliseconds(0));  // taken as one
  other->Start(4 * kInterval);
  for (int i = 0; i < 9; ++i) {
    Busy(5 * kInterval);
    loop_.DoEvents();
  }
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(timer->Enabled());
}

TEST_P(EventLoopContract, AHoldKeepsEverythingUntilItsEnd) {
  std::string order;
  const auto timer = loop_.NewTimer([&] { order += 't'; });
  timer->Start(kInterval);
  {
    const EventLoop::Hold outer(loop_);
    {
      const EventLoop::Hold inner(loop_);
      loop_.Post([&] { order += 'p'; });
      Busy(50 * kInterval);
      RunSystemLoop();
    }
    loop_.DoEvents();
    EXPECT_EQ(order, "");
  }
  loop_.DoEvents();
  EXPECT_EQ(std::count(order.begin(), order.end(), 'p'), 1);
  EXPECT_TRUE(order.size() > 1 && order.size() < 25) << order;
}

TEST_P(EventLoopContract, DeferredWorkIsQueuedOnceAndCanBeTakenBack) {
  std::string order;
  std::unique_ptr<Deferred> again;
  again = loop_.NewDeferred([&] {
    order += 'd';
    if (order.size() < 4) again->Post();
  });
  const auto cancelled = loop_.NewDeferred([&] { order += 'c'; });
  auto gone = loop_.NewDeferred([] { ADD_FAILURE() << "it was destroyed"; });
  loop_.Post([&] {
    order += 'a';
    gone.reset();
  });
  for (Deferred* each : {gone.get(), cancelled.get(), again.get(), again.get()}) each->Post();
  cancelled->Cancel();
  loop_.Post([&] { order += 'b'; });
  loop_.DoEvents();
  EXPECT_EQ(order.substr(0, 3), "adb");
  cancelled->Post();
  for (int i = 0; i < 2; ++i) loop_.DoEvents();
  EXPECT_EQ(order, "adbdc");
}

TEST_P(EventLoopContract, AWaitEndsByItsConditionItsLimitItsOwnerAndTheEnd) {
  using Waited = EventLoop::Waited;
  auto owner = std::make_shared<int>();
  bool reached = false;
  int calls = 0;
  std::function<void()> happens;
  const auto timer = loop_.NewTimer([&] {
    ++calls;
    if (const auto now = happens) now();
  });
  timer->Start(kInterval);
  const auto reach = [&] { reached = true; };
  const auto wait = [&](std::optional<milliseconds> limit) {
    reached = false;
    return loop_.WaitFor(
        owner, [&] { return !owner || reached; }, limit);
  };
  EXPECT_EQ(wait(5 * kInterval), Waited::TimedOut);
  EXPECT_GE(calls, 1) << "others run meanwhile";
  happens = reach;
  EXPECT_EQ(wait(std::chrono::hours(1)), Waited::Met);
  {
    const EventLoop::Hold hold(loop_);
    EXPECT_EQ(wait({}), Waited::TimedOut) << "nothing could come";
  }
  const std::pair<std::function<void()>, Waited> cases[] = {
      {[&] { loop_.Post(reach); }, Waited::Met},
      {[&] {  // one inside another
         happens = reach;
         EXPECT_EQ(wait({}), Waited::Met);
       },
       Waited::Met},
      {[&] { owner.reset(); }, Waited::OwnerGone},
      {[&] { loop_.Quit(); }, Waited::Quit},
      {nullptr, Waited::Quit}};
  for (const auto& [what, then] : cases) {
    owner = std::make_shared<int>();
    happens = what;
    EXPECT_EQ(wait({}), then);
  }
  EXPECT_EQ(loop_.WaitFor(owner, [] { return true; }, {}), Waited::Met);
}

TEST(HostLoop, NeitherAFloodOfPostsNorAnExceptionStopsATimer) {
  const auto loop = NewHostLoop();
  int calls = 0;
  const auto timer = loop->NewTimer([&] {
    if (++calls == 2) loop->Quit();
    throw std::runtime_error("from a timer");
  });
  timer->Start(kInterval);
  std::function<void()> again = [&] { loop->Post(again); };
  loop->Post(again);
  loop->Post([] { throw 1; });
  loop->Run();
  EXPECT_EQ(calls, 2);
  EXPECT_TRUE(loop->QuitRequested());
  loop->DoEvents();
  loop->Run();  // returns at once
}

}  // namespace
}  // namespace orvanto
