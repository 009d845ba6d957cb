#include "core/Sched.h"
#include "platform/text/Error.h"

#include <gtest/gtest.h>

#include "tests/support/CoreDesk.h"

namespace orvanto {
namespace {

Texts Names(std::string (*nameOf)(int), std::initializer_list<int> codes) {
  Texts names;
  for (const int code : codes) names.push_back(nameOf(code));
  return names;
}

TEST(Sched, NamesEveryCode) {
  EXPECT_EQ(Names(EveryName, {1, 2, 8, 9, 10, 11, 17, 20, 32, 38}),
            (Texts{"Every Day", "Every Sunday", "Every Saturday", "Every Weekday",
                   "Every Weekend Day", "The 1st Sunday", "The 1st Saturday", "The 2nd Tuesday",
                   "The 4th Sunday", "The 4th Saturday"}));
  EXPECT_EQ(Names(InName, {1, 2, 13}), (Texts{"Every Month", "January", "December"}));
  EXPECT_EQ(Names(TaskTypeName, {2, 7}), (Texts{"Run Program/Shortcut", "Play Sound"}));
  EXPECT_EQ(Names(EveryName, {-1, 0, 39}), Texts(3));
  EXPECT_EQ(Names(InName, {-1, 0, 14}), Texts(3));
  EXPECT_EQ(Names(TaskTypeName, {-1, 0, 8}), Texts(3));
}

TEST(Sched, DescribesTasks) {
  CoreDesk desk;
  const auto once = [](const char* day, const char* month, const char* year) {
    return [=](TaskEntry& entry) {
      entry.timeType = kTimeOnce;
      entry.datePart1 = day;
      entry.datePart2 = month;
      entry.year = year;
    };
  };
  desk.Add("Xmas", "08:05", once("25", "12", "2001"));
  desk.Add("Rent", "09:5", [](TaskEntry& entry) {
    entry.hour = "9";
    entry.timeType = kTimeDayNumber;
    entry.dayNo = 15;
  });
  desk.Add("Odd", "10:00", [](TaskEntry& entry) { entry.timeType = 0; });
  desk.Add("Unknown", "10:00", [](TaskEntry& entry) { entry.taskType = 8; });
  desk.Add("Short", "10:00", once("7", "3", "01"));
  const char* lines[] = {"Xmas | Popup Message | 08:05 on 25-12-2001",
                         "Rent | Popup Message | 09:05 on Day Number: 15",
                         "Odd | Popup Message | 10:00 on ", "",
                         "Short | Popup Message | 10:00 on 07-03-2026"};
  for (std::int16_t slot = 1; slot <= 5; ++slot) {
    EXPECT_EQ(desk.sched.DescribeTask(slot), lines[slot - 1]);
  }
  EXPECT_EQ(desk.sched.TimeOfSlot(2).hour + desk.sched.TimeOfSlot(2).minute, "0905");
  desk.store.DateOrderMonthFirst = 1;
  EXPECT_EQ(desk.sched.DescribeTask(1), "Xmas | Popup Message | 08:05 on 12-25-2001");
  EXPECT_EQ(desk.sched.DescribeTask(100), " | Run | 14:11 on ");
  for (const std::int16_t slot : std::initializer_list<std::int16_t>{0, 101}) {
    EXPECT_EQ(ErrorOf([&] { desk.sched.DescribeTask(slot); }), kSubscriptOutOfRange);
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
  const auto due = [&](const char* hour = "08", const char* minute = "05") {
    task.timeHour = hour;
    task.timeMinute = minute;
    return desk.sched.IsDue(task);
  };
  EXPECT_FALSE(due()) << "without a time type";
  task.timeType = kTimeRecurring;
  task.every = 2;
  task.in = 3;
  EXPECT_TRUE(due());
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
  EXPECT_TRUE(due());
  desk.clock.Set(2008, 2, 29, 8, 5, 0);
  EXPECT_FALSE(due());
  task.dateYear = "soon";
  EXPECT_FALSE(due());

  task.timeType = kTimeDayNumber;
  task.dayNo = 31;
  desk.clock.Set(2026, 1, 31, 8, 5, 0);
  EXPECT_TRUE(due());
  desk.clock.Set(2026, 4, 30, 8, 5, 0);
  EXPECT_FALSE(due());
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
