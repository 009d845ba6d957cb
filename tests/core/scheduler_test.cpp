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

struct SchedulerDesk : CoreDesk {
  SchedulerDesk() {
    execution.onRun = [this](const TaskRecord& task) {
      const DateTime now = clock.Now();
      fired.push_back(task.name + " " + std::to_string(now.day) + " " + TwoDigits(now.hour) + ":" +
                      TwoDigits(now.minute));
    };
  }
  // A task that leaves no mark but the one in `fired`.
  void AddSilent(const std::string& name, const std::string& time) {
    Add(name, time, {{"TaskType", "4"}});
  }
  // From 14:04:30 on.
  void Walk(std::int64_t milliseconds) {
    scheduler.tmrSched.Start();
    loop.Advance(milliseconds);
  }

  Texts captions;
  Texts fired;
  Subscription ticks = scheduler.secondPassed.Subscribe(
      [this] { captions.push_back(scheduler.Caption() + ":" + TwoDigits(clock.Now().second)); });
};

class SchedulerTest : public testing::Test, public SchedulerDesk {};

TEST_F(SchedulerTest, DueTasksRunOnceInSlotOrderAtSecondZero) {
  AddSilent("First", "14:05");
  AddSilent("Later", "14:06");
  Add("Script", "14:05", {{"TaskType", "1"}, {"Path", "bad"}});
  for (const char* name : {"Damaged", "Last"}) AddSilent(name, "14:05");
  Put("Damaged", {{"TimeType", "\x01"}, {"TimeHour", "\x01"}, {"TaskType", "\x01"}});
  settings.WriteSetting(kGeneral, "NoTasks", "150");
  Walk(29 * kSecond + 999);
  EXPECT_TRUE(fired.empty());
  loop.Advance(1);
  EXPECT_EQ(fired, (Texts{"First 21 14:05", "Script 21 14:05", "Last 21 14:05"}));
  loop.Advance(59 * kSecond + 999);
  EXPECT_EQ(fired.size(), 3U);
  loop.Advance(1);
  EXPECT_EQ(fired.back(), "Later 21 14:06");
  EXPECT_EQ(captions.front(), "Orvanto - 14:04:31");
  EXPECT_EQ(captions.back(), "Orvanto - 14:06:00");
  EXPECT_EQ(captions.size(), 90U);
}

TEST_F(SchedulerTest, DaysOfLateTimersSkipNoMinuteAndRepeatNone) {
  std::multiset<std::string> expected;
  for (const std::string time : {"00:00", "03:00", "03:01", "03:02", "23:59"}) {
    AddSilent(time, time);
    for (const char* day : {" 28 ", " 29 ", " 30 "}) expected.insert(time + day + time);
  }
  std::mt19937 random(20261122);
  loop.lateness = [&] { return std::uniform_int_distribution<std::int64_t>(0, 900)(random); };
  clock.Set(2026, 11, 27, 23, 59, 58, 400);
  Walk(3 * kDay + kSecond);
  EXPECT_EQ(std::multiset<std::string>(fired.begin(), fired.end()), expected);
  EXPECT_NEAR(static_cast<double>(captions.size()), 3 * 86400 + 2, 2);
}

TEST_F(SchedulerTest, AMinuteWhoseSecondZeroPassedUnseenIsMissed) {
  AddSilent("Missed", "14:05");
  AddSilent("Seen", "14:06");
  AddSilent("Just in time", "14:07");
  Walk(29 * kSecond);
  loop.Block(2 * kSecond);  // to 14:05:01
  loop.Advance(kMinute + 58 * kSecond);
  EXPECT_EQ(fired, (Texts{"Seen 21 14:06"}));
  loop.Block(kSecond + 500);  // to 14:07:00.5
  loop.Advance(kSecond);
  EXPECT_EQ(fired.back(), "Just in time 21 14:07");
}

TEST_F(SchedulerTest, ATickThatLastsIntoSecondZeroRunsItsTasksAndTheNextTickDoesNot) {
  AddSilent("Task", "14:05");
  const Subscription busy = scheduler.secondPassed.Subscribe([this] {
    if (clock.Now().second == 59) loop.Block(kSecond + kSecond / 2);
  });
  Walk(40 * kSecond);
  EXPECT_EQ(fired, (Texts{"Task 21 14:05"}));
}

TEST_F(SchedulerTest, ASecondLookedAtByALateTickIsNotLookedAtAgain) {
  AddSilent("Task", "14:05");
  clock.Set(2026, 11, 21, 14, 4, 58, 1);
  loop.lateness = [] { return 999; };
  // The tick of second 59 comes at its very end, and second 00 has begun when it looks.
  const Subscription busy = scheduler.secondPassed.Subscribe([this] { loop.Block(2); });
  Walk(5 * kSecond);
  EXPECT_EQ(fired, (Texts{"Task 21 14:05"}));
}

TEST_F(SchedulerTest, WhatATaskThatTakesLongLeavesToRun) {
  struct Case {
    const char* what;
    std::function<void(SchedulerDesk&)> meanwhile;
    Texts expected;
  };
  const Case cases[] = {
      {"left open, nothing else is let in: what is due by then is run, what was is missed",
       [](SchedulerDesk& desk) {
         const EventLoop::Hold hold(desk.loop);
         desk.loop.Block(2 * kMinute + 10 * kSecond);
         desk.loop.DoEvents();
       },
       {"Seven 21 14:07"}},
      {"until second 00 of the next minute, whose tick is overdue then and runs none twice",
       [](SchedulerDesk& desk) { desk.loop.Block(kMinute + 300); },
       {"Six 21 14:06", "Other 21 14:06", "Seven 21 14:07"}},
      {"a tick let in runs what is due in its place",
       [](SchedulerDesk& desk) { desk.loop.Advance(kMinute); },
       {"Six 21 14:06", "Other 21 14:06", "Seven 21 14:07"}},
      {"the program ends", [](SchedulerDesk& desk) { desk.scheduler.tmrSched.Stop(); }, {}}};
  for (const auto& [what, meanwhile, expected] : cases) {
    SchedulerDesk desk;
    desk.Add("Long", "14:05");
    desk.AddSilent("Five", "14:05");
    for (const char* name : {"Six", "Other"}) desk.AddSilent(name, "14:06");
    desk.AddSilent("Seven", "14:07");
    desk.messageBoxes.expected = {{"Long", Answer::Ok, [&, go = meanwhile] { go(desk); }}};
    desk.Walk(3 * kMinute);
    ASSERT_EQ(desk.fired.front(), "Long 21 14:05");
    EXPECT_EQ(Texts(desk.fired.begin() + 1, desk.fired.end()), expected) << what;
  }
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
                        {1, 0, 300, -kMinute - 500, both},  // shortly before second 00
                        {1, 36, 0, -40 * kSecond, both},
                        {0, 30, 0, kMinute, {five}},
                        {0, 30, 0, -kDay, {five, "Six 20 14:06"}}}) {
    SchedulerDesk desk;
    desk.AddSilent("Five", "14:05");
    desk.AddSilent("Six", "14:06");
    desk.Walk(30 * kSecond + c.minute * kMinute + c.second * kSecond + c.millisecond);
    desk.clock.Move(c.by);
    desk.loop.Advance(2 * kMinute - 31 * kSecond);
    EXPECT_EQ(std::adjacent_find(desk.captions.begin(), desk.captions.end()), desk.captions.end());
    EXPECT_EQ(desk.fired, c.expected) << c.minute << ":" << c.second << " by " << c.by;
  }
  // A clock that was fast when the program started: the minutes that it skipped are looked at.
  AddSilent("Six", "14:06");
  clock.Set(2026, 11, 21, 14, 6, 10);
  Walk(26 * kSecond);
  clock.Move(-40 * kSecond);
  loop.Advance(5 * kSecond);
  EXPECT_EQ(fired, (Texts{"Six 21 14:06"}));
}

}  // namespace
}  // namespace orvanto
