// The texts of dates, times, timestamps, intervals and offsets. Each part of a text is put down by
// one function, which returns the place behind it.

#include "text.h"

#include "nomos/calendar.h"
#include "nomos/digits.h"
#include "sys/datetime.h"

#include <cstdint>

namespace nomutil::datetime {
namespace {

using nomos::putFourDigits;
using nomos::putTwoDigits;

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::uint32_t kMillisOfDay = 86400000;

// Year, month and day with separators; all are 0 for a date that is none.
char* putYearMonthDay(char* to, std::uint32_t date, char separator) {
  int day, month, year;
  julianToGregorian(date, &day, &month, &year);
  to = putFourDigits(to, static_cast<std::uint32_t>(year));
  *to++ = separator;
  to = putTwoDigits(to, static_cast<std::uint32_t>(month));
  *to++ = separator;
  return putTwoDigits(to, static_cast<std::uint32_t>(day));
}

// Day, month by name and year; a date that is none is invalid.
char* putDate(char* to, std::uint32_t date) {
  int day, month, year;
  julianToGregorian(date, &day, &month, &year);
  if (month == 0) return putText(to, kInvalidText);
  to = putTwoDigits(to, static_cast<std::uint32_t>(day));
  *to++ = ' ';
  to = putName(to, kMonthNames[month]);
  *to++ = ' ';
  return putFourDigits(to, static_cast<std::uint32_t>(year));
}

// "hh:mm:ss" with as many digits of hours as there are.
char* putTime(char* to, std::uint32_t time) {
  const std::uint32_t seconds = time / 1000;
  const std::uint32_t minutes = seconds / 60;
  const std::uint32_t hours = minutes / 60;
  to = hours < 100 ? putTwoDigits(to, hours) : nomos::putNumber(to, hours);
  *to++ = ':';
  to = putTwoDigits(to, minutes % 60);
  *to++ = ':';
  return putTwoDigits(to, seconds % 60);
}

char* putMillis(char* to, std::uint32_t millis) {
  *to++ = '.';
  *to++ = static_cast<char>('0' + millis / 100);
  return putTwoDigits(to, millis % 100);
}

char* putLiteralTime(char* to, std::uint32_t time) {
  to = putTime(to, time);
  const std::uint32_t millis = time % 1000;
  return millis == 0 ? to : putMillis(to, millis);
}

bool isValid(std::uint32_t date, std::uint32_t time) {
  return date != kNone && time < kMillisOfDay;
}

char* putTimeStamp(char* to, std::uint32_t date, std::uint32_t time) {
  if (date != 0) {
    to = putDate(to, date);
    *to++ = ',';
    *to++ = ' ';
  }
  return putTime(to, time);
}

// The zone, whose sign is the opposite of the bias: hours and minutes as one number.
char* putZone(char* to, std::int32_t offset) {
  const auto bits = static_cast<std::uint32_t>(offset);
  const std::uint32_t minutes = offset > 0 ? bits : 0 - bits;
  *to++ = ' ';
  *to++ = offset > 0 ? '-' : '+';
  return nomos::putPadded(to, minutes + minutes / 60 * 40, 4);
}

char* putInterval(char* to, std::int64_t interval) {
  const auto bits = static_cast<std::uint64_t>(interval);
  const std::uint64_t magnitude = interval > 0 ? bits : 0 - bits;
  if (interval < 0) *to++ = '-';
  to = nomos::putNumber(to, magnitude / kMillisOfDay);
  *to++ = ':';
  const auto time = static_cast<std::uint32_t>(magnitude % kMillisOfDay);
  return putMillis(putTime(to, time), time % 1000);
}

}  // namespace
}  // namespace nomutil::datetime

using namespace nomutil::datetime;

char* formatDate(unsigned date, char* buffer, unsigned length) {
  return renderChecked(buffer, length,
                       [date](char* to) { return date == 0 ? to : putDate(to, date); });
}

char* formatTime(unsigned time, char* buffer, unsigned length) {
  return renderChecked(buffer, length, [time](char* to) {
    return time == kNone ? putText(to, kInvalidText) : putTime(to, time);
  });
}

char* formatTimeStamp(const DskTimeStamp& stamp, char* buffer, unsigned length) {
  return renderChecked(buffer, length, [stamp](char* to) {
    return isValid(stamp.date, stamp.time) ? putTimeStamp(to, stamp.date, stamp.time)
                                           : putText(to, kInvalidText);
  });
}

char* formatTimeStampOffset(const DskTimeStampOffset& stamp, char* buffer, unsigned length) {
  return renderChecked(buffer, length, [stamp](char* to) {
    constexpr std::int32_t kNoOffset = 0x7FFFFFFF;
    return isValid(stamp.date, stamp.time) && stamp.offset != kNoOffset
               ? putZone(putTimeStamp(to, stamp.date, stamp.time), stamp.offset)
               : putText(to, kInvalidText);
  });
}

char* formatTimeStampInterval(const DskTimeStampInterval& interval, char* buffer, unsigned length) {
  return renderChecked(buffer, length, [interval](char* to) {
    return interval.milliseconds == INT64_MIN ? putText(to, kInvalidText)
                                              : putInterval(to, interval.milliseconds);
  });
}

void literalFormatDate(unsigned date, char* buffer, unsigned length) {
  render(buffer, length, [date](char* to) { return putYearMonthDay(to, date, ':'); });
}

void literalFormatTime(unsigned time, char* buffer, unsigned length) {
  render(buffer, length, [time](char* to) { return putLiteralTime(to, time); });
}

void literalFormatTimeStamp(DskTimeStamp stamp, char* buffer, unsigned length) {
  render(buffer, length, [stamp](char* to) {
    if (stamp.date != 0) {
      to = putYearMonthDay(to, stamp.date, ':');
      *to++ = ':';
    }
    return putLiteralTime(to, stamp.time);
  });
}

char* formatDateYMD(unsigned date, char* buffer, unsigned length) {
  render(buffer, length, [date](char* to) { return putYearMonthDay(to, date, '/'); });
  return buffer;
}

char* formatElapsedTime(unsigned milliseconds, char* buffer, unsigned length) {
  render(buffer, length, [milliseconds](char* to) {
    return putMillis(putTime(to, milliseconds), milliseconds % 1000);
  });
  return buffer;
}
