// Dates, times of day, timestamps, intervals and offsets: taken apart, named, rendered as text and
// read from text. docs/formats/datetime.md shows the stored forms and the texts.
//
//   date      Julian day number: 1 January 1970 is 2440588; 0 is no date, 0xFFFFFFFF invalid. A
//             number that leaves 0 when divided by 7 is a Monday.
//   time      milliseconds since midnight, below 86,400,000; 0xFFFFFFFF is invalid
//   interval  signed milliseconds; the most negative value is invalid
//   offset    a timestamp with a bias in minutes: universal time is local time plus the bias, so
//             that the zone +1300 is -780; 0x7FFFFFFF is invalid
//
// A text function writes at most length bytes to buffer, cuts what is longer, and ends it with a
// NUL; a length of 0 writes nothing. What a buffer of 48 bytes or more holds behind the NUL may be
// overwritten: there the words of a text are copied whole. Nothing fails: a value that cannot be
// shown is "*invalid*" where a function says so. Everything may be called from any thread.
#ifndef NOMUTIL_SYS_DATETIME_H
#define NOMUTIL_SYS_DATETIME_H

#include "nomos/calendar.h"
#include "sys/build.h"

#include <cstddef>
#include <cstdint>

// An interval: how far one timestamp lies behind another, negative when it lies before it.
struct DskTimeStampInterval {
  std::int64_t milliseconds;
};

// A local timestamp with its bias against universal time, in minutes.
struct DskTimeStampOffset {
  std::uint32_t date;
  std::uint32_t time;
  std::int32_t offset;
};
static_assert(sizeof(DskTimeStampInterval) == 8 && sizeof(DskTimeStampOffset) == 12);
static_assert(offsetof(DskTimeStampOffset, time) == 4 && offsetof(DskTimeStampOffset, offset) == 8);

// ---- Parts and names ----

// 0 for a date that is none.
NOMUTIL_API int getDayOfMonth(unsigned date);
NOMUTIL_API int getMonth(unsigned date);
NOMUTIL_API int getYear(unsigned date);

// English names: months from 1, days from 1 for Monday. Null for a number that has none;
// getDateDayName always finds one ("Sunday" for 0xFFFFFFFF).
NOMUTIL_API const char* getMonthName(int month);
NOMUTIL_API const char* getDateMonthName(unsigned date);
NOMUTIL_API const char* getDayName(int day);
NOMUTIL_API const char* getDateDayName(unsigned date);

// The local date and time. Returns 0.
NOMUTIL_API int getCurrentDateTime(DskTimeStamp* stamp);

// Seconds of universal time since 1 January 1970, of which the low 32 bits count; the count 0 gives
// the null timestamp.
NOMUTIL_API void timeToDskTimeStamp(std::int64_t seconds, DskTimeStamp& stamp);

// ---- Display forms ----
// Each stores a NUL in the last byte of the buffer, and returns the buffer.

// "05 January 2024"; "" for the null date; "*invalid*" for a date that is none.
NOMUTIL_API char* formatDate(unsigned date, char* buffer, unsigned length);

// "14:07:09", without milliseconds. Hours go on behind 23; only 0xFFFFFFFF is "*invalid*".
NOMUTIL_API char* formatTime(unsigned time, char* buffer, unsigned length);

// "05 January 2024, 14:07:09"; with the null date the time alone. "*invalid*" for the date
// 0xFFFFFFFF and for a time of a day or more.
NOMUTIL_API char* formatTimeStamp(const DskTimeStamp& stamp, char* buffer, unsigned length);

// The same and the zone: "05 January 2024, 14:07:09 +1300".
NOMUTIL_API char* formatTimeStampOffset(const DskTimeStampOffset& stamp, char* buffer,
                                        unsigned length);

// "-1:02:03:04.005": days, hours, minutes, seconds and milliseconds.
NOMUTIL_API char* formatTimeStampInterval(const DskTimeStampInterval& interval, char* buffer,
                                          unsigned length);

// ---- Literal and fixed forms ----
// Nothing is checked: a date that is none has day, month and year 0.

// "2024:01:05", "14:07:09" or "14:07:09.042", "2024:01:05:14:07:09.042". A timestamp with the null
// date is its time alone.
NOMUTIL_API void literalFormatDate(unsigned date, char* buffer, unsigned length);
NOMUTIL_API void literalFormatTime(unsigned time, char* buffer, unsigned length);
NOMUTIL_API void literalFormatTimeStamp(DskTimeStamp stamp, char* buffer, unsigned length);

// "2024/01/05" and "14:07:09.042". Return the buffer.
NOMUTIL_API char* formatDateYMD(unsigned date, char* buffer, unsigned length);
NOMUTIL_API char* formatElapsedTime(unsigned milliseconds, char* buffer, unsigned length);

// ---- Reading ----
// The readers take a text, up to its NUL, as people and configuration files have it. Any characters
// but letters and digits may separate the items of a date and of a time; white space (blank, TAB,
// LF, VT, FF, CR) may stand around them. What else follows the value makes the text invalid. The
// code page says which characters are letters. Every failure, a null text too, is the invalid value
// of the result, and nothing is logged. Functions with a result set it always, and return it.
//
// A date is day-month-year, year-month-day (year of exactly four characters, or of more than one
// and a ':' behind it) or month-day-year with the month as a word, which is an English name or its
// first three letters, in any case. A year of one or two characters is what nosGetYearGivenYY makes
// of it. Separators may stand before a month's name that begins a date, and before no number. Empty
// text is the null date; a day that does not exist is invalid.
//
//   25/12/2023   25-Dec-2023   December 25, 2023   2023-12-25   23:12:25
//
// A time has hours and minutes, and may have seconds, a fraction of a second, and "am", "a.m.",
// "pm" or "p.m." in any case, with which hours go to 12. A fraction of three digits is milliseconds
// and any other is cut to them. The hours alone are not checked, but the time is below 24:00; more
// than 1193 hours wrap around at 2^32 milliseconds and may pass for a time of day.
//
//   10:30   10.30 p.m.   10:30:15.5

NOMUTIL_API unsigned extractDate(const char* text);
NOMUTIL_API unsigned extractTime(const char* text);

// A date, and a time behind it, or none for midnight. Empty text is the null timestamp, (0, 0).
NOMUTIL_API DskTimeStamp& extractTimeStamp(const char* text, DskTimeStamp& result);

// The same with the morning and afternoon designators of the thread's locale, where these are in
// force (nosIsDTNMode); where they are not, a designator makes the text invalid, an English one
// too.
NOMUTIL_API DskTimeStamp& extractTimeStampForEnhancedLocale(const char* text, DskTimeStamp& result);

// "-1 02:03:04.005" or "-1:02:03:04.005": days, none for 0, then a time, which must not be absent.
// A '-' in front counts for both. At most 622,191,233 days. What follows the time is not looked at.
NOMUTIL_API DskTimeStampInterval& extractTimeStampInterval(const char* text,
                                                           DskTimeStampInterval& result);

// "25/12/2023 10:30:00 +1300": a date, a time without a fraction, then a zone of hours and minutes
// as one number, within 14 hours. Time and zone may be absent, for 0; but the zone only together
// with the time, and seconds must not be absent where a zone follows. A text that goes on, or a
// zone too far, is wholly invalid; a failed date or time is 0xFFFFFFFF in its field alone.
NOMUTIL_API DskTimeStampOffset& extractTimeStampOffset(const char* text,
                                                       DskTimeStampOffset& result);

// A date in the thread's locale (nomos/localedate.h): in the order of its short form with a month
// of digits (a name too, where the day stands first), or of its long form with the month's name; a
// day's name may stand in front. The separator of the locale, blank, ',' and TAB separate the
// items. The year is that of the locale's calendar.
NOMUTIL_API unsigned extractDateForCurrentLocale(const char* text);

// Such a date, and a time as extractTimeStamp takes it. Date and time fail each for itself: where
// no more than white space follows, one may be 0xFFFFFFFF and the other valid. Check both.
NOMUTIL_API DskTimeStamp& extractDateTimeForCurrentLocale(const char* text, DskTimeStamp& result);

// Where a reader of timestamps stops: the offset behind the last character that was of use to it.
// It is the length of the text where that can be read, and also where only the value is impossible
// or something is missing at the end. forCurrentLocale chooses extractDateTimeForCurrentLocale
// instead of extractTimeStamp. 0 for a null text.
NOMUTIL_API std::size_t findTimeStampStop(const char* text, bool forCurrentLocale);

// ---- Locale ----

// The locale that texts of dates and numbers follow, as a Windows identifier: 5129 where the key
// "SingleLocaleNode" of section "KoraClient" in the global configuration file is "TRUE", the number
// that it holds, or else that of the calling thread. The key is read once in a process.
NOMUTIL_API unsigned getCurrentLocaleId();

// ---- Flat functions, for callers that bind by name ----

extern "C" {
// As julianToGregorian and julianDay.
NOMUTIL_API void nosDskDateToGregorian(std::uint32_t date, int* day, int* month, int* year);
NOMUTIL_API std::uint32_t nosDskDateFromGregorian(int day, int month, int year);

// As nosDateTimeToGregorian and julianDayTime; unused may be anything.
NOMUTIL_API void nosDskTimeStampToGregorianHMSm(DskTimeStamp stamp, int* day, int* month, int* year,
                                                int* hour, int* minute, int* second,
                                                int* millisecond);
NOMUTIL_API DskTimeStamp nosDskTimeStampFromGregorianHMSm(void* unused, int* day, int* month,
                                                          int* year, int* hour, int* minute,
                                                          int* second, int* millisecond);

// -1, 0 or 1, by date and then time.
NOMUTIL_API int nosDskTimeStampCompare(const DskTimeStamp* left, const DskTimeStamp* right);
}  // extern "C"

#endif  // NOMUTIL_SYS_DATETIME_H
