// Calendar arithmetic: a year begins with March, as nomos/marchday.h explains. Divisions by
// constants become multiplications. And the clock's hook.

#include "nomos/calendar.h"

#include "nomos/marchday.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>
#include <cstdint>

namespace {

constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

constexpr bool isLeapYear(int year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr int daysIn(int month, int year) {
  if (month == 2) return isLeapYear(year) ? 29 : 28;
  return 30 + (month + month / 8) % 2;
}

constexpr bool isBetween(int value, int low, int high) {
  return value >= low && value <= high;
}

// The date in the upper half, as a fixed clock for tests; 0 is none.
std::atomic<std::uint64_t> fixedClock{0};

}  // namespace

std::uint32_t julianDay(int day, int month, int year) {
  if (!isBetween(year, 1, 9999) || !isBetween(month, 1, 12) ||
      !isBetween(day, 1, daysIn(month, year))) {
    return kInvalid;
  }
  const bool isBeforeMarch = month <= 2;
  const auto y = static_cast<std::uint32_t>(year - isBeforeMarch);
  const auto m = static_cast<std::uint32_t>(isBeforeMarch ? month + 12 : month);
  const std::uint32_t yearDays = 365 * y + y / 4 - y / 100 + y / 400;
  const std::uint32_t monthDays = (979 * m - 2919) / 32;
  return nomos::kFirstMarch + yearDays + monthDays + static_cast<std::uint32_t>(day - 1);
}

void julianToGregorian(std::uint32_t date, int* day, int* month, int* year) {
  if (!nomos::isDayNumber(date)) {
    *day = *month = *year = 0;
    return;
  }
  const nomos::MarchDay march = nomos::splitDayNumber(date);
  const nomos::YearDay split = nomos::splitDayOfYear(march.dayOfYear);
  *year = static_cast<int>(100 * march.century + march.yearOfCentury + split.isNextYear);
  *month = static_cast<int>(split.month);
  *day = static_cast<int>(split.day);
}

DskTimeStamp julianDayTime(int day, int month, int year, int hour, int minute, int second,
                           int millisecond) {
  const std::uint32_t date = julianDay(day, month, year);
  if (date == kInvalid || !isBetween(hour, 0, 23) || !isBetween(minute, 0, 59) ||
      !isBetween(second, 0, 59) || !isBetween(millisecond, 0, 999)) {
    return {kInvalid, kInvalid};
  }
  return {date,
          static_cast<std::uint32_t>(((hour * 60 + minute) * 60 + second) * 1000 + millisecond)};
}

void nosDateTimeToGregorian(DskTimeStamp stamp, int* day, int* month, int* year, int* hour,
                            int* minute, int* second, int* millisecond) {
  julianToGregorian(stamp.date, day, month, year);
  *hour = static_cast<int>(stamp.time / 3600000);
  *minute = static_cast<int>(stamp.time / 60000 % 60);
  *second = static_cast<int>(stamp.time / 1000 % 60);
  *millisecond = static_cast<int>(stamp.time % 1000);
}

void nosGetCurrentDateTime(DskTimeStamp* stamp) {
  const std::uint64_t fixed = fixedClock.load(std::memory_order_relaxed);
  if (fixed != 0) {
    *stamp = {static_cast<std::uint32_t>(fixed >> 32), static_cast<std::uint32_t>(fixed)};
    return;
  }
  // A leap second is the last second of its minute once more.
  const nomos::platform::LocalTime now = nomos::platform::localTime();
  *stamp = julianDayTime(now.day, now.month, now.year, now.hour, now.minute,
                         now.second < 60 ? now.second : 59, now.millisecond);
}

void nosSetCurrentDateTime(std::uint32_t date, std::uint32_t time) {
  fixedClock.store(std::uint64_t{date} << 32 | time, std::memory_order_relaxed);
}
