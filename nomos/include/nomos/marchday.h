// A day number put together, and taken apart, inline. The latter is after Neri and Schneider,
// "Euclidean affine functions and their application to calendar algorithms" (2023): a year begins
// with March, so that a leap day is its last and the day of the year alone tells the month. Days
// count from 1 March of year 0.
#ifndef NOMOS_MARCHDAY_H
#define NOMOS_MARCHDAY_H

#include <cstdint>

namespace nomos {

inline constexpr std::uint32_t kFirstDay = 1721426;    // 1 January 1
inline constexpr std::uint32_t kLastDay = 5373484;     // 31 December 9999
inline constexpr std::uint32_t kFirstMarch = 1721120;  // 1 March of year 0
inline constexpr std::uint32_t kNoDay = 0xFFFFFFFF;    // a day that does not exist

// Whether it is a day of the years 1 to 9999.
constexpr bool isDayNumber(std::uint32_t date) {
  return date - kFirstDay <= kLastDay - kFirstDay;
}

// A day by its place in a year that begins with March.
struct MarchDay {
  std::uint32_t century;        // 0 to 99
  std::uint32_t yearOfCentury;  // 0 to 99
  std::uint32_t dayOfYear;      // 0 for 1 March, 365 for a leap day
};

// REQUIRES: isDayNumber(date). Century, year and day come each from four times what is left.
constexpr MarchDay splitDayNumber(std::uint32_t date) {
  const std::uint32_t n1 = 4 * (date - kFirstMarch) + 3;
  const std::uint32_t century = n1 / 146097;
  const std::uint32_t n2 = (n1 - century * 146097) | 3;
  const std::uint64_t p2 = std::uint64_t{2939745} * n2;  // 2^32 / 1461, rounded up
  return {century, static_cast<std::uint32_t>(p2 >> 32),
          static_cast<std::uint32_t>(p2) / 2939745 / 4};
}

// A day of such a year as it is in one that begins with January.
struct YearDay {
  std::uint32_t month;
  std::uint32_t day;
  bool isNextYear;  // January and February belong to the next year
};
constexpr YearDay splitDayOfYear(std::uint32_t dayOfYear) {
  const std::uint32_t n3 = 2141 * dayOfYear + 197913;
  const bool isNextYear = dayOfYear >= 306;
  return {(n3 >> 16) - (isNextYear ? 12 : 0), (n3 & 0xFFFF) / 2141 + 1, isNextYear};
}

// The days of a year, not leap or leap, in front of each month, and all of them.
inline constexpr std::uint16_t kDaysBefore[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366}};

// What julianDay gives: the reverse, kNoDay for a day that does not exist. A year begins with
// January here; the months come from a table, since a jump by the month is often guessed wrong.
constexpr std::uint32_t joinDayNumber(int day, int month, int year) {
  const std::uint32_t d = static_cast<std::uint32_t>(day) - 1;  // none is large, as negative ones
  const std::uint32_t m = static_cast<std::uint32_t>(month) - 1;
  const std::uint32_t y = static_cast<std::uint32_t>(year) - 1;
  if (m >= 12 || y >= 9999) return kNoDay;
  const bool isLeap = ((y + 1) & ((y + 1) % 100 == 0 ? 15 : 3)) == 0;
  const std::uint32_t before = kDaysBefore[isLeap][m];
  if (d >= kDaysBefore[isLeap][m + 1] - before) return kNoDay;
  const std::uint32_t century = y / 100;
  return kFirstDay + 1461 * y / 4 - century + century / 4 + before + d;
}

}  // namespace nomos

#endif  // NOMOS_MARCHDAY_H
