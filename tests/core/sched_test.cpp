#include "core/Sched.h"
#include "platform/text/Error.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Sched, NamesEveryCode) {
  EXPECT_EQ(EveryName(0) + EveryName(39) + InName(0) + InName(14) + TaskTypeName(0), "");
  std::string names;
  for (const int code : {1, 10, 11, 17, 38}) names += EveryName(code) + ", ";
  EXPECT_EQ(names + InName(13),
            "Every Day, Every Weekend Day, The 1st Sunday, The 1st Saturday, The 4th Saturday, "
            "December");
}

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
      {"1 0 6", ""},      {"1 2 1", "1234567"}, {"1 13 11", ""}, {"1 13 12", "1234567"},
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

TEST(Sched, DetectsTheDateOrder) {
  FakeClock clock;
  const std::pair<const char*, const char*> orders[] = {
      {"d.m.y", "dd/mm/yyyy"},    {"m/d/y", "mm/dd/yyyy"},      {"y-m-d", "yyyy/mm/dd"},
      {"0m/0d/58", "mm/dd/yyyy"}, {"d. 0m. '58", "dd/mm/yyyy"}, {"", ""}};
  for (const auto& [order, pattern] : orders) {
    clock.shortDateOrder = order;
    EXPECT_EQ(DetectDateOrder(clock), pattern);
  }
}

}  // namespace
}  // namespace orvanto
