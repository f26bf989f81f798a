// How locales write dates: orders, separators, names, designators, years of two digits, calendars.
// Expected values are those of CLDR 42, as unicode.org publishes them, where Windows has the same;
// dates of other calendars come from the tables of new years in Reingold and Dershowitz,
// "Calendrical Calculations". Only ICU knows the style Full: where that is missing, so may be a
// calendar.

#include "nomos/localedate.h"

#include "nomos/calendar.h"
#include "nomos/locale.h"
#include "nomos/testhooks.h"

#include "support/threads.h"
#include "temppath.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace {

LocaleDateInfo infoOf(unsigned locale) {
  LocaleDateInfo info;
  getLocaleDateInfo(locale, info);
  return info;
}

bool hasIcu() {
  char text[64];
  return nosFormatLocaleDate(1033, NosDateStyle::Full, 2460315, text, sizeof text);
}

class LocaleDate : public testing::Test {
 protected:
  ~LocaleDate() override {
    nosSetThreadLocale(1033);
    nosSetCodePage(0);
    nosSetDTNMode(-1);
    nosSetGlbIniFileName(nullptr);
  }
};
using LocaleDateWindows1252 = LocaleDate;

struct ShapeRow {
  unsigned locale;
  char separator;
  int shortOrder;
  int longOrder;
  NosCalendar calendar;
};

void expectShapes(std::initializer_list<ShapeRow> rows) {
  for (const ShapeRow& row : rows) {
    const LocaleDateInfo info = infoOf(row.locale);
    EXPECT_EQ(info.dateSeparator, row.separator) << row.locale;
    EXPECT_EQ(info.shortOrder, row.shortOrder) << row.locale;
    EXPECT_EQ(info.longOrder, row.longOrder) << row.locale;
    EXPECT_EQ(info.calendar, row.calendar) << row.locale;
  }
}

// These, like all tests named so, also run without ICU.
TEST_F(LocaleDateWindows1252, EnglishHasThreeOrders) {
  constexpr NosCalendar kGregorian = NosCalendar::Gregorian;
  expectShapes({{1033, '/', 0, 0, kGregorian},      // en-US: M/d/yy, MMMM d, y
                {2057, '/', 1, 1, kGregorian},      // en-GB: dd/MM/y, d MMMM y
                {5129, '/', 1, 1, kGregorian},      // en-NZ: d/MM/yy, d MMMM y
                {7177, '/', 2, 1, kGregorian},      // en-ZA: y/MM/dd, dd MMMM y
                {0x9999, '/', 0, 0, kGregorian}});  // none, so as en-US
}

TEST_F(LocaleDate, OrderAndSeparatorFollowThePatterns) {
  constexpr NosCalendar kGregorian = NosCalendar::Gregorian;
  expectShapes({{1031, '.', 1, 1, kGregorian},              // de-DE: dd.MM.yy, d. MMMM y
                {1038, '.', 2, 2, kGregorian},              // hu-HU: y. MM. dd., y. MMMM d.
                {1041, '/', 2, 2, kGregorian},              // ja-JP: y/MM/dd, y<year>M<month>d<day>
                {1043, '-', 1, 1, kGregorian},              // nl-NL: dd-MM-y, d MMMM y
                {1053, '-', 2, 1, kGregorian},              // sv-SE: y-MM-dd, d MMMM y
                {1025, '/', 1, 1, NosCalendar::UmAlQura},   // ar-SA: d/M/y with marks between
                {1054, '/', 1, 1, NosCalendar::Thai},       // th-TH: d/M/yy, d MMMM G y
                {1065, '/', 2, 1, NosCalendar::Persian}});  // fa-IR: y/M/d, d MMMM y
}

struct NameRow {
  unsigned locale;
  const char* text;
  int number;
  unsigned length;
};

template <class Match>
void expectNames(Match match, std::initializer_list<NameRow> rows) {
  for (const NameRow& row : rows) {
    // On the heap in its exact size, so that a sanitizer sees what is read behind the NUL.
    const std::vector<char> text(row.text, row.text + std::strlen(row.text) + 1);
    unsigned length = 77;
    EXPECT_EQ((infoOf(row.locale).*match)(text.data(), length), row.number) << row.text;
    EXPECT_EQ(length, row.length) << row.text;
  }
}

TEST_F(LocaleDateWindows1252, EnglishNamesMatchAtTheirLongest) {
  expectNames(&LocaleDateInfo::matchMonthName, {{1033, "January 5", 1, 7},
                                                {1033, "Janu", 1, 3},
                                                {1033, "mAy", 5, 3},
                                                {1033, "Mayor", 5, 3},
                                                {1033, "SEPT 5", 9, 3},
                                                {5129, "SEPT 5", 9, 4},
                                                {0x9999, "december", 12, 8},
                                                {1033, "Ma 5", -1, 0},
                                                {1033, " May", -1, 0},
                                                {1033, "5 May", -1, 0},
                                                {1033, "M\xE4rz", -1, 0},
                                                {1033, "Monday", -1, 0},
                                                {1033, "", -1, 0}});
  expectNames(&LocaleDateInfo::matchDayName, {{1033, "Monday", 0, 6},
                                              {1033, "sunday,", 6, 6},
                                              {1033, "Thursda", 3, 3},
                                              {1033, "Mo", -1, 0}});
}

TEST_F(LocaleDate, NamesMatchInBothFormsAndAnyCase) {
  expectNames(&LocaleDateInfo::matchMonthName,
              {{1031, "M\xE4rz 2024", 3, 4},
               {1031, "M\xC3\xA4rz", 3, 5},
               {1031, "M\xC4RZ", 3, 4},
               {1031, "M\xC3\x84RZ", 3, 5},
               {1031, "M\xC3", -1, 0},                     // a cut sequence
               {1031, "\xC1\x8D\xC1\xA1\xC1\xA9", -1, 0},  // "Mai", overlong
               {1045, "stycznia", 1, 8},                   // the genitive
               {1045, "stycze\xC5\x84 2024", 1, 8},        // the nominative, not in Windows-1252
               {1055, "KASIM", 11, 5},                     // of a dotless i
               {1055, "N\xC4\xB0SAN", 4, 6},               // of a dotted one
               {1049, "\xD0\x9C\xD0\x90\xD0\xAF", 5, 6},   // "MAYA", the genitive, in capitals
               {1049, "\xD0\xBC\xD0\xB0\xD0\xB9", 5, 6},   // "may", the nominative
               {1049, "\xD0\xBC\xD0\xB0\xD1", -1, 0},
               {1066, "th\xC3\xA1ng 12", 12, 9},
               {1066, "th\xE1ng 1, 2024", 1, 7}});
  expectNames(&LocaleDateInfo::matchDayName,
              {{1036, "mardi 5 mars", 1, 5},
               {1031, "Samstag", 5, 7},
               {1049, "\xD1\x81\xD1\x80\xD0\xB5\xD0\xB4\xD0\xB0, 5", 2, 10},
               {1054,
                "\xE0\xB8\xA7\xE0\xB8\xB1\xE0\xB8\x99\xE0\xB8\xA8\xE0\xB8\xB8\xE0\xB8\x81"
                "\xE0\xB8\xA3\xE0\xB9\x8C",
                4, 24}});
}

TEST_F(LocaleDate, NamesFollowTheCodePage) {
  ASSERT_TRUE(nosSetCodePage(1251));
  expectNames(&LocaleDateInfo::matchMonthName, {{1049, "\xEC\xE0\xFF 2024", 5, 3},
                                                {1049, "\xCC\xC0\xDF", 5, 3},
                                                {1049, "\xD0\xBC\xD0\xB0\xD1\x8F", 5, 6},
                                                {1031, "M\xE4rz", -1, 0}});
  nosSetCodePage(1252);
  expectNames(&LocaleDateInfo::matchMonthName,
              {{1049, "\xEC\xE0\xFF 2024", -1, 0}, {1031, "M\xE4rz", 3, 4}});
}

TEST_F(LocaleDateWindows1252, DesignatorsAreThoseOfTheThread) {
  const auto designators = [](unsigned locale) {
    nosSetThreadLocale(locale);
    const NlsLocale* const data = LocaleDataStore::ThreadLocale();
    if (data == nullptr) return std::string("none");
    return std::string(data->LocaleInfo(40)) + '|' + data->LocaleInfo(41) + data->LocaleInfo(39);
  };
  EXPECT_EQ(designators(1033), "AM|PM");
  EXPECT_EQ(designators(5129), "am|pm");
  nosSetThreadLocale(0x9999);
  if (nosGetThreadLocale() == 0x9999) {
    EXPECT_EQ(designators(0x9999), "none");
  }
}

TEST_F(LocaleDate, DesignatorsAreInUtf8WhereTheCodePageLacksThem) {
  nosSetThreadLocale(1041);
  const char* const utf8 = LocaleDataStore::ThreadLocale()->LocaleInfo(kNosMorningDesignator);
  EXPECT_STREQ(utf8, "\xE5\x8D\x88\xE5\x89\x8D");
  nosSetThreadLocale(1032);  // pi mu with points, in both alphabets of the code page
  ASSERT_TRUE(nosSetCodePage(1253));
  EXPECT_STREQ(LocaleDataStore::ThreadLocale()->LocaleInfo(kNosMorningDesignator), "\xF0.\xEC.");
  EXPECT_STREQ(utf8, "\xE5\x8D\x88\xE5\x89\x8D") << "a text outlives its code page";
}

TEST_F(LocaleDate, DesignatorsAreInForceAsTheConfigurationSays) {
  const std::filesystem::path file = nomtest::tempPath(".ini");
  for (const bool expected : {true, false}) {
    std::ofstream(file) << "[KoraEnvironment]\nEnhancedLocaleSupport=" << (expected ? "yes" : "no")
                        << '\n';
    nosSetGlbIniFileName(file.string().c_str());
    nosSetDTNMode(-1);
    EXPECT_EQ(nosIsDTNMode(), expected);
    nosSetDTNMode(!expected);
    EXPECT_EQ(nosIsDTNMode(), !expected);
  }
  std::filesystem::remove(file);
}

// 2049 is also what a new Windows is set to, where each year is the user's choice.
TEST_F(LocaleDateWindows1252, YearsOfTwoDigitsEndWith2049) {
  for (int year = 0; year < 100; ++year) {
    EXPECT_EQ(nosGetYearGivenYY(year), year + (year < 50 ? 2000 : 1900));
    EXPECT_EQ(nosGetCalendarYearGivenYY(year, NosCalendar::Thai), year + (year < 93 ? 2500 : 2400));
    EXPECT_EQ(nosGetCalendarYearGivenYY(year, NosCalendar::Japanese), year);
  }
  for (const int year : {-1, 100, 2024, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(nosGetYearGivenYY(year), year);
  }
  nosSetThreadLocale(1033);
  EXPECT_EQ(nosGetCalendarYearGivenYY(24), 2024);
}

struct CalendarRow {
  NosCalendar calendar;
  int day, month, year;
  const char* gregorian;  // "" for a date that does not exist
};

void expectDates(std::initializer_list<CalendarRow> rows) {
  for (const CalendarRow& row : rows) {
    int day = row.day, month = row.month, year = row.year;
    const bool exists = nosConvertCalendarDateToGregorianDate(row.calendar, day, month, year);
    const std::string text =
        std::to_string(year) + '-' + std::to_string(month) + '-' + std::to_string(day);
    EXPECT_EQ(exists ? text : "", row.gregorian) << row.year << '-' << row.month << '-' << row.day;
    EXPECT_TRUE(exists || (day == row.day && month == row.month && year == row.year)) << text;
  }
}

TEST_F(LocaleDateWindows1252, YearsCountFromElsewhereInGregorianCalendars) {
  expectDates({{NosCalendar::Gregorian, 29, 2, 2024, "2024-2-29"},
               {NosCalendar::Gregorian, 29, 2, 2023, ""},
               {NosCalendar::Gregorian, 0, 2, 2023, ""},
               {NosCalendar::Gregorian, 1, 1, 10000, ""},
               {NosCalendar::Thai, 29, 2, 2567, "2024-2-29"},
               {NosCalendar::Thai, 29, 2, 2566, ""},
               {NosCalendar::Thai, 31, 12, 543, ""},
               {NosCalendar::Taiwan, 1, 1, 113, "2024-1-1"},
               {NosCalendar::Taiwan, 1, 1, INT32_MAX, ""},
               {NosCalendar::Korean, 10, 10, 4357, "2024-10-10"},
               {NosCalendar::Korean, 10, 10, INT32_MIN, ""}});
}

TEST_F(LocaleDate, CalendarsConvertToTheGregorian) {
  int day = 1, month = 1, year = 1403;
  if (!hasIcu() && !nosConvertCalendarDateToGregorianDate(NosCalendar::Persian, day, month, year)) {
    GTEST_SKIP() << "this system does not convert such calendars";
  }
  expectDates({{NosCalendar::Persian, 1, 1, 1403, "2024-3-20"},
               {NosCalendar::Persian, 30, 12, 1403, "2025-3-20"},
               {NosCalendar::Persian, 30, 12, 1402, ""},
               {NosCalendar::Persian, 1, 13, 1402, ""},
               {NosCalendar::UmAlQura, 1, 1, 1446, "2024-7-7"},
               {NosCalendar::Hijri, 1, 1, 1446, "2024-7-8"},
               {NosCalendar::Hijri, 31, 1, 1446, ""},
               {NosCalendar::Hebrew, 1, 1, 5785, "2024-10-3"},
               {NosCalendar::Hebrew, 1, 6, 5784, "2024-2-10"},  // Adar I of a leap year
               {NosCalendar::Hebrew, 1, 7, 5784, "2024-3-11"},
               {NosCalendar::Hebrew, 1, 13, 5784, "2024-9-4"},
               {NosCalendar::Hebrew, 1, 6, 5785, "2025-3-1"},  // Adar
               {NosCalendar::Hebrew, 1, 13, 5785, ""},
               {NosCalendar::Japanese, 1, 5, 6, "2024-5-1"},
               {NosCalendar::Japanese, 31, 4, 6, ""},
               {NosCalendar::Persian, 1, 1, INT32_MAX, ""},
               {NosCalendar::Hebrew, INT32_MIN, INT32_MIN, INT32_MIN, ""}});
}

TEST_F(LocaleDate, IsFoundByItsName) {
  EXPECT_EQ(nosFindLocale("de-CH"), 2055u);
  EXPECT_EQ(nosFindLocale("de_CH"), 2055u);
  EXPECT_EQ(nosFindLocale("en"), 9u);
  for (const char* none : {"", "xx-YY", "de-CH-", "de/CH", "\xC3\xA4"}) {
    EXPECT_EQ(nosFindLocale(none), 0u) << none;
  }
  EXPECT_EQ(nosFindLocale(std::string(1000, 'e').c_str()), 0u);
  std::set<unsigned> identifiers;
  char name[100];
  unsigned index = 0;
  for (; nosGetLocaleName(index, name, sizeof name); ++index)
    identifiers.insert(nosFindLocale(name));
  EXPECT_GT(index, 500u);
  if (hasIcu()) {
    EXPECT_EQ(identifiers.size(), index) << "each has a number of its own";
    EXPECT_EQ(identifiers.count(0), 0u);
  }
  EXPECT_FALSE(nosGetLocaleName(0xFFFFFFFF, name, sizeof name));
}

TEST_F(LocaleDate, WritesDatesInItsPatterns) {
  char text[64] = "";
  const auto write = [&text](unsigned locale, NosDateStyle style, unsigned size) {
    return nosFormatLocaleDate(locale, style, 2460376, text, size) ? text : "refused";
  };
  EXPECT_STREQ(write(2057, NosDateStyle::Short, 64), "06/03/2024");
  EXPECT_STREQ(write(2057, NosDateStyle::Short, 11), "06/03/2024");
  EXPECT_STREQ(write(2057, NosDateStyle::Short, 10), "refused");
  EXPECT_STREQ(write(2057, NosDateStyle::Short, 0), "refused");
  EXPECT_STREQ(write(0x9999, NosDateStyle::Short, 64), "refused");
  EXPECT_FALSE(nosFormatLocaleDate(2057, NosDateStyle::Short, 0, text, sizeof text));
  if (!hasIcu()) return;
  EXPECT_STREQ(write(1031, NosDateStyle::Full, 64), "Mittwoch, 6. M\xE4rz 2024");
  EXPECT_STREQ(write(1066, NosDateStyle::Long, 64), "6 th\xE1ng 3, 2024");
  EXPECT_STREQ(write(1049, NosDateStyle::Long, 64),
               "6 \xD0\xBC\xD0\xB0\xD1\x80\xD1\x82\xD0\xB0 2024\xE2\x80\xAF\xD0\xB3.");
  // 4 October 1582 is in no Julian calendar.
  EXPECT_TRUE(nosFormatLocaleDate(2057, NosDateStyle::Short, 2299150, text, sizeof text));
  EXPECT_STREQ(text, "04/10/1582");
}

TEST_F(LocaleDate, ThreadsShareWhatTheFirstOneLearnt) {
  constexpr int kThreads = 4;
  static constexpr unsigned kLocales[] = {1034, 1040, 1044, 1046, 1054, 1065};
  const NlsLocale* seen[kThreads][std::size(kLocales)] = {};
  nomtest::inThreads(kThreads, [&seen](unsigned thread) {
    for (std::size_t i = 0; i < std::size(kLocales); ++i) {
      nosSetThreadLocale(kLocales[i]);
      seen[thread][i] = LocaleDataStore::ThreadLocale();
      char text[64];
      if (nosFormatLocaleDate(kLocales[i], NosDateStyle::Long, 2460315, text, sizeof text)) {
        unsigned length;
        infoOf(kLocales[i]).matchMonthName(text, length);
      }
      int day = 1, month = 1, year = 1403;
      nosConvertCalendarDateToGregorianDate(infoOf(kLocales[i]).calendar, day, month, year);
    }
  });
  for (std::size_t i = 0; i < std::size(kLocales); ++i) {
    EXPECT_NE(seen[0][i], nullptr);
    for (const auto& own : seen) EXPECT_EQ(own[i], seen[0][i]) << kLocales[i];
  }
}

}  // namespace
