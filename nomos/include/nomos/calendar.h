// The calendar: Julian day numbers of the proleptic Gregorian calendar, times of day, and the
// clock on the wall. 1 January 1970 is day 2440588; 0 is no date, 0xFFFFFFFF an invalid one.
//
// Exact for the years 1 to 9999, days 1721426 to 5373484. Pure functions, but for the clock; any
// thread may call them.
#ifndef NOMOS_CALENDAR_H
#define NOMOS_CALENDAR_H

#include "nomos/export.h"

#include <cstdint>

// A date and a time of day in milliseconds, below 86,400,000. A date of 0 is a time without a date;
// both fields 0xFFFFFFFF are no valid timestamp.
struct DskTimeStamp {
  std::uint32_t date;
  std::uint32_t time;
};
static_assert(sizeof(DskTimeStamp) == 8);

// The day number; 0xFFFFFFFF for a day that does not exist.
NOMOS_API std::uint32_t julianDay(int day, int month, int year);

// Splits a day number. All three are 0 for a number outside the years 1 to 9999.
NOMOS_API void julianToGregorian(std::uint32_t date, int* day, int* month, int* year);

// Both fields are 0xFFFFFFFF for a day or a time of day that does not exist.
NOMOS_API DskTimeStamp julianDayTime(int day, int month, int year, int hour, int minute, int second,
                                     int millisecond);

// The reverse, in the same order. Hours are not reduced modulo 24.
NOMOS_API void nosDateTimeToGregorian(DskTimeStamp stamp, int* day, int* month, int* year,
                                      int* hour, int* minute, int* second, int* millisecond);

// The local date and time.
NOMOS_API void nosGetCurrentDateTime(DskTimeStamp* stamp);

#endif  // NOMOS_CALENDAR_H
