// The calendar against a count of the days, times of day, and the clock.

#include "nomos/calendar.h"
#include "nomos/testhooks.h"

#include "rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace {

using nomtest::expectRows;
using nomtest::Row;

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
  EXPECT_EQ(date, 5373485u);  // the day number of 1 January 10000
  for (const std::uint32_t none : {0u, 1721425u, date, 0x80000000u, kNone}) {
    int d = 1, m = 1, y = 1;
    julianToGregorian(none, &d, &m, &y);
    EXPECT_TRUE(d == 0 && m == 0 && y == 0) << none;
  }
  const auto check = [](const Row& row) {
    return std::to_string(julianDay(std::stoi(row[0]), std::stoi(row[1]), std::stoi(row[2])));
  };
  expectRows(4, check, R"(
      0 1 2000 4294967295   1 0 2000 4294967295    1 13 2000 4294967295   1 1 0 4294967295
      1 1 10000 4294967295  -1 -1 -1 4294967295    -2147483648 1 2000 4294967295
      1 2147483647 2147483647 4294967295           1 1 1970 2440588)");
}

// Hours, minutes, seconds and milliseconds; the time of the day.
TEST(Calendar, TakesTimesOfDayAndNoOthers) {
  const auto check = [](const Row& row) {
    int in[4], out[7];
    std::transform(row.begin(), row.end() - 1, in,
                   [](const auto& word) { return std::stoi(word); });
    const DskTimeStamp stamp = julianDayTime(1, 1, 1970, in[0], in[1], in[2], in[3]);
    EXPECT_EQ(stamp.date, stamp.time == kNone ? kNone : 2440588);
    nosDateTimeToGregorian(stamp, out, out + 1, out + 2, out + 3, out + 4, out + 5, out + 6);
    EXPECT_TRUE(stamp.time == kNone || (out[2] == 1970 && std::equal(in, in + 4, out + 3)));
    return std::to_string(stamp.time);
  };
  expectRows(5, check, R"(
      0 0 0 0 0           14 7 9 42 50829042   23 59 59 999 86399999  24 0 0 0 4294967295
      0 60 0 0 4294967295 0 0 60 0 4294967295  0 0 0 1000 4294967295  -1 0 0 0 4294967295
      0 -1 0 0 4294967295 0 0 -1 999 4294967295 0 0 0 -1 4294967295)");
  const DskTimeStamp none = julianDayTime(29, 2, 2023, 0, 0, 0, 0);
  EXPECT_TRUE(none.date == kNone && none.time == kNone);
}

TEST(Clock, GivesTheTimeOfDayOrTheHookedOne) {
  for (const std::uint32_t hooked : {0u, 2440588u, 0u}) {
    DskTimeStamp now;
    nosSetCurrentDateTime(hooked, hooked / 2440588 * 5);
    nosGetCurrentDateTime(&now);
    if (hooked != 0) {
      EXPECT_TRUE(now.date == hooked && now.time == 5);
    } else {
      EXPECT_TRUE(now.date > julianDay(1, 1, 2024) && now.time < 86400000);
    }
  }
}

}  // namespace
