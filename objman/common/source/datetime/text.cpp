// A text is put together from parts, each put down by one function, which returns the place behind
// its part and may write a few bytes more.

#include "text.h"

#include "words.h"

#include "nomos/digits.h"
#include "nomos/marchday.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace nomutil::datetime {
namespace {

using nomos::putTwoDigits;

__extension__ typedef unsigned __int128 UInt128;

constexpr std::uint32_t kNone = 0xFFFFFFFF;
constexpr std::uint32_t kMillisOfDay = 86400000;

// ---- Parts ----

char* putText(char* to, std::string_view text) {
  std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// "2024:01:05"; a date that is none has year, month and day 0.
char* putYearMonthDay(char* to, std::uint32_t date) {
  if (!nomos::isDayNumber(date)) return putText(to, "0000:00:00");
  const DateText split = splitDate(date);
  to = putTwoDigits(to, split.century);
  to = putTwoDigits(to, split.yearOfCentury);
  std::memcpy(to, &split.day, sizeof split.day);
  return to + sizeof split.day.text;
}

// "05 January 2024", and ", " behind it, where a time may follow.
// REQUIRES: nomos::isDayNumber(date).
char* putValidDate(char* to, std::uint32_t date) {
  const DateText split = splitDate(date);
  std::memcpy(to, &split.day.text[4], 2);
  to = putMonth(to + 2, split.day.month);
  to = putTwoDigits(to, split.century);
  std::memcpy(to, &kYearEnds[split.yearOfCentury], sizeof(Word4));
  return to + 2;
}

// The same for any date.
char* putDate(char* to, std::uint32_t date) {
  return nomos::isDayNumber(date) ? putValidDate(to, date) : putText(to, "*invalid*, ") - 2;
}

// What is left of a time, in units of 2^-64 of the unit that was taken last.
class Clock {
 public:
  explicit Clock(std::uint32_t time) : _rest(time) {}

  // The whole number of the next smaller unit, of which unitsOfLast make one of the last.
  std::uint32_t take(std::uint64_t unitsOfLast) {
    const UInt128 product = UInt128{_rest} * unitsOfLast;
    _rest = static_cast<std::uint64_t>(product);
    return static_cast<std::uint32_t>(product >> 64);
  }

  // Hours come first. Their factor, 2^64 / 3,600,000, is rounded up, so that what is left is never
  // too little, and less than a thousandth of a millisecond too much.
  std::uint32_t takeHours() { return take(~std::uint64_t{0} / 3600000 + 1); }

 private:
  std::uint64_t _rest;
};

// "14:07:09", with as many digits of hours as there are.
char* putSeconds(char* to, Clock& clock) {
  const std::uint32_t hours = clock.takeHours();
  to = hours < 100 ? putTwoDigits(to, hours) : nomos::putNumber(to, hours);
  to = putColonPair(to, clock.take(60));
  return putColonPair(to, clock.take(60));
}
char* putTime(char* to, std::uint32_t time) {
  Clock clock(time);
  return putSeconds(to, clock);
}

// "14:07:09.042", or without a fraction that is 0.
char* putMillis(char* to, std::uint32_t time, bool isFractionShort) {
  Clock clock(time);
  to = putSeconds(to, clock);
  const std::uint32_t tenths = clock.take(10);
  const std::uint32_t thousandths = clock.take(100);
  to[0] = '.';
  to[1] = static_cast<char>('0' + tenths);
  putTwoDigits(to + 2, thousandths);
  return isFractionShort && (tenths | thousandths) == 0 ? to : to + 4;
}

// The zone, whose sign is the opposite of the bias: hours and minutes as one number.
char* putZone(char* to, std::int32_t offset) {
  const auto bits = static_cast<std::uint32_t>(offset);
  const std::uint32_t minutes = offset > 0 ? bits : 0 - bits;
  *to++ = ' ';
  *to++ = offset > 0 ? '-' : '+';
  return nomos::putPadded(to, minutes + minutes / 60 * 40, 4);
}

// ---- Texts ----

char* end(char* text, char* behind) {
  *behind = '\0';
  return text;
}
char* writeInvalid(char* text) {
  std::memcpy(text, "*invalid*", 10);
  return text;
}

bool isValid(std::uint32_t date, std::uint32_t time) {
  return date != kNone && time < kMillisOfDay;
}
char* putTimeStamp(char* to, std::uint32_t date, std::uint32_t time) {
  if (date != 0) to = putDate(to, date) + 2;
  return putTime(to, time);
}

}  // namespace

char* writeDate(char* text, std::uint32_t date) {
  return end(text, date == 0 ? text : putDate(text, date));
}

char* writeTime(char* text, std::uint32_t time) {
  return time == kNone ? writeInvalid(text) : end(text, putTime(text, time));
}

[[gnu::flatten]] char* writeTimeStamp(char* text, std::uint32_t date, std::uint32_t time) {
  // Nearly every timestamp has a date of the calendar.
  if (nomos::isDayNumber(date) && time < kMillisOfDay) {
    return end(text, putTime(putValidDate(text, date) + 2, time));
  }
  return isValid(date, time) ? end(text, putTimeStamp(text, date, time)) : writeInvalid(text);
}

char* writeTimeStampOffset(char* text, std::uint32_t date, std::uint32_t time,
                           std::int32_t offset) {
  if (!isValid(date, time) || offset == 0x7FFFFFFF) return writeInvalid(text);
  return end(text, putZone(putTimeStamp(text, date, time), offset));
}

char* writeInterval(char* text, std::int64_t milliseconds) {
  if (milliseconds == INT64_MIN) return writeInvalid(text);
  const auto magnitude =
      static_cast<std::uint64_t>(milliseconds > 0 ? milliseconds : -milliseconds);
  char* to = text;
  if (milliseconds < 0) *to++ = '-';
  to = nomos::putNumber(to, magnitude / kMillisOfDay);
  *to++ = ':';
  return end(text, putMillis(to, static_cast<std::uint32_t>(magnitude % kMillisOfDay), false));
}

char* writeLiteralDate(char* text, std::uint32_t date) {
  return end(text, putYearMonthDay(text, date));
}

char* writeLiteralTime(char* text, std::uint32_t time) {
  return end(text, putMillis(text, time, true));
}

[[gnu::flatten]] char* writeLiteralTimeStamp(char* text, std::uint32_t date, std::uint32_t time) {
  char* to = text;
  if (date != 0) {
    to = putYearMonthDay(to, date);
    *to++ = ':';
  }
  return end(text, putMillis(to, time, true));
}

char* writeDateYMD(char* text, std::uint32_t date) {
  char* const behind = putYearMonthDay(text, date);
  text[4] = text[7] = '/';
  return end(text, behind);
}

char* writeElapsedTime(char* text, std::uint32_t milliseconds) {
  return end(text, putMillis(text, milliseconds, false));
}

}  // namespace nomutil::datetime
