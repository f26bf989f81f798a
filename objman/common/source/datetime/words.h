// The words that texts of dates and times are put together from: numbers, days and months as they
// stand in a text. Each is copied as a whole, beyond its end, and what follows overwrites the rest.
#ifndef NOMUTIL_DATETIME_WORDS_H
#define NOMUTIL_DATETIME_WORDS_H

#include "nomos/marchday.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace nomutil::datetime {

inline constexpr std::array<const char*, 13> kMonthNames = {
    nullptr, "January", "February",  "March",   "April",    "May",     "June",
    "July",  "August",  "September", "October", "November", "December"};

constexpr char lastDigit(std::uint32_t value) {
  return static_cast<char>('0' + value % 10);
}

// ":00" to ":99", each with a NUL.
using Word4 = std::array<char, 4>;
inline constexpr std::array<Word4, 100> kColonPairs = [] {
  std::array<Word4, 100> pairs{};
  for (std::uint32_t i = 0; i < 100; ++i) pairs[i] = {':', lastDigit(i / 10), lastDigit(i), '\0'};
  return pairs;
}();
inline char* putColonPair(char* to, std::uint32_t value) {
  std::memcpy(to, &kColonPairs[value], sizeof(Word4));
  return to + 3;
}

// "00, " to "99, ": the end of a year.
inline constexpr std::array<Word4, 100> kYearEnds = [] {
  std::array<Word4, 100> ends{};
  for (std::uint32_t i = 0; i < 100; ++i) ends[i] = {lastDigit(i / 10), lastDigit(i), ',', ' '};
  return ends;
}();

// A month as it stands between day and year: " January ".
struct MonthText {
  char text[15];
  std::uint8_t length;
};
static_assert(sizeof(MonthText) == 16);
inline constexpr std::array<MonthText, 13> kMonthTexts = [] {
  std::array<MonthText, 13> texts{};
  for (std::size_t month = 1; month <= 12; ++month) {
    char* to = texts[month].text;
    *to++ = ' ';
    for (const char letter : std::string_view(kMonthNames[month])) *to++ = letter;
    *to++ = ' ';
    texts[month].length = static_cast<std::uint8_t>(to - texts[month].text);
  }
  return texts;
}();
inline char* putMonth(char* to, std::uint32_t month) {
  const MonthText& row = kMonthTexts[month];
  std::memcpy(to, &row, sizeof row);
  return to + row.length;
}

// A day of a year that begins with March, as it stands behind the year: ":01:05".
struct DayText {
  char text[6];
  std::uint8_t month;
  std::uint8_t isNextYear;  // 1 in January and February
};
static_assert(sizeof(DayText) == 8);
inline constexpr std::array<DayText, 366> kDayTexts = [] {
  std::array<DayText, 366> texts{};
  for (std::uint32_t i = 0; i < texts.size(); ++i) {
    const auto [month, day, isNextYear] = nomos::splitDayOfYear(i);
    texts[i] = {
        {':', lastDigit(month / 10), lastDigit(month), ':', lastDigit(day / 10), lastDigit(day)},
        static_cast<std::uint8_t>(month),
        isNextYear};
  }
  return texts;
}();

struct DateText {
  std::uint32_t century, yearOfCentury;
  const DayText& day;
};

// REQUIRES: nomos::isDayNumber(date).
inline DateText splitDate(std::uint32_t date) {
  const nomos::MarchDay split = nomos::splitDayNumber(date);
  const DayText& day = kDayTexts[split.dayOfYear];
  const std::uint32_t year = split.yearOfCentury + day.isNextYear;
  if (year == 100) return {split.century + 1, 0, day};
  return {split.century, year, day};
}

}  // namespace nomutil::datetime

#endif  // NOMUTIL_DATETIME_WORDS_H
