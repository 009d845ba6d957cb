#include "core/Sched.h"

#include <gtest/gtest.h>

#include "tests/core/CoreDesk.h"

namespace orvanto {
namespace {

TEST(Sched, NamesEveryCode) {
  EXPECT_EQ(EveryName(1), "Every Day");
  EXPECT_EQ(EveryName(2), "Every Sunday");
  EXPECT_EQ(EveryName(8), "Every Saturday");
  EXPECT_EQ(EveryName(10), "Every Weekend Day");
  EXPECT_EQ(EveryName(11), "The 1st Sunday");
  EXPECT_EQ(EveryName(17), "The 1st Saturday");
  EXPECT_EQ(EveryName(20), "The 2nd Tuesday");
  EXPECT_EQ(EveryName(32), "The 4th Sunday");
  EXPECT_EQ(EveryName(38), "The 4th Saturday");
  EXPECT_EQ(InName(1), "Every Month");
  EXPECT_EQ(InName(13), "December");
  EXPECT_EQ(TaskTypeName(2), "Run Program/Shortcut");
  EXPECT_EQ(TaskTypeName(7), "Play Sound");
  for (const int code : {-1, 0, 39}) EXPECT_EQ(EveryName(code), "");
  for (const int code : {-1, 0, 14}) EXPECT_EQ(InName(code), "");
  for (const int code : {-1, 0, 8}) EXPECT_EQ(TaskTypeName(code), "");
}

TEST(Sched, DescribesTasks) {
  CoreDesk desk;
  desk.Add("Backup", "23:30", [](TaskEntry& entry) {
    entry.every = 9;
    entry.taskType = kRunScript;
  });
  desk.Add("Xmas", "08:05", [](TaskEntry& entry) {
    entry.timeType = kTimeOnce;
    entry.datePart1 = "25";
    entry.datePart2 = "12";
    entry.year = "2001";
    entry.taskType = kPlaySound;
  });
  desk.Add("Rent", "9:5", [](TaskEntry& entry) {
    entry.hour = "9";
    entry.minute = "5";
    entry.timeType = kTimeDayNumber;
    entry.dayNo = 15;
  });
  desk.Add("Odd", "10:00", [](TaskEntry& entry) { entry.timeType = 0; });
  desk.Add("Unknown", "10:00", [](TaskEntry& entry) { entry.taskType = 8; });
  desk.Add("Short", "10:00", [](TaskEntry& entry) {
    entry.timeType = kTimeOnce;
    entry.datePart1 = "7";
    entry.datePart2 = "3";
    entry.year = "01";
    entry.taskType = kResetComputer;
  });

  EXPECT_EQ(desk.sched.DescribeTask(1),
            "Backup | Run Script | 23:30 on Every Weekday In Every Month");
  EXPECT_EQ(desk.sched.DescribeTask(2), "Xmas | Play Sound | 08:05 on 25-12-2001");
  EXPECT_EQ(desk.sched.DescribeTask(3), "Rent | Popup Message | 09:05 on Day Number: 15");
  EXPECT_EQ(desk.sched.DescribeTask(4), "Odd | Popup Message | 10:00 on ");
  EXPECT_EQ(desk.sched.DescribeTask(5), "");
  EXPECT_EQ(desk.sched.DescribeTask(6), "Short | Reset Computer | 10:00 on 07-03-2026");
  EXPECT_EQ(desk.sched.TimeOfSlot(3).hour, "09");
  desk.store.DateOrderMonthFirst = 1;
  EXPECT_EQ(desk.sched.DescribeTask(2), "Xmas | Play Sound | 08:05 on 12-25-2001");
  EXPECT_EQ(desk.sched.DescribeTask(100), " | Run | 14:11 on ");
  for (const int slot : {0, 101}) {
    try {
      desk.sched.DescribeTask(static_cast<std::int16_t>(slot));
      ADD_FAILURE() << slot;
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), kSubscriptOutOfRange);
    }
  }
}

TEST(Sched, RecurrenceHoldsByDayAndMonth) {
  CoreDesk desk;
  const auto matches = [&](int every, int in, int month, int weekday) {
    DateTime now;
    now.month = month;
    now.weekday = weekday;
    desk.sched.RecurrenceMatched = 0;
    desk.sched.MatchRecurrence(every, in, now);
    return desk.sched.RecurrenceMatched == 1;
  };
  for (int in = 0; in <= 14; ++in) {
    for (int month = 1; month <= 12; ++month) {
      for (int weekday = 1; weekday <= 7; ++weekday) {
        const bool inMonth = in == 1 || (in >= 2 && in <= 13 && month == in - 1);
        EXPECT_EQ(matches(1, in, month, weekday), inMonth);
        for (int every = 2; every <= 8; ++every) {
          EXPECT_EQ(matches(every, in, month, weekday), inMonth && weekday == every - 1);
        }
        EXPECT_EQ(matches(9, in, month, weekday), inMonth && weekday >= 2 && weekday <= 6);
        // Sundays of the whole year, Saturdays of the month.
        const bool weekend = (weekday == 1 && in >= 1 && in <= 13) || (weekday == 7 && inMonth);
        EXPECT_EQ(matches(10, in, month, weekday), weekend) << in << " " << month << " " << weekday;
        for (const int never : {-1, 0, 11, 20, 38, 39}) {
          EXPECT_FALSE(matches(never, in, month, weekday)) << never;
        }
      }
    }
  }
  desk.sched.RecurrenceMatched = 1;
  desk.sched.MatchRecurrence(0, 1, DateTime{});
  EXPECT_EQ(desk.sched.RecurrenceMatched, 1) << "only the caller clears it";
}

TEST(Sched, DueOnlyInTheMinuteThatTheRuleNames) {
  CoreDesk desk;
  desk.clock.Set(2004, 2, 29, 8, 5, 0);  // a Sunday
  TaskRecord task;
  const auto due = [&](const char* hour, const char* minute) {
    task.timeHour = hour;
    task.timeMinute = minute;
    return desk.sched.IsDue(task);
  };
  EXPECT_FALSE(due("08", "05")) << "without a time type";
  task.timeType = kTimeRecurring;
  task.every = 2;
  task.in = 3;
  EXPECT_TRUE(due("08", "05"));
  EXPECT_TRUE(due("8", "5"));
  EXPECT_FALSE(due("08", "06"));
  EXPECT_FALSE(due("20", "05"));
  EXPECT_FALSE(due("eight", "05"));
  EXPECT_FALSE(due("08", ""));
  EXPECT_EQ(desk.sched.RecurrenceMatched, 0);

  task.timeType = kTimeOnce;
  task.dateYear = "2004";
  task.dateMonth = "02";
  task.dateDay = "29";
  EXPECT_TRUE(due("08", "05"));
  desk.clock.Set(2008, 2, 29, 8, 5, 0);
  EXPECT_FALSE(due("08", "05"));
  task.dateYear = "soon";
  EXPECT_FALSE(due("08", "05"));

  task.timeType = kTimeDayNumber;
  task.dayNo = 31;
  desk.clock.Set(2026, 1, 31, 8, 5, 0);
  EXPECT_TRUE(due("08", "05"));
  desk.clock.Set(2026, 4, 30, 8, 5, 0);
  EXPECT_FALSE(due("08", "05"));
}

TEST(Sched, DetectsTheDateOrder) {
  FakeClock clock;
  for (const auto& [order, pattern] : {std::pair{"d.m.y", "dd/mm/yyyy"},
                                       {"m/d/y", "mm/dd/yyyy"},
                                       {"y-m-d", "yyyy/mm/dd"},
                                       {"0m/0d/58", "mm/dd/yyyy"},
                                       {"d. 0m. '58", "dd/mm/yyyy"}}) {
    clock.shortDateOrder = order;
    EXPECT_EQ(DetectDateOrder(clock), pattern);
  }
  clock.shortDateOrder = "";
  EXPECT_EQ(DetectDateOrder(clock), "");
}

}  // namespace
}  // namespace orvanto
