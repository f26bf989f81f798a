// Parts and names of dates, and texts: worked cases of every form at every length of the buffer,
// every day and every second against what the C library prints.

#include "sys/datetime.h"
#include "nomos/locale.h"
#include "nomos/temppath.h"
#include "nomos/testhooks.h"

#include "rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

TEST(DateParts, AreThoseOfTheCalendarAndHaveNames) {
  int d, m, y, hour, minute, second, millis;
  const DskTimeStamp stamp = julianDayTime(5, 1, 2024, 14, 7, 9, 42);
  const DskTimeStamp later = {stamp.date, kNone}, none = {kNone, kNone};
  nosDskTimeStampToGregorianHMSm(stamp, &d, &m, &y, &hour, &minute, &second, &millis);
  EXPECT_EQ((std::vector<int>{d, m, y, hour, minute, second, millis}),
            (std::vector<int>{5, 1, 2024, 14, 7, 9, 42}));
  DskTimeStamp again =
      nosDskTimeStampFromGregorianHMSm(nullptr, &d, &m, &y, &hour, &minute, &second, &millis);
  EXPECT_EQ(nosDskTimeStampCompare(&stamp, &again), 0);
  hour = 24;
  again = nosDskTimeStampFromGregorianHMSm(nullptr, &d, &m, &y, &hour, &minute, &second, &millis);
  EXPECT_EQ(nosDskTimeStampCompare(&again, &none), 0);
  EXPECT_EQ(nosDskTimeStampCompare(&stamp, &none), -1);
  EXPECT_EQ(nosDskTimeStampCompare(&later, &stamp), 1);

  EXPECT_EQ(getDayOfMonth(stamp.date) * 100 + getMonth(stamp.date), 501);
  EXPECT_EQ(getYear(stamp.date), 2024);
  EXPECT_EQ(getMonth(0) + getDayOfMonth(0) + getYear(0), 0);
  EXPECT_EQ(getDateMonthName(0), nullptr);
  EXPECT_STREQ(getDateMonthName(stamp.date), "January");
  EXPECT_STREQ(getDateDayName(2440588), "Thursday");
  EXPECT_STREQ(getDateDayName(0), "Monday");
  EXPECT_STREQ(getDateDayName(kNone), "Sunday");
  std::string names;
  const auto add = [&names](const char* name) { names += name != nullptr ? name : "-"; };
  for (int day = -1; day <= 8; ++day) add(getDayName(day));
  for (int month = -1; month <= 13; ++month) add(getMonthName(month));
  EXPECT_EQ(names,
            "--MondayTuesdayWednesdayThursdayFridaySaturdaySunday---JanuaryFebruaryMarchAprilMay"
            "JuneJulyAugustSeptemberOctoberNovemberDecember-");
}

TEST(TimeStamps, AreSecondsByTheirLowBitsOrTheTimeOfTheClock) {
  // Seconds, date and time. -1 is taken as 2^32 - 1: 7 February 2106, 06:28:15.
  const auto check = [](const nomtest::Row& row) {
    DskTimeStamp stamp;
    timeToDskTimeStamp(std::stoll(row[0]), stamp);
    EXPECT_EQ(std::to_string(stamp.date), row[1]);
    return std::to_string(stamp.time);
  };
  nomtest::expectRows(3, check, R"(0 0 0  86399 2440588 86399000  86400 2440589 0
                                   4294967297 2440588 1000  -1 2490298 23295000)");
  DskTimeStamp now;
  nosSetCurrentDateTime(2440588, 5);
  EXPECT_EQ(getCurrentDateTime(&now), 0);
  nosSetCurrentDateTime(0, 0);
  EXPECT_TRUE(now.date == 2440588 && now.time == 5);
}

// The values of a row: a number of each kind.
struct Values {
  std::uint32_t number;  // a date or a time
  DskTimeStamp stamp;
  DskTimeStampOffset zoned;
  DskTimeStampInterval interval;
};
// Small letters are forms for people, which also end a buffer themselves.
const std::map<char, void (*)(const Values&, char*, unsigned)> kForms = {
    {'d', [](auto& v, char* to, unsigned n) { formatDate(v.number, to, n); }},
    {'t', [](auto& v, char* to, unsigned n) { formatTime(v.number, to, n); }},
    {'s', [](auto& v, char* to, unsigned n) { formatTimeStamp(v.stamp, to, n); }},
    {'o', [](auto& v, char* to, unsigned n) { formatTimeStampOffset(v.zoned, to, n); }},
    {'i', [](auto& v, char* to, unsigned n) { formatTimeStampInterval(v.interval, to, n); }},
    {'D', [](auto& v, char* to, unsigned n) { literalFormatDate(v.number, to, n); }},
    {'T', [](auto& v, char* to, unsigned n) { literalFormatTime(v.number, to, n); }},
    {'S', [](auto& v, char* to, unsigned n) { literalFormatTimeStamp(v.stamp, to, n); }},
    {'Y', [](auto& v, char* to, unsigned n) { formatDateYMD(v.number, to, n); }},
    {'E', [](auto& v, char* to, unsigned n) { formatElapsedTime(v.number, to, n); }}};

// Form, values and text, '_' for a blank and "-" for nothing. A buffer of any length takes the
// beginning of the text and keeps what it holds behind it.
TEST(DateTimeText, ShowsWorkedCasesAtEveryLength) {
  const auto check = [](const nomtest::Row& row) {
    long long first = 0, second = 0, offset = 0;
    std::sscanf(row[1].c_str(), "%lld,%lld,%lld", &first, &second, &offset);
    const auto number = static_cast<std::uint32_t>(first);
    const DskTimeStamp stamp = {number, static_cast<std::uint32_t>(second)};
    const Values values = {
        number, stamp, {number, stamp.time, static_cast<std::int32_t>(offset)}, {first}};
    const auto format = kForms.at(row[0][0]);
    const bool isEnded = row[0][0] >= 'a';
    char text[100] = "";
    format(values, text, sizeof text);
    char none = '\x7E';
    format(values, &none, 0);
    EXPECT_EQ(none, '\x7E');
    for (unsigned length = 1; length < sizeof text; ++length) {
      SCOPED_TRACE(testing::Message() << text << " in " << length);
      std::vector<char> buffer(length + 1, '\x7E');
      format(values, buffer.data(), length);
      std::string expected = std::string(text).substr(0, length - 1) + '\0';
      expected.resize(length, '\x7E');
      if (isEnded) expected.back() = '\0';
      EXPECT_EQ(buffer[length], '\x7E');
      buffer.resize(length < 40 ? length : expected.find('\0') + 1);
      expected.resize(buffer.size());
      EXPECT_EQ(std::string(buffer.begin(), buffer.end()), expected);
    }
    std::replace(text, text + sizeof text, ' ', '_');
    return std::string(text[0] == '\0' ? "-" : text);
  };
  nomtest::expectRows(3, check, R"(
      d 0 -                        d 2460315 05_January_2024       d 2451604 29_February_2000
      d 1721425 *invalid*          d 1721426 01_January_0001       d 5373484 31_December_9999
      d 5373485 *invalid*          d 4294967295 *invalid*          t 0 00:00:00
      t 50829042 14:07:09          t 90000000 25:00:00             t 4294967294 1193:02:47
      t 4294967295 *invalid*       s 0,3600000 01:00:00            s 0,86400000 *invalid*
      s 4294967295,0 *invalid*     s 1,50829042 *invalid*,_14:07:09
      s 2460315,86400000 *invalid* s 2460315,86399999 05_January_2024,_23:59:59
      o 4294967295,0,0 *invalid*   o 2460315,50829042,-780 05_January_2024,_14:07:09_+1300
      o 1,86400000,0 *invalid*     o 0,3600000,300 01:00:00_-0500  o 0,0,0 00:00:00_+0000
      o 0,0,2147483647 *invalid*   o 0,0,2147483646 00:00:00_-3579139406
      o 0,86399999,90 23:59:59_-0130 o 0,0,-2147483648 00:00:00_+3579139408
      i 0 0:00:00:00.000           i -93784005 -1:02:03:04.005     i 86399999 0:23:59:59.999
      i 86400000 1:00:00:00.000    i -9223372036854775807 -106751991167:07:12:55.807
      i -9223372036854775808 *invalid*
      D 0 0000:00:00  D 2460315 2024:01:05  D 5373485 0000:00:00  Y 0 0000/00/00
      Y 2460315 2024/01/05         T 50829042 14:07:09.042         T 50829000 14:07:09
      T 4294967295 1193:02:47.295  S 0,50829000 14:07:09           S 1,0 0000:00:00:00:00:00
      S 2460315,50829042 2024:01:05:14:07:09.042   S 2460315,50829000 2024:01:05:14:07:09
      E 0 00:00:00.000  E 359999999 99:59:59.999  E 360000000 100:00:00.000
      E 4294967295 1193:02:47.295)");
}

template <class... Values>
std::string printed(const char* format, Values... values) {
  char text[100];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

TEST(DateTimeText, ShowsEveryDayAndEverySecond) {
  char text[64];
  int wrong = 0, d, m, y;
  for (std::uint32_t date = 1721426; date <= 5373484; ++date) {
    julianToGregorian(date, &d, &m, &y);
    wrong += printed("%04d/%02d/%02d", y, m, d) != formatDateYMD(date, text, sizeof text);
    wrong += printed("%02d %s %04d", d, getMonthName(m), y) != formatDate(date, text, sizeof text);
  }
  for (std::uint64_t time = 0; time + 999 <= kNone; time += 1000) {
    const auto t = static_cast<std::uint32_t>(time);
    const std::string seconds =
        printed("%02u:%02u:%02u.", t / 3600000, t / 60000 % 60, t / 1000 % 60);
    wrong += seconds + "000" != formatElapsedTime(t, text, sizeof text);
    wrong += seconds + "999" != formatElapsedTime(t + 999, text, sizeof text);
  }
  EXPECT_EQ(wrong, 0);
}

// A process reads the key once, so each value has a process of its own.
TEST(CurrentLocale, IsReadOnceFromTheConfiguration) {
  const std::string file = nomtest::tempPath(".ini").string();
  const auto localeWith = [&](const std::string& text) {
    std::ofstream(file) << "[KoraClient]\nSingleLocaleNode=" << text << "\n";
    return std::to_string(getCurrentLocaleId());
  };
  const auto check = [&](const nomtest::Row& row) {
    nosSetGlbIniFileName(file.c_str());
    nosSetThreadLocale(1036);
    std::thread([] { nosSetThreadLocale(7); }).join();
    const auto isKept = [&] { return localeWith(row[0]) == row[1] && localeWith("7") == row[1]; };
    EXPECT_EXIT(std::_Exit(isKept() ? 0 : 1), testing::ExitedWithCode(0), "");
    return row[1];
  };
  nomtest::expectRows(2, check, R"(true 5129 2057 2057 none 1036 ; 1036 -1 4294967295  0{19}12 1
                                   99999999999 2147483647 -99999999999 2147483648)");
  std::filesystem::remove(file);
  nosSetGlbIniFileName(nullptr);
}

}  // namespace
