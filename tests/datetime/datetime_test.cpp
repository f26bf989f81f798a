// Parts and names of dates, and every text against the format strings of its form, printed by the C
// library, at every length of the buffer.

#include "sys/datetime.h"
#include "nomos/locale.h"
#include "nomos/temppath.h"
#include "nomos/testhooks.h"

#include <gtest/gtest.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

TEST(DateParts, AreThoseOfTheCalendarAndHaveNames) {
  int d, m, y, hour, minute, second, millis;
  const DskTimeStamp stamp = julianDayTime(5, 1, 2024, 14, 7, 9, 42);
  nosDskTimeStampToGregorianHMSm(stamp, &d, &m, &y, &hour, &minute, &second, &millis);
  EXPECT_EQ((std::vector<int>{d, m, y, hour, minute, second, millis}),
            (std::vector<int>{5, 1, 2024, 14, 7, 9, 42}));
  const DskTimeStamp again =
      nosDskTimeStampFromGregorianHMSm(nullptr, &d, &m, &y, &hour, &minute, &second, &millis);
  EXPECT_EQ(nosDskTimeStampCompare(&stamp, &again), 0);
  hour = 24;
  const DskTimeStamp none =
      nosDskTimeStampFromGregorianHMSm(nullptr, &d, &m, &y, &hour, &minute, &second, &millis);
  EXPECT_TRUE(none.date == kNone && none.time == kNone);
  EXPECT_EQ(nosDskTimeStampCompare(&stamp, &none), -1);
  const DskTimeStamp later = {stamp.date, stamp.time + 1};
  EXPECT_EQ(nosDskTimeStampCompare(&later, &stamp), 1);

  EXPECT_TRUE(getDayOfMonth(stamp.date) == 5 && getMonth(stamp.date) == 1 &&
              getYear(stamp.date) == 2024);
  for (const std::uint32_t outside : {0u, 1721425u, 5373485u, kNone}) {
    EXPECT_EQ(getMonth(outside) + getDayOfMonth(outside) + getYear(outside), 0) << outside;
    EXPECT_EQ(getDateMonthName(outside), nullptr);
  }
  EXPECT_STREQ(getDateMonthName(stamp.date), "January");
  EXPECT_STREQ(getDateDayName(2440588), "Thursday");
  EXPECT_STREQ(getDateDayName(0), "Monday");
  EXPECT_STREQ(getDateDayName(kNone), "Sunday");
  EXPECT_STREQ(getDayName(7), "Sunday");
  EXPECT_STREQ(getMonthName(12), "December");
  for (const int outside : {-1, 0, 8}) EXPECT_EQ(getDayName(outside), nullptr);
  for (const int outside : {-1, 0, 13}) EXPECT_EQ(getMonthName(outside), nullptr);
}

TEST(TimeStamps, AreSecondsByTheirLowBitsOrTheTimeOfTheClock) {
  const struct {
    std::int64_t seconds;
    std::uint32_t date, time;
  } cases[] = {{0, 0, 0},
               {86399, 2440588, 86399000},
               {86400, 2440589, 0},
               {4294967296, 2440588, 0},
               {4294967297, 2440588, 1000},
               {-1, 4294967295 / 86400 + 2440588, 4294967295 % 86400 * 1000}};
  for (const auto& [seconds, date, time] : cases) {
    DskTimeStamp stamp;
    timeToDskTimeStamp(seconds, stamp);
    EXPECT_TRUE(stamp.date == date && stamp.time == time) << seconds;
  }
  DskTimeStamp now;
  nosSetCurrentDateTime(2440588, 5);
  EXPECT_EQ(getCurrentDateTime(&now), 0);
  nosSetCurrentDateTime(0, 0);
  EXPECT_TRUE(now.date == 2440588 && now.time == 5);
}

// ---- Texts ----

template <class... Values>
std::string printed(const char* format, Values... values) {
  char text[100];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

std::string dateText(std::uint32_t date) {
  if (date == 0) return "";
  int d, m, y;
  julianToGregorian(date, &d, &m, &y);
  return m == 0 ? "*invalid*" : printed("%02d %s %04d", d, getMonthName(m), y);
}
std::string timeText(std::uint32_t t) {
  if (t == kNone) return "*invalid*";
  return printed("%02d:%02d:%02d", t / 3600000, t / 60000 % 60, t / 1000 % 60);
}
std::string stampText(DskTimeStamp stamp) {
  if (stamp.date == kNone || stamp.time >= 86400000) return "*invalid*";
  return stamp.date == 0 ? timeText(stamp.time)
                         : dateText(stamp.date) + ", " + timeText(stamp.time);
}
std::string offsetText(const DskTimeStampOffset& stamp) {
  const std::string text = stampText({stamp.date, stamp.time});
  if (text == "*invalid*" || stamp.offset == 0x7FFFFFFF) return "*invalid*";
  const std::int64_t a = stamp.offset < 0 ? -std::int64_t{stamp.offset} : stamp.offset;
  return text + printed(" %c%04u", stamp.offset > 0 ? '-' : '+',
                        static_cast<unsigned>(a / 60 * 100 + a % 60));
}
std::string intervalText(std::int64_t interval) {
  if (interval == INT64_MIN) return "*invalid*";
  const std::int64_t m = interval < 0 ? -interval : interval;
  const auto t = static_cast<std::uint32_t>(m % 86400000);
  return printed("%s%" PRId64 ":%02u:%02u:%02u.%03u", interval < 0 ? "-" : "", m / 86400000,
                 t / 3600000, t / 60000 % 60, t / 1000 % 60, t % 1000);
}
std::string ymdText(std::uint32_t date, char separator) {
  int d, m, y;
  julianToGregorian(date, &d, &m, &y);
  return printed("%04d%c%02d%c%02d", y, separator, m, separator, d);
}
std::string elapsedText(std::uint32_t t) {
  return printed("%02d:%02d:%02d.%03d", t / 3600000, t / 60000 % 60, t / 1000 % 60, t % 1000);
}
std::string literalTimeText(std::uint32_t t) {
  return t % 1000 == 0 ? elapsedText(t).substr(0, elapsedText(t).size() - 4) : elapsedText(t);
}

// The text at every length of the buffer, or at some, with a guard behind it. A checked form also
// ends the buffer itself; a short buffer keeps what it holds behind the text.
template <class Format>
void expectText(const std::string& expected, bool isChecked, bool everyLength, Format format) {
  const unsigned most = static_cast<unsigned>(expected.size()) + 3;
  for (unsigned length = everyLength ? 0 : most; length <= most + 64;
       length += everyLength ? 1 : 31) {
    std::vector<char> buffer(length + 1, '\x7E');
    format(buffer.data(), length);
    ASSERT_EQ(buffer[length], '\x7E') << expected << " " << length;
    if (length == 0) continue;
    ASSERT_EQ(std::string(buffer.data()), expected.substr(0, length - 1)) << length;
    ASSERT_TRUE(!isChecked || buffer[length - 1] == '\0');
    for (std::size_t i = expected.size() + 1; i + isChecked < length && length < 40; ++i) {
      ASSERT_EQ(buffer[i], '\x7E') << expected << " " << length;
    }
  }
}

TEST(DateTimeText, IsThatOfTheFormatStringsAtEveryLength) {
  std::mt19937_64 random(5);
  const auto pick = [&](std::vector<std::uint32_t> special, std::uint32_t below) {
    const std::uint64_t choice = random() % 20;
    return choice < special.size() ? special[choice]
           : choice == 19          ? static_cast<std::uint32_t>(random())
                                   : static_cast<std::uint32_t>(random() % below);
  };
  for (int i = 0; i < 20000; ++i) {
    const bool every = i < 400;
    const std::uint32_t date = pick({0, kNone, 1721425, 1721426, 5373484, 5373485}, 3652059) +
                               static_cast<std::uint32_t>(random() % 2) * 1721426;
    const std::uint32_t time =
        pick({0, kNone, 86399999, 86400000, 3600000, 90000000, 52029000}, 86400000);
    const DskTimeStamp stamp = {date, time};
    const DskTimeStampOffset zoned = {
        date, time,
        static_cast<std::int32_t>(
            pick({0, 0x7FFFFFFF, 0x80000000, 0x80000001, 300, 0u - 780}, 840))};
    const DskTimeStampInterval interval = {
        i % 7 == 0 ? INT64_MIN + i / 7 % 3 : static_cast<std::int64_t>(random()) >> random() % 64};
    expectText(dateText(date), true, every, [&](char* b, unsigned n) { formatDate(date, b, n); });
    expectText(timeText(time), true, every, [&](char* b, unsigned n) { formatTime(time, b, n); });
    expectText(stampText(stamp), true, every,
               [&](char* b, unsigned n) { formatTimeStamp(stamp, b, n); });
    expectText(offsetText(zoned), true, every,
               [&](char* b, unsigned n) { formatTimeStampOffset(zoned, b, n); });
    expectText(intervalText(interval.milliseconds), true, every,
               [&](char* b, unsigned n) { formatTimeStampInterval(interval, b, n); });
    expectText(ymdText(date, ':'), false, every,
               [&](char* b, unsigned n) { literalFormatDate(date, b, n); });
    expectText(literalTimeText(time), false, every,
               [&](char* b, unsigned n) { literalFormatTime(time, b, n); });
    expectText(date == 0 ? literalTimeText(time) : ymdText(date, ':') + ":" + literalTimeText(time),
               false, every, [&](char* b, unsigned n) { literalFormatTimeStamp(stamp, b, n); });
    expectText(ymdText(date, '/'), false, every,
               [&](char* b, unsigned n) { formatDateYMD(date, b, n); });
    expectText(elapsedText(time), false, every,
               [&](char* b, unsigned n) { formatElapsedTime(time, b, n); });
    if (HasFatalFailure()) return;
  }
}

// Day after day and second after second, with a count of their own.
TEST(DateTimeText, ShowsEveryDay) {
  const char* const dayNames[] = {"Monday", "Tuesday",  "Wednesday", "Thursday",
                                  "Friday", "Saturday", "Sunday"};
  int wrong = 0;
  unsigned count = 0;  // 1 January 1 is a Monday
  for (int year = 1; year <= 9999; ++year) {
    for (int month = 1; month <= 12; ++month) {
      const std::string before = printed("%04d:%02d:", year, month);
      const std::string behind = printed(" %s %04d", getMonthName(month), year);
      for (int day = 1; day <= 31; ++day) {
        const std::uint32_t date = julianDay(day, month, year);
        if (date == kNone) break;
        const char digits[] = {static_cast<char>('0' + day / 10), static_cast<char>('0' + day % 10),
                               '\0'};
        char literal[64], display[64];
        literalFormatDate(date, literal, sizeof literal);
        formatDate(date, display, sizeof display);
        wrong += literal != before + digits || display != digits + behind;
        wrong += std::strcmp(getDateDayName(date), dayNames[count++ % 7]) != 0;
      }
    }
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(count, 3652059u);
}

TEST(DateTimeText, ShowsEverySecond) {
  int wrong = 0;
  std::uint64_t time = 0;
  for (unsigned hour = 0; hour <= 1193; ++hour) {
    for (unsigned minute = 0; minute < 60; ++minute) {
      std::string expected = printed("%02u:%02u:00.000", hour, minute);
      for (unsigned second = 0; second < 60; ++second, time += 1000) {
        if (time + 999 > kNone) break;
        char* const digits = &expected[expected.size() - 6];
        digits[0] = static_cast<char>('0' + second / 10);
        digits[1] = static_cast<char>('0' + second % 10);
        for (const auto& [behind, text] : {std::pair{0u, "000"}, {1u, "001"}, {999u, "999"}}) {
          char shown[64];
          std::memcpy(digits + 3, text, 3);
          formatElapsedTime(static_cast<std::uint32_t>(time) + behind, shown, sizeof shown);
          wrong += shown != expected;
        }
      }
    }
  }
  EXPECT_EQ(wrong, 0);
}

TEST(DateTimeText, ShowsWorkedCases) {
  char text[64];
  const std::uint32_t date = julianDay(5, 1, 2024);
  EXPECT_STREQ(formatTimeStampOffset({date, 50829042, -780}, text, sizeof text),
               "05 January 2024, 14:07:09 +1300");
  EXPECT_STREQ(formatTimeStampOffset({0, 3600000, 300}, text, sizeof text), "01:00:00 -0500");
  EXPECT_STREQ(formatTimeStamp({1, 50829042}, text, sizeof text), "*invalid*, 14:07:09");
  EXPECT_STREQ(formatTimeStampInterval({-93784005}, text, sizeof text), "-1:02:03:04.005");
  EXPECT_STREQ(formatTime(90000000, text, sizeof text), "25:00:00");
  literalFormatTimeStamp({date, 50829042}, text, sizeof text);
  EXPECT_STREQ(text, "2024:01:05:14:07:09.042");
}

// A process reads the key once, so each value has a process of its own.
TEST(CurrentLocale, IsReadOnceFromTheConfiguration) {
  const struct {
    const char* value;
    unsigned locale;
  } cases[] = {{"true", 5129},
               {"2057", 2057},
               {"", 1036},
               {"none", 1036},
               {"-1", 0xFFFFFFFF},
               {"99999999999", 0x7FFFFFFF},
               {"-99999999999", 0x80000000}};
  for (const auto& [value, locale] : cases) {
    const auto check = [value = value, locale = locale] {
      const std::string file = nomtest::tempPath(".ini").string();
      const auto write = [&](const std::string& text) {
        std::ofstream(file) << "[KoraClient]\nSingleLocaleNode=" << text << "\n";
      };
      write(value);
      nosSetGlbIniFileName(file.c_str());
      nosSetThreadLocale(1036);
      const unsigned first = getCurrentLocaleId();
      write("77");
      const unsigned second = getCurrentLocaleId();
      std::filesystem::remove(file);
      std::_Exit(first == locale && second == locale ? 0 : 1);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "") << value;
  }
}

}  // namespace
