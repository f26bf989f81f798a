// Texts read as dates, times, timestamps, intervals and offsets: tables of worked cases, every word
// that might be a month, and every day through the forms that are written.

#include "nomos/locale.h"
#include "nomos/testhooks.h"
#include "sys/datetime.h"

#include "rows.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

// "2023/12/25", "0" for the null date, "!" for the invalid one.
std::string shownDate(std::uint32_t date) {
  char text[16];
  if (date == 0 || date == kNone) return date == 0 ? "0" : "!";
  return formatDateYMD(date, text, sizeof text);
}
std::string shownTime(std::uint32_t time) {
  return time == kNone ? "!" : std::to_string(time);
}
std::string shown(const DskTimeStamp& stamp) {
  return shownDate(stamp.date) + "," + shownTime(stamp.time);
}

// Results hold what no reader gives before a reader fills them.
template <auto kExtract>
std::string stampOf(const char* text) {
  DskTimeStamp stamp = {77, 77};
  EXPECT_EQ(&kExtract(text, stamp), &stamp);
  return shown(stamp);
}
std::string offsetOf(const char* text) {
  DskTimeStampOffset stamp = {77, 77, 77};
  EXPECT_EQ(&extractTimeStampOffset(text, stamp), &stamp);
  return shown({stamp.date, stamp.time}) + "," + std::to_string(stamp.offset);
}
std::string intervalOf(const char* text) {
  DskTimeStampInterval interval = {77};
  EXPECT_EQ(&extractTimeStampInterval(text, interval), &interval);
  return interval.milliseconds == INT64_MIN ? "!" : std::to_string(interval.milliseconds);
}

const std::map<char, std::string (*)(const char*)> kReaders = {
    {'d', [](const char* text) { return shownDate(extractDate(text)); }},
    {'t', [](const char* text) { return shownTime(extractTime(text)); }},
    {'s', stampOf<extractTimeStamp>},
    {'e', stampOf<extractTimeStampForEnhancedLocale>},
    {'i', intervalOf},
    {'o', offsetOf},
    {'D', [](const char* text) { return shownDate(extractDateForCurrentLocale(text)); }},
    {'S', stampOf<extractDateTimeForCurrentLocale>}};

// In a row '_' is a blank, '~' a TAB, '^' the letter E9 and '$' the sign A7 of Windows-1252, and
// "-" no text at all. The text stands in a block of its size, so that reading beyond it is seen.
std::unique_ptr<char[]> textOf(std::string word) {
  if (word == "-") word.clear();
  for (char& c : word) {
    const std::size_t sign = std::string("_~^$").find(c);
    if (sign != std::string::npos) c = " \t\xE9\xA7"[sign];
  }
  std::unique_ptr<char[]> text(new char[word.size() + 1]);
  std::memcpy(text.get(), word.c_str(), word.size() + 1);
  return text;
}
std::string check(const nomtest::Row& row) {
  return kReaders.at(row[0][0])(textOf(row[1]).get());
}

class Extract : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(nosSetCodePage(1252)); }
  void TearDown() override {
    nosSetDTNMode(-1);
    nosSetThreadLocale(1033);
    nosSetCodePage(0);
  }
};

TEST_F(Extract, DatesInEnglish) {
  nomtest::expectRows(3, check, R"(
      d 25/12/2023 2023/12/25    d 25-Dec-2023 2023/12/25      d December_25,_2023 2023/12/25
      d 2023-12-25 2023/12/25    d 2023:12:25 2023/12/25       d 23:12:25 2023/12/25
      d 5:12:2023 2023/12/05     d 25.12:2023 2023/12/25       d 123:4:5 0123/04/05
      d 2023dec25 2023/12/25     d 12023:12:25 !               d +202/12/25 0202/12/25
      d +2023/12/25 !            d -2023/12/25 !               d -202/12/25 !
      d +5/12/2023 2023/12/05    d 25Dec2023 2023/12/25        d dEC25,2023 2023/12/25
      d MAY_5_2023 2023/05/05    d Sept_5_2023 !               d Ma_5_2023 !
      d Mai_5_2023 !             d Mayo_5_2023 !               d Dec_25_-2023 2023/12/25
      d 25/12 !                  d 25_Dec !                    d 25 !
      d 25/12/ !                 d /25/12/2023 !               d Dec !
      d /Dec_25,_2023 2023/12/25  d _-$dec/25/2023 2023/12/25   d /-25_Dec_2023 !
      d 5/6/23 2023/06/05        d 5/6/0023 0023/06/05         d 5/6/49 2049/06/05
      d 5/6/50 1950/06/05        d 5/6/050 0050/06/05          d 5/6/0 2000/06/05
      d - 0                      d _ !                         d ~25/12/2023_~ 2023/12/25
      d 25/12/2023_x !           d 25/12/2023/ !               d 25/12/2023_10:30 !
      d 25^12/2023 !             d 25$12$$2023 2023/12/25      d 25$_^ !
      d D^c_25_2023 !            d Dec^_25_2023 !              d 25/13/2023 !
      d 31/2/2023 !              d 0/30/2147483647 !           d 25/12/4294969319 !
      d 0{30}25/12/2023 2023/12/25   d 9{30}/9{30}/9{30} !     d 29/2/2024 2024/02/29)");
  EXPECT_EQ(extractDate(nullptr), kNone);
}

// Every beginning of every month's name, and with letters behind it.
TEST_F(Extract, MonthsAreWholeNamesOrTheirFirstThreeLetters) {
  for (int month = 1; month <= 12; ++month) {
    const std::string name = getMonthName(month);
    const std::uint32_t day = julianDay(5, month, 2023);
    for (std::size_t length = 0; length <= name.size(); ++length) {
      std::string word = name.substr(0, length);
      const std::uint32_t expected = length == 3 || length == name.size() ? day : kNone;
      EXPECT_EQ(extractDate(("5 " + word + " 2023").c_str()), expected) << word;
      EXPECT_EQ(extractDate((word + ".5.2023").c_str()), expected) << word;
      EXPECT_EQ(extractDate((word + "z 5 2023").c_str()), kNone) << word;
      if (length == 0) continue;
      word.back() ^= 1;
      EXPECT_EQ(extractDate((word + " 5 2023").c_str()), kNone) << word;
    }
  }
}

TEST_F(Extract, Times) {
  nomtest::expectRows(3, check, R"(
      t 10:30 37800000        t 10 !                     t 10: !              t - !
      t _ !                   t 12:00_am 0               t 12:30_p.m. 45000000
      t 13:00_pm !            t 0:00pm 43200000          t 11:59:59.999__PM 86399999
      t 13:00_a.m. !          t 1:00_A.M._ 3600000       t 10:30_amx !        t 10:30~am 37800000
      t 10:30:15.5~am !       t 10:30_a.m !              t 10:30_a !          t 24:00 !
      t 23:59:59.999 86399999 t 10:60 !                  t 10:30:60 !         t 10h30m15s !
      t 10x30 !               t 10.30.15,5 37815500      t 10_30 37800000     t 10:30: 37800000
      t 10:30:15: 37815000    t 10:30:15.5 37815500      t 10:30:15.05 37815050
      t 10:30:15.999 37815999      t 10:30:15.9999 37815999      t 10:30:15.123456 37815123
      t 10:30:15.1000 37815100     t 10:30:15.9{9} 37815999      t 10:30:15.9{10} 37815429
      t 10:30:15.9{11} 37815042    t 10:30:15.9{12} 37815004     t 10:30:15.9{13} 37815000
      t 10:30:15.9{25} 37815000    t 10:30:15.0{13}1 37815000    t 10:30:15_77 37815770
      t 10:30+15-5 37815500        t -5:30 !          t -0:30 1800000       t -1:20 !
      t 1194:00 3432704            t 71582788:16 0    t 71582789:00 2640000
      t 4294967295:59 !            t -18446744073709551615:30 5400000
      t _~10:30_~ 37800000         t 10:30^ !         t 10:30$ 37800000)");
  EXPECT_EQ(extractTime(nullptr), kNone);
}

TEST_F(Extract, TimeStampsIntervalsAndOffsets) {
  nomtest::expectRows(3, check, R"(
      s 25/12/2023 2023/12/25,0             s 25/12/2023_10:30 2023/12/25,37800000
      s 2023:12:25:10:30:15.042 2023/12/25,37815042
      s December_25,_2023,_10:30_pm 2023/12/25,81000000
      s - 0,0          s _ !,!              s 25/12/2023/ 2023/12/25,0
      s 10:30 !,!      s 31/2/2023_10:30 !,!         s 25/12/2023_10:60 !,!
      s 25/12/2023_10:30_x !,!              s 25/12/2023x10:30 !,!
      s 25/12/2023_10:30_+1300 !,!          s 25/12/2023_10:30:00_+1300 2023/12/25,37800130
      i -1_02:03:04.005 -93784005           i -1:02:03:04.005 -93784005
      i 5 !            i 5_ !               i - !                 i _ !
      i 622191233_23:59:59.999 53757322617599999     i 622191234_00:00 !
      i -622191233_23:59:59.999 -53757322617599999   i 9{25}_00:00 !
      i :10:30 37800000    i 10:30 !        i _-_1_10:30 -124200000    i --5_10:30 !
      i +1_10:30 124200000     i x10:30 !   i 0_24:00 !           i 0_00:00 0
      i -0_00:00 0         i 1_1:00_pm_and_more 133200000
      o 25/12/2023_10:30:00_+1300 2023/12/25,37800000,-780
      o 25/12/2023_10:30:00_-0500 2023/12/25,37800000,300
      o 25/12/2023_10:30:00-0530 2023/12/25,37800000,330
      o 25/12/2023_10:30:00_pm_-0030_ 2023/12/25,81000000,30
      o 25/12/2023_10:30:00_0 2023/12/25,37800000,0
      o 25/12/2023_10:30:00_-0 2023/12/25,37800000,0
      o 25/12/2023_10:30:00_+1400 2023/12/25,37800000,-840
      o 25/12/2023_10:30:00_-0840 2023/12/25,37800000,520
      o 25/12/2023_10:30:00_-777 2023/12/25,37800000,497
      o 25/12/2023_10:30:00_+0077 2023/12/25,37800000,-77
      o 25/12/2023_10:30:00_+1401 !,!,2147483647    o 25/12/2023_10:30:00_-1401 !,!,2147483647
      o 25/12/2023_10:30:00_-99999999999 !,!,2147483647
      o 25/12/2023_10:30:00.5_+1300 !,!,2147483647
      o 25/12/2023_10:30:00_+1300_x !,!,2147483647
      o 25/12/2023_10:30:00_+_1300 !,!,2147483647
      o 25/12/2023_10:30_+1300 2023/12/25,!,0       o 25/12/2023_10:30 2023/12/25,37800000,0
      o 25/12/2023 2023/12/25,0,0                   o 31/2/2023_10:30:00_+0100 !,37800000,-60
      o 10:30:00_+1300 !,!,0                        o Decz_10:30:00_+0100 !,37800000,-60
      o Dec^_10:30:00_+0100 !,37800000,-60
      o - 0,0,0                                     o _ !,0,0)");
  EXPECT_EQ(stampOf<extractTimeStamp>(nullptr), "!,!");
  EXPECT_EQ(intervalOf(nullptr), "!");
  EXPECT_EQ(offsetOf(nullptr), "!,!,2147483647");
}

// Locale, then as above. 2057 is English of the United Kingdom, 1033 of the United States, 1031
// German of Germany, 1053 Swedish, whose short dates are year-month-day.
TEST_F(Extract, DatesOfTheThreadsLocale) {
  const auto checkIn = [](const nomtest::Row& row) {
    nosSetThreadLocale(static_cast<unsigned>(std::stoul(row[0])));
    return check({row[1], row[2]});
  };
  nomtest::expectRows(4, checkIn, R"(
      2057 D 25/12/2023 2023/12/25        2057 D 12/25/2023 !        2057 D 25.12.2023 !
      2057 D 25,~12_2023_ 2023/12/25      2057 D 25/dec/2023 2023/12/25
      2057 D 25_December_2023 2023/12/25  2057 D 25_Decem_2023 !     2057 D 25_Dec2023 2023/12/25
      2057 D Monday,_25_December_2023 2023/12/25                     2057 D Mon_25/12/2023 !
      2057 D Mond_25_December_2023 !      2057 D Dec_25_2023 !       2057 D 25/-12/2023 !
      2057 D 25~December~2023 2023/12/25  2057 D 25/12/-2 2000/12/25
      2057 D 25/12/23 2023/12/25          2057 D 25/12/0023 0023/12/25
      2057 D 25/12 !    2057 D 25/12/2023/ !    2057 D /25/12/2023 2023/12/25
      2057 D - 0        2057 D _ !         2057 D 31/2/2023 !        2057 D 0/30/2147483647 !
      2057 S 10:30 !,37800000              2057 S 25/12/2023_10:60 2023/12/25,!
      2057 S 25/12/2023_10:30_pm 2023/12/25,81000000
      2057 S 25/12/2023 2023/12/25,0       2057 S 25/12/2023_10:30_x !,!
      2057 S 25/12/2023_13:00_pm !,!       2057 S Monday !,!         2057 S - 0,0
      2057 S _ !,0                         2057 S 31/2/2023 !,!      2057 S 31/2/2_30.5 !,!
      1033 D 12/25/2023 2023/12/25         1033 D 25/12/2023 !       1033 D Dec_25,_2023 2023/12/25
      1033 D MonDec_25,_2023 !    1033 D Dec/25/2023 2023/12/25
      1033 D Monday,_December_25,_2023 2023/12/25
      1033 D 25_December_2023 !            1033 D December25_2023 2023/12/25
      1031 D 25.12.2023 2023/12/25         1031 D 25/12/2023 !
      1031 D 25._Dezember_2023 2023/12/25
      1053 D 2023-12-25 2023/12/25         1053 D 23-12-25 2023/12/25
      1053 D 25_december_2023 2023/12/25)");
  EXPECT_EQ(extractDateForCurrentLocale(nullptr), kNone);
  EXPECT_EQ(stampOf<extractDateTimeForCurrentLocale>(nullptr), "!,!");
}

TEST_F(Extract, DesignatorsOfTheLocaleOnlyWhereTheyAreInForce) {
  const std::string texts = R"(
      e 25/12/2023_10:30 2023/12/25,37800000    e 25/12/2023_10:30_p.m. !,!)";
  nosSetDTNMode(0);
  nomtest::expectRows(3, check, texts + " e 25/12/2023_10:30_PM !,!");
  nosSetDTNMode(1);
  nomtest::expectRows(3, check, texts + R"( e 25/12/2023_10:30_pm 2023/12/25,81000000
                                  e 25/12/2023_12:30AM_ 2023/12/25,1800000
                                  e 25/12/2023_13:30_PM !,!)");
  EXPECT_EQ(stampOf<extractTimeStampForEnhancedLocale>(nullptr), "!,!");
}

TEST_F(Extract, ReadsBackEveryDayInEveryWrittenForm) {
  nosSetThreadLocale(2057);
  char text[64];
  std::uint32_t random = 1;
  int wrong = 0;
  for (std::uint32_t date = 1721426; date <= 5373484; ++date) {
    random = random * 1664525 + 1013904223;
    const std::uint32_t millis = (random >> 4) % 86400000;
    const DskTimeStamp seconds = {date, millis / 1000 * 1000};
    DskTimeStamp stamp;
    wrong += extractDate(formatDate(date, text, sizeof text)) != date;
    wrong += extractDate(formatDateYMD(date, text, sizeof text)) != date;
    extractTimeStamp(formatTimeStamp(seconds, text, sizeof text), stamp);
    wrong += nosDskTimeStampCompare(&stamp, &seconds) != 0;
    const DskTimeStamp exact = {date, millis};
    literalFormatTimeStamp(exact, text, sizeof text);
    extractTimeStamp(text, stamp);
    wrong += nosDskTimeStampCompare(&stamp, &exact) != 0;
    wrong += extractTime(formatElapsedTime(millis, text, sizeof text)) != millis;
    if (date % 16 != 0) continue;
    wrong += extractDateForCurrentLocale(formatDate(date, text, sizeof text)) != date;
    const DskTimeStampOffset zoned = {
        date, seconds.time,
        static_cast<std::int32_t>(random >> 8) % 841 * (date % 32 == 0 ? 1 : -1)};
    DskTimeStampOffset again;
    extractTimeStampOffset(formatTimeStampOffset(zoned, text, sizeof text), again);
    wrong += std::memcmp(&again, &zoned, sizeof zoned) != 0;
    DskTimeStampInterval interval = {std::int64_t{zoned.offset} * 4294967296 + random}, read;
    extractTimeStampInterval(formatTimeStampInterval(interval, text, sizeof text), read);
    wrong += read.milliseconds != interval.milliseconds;
  }
  EXPECT_EQ(wrong, 0);
}

// Text, whether in the locale, and where the reader stops.
TEST_F(Extract, TellsWhereItStops) {
  nosSetThreadLocale(2057);
  const auto stopOf = [](const nomtest::Row& row) {
    return std::to_string(findTimeStampStop(textOf(row[0]).get(), row[1] == "L"));
  };
  nomtest::expectRows(3, stopOf, R"(
      25/12/2023_ E 11    25/12/2023_x E 11    25/12/2023_10:30_x E 17    25/12/2023_10:60 E 16
      25/12 E 5           Sept_5_2023 E 4      31/2/2023_10:30 E 9        - E 0
      25/12/2023_ L 11    25.12.2023 L 2       25_Decem_2023 L 3    25/12/2023_10:60:1 L 16)");
  EXPECT_EQ(findTimeStampStop(nullptr, false), 0u);
}

}  // namespace
