// How dates are read and written in the locale of a thread: the order of day, month and year, the
// date separator, the names of days and months, designators of morning and afternoon, calendars
// other than the Gregorian, years of two digits.
//
// Linux asks ICU, through a module that is opened when it is first needed; without the module the
// locales of English remain, with fixed data. Windows asks the system. What was learnt of a locale
// is kept for the life of the process. Any thread may call everything here.
//
// Texts end with NUL. A name is recognised in the code page and in UTF-8, in any case; what these
// calls write is in the code page where that has every character, else in UTF-8.
#ifndef NOMOS_LOCALEDATE_H
#define NOMOS_LOCALEDATE_H

#include "nomos/export.h"

#include <cstdint>

// Calendars, with the numbers that Windows gives them. A year is that of the current era.
enum class NosCalendar : std::int32_t {
  Gregorian = 1,
  Japanese = 3,
  Taiwan = 4,
  Korean = 5,
  Hijri = 6,
  Thai = 7,
  Hebrew = 8,
  Persian = 22,
  UmAlQura = 23,
};

// The orders of LocaleDateInfo. Any other order, such as year-day-month, is kNosOtherDateOrder.
inline constexpr int kNosMonthDayYear = 0;
inline constexpr int kNosDayMonthYear = 1;
inline constexpr int kNosYearMonthDay = 2;
inline constexpr int kNosOtherDateOrder = -1;

struct NosLocaleData;

// What a reader of dates needs of one locale. Copies are cheap, and valid as long as the process.
// Only getLocaleDateInfo fills one.
class NOMOS_API LocaleDateInfo {
 public:
  char dateSeparator;    // the character between the numbers of a short date, '/' where it has none
  int shortOrder;        // of the short date format, 0 to 2 as above, or kNosOtherDateOrder
  int longOrder;         // of the long date format
  NosCalendar calendar;  // the one that the locale's dates are in

  // Matches the longest name that stands at the start of text: a full or an abbreviated name, in
  // the forms that the locale has for use within a date (such as a genitive) and by itself. What
  // follows the name is not looked at: "Mayor" begins with "May". On success length receives the
  // bytes of the name, above 0; else it is 0. One call reads at most 200 bytes of text.

  // 0 for Monday to 6 for Sunday, which is a day number modulo 7; -1 for no match.
  int matchDayName(const char* text, unsigned& length) const noexcept;

  // 1 to 12, in the locale's calendar; -1 for no match.
  int matchMonthName(const char* text, unsigned& length) const noexcept;

 private:
  friend NOMOS_API void getLocaleDateInfo(unsigned locale, LocaleDateInfo& info) noexcept;

  const NosLocaleData* _data;
};

// Fills info for a locale identifier such as nosGetThreadLocale gives. One that the platform does
// not know gives the data of English of the United States; a lack of memory the same without names.
NOMOS_API void getLocaleDateInfo(unsigned locale, LocaleDateInfo& info) noexcept;

// Items of NlsLocale, with the numbers that Windows gives them.
inline constexpr unsigned kNosMorningDesignator = 40;
inline constexpr unsigned kNosAfternoonDesignator = 41;

// The data of one locale, which LocaleDataStore owns.
class NOMOS_API NlsLocale {
 public:
  NlsLocale(const NlsLocale&) = delete;
  NlsLocale& operator=(const NlsLocale&) = delete;

  // The text of an item, "" when the locale has none or the item is none of the above. It lives as
  // long as the process.
  const char* LocaleInfo(unsigned item) const noexcept;

 private:
  friend struct NosLocaleData;

  NlsLocale() = default;

  const char* _morning = "";
  const char* _afternoon = "";
};

// Where the data of locales is kept, for the life of the process.
class NOMOS_API LocaleDataStore {
 public:
  // The data of the calling thread's locale; null when the platform does not know that locale, or
  // memory is exhausted.
  static const NlsLocale* ThreadLocale() noexcept;
};

// Whether the designators of the locale are in force: the key "EnhancedLocaleSupport" of section
// "KoraEnvironment" in the global configuration file, false without it, read once in a process.
NOMOS_API bool nosIsDTNMode() noexcept;

// The full year of one written with fewer than three characters, in the Gregorian calendar. On
// Linux it is one of the hundred years that end with 2049, so that 49 is 2049 and 50 is 1950; on
// Windows of those that the system's setting says. A year outside 0 to 99 comes back as it is.
NOMOS_API int nosGetYearGivenYY(int year) noexcept;

// The same in another calendar, or in that of the calling thread's locale: on Linux one of the
// hundred years that end with the one on 31 December 2049 (2592 in the Thai calendar). A Japanese
// year is that of the era already, and comes back as it is.
NOMOS_API int nosGetCalendarYearGivenYY(int year, NosCalendar calendar) noexcept;
NOMOS_API int nosGetCalendarYearGivenYY(int year) noexcept;

// Converts a date of a calendar in place: 25, 12, 2566 of the Thai one is 25, 12, 2023. False, and
// no change, for a date that does not exist there or lies outside the Gregorian years 1 to 9999,
// and for a calendar that the platform lacks; without ICU, Linux has the Gregorian, Taiwan, Korean
// and Thai ones alone. Months count as they come within the year, in a Hebrew leap year to 13.
NOMOS_API bool nosConvertCalendarDateToGregorianDate(NosCalendar calendar, int& day, int& month,
                                                     int& year) noexcept;

// ---- Locales by name, and dates written in their patterns ----

// The identifier of a locale by its name, "de-CH" or "de_CH"; 0 for one that the platform does not
// know. On Linux a locale to which Windows has given no identifier gets one with the highest bit
// set, which means nothing in another process.
NOMOS_API unsigned nosFindLocale(const char* name) noexcept;

// Copies the name of the platform's index-th locale, cut to size - 1 characters. False for an index
// behind the last one. Without ICU these are the locales of English.
NOMOS_API bool nosGetLocaleName(unsigned index, char* buffer, unsigned size) noexcept;

// Long is a date with the name of its month, Full one with the name of its day as well.
enum class NosDateStyle : std::uint32_t { Short = 0, Long = 1, Full = 2 };

// Writes a date as the locale does, in its calendar, with ASCII digits and, on Linux, without the
// era: as readers know dates. False when the platform does not know the locale, has no such style
// for it, the text needs more than size - 1 bytes, or date is none. On Windows Long is what the
// system has for long dates, and there is no Full; without ICU there is no style at all.
NOMOS_API bool nosFormatLocaleDate(unsigned locale, NosDateStyle style, std::uint32_t date,
                                   char* buffer, unsigned size) noexcept;

#endif  // NOMOS_LOCALEDATE_H
