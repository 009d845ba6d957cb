#include "core/Scheduler.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "tests/core/CoreDesk.h"

namespace orvanto {
namespace {

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kDay = 24 * 60 * kMinute;

std::string At(const DateTime& now) {
  return std::to_string(now.day) + " " + TwoDigits(now.hour) + ":" + TwoDigits(now.minute);
}

class SchedulerTest : public testing::Test {
 protected:
  SchedulerTest() {
    desk.scheduler.onCaption = [this](const std::string& caption) { captions.push_back(caption); };
    desk.execution.onRun = [this](const TaskRecord& task) {
      fired.push_back(task.name + " " + At(desk.clock.Now()));
    };
    desk.clock.Set(2026, 11, 21, 14, 4, 30);
  }
  void Start() { desk.scheduler.tmrSched.Start(); }
  // A task that leaves no mark but the one in `fired`.
  void AddSilent(const std::string& name, const std::string& time) {
    desk.Add(name, time, [](TaskEntry& entry) { entry.taskType = kResetComputer; });
  }

  CoreDesk desk;
  std::vector<std::string> captions;
  std::vector<std::string> fired;
};

using Fired = std::vector<std::string>;

TEST_F(SchedulerTest, DueTasksRunOnceInSlotOrderAtSecondZero) {
  AddSilent("First", "14:05");
  AddSilent("Later", "14:06");
  desk.Add("Script", "14:05", [](TaskEntry& entry) {
    entry.taskType = kRunScript;
    entry.path = "bad";
  });
  AddSilent("Last", "14:05");
  Start();
  desk.loop.Advance(29 * kSecond + 999);
  EXPECT_TRUE(fired.empty());
  desk.loop.Advance(1);
  EXPECT_EQ(fired, (Fired{"First 21 14:05", "Script 21 14:05", "Last 21 14:05"}));
  desk.loop.Advance(59 * kSecond + 999);
  EXPECT_EQ(fired.size(), 3U);
  desk.loop.Advance(1);
  EXPECT_EQ(fired.back(), "Later 21 14:06");
  EXPECT_EQ(captions.front(), "Orvanto - 14:04");
  EXPECT_EQ(captions.back(), "Orvanto - 14:06");
  EXPECT_EQ(captions.size(), 90U);
}

TEST_F(SchedulerTest, ATaskSavedJustBeforeItsMinuteRuns) {
  Start();
  desk.loop.Advance(29 * kSecond + 990);
  AddSilent("Late", "14:05");
  desk.loop.Advance(kMinute);
  EXPECT_EQ(fired, (Fired{"Late 21 14:05"}));
}

TEST_F(SchedulerTest, AWeekOfLateTimersSkipsNoMinuteAndRepeatsNone) {
  struct Rule {
    const char* name;
    const char* time;
    std::int16_t timeType;
    std::int16_t every;
    std::int16_t in;
    std::int16_t dayNo;
    std::vector<int> days;  // of November 2026 on which it must fire; the 22nd is a Sunday
  };
  const std::vector<Rule> rules{
      {"daily", "00:00", kTimeRecurring, 1, 1, 0, {22, 23, 24, 25, 26, 27, 28}},
      {"daily of the month", "23:59", kTimeRecurring, 1, 12, 0, {22, 23, 24, 25, 26, 27, 28}},
      {"of another month", "12:00", kTimeRecurring, 1, 2, 0, {}},
      {"tuesdays", "07:30", kTimeRecurring, 4, 1, 0, {24}},
      {"weekdays", "13:13", kTimeRecurring, 9, 1, 0, {23, 24, 25, 26, 27}},
      {"weekend", "12:00", kTimeRecurring, 10, 1, 0, {22, 28}},
      {"weekend of another month", "12:01", kTimeRecurring, 10, 2, 0, {22}},
      {"second tuesday", "12:00", kTimeRecurring, 20, 1, 0, {}},
      {"the 25th", "18:45", kTimeDayNumber, 0, 0, 25, {25}},
      {"the 31st", "18:45", kTimeDayNumber, 0, 0, 31, {}},
      {"once", "06:06", kTimeOnce, 0, 0, 0, {26}}};
  std::map<std::string, int> expected;
  for (const Rule& rule : rules) {
    desk.Add(rule.name, rule.time, [&rule](TaskEntry& entry) {
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
      ++expected[std::string(rule.name) + " " + std::to_string(day) + " " + rule.time];
    }
  }
  // Also something in each of a few minutes that follow each other.
  for (int minute = 0; minute < 10; ++minute) {
    const std::string time = "03:" + TwoDigits(minute);
    AddSilent("minute " + std::to_string(minute), time);
    for (int day = 22; day <= 28; ++day) {
      ++expected["minute " + std::to_string(minute) + " " + std::to_string(day) + " " + time];
    }
  }
  std::mt19937 random(20261122);
  desk.loop.lateness = [&] { return std::uniform_int_distribution<std::int64_t>(0, 900)(random); };
  desk.clock.Set(2026, 11, 21, 23, 59, 58, 400);
  Start();
  desk.loop.Advance(7 * kDay + kSecond);

  std::map<std::string, int> counted;
  for (const std::string& one : fired) ++counted[one];
  EXPECT_EQ(counted, expected);
  EXPECT_NEAR(static_cast<double>(captions.size()), 7 * 86400 + 2, 2);
}

TEST_F(SchedulerTest, AMinuteWhoseSecondZeroPassedUnseenIsMissed) {
  AddSilent("Missed", "14:05");
  AddSilent("Seen", "14:06");
  Start();
  desk.loop.Advance(29 * kSecond);
  desk.loop.Block(2 * kSecond);  // to 14:05:01
  desk.loop.Advance(kMinute);
  EXPECT_EQ(fired, (Fired{"Seen 21 14:06"}));

  fired.clear();
  AddSilent("Just in time", "14:07");
  desk.loop.Advance(58 * kSecond);
  desk.loop.Block(kSecond + 500);  // to 14:07:00.5
  desk.loop.Advance(kSecond);
  EXPECT_EQ(fired, (Fired{"Just in time 21 14:07"}));
}

TEST_F(SchedulerTest, APopupLeftOpenHoldsBackTheTasksBehindIt) {
  desk.Add("Popup", "14:05");
  AddSilent("Of the same minute", "14:05");
  AddSilent("Of a later minute", "14:07");
  desk.messageBoxes.expected = {{"Popup", Answer::Ok, [this] {
                                   const EventLoop::Hold hold(desk.loop);
                                   desk.loop.Block(2 * kMinute + 10 * kSecond);
                                   desk.loop.DoEvents();
                                 }}};
  Start();
  desk.loop.Advance(30 * kSecond);
  EXPECT_EQ(fired, (Fired{"Popup 21 14:05", "Of a later minute 21 14:07"}));
}

TEST_F(SchedulerTest, ADamagedTaskStopsNoOther) {
  AddSilent("Before", "14:05");
  AddSilent("Damaged", "14:05");
  AddSilent("After", "14:05");
  for (const char* value : {"TimeType", "TimeHour", "Every", "TaskType"}) {
    desk.settings.WriteSetting("Damaged", value, "\x01 nonsense");
  }
  desk.settings.WriteSetting(kGeneral, "Task4", "");
  desk.settings.WriteSetting(kGeneral, "NoTasks", "150");
  Start();
  desk.loop.Advance(kMinute);
  EXPECT_EQ(fired, (Fired{"Before 21 14:05", "After 21 14:05"}));
}

TEST_F(SchedulerTest, ASecondLookedAtByALateTickIsNotLookedAtAgain) {
  AddSilent("Task", "14:05");
  desk.clock.Set(2026, 11, 21, 14, 4, 58, 1);
  desk.loop.lateness = [] { return 999; };
  // The tick of second 59 comes at its very end, and second 00 has begun when it looks.
  desk.scheduler.onSecond = [this] { desk.loop.Block(2); };
  Start();
  desk.loop.Advance(5 * kSecond);
  EXPECT_EQ(fired, (Fired{"Task 21 14:05"}));
}

TEST_F(SchedulerTest, NothingMoreIsRunOnceTheTimerHasStopped) {
  desk.Add("Ends the program", "14:05");
  AddSilent("Behind it", "14:05");
  desk.messageBoxes.expected = {
      {"Ends the program", Answer::Ok, [this] { desk.scheduler.tmrSched.Stop(); }}};
  Start();
  desk.loop.Advance(kMinute);
  EXPECT_EQ(fired, (Fired{"Ends the program 21 14:05"}));
}

TEST_F(SchedulerTest, AClockSetBackRepeatsNoSecondOrIsFollowed) {
  AddSilent("Task", "14:05");
  Start();
  desk.loop.Advance(30 * kSecond);
  EXPECT_EQ(fired.size(), 1U);
  desk.clock.Move(-700);  // a small correction, just behind second 00
  desk.loop.Advance(30 * kSecond);
  EXPECT_EQ(fired.size(), 1U);
  desk.clock.Move(-kDay);
  desk.loop.Advance(kMinute - 30 * kSecond);
  const std::size_t before = captions.size();
  desk.loop.Advance(10 * kSecond);
  EXPECT_EQ(captions.size(), before + 10);
  desk.loop.Advance(kDay);
  EXPECT_EQ(fired.size(), 2U);
}

TEST_F(SchedulerTest, ATickLetInByATaskLooksAtItsOwnMinute) {
  desk.Add("Long", "14:05");
  AddSilent("Next", "14:06");
  desk.messageBoxes.expected = {{"Long", Answer::Ok, [this] { desk.loop.Advance(kMinute); }}};
  Start();
  desk.loop.Advance(30 * kSecond);
  EXPECT_EQ(fired, (Fired{"Long 21 14:05", "Next 21 14:06", "Next 21 14:06"}))
      << "once by the tick inside, once by the outer one, which reads the clock anew";
}

TEST_F(SchedulerTest, AStoppedTimerTicksNoMore) {
  Start();
  desk.loop.Advance(kSecond);
  desk.scheduler.tmrSched.Stop();
  desk.loop.Advance(kMinute);
  EXPECT_EQ(captions.size(), 1U);
}

}  // namespace
}  // namespace orvanto
