#include <gtest/gtest.h>

#include <random>
#include <set>

#include "core/Convert.h"
#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Sched, DescribesTasks) {
  CoreDesk desk;
  desk.Add("Short", "9:05", "TimeHour=9 TimeType=1 DateDay=7 DateMonth=3 DateYear=01");
  EXPECT_EQ(desk.sched.DescribeTask(1), "Short | Popup Message | 09:05 on 07-03-2026");
  EXPECT_EQ(desk.sched.TimeOfSlot(1).hour + desk.sched.TimeOfSlot(1).minute, "0905");
  EXPECT_EQ(desk.sched.DescribeTask(100), " | Run | 14:11 on ");
  desk.Put(kGeneral, "Task2=Bare");
  EXPECT_EQ(desk.Told(2), "Bare | Run | 14:11 on ,   1 General");
  desk.Put("Bare", "TimeType=2");
  EXPECT_EQ(desk.Told(2), "Bare | Run | 14:11 on  In ,   1 General");
  desk.Put("Bare", "TaskType=9 TimeType=3");
  EXPECT_EQ(desk.Told(2), "Bare | Unknown Type | 14:11 on Day Number: 1,   1 General");
  for (const std::int16_t none : {std::int16_t{0}, std::int16_t{101}}) {
    EXPECT_EQ(ErrorOf([&] { desk.sched.DescribeTask(none); }), kSubscriptOutOfRange);
  }
}

// From Saturday 21 November 2026, 14:04:30.
TEST(Sched, TellsWhenATaskIsDueNext) {
  const std::pair<const char*, const char*> cases[] = {
      {"TimeType=2 Every=9 In=1", "Monday 23 November 14:05"},
      {"TimeType=2 Every=8 In=11", "Saturday 2 October 2027 14:05"},
      {"TimeHour=15 TimeType=2 Every=10 In=7", "Sunday 22 November 15:05"},  // of every month
      {"TimeType=1 DateDay=29 DateMonth=2 DateYear=2096", "Wednesday 29 February 2096 14:05"},
      {"TimeType=1 DateDay=29 DateMonth=2 DateYear=2027", "never"},
      {"TimeHour=24 TimeType=2 Every=1 In=1", "never"}};
  for (const auto& [fields, expected] : cases) {
    CoreDesk desk;
    desk.Add("Task", "14:05", fields);
    desk.store.LoadTask(1);
    const auto due = desk.sched.NextDue(desk.store.CurrentTask);
    EXPECT_EQ(due ? DescribeDue(*due, desk.clock) : "never", expected) << fields;
  }
}

constexpr std::int64_t kSecond = 1000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kDay = 24 * 60 * kMinute;

struct SchedulerDesk : CoreDesk {
  SchedulerDesk() {
    execution.onRun = [this](const TaskRecord& task) {
      const std::string caption = scheduler.Caption();
      fired.push_back(task.name + " " + std::to_string(clock.Now().day) + " " +
                      caption.substr(caption.size() - 5));
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

struct SchedulerTest : testing::Test, SchedulerDesk {};

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
  Walk(30 * kSecond - 1);
  EXPECT_TRUE(fired.empty());
  loop.Advance(kMinute + 1);
  EXPECT_EQ(fired, (Texts{"First 21 14:05", "Script 21 14:05", "Last 21 14:05", "Later 21 14:06"}));
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
  for (const auto& [when, by] : {std::pair(300, -700), {61'000, -61'500}, {96'000, -40'000}}) {
    SchedulerDesk desk;
    desk.AddSilent("Five", "14:05");
    desk.AddSilent("Six", "14:06");
    desk.Walk(30 * kSecond + when);
    desk.clock.Move(by);
    desk.loop.Advance(2 * kMinute - 31 * kSecond);
    EXPECT_EQ(std::adjacent_find(desk.captions.begin(), desk.captions.end()), desk.captions.end());
    EXPECT_EQ(desk.fired, (Texts{kFive, kSix})) << when << " by " << by;
  }
}

TEST(Execution, EachTypeDoesItsOneThing) {
  CoreDesk desk;
  desk.Add("Task", "10:00", "WinStyle=4");
  desk.messageBoxes.expected = {{"Tea"}};
  std::string told;
  desk.execution.onRun = [&](const TaskRecord& task) { told += std::to_string(task.taskType); };
  const auto run = [&](const std::string& fields) {
    desk.Put("Task", fields);
    desk.execution.RunTask(1);
  };
  for (int type = 0; const char* path :
                     {"x", "night.txt", "a.exe", "c:\\a.txt", "", "", "Tea", "ding.wav", "x"}) {
    run("Path=" + std::string(path) + " TaskType=" + std::to_string(type++));
  }
  run("Path= TaskType=2");
  EXPECT_EQ(told, "12345672");
  EXPECT_EQ(desk.scripts.ran, (Texts{"night.txt"}));
  EXPECT_EQ(desk.done, (Texts{"open a.exe in '' 4", "print c:\\a.txt in '' 4", "end 2", "end 1",
                              "play ding.wav"}));
  // The window styles; one is not what it says.
  std::string styles;
  for (const char style : std::string("01234567")) {
    run(std::string("Path=a.exe CmdLine=/x WinStyle=") + style);
    styles += desk.done.back().back();
  }
  EXPECT_EQ(styles + desk.done.back(), "01224700open a.exe /x in '' 0");
}

}  // namespace
}  // namespace orvanto
