// Dates, times of day, timestamps, intervals and offsets: taken apart, named, and rendered as text.
// docs/formats/datetime.md shows the stored forms.
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

struct DskTimeStampInterval {
  std::int64_t milliseconds;
};

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
