// The calendar against a count of the days, times of day, and the clock.

#include "nomos/calendar.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

TEST(Calendar, CountsEveryDayOfTheYears1To9999) {
  std::uint32_t date = 2440588 - 719162;  // 719,162 days lie before 1 January 1970
  int wrong = 0;
  for (int year = 1; year <= 9999; ++year) {
    const bool isLeap = year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
    const int days[] = {31, isLeap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= days[month - 1]; ++day, ++date) {
        int d, m, y;
        julianToGregorian(date, &d, &m, &y);
        wrong += d != day || m != month || y != year || julianDay(day, month, year) != date;
      }
      wrong += julianDay(days[month - 1] + 1, month, year) != kNone;
    }
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(julianDay(1, 1, 1970), 2440588u);
  EXPECT_EQ(date, 5373485u);  // the day number of 1 January 10000
  for (const std::uint32_t none : {0u, 1721425u, date, 0x80000000u, kNone}) {
    int d = 1, m = 1, y = 1;
    julianToGregorian(none, &d, &m, &y);
    EXPECT_TRUE(d == 0 && m == 0 && y == 0) << none;
  }
  for (const auto& [day, month, year] :
       {std::array{0, 1, 2000}, std::array{1, 0, 2000}, std::array{1, 13, 2000},
        std::array{1, 1, 0}, std::array{1, 1, 10000}, std::array{-1, -1, -1},
        std::array{INT_MIN, 1, 2000}, std::array{1, INT_MAX, INT_MAX}}) {
    EXPECT_EQ(julianDay(day, month, year), kNone) << day << " " << month << " " << year;
  }
}

TEST(Calendar, TakesTimesOfDayAndNoOthers) {
  const struct {
    int hour, minute, second, millisecond;
    std::uint32_t time;
  } cases[] = {{0, 0, 0, 0, 0},        {14, 7, 9, 42, 50829042}, {23, 59, 59, 999, 86399999},
               {24, 0, 0, 0, kNone},   {0, 60, 0, 0, kNone},     {0, 0, 60, 0, kNone},
               {0, 0, 0, 1000, kNone}, {-1, 0, 0, 0, kNone},     {0, -1, 0, 0, kNone},
               {0, 0, -1, 999, kNone}, {0, 0, 0, -1, kNone}};
  for (const auto& [hour, minute, second, millisecond, time] : cases) {
    const DskTimeStamp stamp = julianDayTime(1, 1, 1970, hour, minute, second, millisecond);
    EXPECT_EQ(stamp.time, time);
    EXPECT_EQ(stamp.date, time == kNone ? kNone : 2440588);
    if (time == kNone) continue;
    int d, m, y, hours, minutes, seconds, millis;
    nosDateTimeToGregorian(stamp, &d, &m, &y, &hours, &minutes, &seconds, &millis);
    EXPECT_TRUE(d == 1 && m == 1 && y == 1970 && hours == hour && minutes == minute &&
                seconds == second && millis == millisecond)
        << time;
  }
  const DskTimeStamp none = julianDayTime(29, 2, 2023, 0, 0, 0, 0);
  EXPECT_TRUE(none.date == kNone && none.time == kNone);
}

TEST(Clock, GivesTheTimeOfDayOrTheHookedOne) {
  DskTimeStamp now;
  nosGetCurrentDateTime(&now);
  EXPECT_GT(now.date, julianDay(1, 1, 2024));
  EXPECT_LT(now.time, 86400000u);
  nosSetCurrentDateTime(2440588, 5);
  nosGetCurrentDateTime(&now);
  EXPECT_TRUE(now.date == 2440588 && now.time == 5);
  nosSetCurrentDateTime(0, 0);
  nosGetCurrentDateTime(&now);
  EXPECT_GT(now.date, 2440588u);
}

}  // namespace
