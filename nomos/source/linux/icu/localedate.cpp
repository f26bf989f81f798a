// Locales as ICU has them: patterns, names and designators of CLDR, calendars, dates written in a
// pattern. A Windows identifier that ICU knows stands for its locale: 1031 is "de_DE". Any other of
// ICU's locales has the number of its place in ICU's list with the highest bit set.

#include "linux/icumodule.h"

#include <unicode/ucal.h>
#include <unicode/uchar.h>
#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>

namespace nomos::icu {
namespace {

using platform::LocaleDescription;

constexpr unsigned kOwnNumber = 0x80000000;
constexpr int kNameRoom = ULOC_FULLNAME_CAPACITY;
constexpr std::uint32_t kNoDate = 0xFFFFFFFF;
constexpr double kMillisOfDay = 86400000;
constexpr std::uint32_t kEpoch = 2440588;  // ICU counts from 1 January 1970

// In C both kinds of handle are one type.
template <auto kClose>
struct Close {
  void operator()(void** handle) const { kClose(handle); }
};
using Calendar = std::unique_ptr<UCalendar, Close<ucal_close>>;
using DateFormat = std::unique_ptr<UDateFormat, Close<udat_close>>;

bool isOfLanguage(const char* locale, const char* language) {
  const std::size_t length = std::strlen(language);
  return std::strncmp(locale, language, length) == 0 &&
         (locale[length] == '\0' || locale[length] == '_');
}

// Whether ICU has the language of a locale: for others it gives the data of some default.
bool hasLanguage(const char* name) {
  char language[ULOC_LANG_CAPACITY];
  UErrorCode status = U_ZERO_ERROR;
  uloc_getLanguage(name, language, sizeof language, &status);
  if (U_FAILURE(status) || language[0] == '\0') return false;
  for (int i = 0; i < uloc_countAvailable(); ++i) {
    if (isOfLanguage(uloc_getAvailable(i), language)) return true;
  }
  return false;
}

bool localeName(unsigned index, char* buffer, unsigned size) noexcept {
  const auto count = static_cast<unsigned>(uloc_countAvailable());
  if (index >= count) return false;
  std::snprintf(buffer, size, "%s", uloc_getAvailable(static_cast<int>(index)));
  return true;
}

bool nameOf(unsigned locale, char (&name)[kNameRoom]) {
  if ((locale & kOwnNumber) != 0) return localeName(locale & ~kOwnNumber, name, kNameRoom);
  UErrorCode status = U_ZERO_ERROR;
  uloc_getLocaleForLCID(locale, name, kNameRoom, &status);
  return U_SUCCESS(status) && hasLanguage(name);
}

unsigned findLocale(const char* name) noexcept {
  char canonical[kNameRoom];
  UErrorCode status = U_ZERO_ERROR;
  uloc_getName(name, canonical, kNameRoom, &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return 0;
  char back[kNameRoom];
  const unsigned identifier = uloc_getLCID(canonical);
  if (identifier != 0 && nameOf(identifier, back) && std::strcmp(back, canonical) == 0) {
    return identifier;
  }
  for (unsigned i = 0; localeName(i, back, kNameRoom); ++i) {
    if (std::strcmp(back, canonical) == 0) return kOwnNumber | i;
  }
  return 0;
}

// ---- Calendars ----

struct CalendarName {
  NosCalendar calendar;
  const char* name;
};

// Of two names for one number the first is the one by which the calendar is opened.
constexpr CalendarName kCalendars[] = {
    {NosCalendar::Gregorian, "gregorian"},
    {NosCalendar::Japanese, "japanese"},
    {NosCalendar::Taiwan, "roc"},
    {NosCalendar::Thai, "buddhist"},
    {NosCalendar::Hijri, "islamic-civil"},
    {NosCalendar::Hijri, "islamic"},
    {NosCalendar::UmAlQura, "islamic-umalqura"},
    {NosCalendar::Hebrew, "hebrew"},
    {NosCalendar::Persian, "persian"},
};

Calendar openCalendar(const char* locale) {
  UErrorCode status = U_ZERO_ERROR;
  Calendar calendar(ucal_open(u"UTC", 3, locale, UCAL_DEFAULT, &status));
  if (U_FAILURE(status)) return nullptr;
  // ICU's Gregorian calendar is the Julian one before 1582, unless it is told of no such change.
  // The calendars that have no change refuse this.
  ucal_setGregorianChange(calendar.get(), -1e15, &status);
  return calendar;
}

// The calendar of a locale; false for one that has no number.
bool calendarOf(const char* locale, NosCalendar& calendar) {
  const Calendar own = openCalendar(locale);
  UErrorCode status = U_ZERO_ERROR;
  const char* const type = own != nullptr ? ucal_getType(own.get(), &status) : nullptr;
  if (type == nullptr || U_FAILURE(status)) return false;
  for (const CalendarName& entry : kCalendars) {
    if (std::strcmp(entry.name, type) != 0) continue;
    calendar = entry.calendar;
    return true;
  }
  return false;
}

Calendar openCalendar(NosCalendar calendar) {
  for (const CalendarName& entry : kCalendars) {
    if (entry.calendar != calendar) continue;
    char locale[48];
    std::snprintf(locale, sizeof locale, "en@calendar=%s", entry.name);
    return openCalendar(locale);
  }
  return nullptr;
}

// ICU numbers the months of a Hebrew leap year, the others being without the sixth, Adar I.
int monthIndex(NosCalendar calendar, int month, int year) {
  const bool isLeapYear = (7LL * year + 1) % 19 < 7;
  const bool skips = calendar == NosCalendar::Hebrew && !isLeapYear && month >= 6;
  return skips ? month : month - 1;
}

std::uint32_t dayNumberIn(NosCalendar calendar, int day, int month, int year) noexcept {
  constexpr int kMostYears = 20000;  // of any calendar, so that ICU's arithmetic cannot overflow
  if (year < 1 || year > kMostYears || month < 1 || month > 13 || day < 1) return kNoDate;
  // Opening a calendar takes longer than everything else here.
  thread_local NosCalendar kept{};
  thread_local Calendar open;
  if (open == nullptr || kept != calendar) {
    open = openCalendar(calendar);
    kept = calendar;
  }
  if (open == nullptr) return kNoDate;
  UErrorCode status = U_ZERO_ERROR;
  ucal_setAttribute(open.get(), UCAL_LENIENT, 0);
  ucal_clear(open.get());
  ucal_set(open.get(), UCAL_YEAR, year);
  ucal_set(open.get(), UCAL_MONTH, monthIndex(calendar, month, year));
  ucal_set(open.get(), UCAL_DATE, day);
  const double millis = ucal_getMillis(open.get(), &status);
  const double date = millis / kMillisOfDay + kEpoch;
  return U_SUCCESS(status) && date >= 1 && date < 1e7 ? static_cast<std::uint32_t>(date) : kNoDate;
}

// ---- Patterns and names ----

constexpr UDateFormatStyle kStyles[] = {UDAT_SHORT, UDAT_LONG, UDAT_FULL};

DateFormat openFormat(const char* locale, NosDateStyle style) {
  UErrorCode status = U_ZERO_ERROR;
  DateFormat format(udat_open(UDAT_NONE, kStyles[static_cast<unsigned>(style)], locale, u"UTC", 3,
                              nullptr, 0, &status));
  if (U_FAILURE(status)) return nullptr;
  const Calendar calendar = openCalendar(locale);
  if (calendar != nullptr) udat_setCalendar(format.get(), calendar.get());
  return format;
}

// Takes the era out of a pattern, and blanks that it leaves: "d MMMM G y" becomes "d MMMM y".
void dropEra(UChar* pattern) {
  bool isQuoted = false;
  UChar* kept = pattern;
  for (const UChar* next = pattern; *next != 0; ++next) {
    if (*next == '\'') isQuoted = !isQuoted;
    if (isQuoted || *next != 'G') {
      *kept++ = *next;
      continue;
    }
    while (next[1] == 'G' || next[1] == ' ') ++next;
  }
  while (kept != pattern && kept[-1] == ' ') --kept;
  *kept = 0;
}

// A format as readers know dates: with ASCII digits, and without the era.
DateFormat openPlainFormat(const char* locale, NosDateStyle style) {
  char name[kNameRoom];
  UErrorCode status = U_ZERO_ERROR;
  std::snprintf(name, sizeof name, "%s", locale);
  uloc_setKeywordValue("numbers", "latn", name, kNameRoom, &status);
  DateFormat format = U_SUCCESS(status) ? openFormat(name, style) : nullptr;
  if (format == nullptr) return nullptr;
  UChar pattern[128];
  const int32_t length = udat_toPattern(format.get(), false, pattern, 128, &status);
  if (U_FAILURE(status) || length >= 128) return nullptr;
  dropEra(pattern);
  udat_applyPattern(format.get(), false, pattern, -1);
  return format;
}

// What a call of ICU wrote: nothing, when it failed or had no room.
template <class Write>
void copyText(LocaleDescription::Text& text, Write write) {
  UErrorCode status = U_ZERO_ERROR;
  const int32_t length = write(text, int32_t{LocaleDescription::kRoom}, &status);
  if (U_FAILURE(status) || length >= int32_t{LocaleDescription::kRoom}) text[0] = 0;
}

void copySymbol(const DateFormat& format, UDateFormatSymbolType type, int index,
                LocaleDescription::Text& text) {
  copyText(text, [&](UChar* buffer, int32_t room, UErrorCode* status) {
    return udat_getSymbols(format.get(), type, index, buffer, room, status);
  });
}

void copyPattern(const DateFormat& format, LocaleDescription::Text& text) {
  copyText(text, [&](UChar* buffer, int32_t room, UErrorCode* status) {
    return udat_toPattern(format.get(), false, buffer, room, status);
  });
}

bool describeLocale(unsigned locale, LocaleDescription& description) noexcept {
  static constexpr UDateFormatSymbolType kMonths[] = {
      UDAT_MONTHS, UDAT_SHORT_MONTHS, UDAT_STANDALONE_MONTHS, UDAT_STANDALONE_SHORT_MONTHS};
  static constexpr UDateFormatSymbolType kDays[] = {
      UDAT_WEEKDAYS, UDAT_SHORT_WEEKDAYS, UDAT_STANDALONE_WEEKDAYS, UDAT_STANDALONE_SHORT_WEEKDAYS};
  char name[kNameRoom];
  if (!nameOf(locale, name) || !calendarOf(name, description.calendar)) return false;
  const DateFormat shortFormat = openFormat(name, NosDateStyle::Short);
  const DateFormat fullFormat = openFormat(name, NosDateStyle::Full);
  const DateFormat format = openFormat(name, NosDateStyle::Long);
  if (shortFormat == nullptr || fullFormat == nullptr || format == nullptr) return false;
  copyPattern(shortFormat, description.shortDate);
  copyPattern(format, description.longDate);
  copyPattern(fullFormat, description.fullDate);
  copySymbol(format, UDAT_AM_PMS, 0, description.morning);
  copySymbol(format, UDAT_AM_PMS, 1, description.afternoon);
  for (unsigned form = 0; form < LocaleDescription::kForms; ++form) {
    for (int month = 0; month < 12; ++month) {
      copySymbol(format, kMonths[form], month, description.months[form][month]);
    }
    // ICU's days are 1, Sunday, to 7.
    for (int day = 0; day < 7; ++day) {
      copySymbol(format, kDays[form], (day + 1) % 7 + 1, description.days[form][day]);
    }
  }
  return true;
}

bool formatDateIn(unsigned locale, NosDateStyle style, std::uint32_t date, char16_t* buffer,
                  unsigned room) noexcept {
  // Opening a format takes longer than everything else here.
  thread_local unsigned keptLocale = 0;
  thread_local NosDateStyle keptStyle{};
  thread_local DateFormat format;
  if (format == nullptr || keptLocale != locale || keptStyle != style) {
    char name[kNameRoom];
    format = nameOf(locale, name) ? openPlainFormat(name, style) : nullptr;
    keptLocale = locale;
    keptStyle = style;
  }
  if (format == nullptr) return false;
  UErrorCode status = U_ZERO_ERROR;
  const double millis = (static_cast<double>(date) - kEpoch) * kMillisOfDay;
  const int32_t length =
      udat_format(format.get(), millis, buffer, static_cast<int32_t>(room), nullptr, &status);
  return U_SUCCESS(status) && length > 0 && length < static_cast<int32_t>(room);
}

char32_t lowerCase(char32_t character) noexcept {
  return static_cast<char32_t>(u_tolower(static_cast<UChar32>(character)));
}
char32_t upperCase(char32_t character) noexcept {
  return static_cast<char32_t>(u_toupper(static_cast<UChar32>(character)));
}

}  // namespace
}  // namespace nomos::icu

extern "C" __attribute__((visibility("default")))
const nomos::platform::IcuLocales nomosIcuLocales = {
    nomos::icu::describeLocale, nomos::icu::lowerCase,  nomos::icu::upperCase,
    nomos::icu::findLocale,     nomos::icu::localeName, nomos::icu::dayNumberIn,
    nomos::icu::formatDateIn};
