#include <gtest/gtest.h>

#include <random>
#include <set>
#include <sstream>

#include "core/Convert.h"
#include "core/Sched.h"
#include "core/Scheduler.h"
#include "platform/text/Error.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Sched, DescribesTasks) {
  CoreDesk desk;
  desk.Add("Short", "9:05", "TimeHour=9 TimeType=1 DateDay=7 DateMonth=3 DateYear=01");
  EXPECT_EQ(desk.sched.DescribeTask(1), "Short | Popup Message | 09:05 on 07-03-2026");
  EXPECT_EQ(desk.sched.TimeOfSlot(1).hour + desk.sched.TimeOfSlot(1).minute, "0905");
  desk.Put("Short", "TaskType=8");
  EXPECT_EQ(desk.sched.DescribeTask(1), "");
  EXPECT_EQ(desk.sched.DescribeTask(100), " | Run | 14:11 on ");
  EXPECT_EQ(ErrorOf([&] { desk.sched.DescribeTask(0); }), kSubscriptOutOfRange);
  EXPECT_EQ(ErrorOf([&] { desk.sched.DescribeTask(101); }), kSubscriptOutOfRange);
  for (int i = 0; i < 12; ++i) {
    std::tm time{};
    time.tm_mon = i;
    time.tm_wday = i % 7;
    char names[64];
    std::strftime(names, sizeof names, "%B, Every %A, The 4th %A", &time);
    EXPECT_EQ(InName(i + 2) + ", " + EveryName(i % 7 + 2) + ", " + EveryName(i % 7 + 32), names);
  }
}

// From Saturday 21 November 2026, 14:04:30.
TEST(Sched, TellsWhenATaskIsDueNext) {
  const std::pair<const char*, const char*> cases[] = {
      {"TimeType=2 Every=1 In=1", "Saturday 21 November 14:05"},
      {"TimeMinute=4 TimeType=2 Every=1 In=1", "Sunday 22 November 14:04"},
      {"TimeType=2 Every=9 In=1", "Monday 23 November 14:05"},
      {"TimeType=2 Every=8 In=12", "Saturday 21 November 14:05"},
      {"TimeType=2 Every=8 In=11", "Saturday 2 October 2027 14:05"},
      {"TimeHour=9 TimeType=2 Every=8 In=12", "Saturday 28 November 09:05"},
      {"TimeHour=9 TimeType=3 DayNo=21", "Monday 21 December 09:05"},
      {"TimeType=3 DayNo=31", "Thursday 31 December 14:05"},
      {"TimeType=1 DateDay=29 DateMonth=2 DateYear=2096", "Wednesday 29 February 2096 14:05"},
      {"TimeType=1 DateDay=21 DateMonth=11 DateYear=2026", "Saturday 21 November 14:05"},
      {"TimeHour=9 TimeType=1 DateDay=21 DateMonth=11 DateYear=2026", "never"},
      {"TimeType=1 DateDay=29 DateMonth=2 DateYear=2027", "never"},
      {"TimeType=1 DateDay=x DateMonth=2 DateYear=2027", "never"},
      {"TimeType=2 Every=11 In=1", "never"},
      {"TimeType=3 DayNo=32", "never"},
      {"TimeType=4", "never"},
      {"TimeHour=24 TimeType=2 Every=1 In=1", "never"},
      {"TimeMinute=-1 TimeType=2 Every=1 In=1", "never"}};
  for (const auto& [fields, expected] : cases) {
    CoreDesk desk;
    desk.Add("Task", "14:05", fields);
    desk.store.LoadTask(1);
    const auto due = desk.sched.NextDue(desk.store.CurrentTask);
    EXPECT_EQ(due ? DescribeDue(*due, desk.clock) : "never", expected) << fields;
    if (!due) continue;
    desk.clock.Set(due->year, due->month, due->day, due->hour, due->minute, 0);
    EXPECT_TRUE(desk.sched.IsDue(desk.store.CurrentTask));
    EXPECT_EQ(due->weekday, desk.clock.Now().weekday);
  }
}

TEST(Sched, RecurrenceHoldsByDayAndMonth) {
  CoreDesk desk;
  // A day rule, a month rule and a month; the weekdays on which they hold, 1 is Sunday. A weekend
  // rule of one month holds on the Sundays of all.
  const std::pair<const char*, const char*> cases[] = {
      {"0 1 6", ""},      {"1 1 6", "1234567"}, {"2 1 6", "1"},  {"8 1 6", "7"},
      {"9 1 6", "23456"}, {"10 1 6", "17"},     {"11 1 6", ""},  {"39 1 6", ""},
      {"10 0 6", ""},     {"1 2 1", "1234567"}, {"1 13 11", ""}, {"1 13 12", "1234567"},
      {"1 14 1", ""},     {"9 7 6", "23456"},   {"9 7 7", ""},   {"10 7 6", "17"},
      {"10 7 5", "1"},    {"10 14 5", ""}};
  for (const auto& [rule, weekdays] : cases) {
    int every = 0;
    int in = 0;
    DateTime now;
    std::istringstream(rule) >> every >> in >> now.month;
    std::string held;
    for (now.weekday = 1; now.weekday <= 7; ++now.weekday) {
      desk.sched.RecurrenceMatched = 0;
      desk.sched.MatchRecurrence(every, in, now);
      if (desk.sched.RecurrenceMatched == 1) held += std::to_string(now.weekday);
    }
    EXPECT_EQ(held, weekdays) << rule;
  }
  desk.sched.RecurrenceMatched = 1;
  desk.sched.MatchRecurrence(0, 1, DateTime{});
  EXPECT_EQ(desk.sched.RecurrenceMatched, 1) << "only the caller clears it";
}

TEST(Sched, DueOnlyInTheMinuteThatTheRuleNames) {
  CoreDesk desk;
  TaskRecord task;
  const auto due = [&](int month, int day, const char* time = "08:05") {
    desk.clock.Set(2004, month, day, 8, 5, 0);
    task.timeHour = std::string(time, 2);
    task.timeMinute = time + 3;
    return desk.sched.IsDue(task);
  };
  EXPECT_FALSE(due(2, 29)) << "without a time type";
  task.timeType = kTimeRecurring;
  task.every = 2;
  task.in = 3;
  EXPECT_TRUE(due(2, 29));
  for (const char* time : {"08:06", "20:05", "xx:05", "08:"}) EXPECT_FALSE(due(2, 29, time));
  EXPECT_TRUE(due(2, 29, " 8:5"));
  EXPECT_EQ(desk.sched.RecurrenceMatched, 0);

  task.timeType = kTimeOnce;
  task.dateMonth = "02";
  task.dateDay = "29";
  for (const std::string year : {"2008", "soon", "2004"}) {
    task.dateYear = year;
    EXPECT_EQ(due(2, 29), year == "2004") << year;
  }
  EXPECT_FALSE(due(2, 28) || due(1, 29));

  task.timeType = kTimeDayNumber;
  task.dayNo = 31;
  EXPECT_TRUE(due(1, 31) && !due(4, 30));
}

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
    Add(name, time, "TaskType=4");
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

constexpr const char* kFive = "Five 21 14:05";
constexpr const char* kSix = "Six 21 14:06";
constexpr const char* kSeven = "Seven 21 14:07";

TEST_F(SchedulerTest, DueTasksRunOnceInSlotOrderAtSecondZero) {
  AddSilent("First", "14:05");
  AddSilent("Later", "14:06");
  Add("Script", "14:05", "TaskType=1 Path=bad");
  for (const char* name : {"Damaged", "Last"}) AddSilent(name, "14:05");
  Put("Damaged", "TimeType=\x01 TimeHour=\x01 TaskType=\x01");
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

TEST_F(SchedulerTest, ADayOfLateTimersSkipsNoMinuteAndRepeatsNone) {
  std::multiset<std::string> expected = {"00:00 29 00:00"};
  for (const std::string time : {"00:00", "03:00", "03:01", "03:02", "23:59"}) {
    AddSilent(time, time);
    expected.insert(time + " 28 " + time);
  }
  std::mt19937 random(20261122);
  loop.lateness = [&] { return std::uniform_int_distribution<std::int64_t>(0, 900)(random); };
  clock.Set(2026, 11, 27, 23, 59, 58, 400);
  Walk(kDay + 5 * kSecond);
  EXPECT_EQ(std::multiset<std::string>(fired.begin(), fired.end()), expected);
  EXPECT_NEAR(static_cast<double>(captions.size()), 86400 + 5, 2);
  EXPECT_EQ(captions.back().substr(0, 15), "Orvanto - 00:00");
}

TEST_F(SchedulerTest, WhatATaskThatTakesLongLeavesToRun) {
  const std::tuple<const char*, std::function<void(SchedulerDesk&)>, Texts> cases[] = {
      {"left open, nothing else is let in: what is due by then is run, what was is missed",
       [](SchedulerDesk& desk) {
         const EventLoop::Hold hold(desk.loop);
         desk.loop.Block(2 * kMinute + 10 * kSecond);
         desk.loop.DoEvents();
       },
       {kSeven}},
      {"until second 00 of the next minute, whose tick is overdue then and runs none twice",
       [](SchedulerDesk& desk) { desk.loop.Block(kMinute + 300); },
       {kSix, "Other 21 14:06", kSeven}},
      {"a tick let in runs what is due in its place",
       [](SchedulerDesk& desk) { desk.loop.Advance(kMinute); },
       {kSix, "Other 21 14:06", kSeven}},
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
    desk.fired.erase(desk.fired.begin());
    EXPECT_EQ(desk.fired, expected) << what;
  }
}

TEST_F(SchedulerTest, AClockThatIsSetLosesNoMinuteAndRepeatsNone) {
  // When it is set, from 14:05:00 on, and by how much.
  const std::tuple<std::int64_t, std::int64_t, Texts> cases[] = {
      {300, -700, {kFive, kSix}},  // a small correction, just after second 00
      {10 * kSecond, -20 * kSecond, {kFive, kSix}},
      {kMinute + 300, -kMinute - 500, {kFive, kSix}},  // shortly before second 00
      {kMinute + 36 * kSecond, -40 * kSecond, {kFive, kSix}},
      {30 * kSecond, kMinute, {kFive}},
      {-kSecond, kSecond, {kSix}},  // second 00 has passed unseen
      {30 * kSecond, -kDay, {kFive, "Six 20 14:06"}}};
  for (const auto& [when, by, expected] : cases) {
    SchedulerDesk desk;
    desk.AddSilent("Five", "14:05");
    desk.AddSilent("Six", "14:06");
    desk.Walk(30 * kSecond + when);
    desk.clock.Move(by);
    desk.loop.Advance(2 * kMinute - 31 * kSecond);
    EXPECT_EQ(std::adjacent_find(desk.captions.begin(), desk.captions.end()), desk.captions.end());
    EXPECT_EQ(desk.fired, expected) << when << " by " << by;
  }
  // A clock that was fast when the program started: the minutes that it skipped are looked at.
  AddSilent("Six", "14:06");
  clock.Set(2026, 11, 21, 14, 6, 10);
  Walk(26 * kSecond);
  clock.Move(-40 * kSecond);
  loop.Advance(5 * kSecond);
  EXPECT_EQ(fired, (Texts{kSix}));
}

TEST(Execution, EachTypeDoesItsOneThing) {
  CoreDesk desk;
  const char* paths[] = {"nothing", "night.txt", "notepad.exe", "c:\\a.txt", "",
                         "",        "Tea",       "ding.wav",    "nothing"};
  for (int type = 0; type <= 8; ++type) {
    const std::string code = std::to_string(type);
    desk.Add("Task " + code, "10:00", "TaskType=" + code + " Path=" + paths[type] + " WinStyle=4");
  }
  // The other window styles; one is not what it says.
  for (const char* style : {"0", "1", "2", "3", "5", "6", "7"}) {
    desk.Add(std::string("Style ") + style, "10:00",
             std::string("TaskType=2 Path=a.exe CmdLine=/x WinStyle=") + style);
  }
  desk.Add("Empty", "10:00", "TaskType=2 Path=");
  std::string told;
  desk.execution.onRun = [&](const TaskRecord& task) { told += std::to_string(task.taskType); };
  desk.messageBoxes.expected = {{"Tea"}};
  for (const std::int16_t slot : desk.store.Slots()) desk.execution.RunTask(slot);

  EXPECT_EQ(told, "123456722222222");
  EXPECT_EQ(desk.scripts.ran, (Texts{"night.txt"}));
  EXPECT_EQ(desk.done,
            (Texts{"open notepad.exe in '' 4", "print c:\\a.txt in '' 4", "end 2", "end 1",
                   "play ding.wav", "open a.exe /x in '' 0", "open a.exe /x in '' 1",
                   "open a.exe /x in '' 2", "open a.exe /x in '' 2", "open a.exe /x in '' 7",
                   "open a.exe /x in '' 0", "open a.exe /x in '' 0"}));
}

}  // namespace
}  // namespace orvanto
