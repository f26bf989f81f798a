// The data of locales: described by the platform when a locale is first asked for, kept for the
// life of the process, found again without a lock. One entry is good for one code page, in which
// its designators are written. And years of two digits, calendars, and dates in a locale's pattern.

#include "nomos/localedate.h"

#include "codepages.h"
#include "localenames.h"
#include "nomos/calendar.h"
#include "nomos/intl.h"
#include "nomos/locale.h"
#include "nomos/marchday.h"
#include "nomos/mutex.h"
#include "nomos/profile.h"
#include "nomos/testhooks.h"
#include "platform.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <string>

using nomos::IndexedCodePage;
using nomos::platform::LocaleDescription;

struct NosLocaleData {
  // The entry of a locale. Throws std::bad_alloc.
  NosLocaleData(unsigned locale, const IndexedCodePage& codePage);

  unsigned locale;
  const IndexedCodePage* codePage;
  bool isKnown;  // else it is a copy of the data of kFallback
  char dateSeparator;
  int shortOrder;
  int longOrder;
  NosCalendar calendar;
  nomos::LocaleNames days;
  nomos::LocaleNames months;
  std::string morning;
  std::string afternoon;
  NlsLocale nls;
  const NosLocaleData* next;
};

namespace {

constexpr unsigned kFallback = 1033;

// ---- Patterns ----

struct PatternShape {
  int order;
  char separator;
};

bool isAsciiLetter(char16_t unit) {
  return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

// What may separate numbers: printable ASCII that is neither letter nor digit nor blank.
bool isSeparator(char16_t unit) {
  return unit > ' ' && unit < 0x7F && !isAsciiLetter(unit) && !(unit >= '0' && unit <= '9');
}

// Where day, month and year first stand in a pattern, "d. MMMM y" or "dddd, dd'-'MM'-'yyyy", and
// the first separator behind one of them. Three letters d or more are the name of the day.
PatternShape shapeOf(const LocaleDescription::Text& pattern) {
  int place[3] = {-1, -1, -1};  // of day, month and year
  char separator = 0;
  bool isQuoted = false;
  bool hasField = false;
  for (int i = 0; pattern[i] != 0; ++i) {
    const char16_t unit = pattern[i];
    if (unit == '\'') isQuoted = !isQuoted;
    if (isQuoted || !isAsciiLetter(unit)) {
      const bool isFirst = hasField && separator == 0 && unit != '\'' && isSeparator(unit);
      if (isFirst) separator = static_cast<char>(unit);
      continue;
    }
    const int start = i;
    while (pattern[i + 1] == unit) ++i;
    const int field = unit == 'd' && i - start < 2 ? 0
                      : unit == 'M' || unit == 'L' ? 1
                      : unit == 'y'                ? 2
                                                   : -1;
    if (field < 0) continue;
    hasField = true;
    if (place[field] < 0) place[field] = start;
  }
  const auto [day, month, year] = place;
  const bool isWhole = day >= 0 && month >= 0 && year >= 0;
  const int order = !isWhole                      ? kNosOtherDateOrder
                    : month < day && day < year   ? kNosMonthDayYear
                    : day < month && month < year ? kNosDayMonthYear
                    : year < month && month < day ? kNosYearMonthDay
                                                  : kNosOtherDateOrder;
  return {order, separator != 0 ? separator : '/'};
}

// ---- Texts ----

// In UTF-32, that intlConvertString reads; an unpaired surrogate makes it fail there.
unsigned toUtf32(const char16_t* text, std::uint32_t* characters) {
  unsigned count = 0;
  while (*text != 0) {
    std::uint32_t character = *text++;
    if (character >= 0xD800 && character < 0xDC00 && *text >= 0xDC00 && *text < 0xE000) {
      character = 0x10000 + ((character - 0xD800) << 10) + (*text++ - 0xDC00u);
    }
    characters[count++] = character;
  }
  return count;
}

// Writes a text in a code page that has every character, else in UTF-8. 0 when there is no room.
constexpr unsigned kTextRoom = 128;
unsigned writeText(const char16_t* text, const IndexedCodePage& codePage, char* buffer,
                   unsigned size) {
  std::uint32_t characters[kTextRoom];
  const unsigned count = toUtf32(text, characters);
  bool hasAll = true;
  for (unsigned i = 0; i < count; ++i) {
    unsigned char byte;
    hasAll = hasAll && (characters[i] < 0x80 || encodeCharacter(codePage, characters[i], byte));
  }
  std::uint32_t bytes = 0;
  std::uint32_t written = 0;
  const IntlFormat form = hasAll ? IntlFormat::CodePage : IntlFormat::Utf8;
  if (size == 0 || intlConvertString(IntlFormat::Utf32, characters, 4 * count, form, buffer,
                                     size - 1, bytes, written) != 0) {
    return 0;
  }
  buffer[bytes] = '\0';
  return bytes;
}

}  // namespace

NosLocaleData::NosLocaleData(unsigned id, const IndexedCodePage& page)
    : locale(id), codePage(&page), isKnown(true), next(nullptr) {
  auto description = std::make_unique<LocaleDescription>();
  if (!nomos::platform::describeLocale(id, *description)) {
    isKnown = false;
    *description = {};
    nomos::platform::describeLocale(kFallback, *description);
  }
  const PatternShape shortDate = shapeOf(description->shortDate);
  dateSeparator = shortDate.separator;
  shortOrder = shortDate.order;
  // A reader finds a month's name in a short date too that begins with its day. Where that reads
  // the long form, the long order is free for the form with the day's name (Oromo: "Kamisa, Amajjii
  // 5, 2024" beside "05 Amajjii 2024").
  longOrder = shapeOf(description->longDate).order;
  const int fullOrder = shapeOf(description->fullDate).order;
  const bool isRead = shortOrder == kNosDayMonthYear && longOrder == kNosDayMonthYear;
  if (isRead && fullOrder != kNosOtherDateOrder) longOrder = fullOrder;
  calendar = description->calendar;
  for (unsigned form = 0; form < LocaleDescription::kForms; ++form) {
    for (int day = 0; day < 7; ++day) days.add(description->days[form][day], day);
    for (int month = 0; month < 12; ++month) {
      months.add(description->months[form][month], month + 1);
    }
  }
  days.complete();
  months.complete();
  const auto textOf = [&page](const LocaleDescription::Text& text) {
    char buffer[4 * LocaleDescription::kRoom + 1];
    return std::string(buffer, writeText(text, page, buffer, sizeof buffer));
  };
  morning = textOf(description->morning);
  afternoon = textOf(description->afternoon);
  nls._morning = morning.c_str();
  nls._afternoon = afternoon.c_str();
}

namespace {

constinit ThreadMutex storeMutex("NosLocales");
// Entries are added at the front, and never changed or released.
std::atomic<const NosLocaleData*> entries{nullptr};

const NosLocaleData* findEntry(unsigned locale, const IndexedCodePage& codePage) {
  const NosLocaleData* entry = entries.load(std::memory_order_acquire);
  while (entry != nullptr && (entry->locale != locale || entry->codePage != &codePage)) {
    entry = entry->next;
  }
  return entry;
}

// Null when memory is exhausted.
const NosLocaleData* localeData(unsigned locale) noexcept {
  const IndexedCodePage& codePage = nomos::currentCodePage();
  const NosLocaleData* entry = findEntry(locale, codePage);
  if (entry != nullptr) return entry;
  ThreadMutexHold hold(storeMutex);
  entry = findEntry(locale, codePage);
  if (entry != nullptr) return entry;
  try {
    auto fresh = std::make_unique<NosLocaleData>(locale, codePage);
    fresh->next = entries.load(std::memory_order_relaxed);
    entry = fresh.release();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  entries.store(entry, std::memory_order_release);
  return entry;
}

constexpr std::uint32_t kNoDate = 0xFFFFFFFF;

// What makes a Gregorian year of one that counts from elsewhere; 0 for other calendars.
constexpr int yearOffset(NosCalendar calendar) {
  return calendar == NosCalendar::Taiwan   ? 1911
         : calendar == NosCalendar::Korean ? -2333
         : calendar == NosCalendar::Thai   ? -543
                                           : 0;
}

// -1 until the key is read or the hook has answered.
std::atomic<int> keptMode{-1};

}  // namespace

int LocaleDateInfo::matchDayName(const char* text, unsigned& length) const noexcept {
  length = 0;
  return _data != nullptr ? _data->days.match(text, *_data->codePage, length) : -1;
}

int LocaleDateInfo::matchMonthName(const char* text, unsigned& length) const noexcept {
  length = 0;
  return _data != nullptr ? _data->months.match(text, *_data->codePage, length) : -1;
}

void getLocaleDateInfo(unsigned locale, LocaleDateInfo& info) noexcept {
  const NosLocaleData* const data = localeData(locale);
  info._data = data;
  info.dateSeparator = data != nullptr ? data->dateSeparator : '/';
  info.shortOrder = data != nullptr ? data->shortOrder : kNosMonthDayYear;
  info.longOrder = data != nullptr ? data->longOrder : kNosMonthDayYear;
  info.calendar = data != nullptr ? data->calendar : NosCalendar::Gregorian;
}

const char* NlsLocale::LocaleInfo(unsigned item) const noexcept {
  if (item == kNosMorningDesignator) return _morning;
  return item == kNosAfternoonDesignator ? _afternoon : "";
}

const NlsLocale* LocaleDataStore::ThreadLocale() noexcept {
  const NosLocaleData* const data = localeData(nosGetThreadLocale());
  return data != nullptr && data->isKnown ? &data->nls : nullptr;
}

// Two first callers may both read the key, and keep the same.
bool nosIsDTNMode() noexcept {
  int mode = keptMode.load(std::memory_order_relaxed);
  if (mode < 0) {
    mode = getIniFileBooleanParam("KoraEnvironment", "EnhancedLocaleSupport", false,
                                  getGlbIniFileName());
    keptMode.store(mode, std::memory_order_relaxed);
  }
  return mode != 0;
}

void nosSetDTNMode(int mode) noexcept {
  keptMode.store(mode, std::memory_order_relaxed);
}

int nosGetCalendarYearGivenYY(int year, NosCalendar calendar) noexcept {
  const int last = nomos::platform::lastTwoDigitYear(calendar);
  if (year < 0 || year > 99 || last < 99) return year;
  return last - (last - year) % 100;
}

int nosGetCalendarYearGivenYY(int year) noexcept {
  const NosLocaleData* const data = localeData(nosGetThreadLocale());
  return data != nullptr ? nosGetCalendarYearGivenYY(year, data->calendar)
                         : nosGetYearGivenYY(year);
}

int nosGetYearGivenYY(int year) noexcept {
  return nosGetCalendarYearGivenYY(year, NosCalendar::Gregorian);
}

bool nosConvertCalendarDateToGregorianDate(NosCalendar calendar, int& day, int& month,
                                           int& year) noexcept {
  const int offset = yearOffset(calendar);
  const bool isGregorian = calendar == NosCalendar::Gregorian || offset != 0;
  const std::int64_t gregorianYear = std::int64_t{year} + offset;
  const std::uint32_t date = !isGregorian ? nomos::platform::dayNumberIn(calendar, day, month, year)
                             : gregorianYear >= 1 && gregorianYear <= 9999
                                 ? julianDay(day, month, static_cast<int>(gregorianYear))
                                 : kNoDate;
  int d, m, y;
  julianToGregorian(date, &d, &m, &y);
  if (m == 0) return false;
  day = d;
  month = m;
  year = y;
  return true;
}

unsigned nosFindLocale(const char* name) noexcept {
  return nomos::platform::findLocale(name);
}

bool nosGetLocaleName(unsigned index, char* buffer, unsigned size) noexcept {
  return size != 0 && nomos::platform::localeName(index, buffer, size);
}

bool nosFormatLocaleDate(unsigned locale, NosDateStyle style, std::uint32_t date, char* buffer,
                         unsigned size) noexcept {
  char16_t text[kTextRoom];
  return nomos::isDayNumber(date) &&
         nomos::platform::formatDateIn(locale, style, date, text, kTextRoom) &&
         writeText(text, nomos::currentCodePage(), buffer, size) != 0;
}
