// The readers of a date and of a time of day. Each takes the place where it begins and gives the
// value and the place behind the last character that it used.
#ifndef NOMUTIL_DATETIME_READERS_H
#define NOMUTIL_DATETIME_READERS_H

#include "textcursor.h"

#include <cstdint>

namespace nomutil::datetime {

// The invalid date and the invalid time: what a reader gives that failed.
inline constexpr std::uint32_t kInvalid = 0xFFFFFFFF;

struct Reading {
  std::uint32_t value;
  TextCursor behind;
};

// Day-month-year, year-month-day and month-day-year with English names. Empty text is no date, 0.
Reading readEnglishDate(TextCursor at);

// A date in the order, the names and the calendar of the thread's locale; the only reader that
// leaves the place where it was when it fails. Empty text is no date, 0.
Reading readLocaleDate(TextCursor at);

// The same, but on failure with the place that was reached.
Reading tryReadLocaleDate(TextCursor at);

// A time of day with minutes. Seconds may be absent.
enum class Fraction : bool { No, Yes };
enum class Designators : bool { English, Locale };
Reading readTime(TextCursor at, Fraction fraction, Designators designators);

}  // namespace nomutil::datetime

#endif  // NOMUTIL_DATETIME_READERS_H
