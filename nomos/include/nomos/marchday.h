// A day number taken apart inline, after Neri and Schneider, "Euclidean affine functions and their
// application to calendar algorithms" (2023): a year begins with March, so that a leap day is its
// last and the day of the year alone tells the month. Days count from 1 March of year 0.
#ifndef NOMOS_MARCHDAY_H
#define NOMOS_MARCHDAY_H

#include <cstdint>

namespace nomos {

inline constexpr std::uint32_t kFirstDay = 1721426;    // 1 January 1
inline constexpr std::uint32_t kLastDay = 5373484;     // 31 December 9999
inline constexpr std::uint32_t kFirstMarch = 1721120;  // 1 March of year 0

constexpr bool isDayNumber(std::uint32_t date) {
  return date - kFirstDay <= kLastDay - kFirstDay;
}

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

}  // namespace nomos

#endif  // NOMOS_MARCHDAY_H
