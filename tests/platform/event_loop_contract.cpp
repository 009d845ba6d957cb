// What every event loop keeps to.
#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "tests/platform/contracts.h"
#include "tests/support/FakePlatform.h"

namespace orvanto {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr milliseconds kInterval(10);

struct Made {
  std::unique_ptr<EventLoop> loop;
  std::function<void(milliseconds)> busy;  // time passes and nothing is delivered
};

Made MakeHostLoop() {
  return {NewHostLoop(), [](milliseconds time) { std::this_thread::sleep_for(time); }};
}

Made MakeFakeLoop() {
  const auto clock = std::make_shared<FakeClock>();
  auto loop = std::make_unique<FakeLoop>(*clock);
  const auto busy = [clock, &fake = *loop](milliseconds time) { fake.Block(time.count()); };
  return {std::move(loop), busy};
}

class EventLoopContract : public testing::TestWithParam<Made (*)()> {
 protected:
  const Made made_ = GetParam()();
  EventLoop& loop_ = *made_.loop;
};

INSTANTIATE_TEST_SUITE_P(Loops, EventLoopContract, testing::Values(MakeHostLoop, MakeFakeLoop));

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

TEST_P(EventLoopContract, AHandlerMayStopAndRestartItsTimerAndDestroyOthers) {
  int calls = 0;
  std::unique_ptr<Timer> other = loop_.NewTimer([] { ADD_FAILURE() << "it was destroyed"; });
  std::unique_ptr<Timer> timer = loop_.NewTimer([&] {
    other.reset();  // due as well
    timer->Stop();
    if (++calls == 1) timer->Start(2 * kInterval);
  });
  timer->Start(milliseconds(0));  // taken as one
  other->Start(2 * kInterval);
  made_.busy(3 * kInterval);
  for (int i = 0; i < 6; ++i) {
    loop_.DoEvents();
    made_.busy(kInterval);
  }
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(timer->Enabled());
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
