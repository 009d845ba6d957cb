#include "tests/platform/event_loop_contract.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <vector>

namespace orvanto {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr milliseconds kInterval(10);

// On a busy machine the handling of what is due takes longer than the next period.
class Meanwhile {
 public:
  long long Periods() const { return (std::chrono::steady_clock::now() - began_) / kInterval; }

 private:
  std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
};

TEST_P(EventLoopContract, PostedWorkComesInOrderAndNotAtOnce) {
  std::vector<int> order;
  loop_.Post([&] {
    order.push_back(1);
    loop_.Post([&] { order.push_back(3); });
  });
  loop_.Post([&] { order.push_back(2); });
  EXPECT_THAT(order, IsEmpty());
  loop_.DoEvents();
  loop_.DoEvents();
  EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST_P(EventLoopContract, ATimerComesWhenDueAndMissedPeriodsCollapse) {
  int calls = 0;
  const auto timer = loop_.NewTimer([&] { ++calls; });
  EXPECT_FALSE(timer->Enabled());
  made_.busy(kInterval);
  loop_.DoEvents();
  EXPECT_EQ(calls, 0);
  timer->Start(std::chrono::hours(1));
  EXPECT_TRUE(timer->Enabled());
  loop_.DoEvents();
  EXPECT_EQ(calls, 0);
  timer->Start(kInterval);
  made_.busy(8 * kInterval);
  EXPECT_EQ(calls, 0);
  const Meanwhile meanwhile;
  loop_.DoEvents();
  loop_.DoEvents();
  EXPECT_GE(calls, 1);
  EXPECT_LE(calls, 3 + meanwhile.Periods());
  timer->Stop();
  const int before = calls;
  made_.busy(2 * kInterval);
  loop_.DoEvents();
  EXPECT_EQ(calls, before);
}

TEST_P(EventLoopContract, AHandlerMayStopAndRestartItsTimer) {
  int calls = 0;
  std::unique_ptr<Timer> timer = loop_.NewTimer([&] {
    timer->Stop();
    if (++calls == 1) timer->Start(2 * kInterval);
  });
  timer->Start(kInterval);
  for (int i = 0; i < 6; ++i) {
    made_.busy(kInterval);
    loop_.DoEvents();
  }
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(timer->Enabled());
}

TEST_P(EventLoopContract, DestroyingATimerThatIsDueStopsIt) {
  int calls = 0;
  std::unique_ptr<Timer> second = loop_.NewTimer([&] { ++calls; });
  const auto first = loop_.NewTimer([&] { second.reset(); });
  first->Start(kInterval);
  second->Start(2 * kInterval);
  made_.busy(3 * kInterval);
  loop_.DoEvents();
  EXPECT_EQ(calls, 0);
}

TEST_P(EventLoopContract, AHoldKeepsEverythingUntilItsEnd) {
  int timerCalls = 0;
  int posts = 0;
  const auto timer = loop_.NewTimer([&] { ++timerCalls; });
  timer->Start(kInterval);
  {
    const EventLoop::Hold outer(loop_);
    {
      const EventLoop::Hold inner(loop_);
      loop_.Post([&] { ++posts; });
      made_.busy(8 * kInterval);
      loop_.DoEvents();
    }
    loop_.DoEvents();
    EXPECT_EQ(timerCalls + posts, 0);
  }
  const Meanwhile meanwhile;
  loop_.DoEvents();
  EXPECT_GE(timerCalls, 1);
  EXPECT_LE(timerCalls, 2 + meanwhile.Periods());
  EXPECT_EQ(posts, 1);
}

TEST_P(EventLoopContract, DoEventsReenters) {
  std::vector<int> order;
  const auto timer = loop_.NewTimer([&] { order.push_back(2); });
  loop_.Post([&] {
    order.push_back(1);
    timer->Start(kInterval);
    made_.busy(kInterval + kInterval / 2);
    loop_.DoEvents();
    timer->Stop();
    order.push_back(3);
  });
  loop_.DoEvents();
  EXPECT_EQ(order.front(), 1);
  EXPECT_EQ(order.back(), 3);
  EXPECT_GE(order.size(), 3u);
}

TEST_P(RealLoopContract, AHandlerThatPostsForEverStarvesNoTimer) {
  const auto timer = loop_.NewTimer([&] { loop_.Quit(); });
  timer->Start(kInterval);
  std::function<void()> again = [&] { loop_.Post(again); };
  loop_.Post(again);
  loop_.Run();
  EXPECT_TRUE(loop_.QuitRequested());
  loop_.DoEvents();
  loop_.Run();  // returns at once
}

TEST_P(RealLoopContract, AnExceptionStopsNothing) {
  int calls = 0;
  const auto timer = loop_.NewTimer([&] {
    if (++calls == 2) loop_.Quit();
    throw std::runtime_error("from a timer");
  });
  timer->Start(kInterval);
  loop_.Post([] { throw 1; });
  loop_.Run();
  EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace orvanto
