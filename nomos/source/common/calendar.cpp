// Calendar arithmetic, as nomos/marchday.h has it inline, with what times of day add to it; and the
// clock's hook.

#include "nomos/calendar.h"

#include "nomos/marchday.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>
#include <cstdint>

namespace {

constexpr bool isBetween(int value, int low, int high) {
  return value >= low && value <= high;
}

// The date in the upper half, as a fixed clock for tests; 0 is none.
std::atomic<std::uint64_t> fixedClock{0};

}  // namespace

std::uint32_t julianDay(int day, int month, int year) {
  return nomos::joinDayNumber(day, month, year);
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
  if (date == nomos::kNoDay || !isBetween(hour, 0, 23) || !isBetween(minute, 0, 59) ||
      !isBetween(second, 0, 59) || !isBetween(millisecond, 0, 999)) {
    return {nomos::kNoDay, nomos::kNoDay};
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
