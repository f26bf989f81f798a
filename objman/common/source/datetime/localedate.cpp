// The reader of dates as the thread's locale writes them. In English of the United States, whose
// orders are both month-day-year, "12/25/2023" is read in the short order and "Monday, December 25,
// 2023" in the long one.

#include "readers.h"

#include "nomos/calendar.h"
#include "nomos/locale.h"
#include "nomos/localedate.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace nomutil::datetime {
namespace {

enum Item : std::uint8_t { kDay, kMonth, kYear, kItemCount };
using Items = std::array<Number, kItemCount>;

// By the number of an order.
constexpr std::array<std::array<Item, kItemCount>, 3> kOrders = {
    {{kMonth, kDay, kYear}, {kDay, kMonth, kYear}, {kYear, kMonth, kDay}}};
static_assert(kNosMonthDayYear == 0 && kNosDayMonthYear == 1 && kNosYearMonthDay == 2);

// The separators here are few: "25.12.2023" is no date where the locale writes '/'.
void skipItemSeparators(const LocaleDateInfo& info, TextCursor& at) {
  while (at.next() == info.dateSeparator || at.next() == ' ' || at.next() == ',' ||
         at.next() == '\t') {
    at.step(1);
  }
}

// A name ends where no letter follows it.
bool isWholeName(const TextCursor& at, unsigned length) {
  return !isLetter(at.text()[length]);
}

void stepOverDayName(const LocaleDateInfo& info, TextCursor& at) {
  unsigned length;
  if (info.matchDayName(at.text(), length) >= 0 && isWholeName(at, length)) at.step(length);
}

Number takeMonthName(const LocaleDateInfo& info, TextCursor& at) {
  unsigned length;
  const int month = info.matchMonthName(at.text(), length);
  if (month < 0 || !isWholeName(at, length)) return {};
  at.step(length);
  return {month, length};
}

// A short date has its month as a number; where the day is first, it may be a name.
Number takeShortMonth(const LocaleDateInfo& info, TextCursor& at) {
  const Number month = at.takeItem();
  if (month.length != 0 || info.shortOrder != kNosDayMonthYear) return month;
  return takeMonthName(info, at);
}

// Takes the three items of a date, its month with takeMonth. On failure at stands behind what
// was read of it.
bool tryOrder(const LocaleDateInfo& info, int order,
              Number (*takeMonth)(const LocaleDateInfo& info, TextCursor& at), TextCursor& at,
              Items& items) {
  if (order < 0 || order >= static_cast<int>(kOrders.size())) return false;
  for (const Item item : kOrders[static_cast<std::size_t>(order)]) {
    items[item] = item == kMonth ? takeMonth(info, at) : at.takeItem();
    if (items[item].length == 0) return false;
    if (item != kOrders[static_cast<std::size_t>(order)].back()) skipItemSeparators(info, at);
  }
  return true;
}

std::uint32_t dateOf(const LocaleDateInfo& info, const Items& items) {
  int day = static_cast<int>(items[kDay].value);
  int month = static_cast<int>(items[kMonth].value);
  int year = static_cast<int>(items[kYear].value);
  if (items[kYear].length < 3) year = nosGetCalendarYearGivenYY(year, info.calendar);
  if (!nosConvertCalendarDateToGregorianDate(info.calendar, day, month, year)) return kInvalid;
  return julianDay(day, month, year);
}

}  // namespace

Reading tryReadLocaleDate(TextCursor at) {
  if (at.isAtEnd()) return {0, at};
  LocaleDateInfo info;
  getLocaleDateInfo(nosGetThreadLocale(), info);

  at.skipWhiteSpace();
  const bool beginsWithWord = isLetter(at.next());
  if (beginsWithWord) stepOverDayName(info, at);
  skipItemSeparators(info, at);

  Items items;
  TextCursor behindShort = at;
  if (!beginsWithWord && tryOrder(info, info.shortOrder, takeShortMonth, behindShort, items)) {
    return {dateOf(info, items), behindShort};
  }
  if (tryOrder(info, info.longOrder, takeMonthName, at, items)) return {dateOf(info, items), at};
  return {kInvalid, at.text() > behindShort.text() ? at : behindShort};
}

Reading readLocaleDate(TextCursor at) {
  const Reading reading = tryReadLocaleDate(at);
  return {reading.value, reading.value != kInvalid ? reading.behind : at};
}

}  // namespace nomutil::datetime
