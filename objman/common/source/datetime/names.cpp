// Dates taken apart, the names of months and days, the clock and the flat functions. A date is a
// Julian day number, and 0 modulo 7 a Monday: 2440588, 1 January 1970, leaves 3, a Thursday.

#include "words.h"

#include "nomos/calendar.h"
#include "sys/datetime.h"

#include <cstdint>

namespace nomutil::datetime {
namespace {

constexpr const char* kDayNames[] = {nullptr,    "Monday", "Tuesday",  "Wednesday",
                                     "Thursday", "Friday", "Saturday", "Sunday"};

struct Parts {
  int day, month, year;
};

Parts split(unsigned date) {
  Parts parts;
  julianToGregorian(date, &parts.day, &parts.month, &parts.year);
  return parts;
}

}  // namespace
}  // namespace nomutil::datetime

using namespace nomutil::datetime;

int getDayOfMonth(unsigned date) {
  return split(date).day;
}
int getMonth(unsigned date) {
  return split(date).month;
}
int getYear(unsigned date) {
  return split(date).year;
}

const char* getMonthName(int month) {
  return month >= 1 && month <= 12 ? kMonthNames[static_cast<unsigned>(month)] : nullptr;
}
const char* getDateMonthName(unsigned date) {
  return getMonthName(getMonth(date));
}
const char* getDayName(int day) {
  return day >= 1 && day <= 7 ? kDayNames[day] : nullptr;
}

// date % 7 + 1, but that date + 1 wraps to 0 behind 0xFFFFFFFF, which so becomes a Sunday.
const char* getDateDayName(unsigned date) {
  return kDayNames[((date + 1) % 7 + 6) % 7 + 1];
}

int getCurrentDateTime(DskTimeStamp* stamp) {
  nosGetCurrentDateTime(stamp);
  return 0;
}

void timeToDskTimeStamp(std::int64_t seconds, DskTimeStamp& stamp) {
  constexpr std::uint32_t kSecondsOfDay = 86400;
  constexpr std::uint32_t kEpoch = 2440588;
  const auto low = static_cast<std::uint32_t>(seconds);
  stamp = seconds == 0 ? DskTimeStamp{0, 0}
                       : DskTimeStamp{low / kSecondsOfDay + kEpoch, low % kSecondsOfDay * 1000};
}

void nosDskDateToGregorian(std::uint32_t date, int* day, int* month, int* year) {
  julianToGregorian(date, day, month, year);
}

std::uint32_t nosDskDateFromGregorian(int day, int month, int year) {
  return julianDay(day, month, year);
}

void nosDskTimeStampToGregorianHMSm(DskTimeStamp stamp, int* day, int* month, int* year, int* hour,
                                    int* minute, int* second, int* millisecond) {
  nosDateTimeToGregorian(stamp, day, month, year, hour, minute, second, millisecond);
}

DskTimeStamp nosDskTimeStampFromGregorianHMSm(void*, int* day, int* month, int* year, int* hour,
                                              int* minute, int* second, int* millisecond) {
  return julianDayTime(*day, *month, *year, *hour, *minute, *second, *millisecond);
}

int nosDskTimeStampCompare(const DskTimeStamp* left, const DskTimeStamp* right) {
  if (left->date != right->date) return left->date < right->date ? -1 : 1;
  if (left->time != right->time) return left->time < right->time ? -1 : 1;
  return 0;
}
