#include "core/Scheduler.h"
#include "core/Convert.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kDay = 24 * 60 * kMinute;

class SchedulerTest : public testing::Test, public CoreDesk {
 protected:
  SchedulerTest() {
    ticks = scheduler.secondPassed.Subscribe([this] { captions.push_back(scheduler.Caption()); });
    execution.onRun = [this](const TaskRecord& task) {
      const DateTime now = clock.Now();
      fired.push_back(task.name + " " + std::to_string(now.day) + " " + TwoDigits(now.hour) + ":" +
                      TwoDigits(now.minute));
    };
  }
  // A task that leaves no mark but the one in `fired`.
  void AddSilent(const std::string& name, const std::string& time) {
    Add(name, time, [](TaskEntry& entry) { entry.taskType = kResetComputer; });
  }
  // From 14:04:30 on.
  void Run(std::int64_t milliseconds) {
    scheduler.tmrSched.Start();
    loop.Advance(milliseconds);
  }

  Texts captions;
  Texts fired;
  Subscription ticks;
};

TEST_F(SchedulerTest, DueTasksRunOnceInSlotOrderAtSecondZero) {
  AddSilent("First", "14:05");
  AddSilent("Later", "14:06");
  Add("Script", "14:05", [](TaskEntry& entry) {
    entry.taskType = kRunScript;
    entry.path = "bad";
  });
  AddSilent("Last", "14:05");
  Run(29 * kSecond + 999);
  EXPECT_TRUE(fired.empty());
  loop.Advance(1);
  EXPECT_EQ(fired, (Texts{"First 21 14:05", "Script 21 14:05", "Last 21 14:05"}));
  loop.Advance(59 * kSecond + 999);
  EXPECT_EQ(fired.size(), 3U);
  loop.Advance(1);
  EXPECT_EQ(fired.back(), "Later 21 14:06");
  EXPECT_EQ(captions.front(), "Orvanto - 14:04");
  EXPECT_EQ(captions.back(), "Orvanto - 14:06");
  EXPECT_EQ(captions.size(), 90U);
}

TEST_F(SchedulerTest, ATickThatLastsIntoTheNextMinuteRunsItsTasksAndTheNextTickDoesNot) {
  AddSilent("First", "14:05");
  const Subscription busy = scheduler.secondPassed.Subscribe([this] {
    if (clock.Now().second == 59) loop.Block(kSecond + kSecond / 2);
  });
  Run(40 * kSecond);
  EXPECT_EQ(fired, (Texts{"First 21 14:05"}));
}

TEST_F(SchedulerTest, AWeekOfLateTimersSkipsNoMinuteAndRepeatsNone) {
  struct Rule {
    const char* time;
    std::int16_t timeType;
    std::int16_t every;
    std::int16_t in;
    std::int16_t dayNo;
    std::vector<int> days;  // of November 2026 on which it must fire; the 22nd is a Sunday
  };
  const std::vector<int> all = {22, 23, 24, 25, 26, 27, 28};
  std::vector<Rule> rules = {{"00:00", kTimeRecurring, 1, 1, 0, all},
                             {"23:59", kTimeRecurring, 1, 12, 0, all},
                             {"12:00", kTimeRecurring, 1, 2, 0, {}},  // in another month
                             {"07:30", kTimeRecurring, 4, 1, 0, {24}},
                             {"13:13", kTimeRecurring, 9, 1, 0, {23, 24, 25, 26, 27}},
                             {"12:00", kTimeRecurring, 10, 1, 0, {22, 28}},
                             {"12:01", kTimeRecurring, 10, 2, 0, {22}},
                             {"12:00", kTimeRecurring, 20, 1, 0, {}},
                             {"18:45", kTimeDayNumber, 0, 0, 25, {25}},
                             {"18:45", kTimeDayNumber, 0, 0, 31, {}},
                             {"06:06", kTimeOnce, 0, 0, 0, {26}},
                             // Minutes that follow each other.
                             {"03:00", kTimeRecurring, 1, 1, 0, all},
                             {"03:01", kTimeRecurring, 1, 1, 0, all},
                             {"03:02", kTimeRecurring, 1, 1, 0, all}};
  std::multiset<std::string> expected;
  for (const Rule& rule : rules) {
    const std::string name = std::to_string(store.NoTasks());
    Add(name, rule.time, [&rule](TaskEntry& entry) {
      entry.timeType = rule.timeType;
      entry.every = rule.every;
      entry.in = rule.in;
      entry.dayNo = rule.dayNo;
      entry.datePart1 = "26";
      entry.datePart2 = "11";
      entry.year = "2026";
      entry.taskType = kResetComputer;
    });
    for (const int day : rule.days) {
      expected.insert(name + " " + std::to_string(day) + " " + rule.time);
    }
  }
  std::mt19937 random(20261122);
  loop.lateness = [&] { return std::uniform_int_distribution<std::int64_t>(0, 900)(random); };
  clock.Set(2026, 11, 21, 23, 59, 58, 400);
  Run(7 * kDay + kSecond);
  EXPECT_EQ(std::multiset<std::string>(fired.begin(), fired.end()), expected);
  EXPECT_NEAR(static_cast<double>(captions.size()), 7 * 86400 + 2, 2);
}

TEST_F(SchedulerTest, AMinuteWhoseSecondZeroPassedUnseenIsMissed) {
  AddSilent("Missed", "14:05");
  AddSilent("Seen", "14:06");
  AddSilent("Just in time", "14:07");
  Run(29 * kSecond);
  loop.Block(2 * kSecond);  // to 14:05:01
  loop.Advance(kMinute + 58 * kSecond);
  EXPECT_EQ(fired, (Texts{"Seen 21 14:06"}));
  loop.Block(kSecond + 500);  // to 14:07:00.5
  loop.Advance(kSecond);
  EXPECT_EQ(fired.back(), "Just in time 21 14:07");
}

TEST_F(SchedulerTest, APopupLeftOpenHoldsBackTheTasksBehindIt) {
  Add("Popup", "14:05");
  AddSilent("Of the same minute", "14:05");
  AddSilent("Of a later minute", "14:07");
  messageBoxes.expected = {{"Popup", Answer::Ok, [this] {
                              const EventLoop::Hold hold(loop);
                              loop.Block(2 * kMinute + 10 * kSecond);
                              loop.DoEvents();
                            }}};
  Run(30 * kSecond);
  EXPECT_EQ(fired, (Texts{"Popup 21 14:05", "Of a later minute 21 14:07"}));
}

TEST_F(SchedulerTest, ATaskStartedLateInAMinuteIsNotStartedAgainByItsTick) {
  Add("Popup", "14:05");
  AddSilent("Next", "14:06");
  AddSilent("Other", "14:06");
  // Answered within second 00 of the next minute, whose tick is overdue then.
  messageBoxes.expected = {{"Popup", Answer::Ok, [this] { loop.Block(kMinute + 300); }}};
  Run(95 * kSecond);
  EXPECT_EQ(fired, (Texts{"Popup 21 14:05", "Next 21 14:06", "Other 21 14:06"}));
}

TEST_F(SchedulerTest, ADamagedTaskStopsNoOther) {
  for (const char* name : {"Before", "Damaged", "After"}) AddSilent(name, "14:05");
  for (const char* value : {"TimeType", "TimeHour", "Every", "TaskType"}) {
    settings.WriteSetting("Damaged", value, "\x01 nonsense");
  }
  settings.WriteSetting(kGeneral, "NoTasks", "150");
  Run(kMinute);
  EXPECT_EQ(fired, (Texts{"Before 21 14:05", "After 21 14:05"}));
}

TEST_F(SchedulerTest, ASecondLookedAtByALateTickIsNotLookedAtAgain) {
  AddSilent("Task", "14:05");
  clock.Set(2026, 11, 21, 14, 4, 58, 1);
  loop.lateness = [] { return 999; };
  // The tick of second 59 comes at its very end, and second 00 has begun when it looks.
  const Subscription busy = scheduler.secondPassed.Subscribe([this] { loop.Block(2); });
  Run(5 * kSecond);
  EXPECT_EQ(fired, (Texts{"Task 21 14:05"}));
}

TEST_F(SchedulerTest, NothingMoreIsRunOnceTheTimerHasStopped) {
  Add("Ends the program", "14:05");
  AddSilent("Behind it", "14:05");
  messageBoxes.expected = {{"Ends the program", Answer::Ok, [this] { scheduler.tmrSched.Stop(); }}};
  Run(kMinute);
  EXPECT_EQ(fired, (Texts{"Ends the program 21 14:05"}));
  EXPECT_EQ(captions.size(), 30U);
}

TEST_F(SchedulerTest, AClockThatIsSetLosesNoMinuteAndRepeatsNone) {
  struct Case {
    int minute;  // when it is set, from 14:05:00 on
    int second;
    int millisecond;
    std::int64_t by;
    Texts expected;
  };
  const std::string five = "Five 21 14:05";
  const Texts both = {five, "Six 21 14:06"};
  for (const Case& c : {Case{0, 0, 300, -700, both},  // a small correction, just after second 00
                        {0, 10, 0, -20 * kSecond, both},
                        {1, 0, 300, -kMinute, both},  // back into second 00
                        {1, 36, 0, -40 * kSecond, both},
                        {0, 30, 0, kMinute, {five}},
                        {0, 30, 0, -kDay, {five, "Six 20 14:06"}}}) {
    CoreDesk fresh;
    Texts seen;
    fresh.execution.onRun = [&](const TaskRecord& task) {
      const DateTime now = fresh.clock.Now();
      seen.push_back(task.name + " " + std::to_string(now.day) + " " + TwoDigits(now.hour) + ":" +
                     TwoDigits(now.minute));
    };
    const auto silent = [](TaskEntry& entry) { entry.taskType = kResetComputer; };
    fresh.Add("Five", "14:05", silent);
    fresh.Add("Six", "14:06", silent);
    fresh.scheduler.tmrSched.Start();
    fresh.loop.Advance(30 * kSecond + c.minute * kMinute + c.second * kSecond + c.millisecond);
    fresh.clock.Move(c.by);
    fresh.loop.Advance(2 * kMinute - 31 * kSecond);
    EXPECT_EQ(seen, c.expected) << c.minute << ":" << c.second << " by " << c.by;
  }
  // A clock that was fast when the program started: the minutes that it skipped are looked at.
  AddSilent("Six", "14:06");
  clock.Set(2026, 11, 21, 14, 6, 10);
  Run(26 * kSecond);
  clock.Move(-40 * kSecond);
  loop.Advance(5 * kSecond);
  EXPECT_EQ(captions.back(), "Orvanto - 14:06");
  EXPECT_EQ(fired, (Texts{"Six 21 14:06"}));
}

TEST_F(SchedulerTest, ATickLetInByATaskRunsWhatIsDueInItsPlace) {
  Add("Long", "14:05");
  AddSilent("Next", "14:06");
  messageBoxes.expected = {{"Long", Answer::Ok, [this] { loop.Advance(kMinute); }}};
  Run(30 * kSecond);
  EXPECT_EQ(fired, (Texts{"Long 21 14:05", "Next 21 14:06"}));
}

}  // namespace
}  // namespace orvanto
