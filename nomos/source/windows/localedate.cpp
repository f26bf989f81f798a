// Locales through the system's own calls: patterns, names and designators as the user has set them,
// calendars, dates written in a pattern. Calendars whose months are not the Gregorian ones ask
// calls of kernel32 that some systems lack, and are looked up; without them no such date exists.

#include "platform.h"

#include "nomos/calendar.h"

#include <windows.h>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace nomos::platform {
namespace {

// ---- Texts of a locale ----

constexpr int kRoom = LocaleDescription::kRoom;
constexpr unsigned kNameRoom = LOCALE_NAME_MAX_LENGTH;
static_assert(sizeof(wchar_t) == sizeof(char16_t));

// What a call of the system wrote: nothing, when it failed or had no room.
template <class Write>
void copyText(LocaleDescription::Text& text, Write write) {
  wchar_t buffer[kRoom] = {};
  if (write(buffer) <= 0) buffer[0] = 0;
  std::memcpy(text, buffer, sizeof text);
}

void copyLocaleText(LCID locale, LCTYPE item, LocaleDescription::Text& text) {
  copyText(text, [=](wchar_t* buffer) { return GetLocaleInfoW(locale, item, buffer, kRoom); });
}

bool getCalendarText(LCID locale, CALID calendar, CALTYPE item, LocaleDescription::Text& text) {
  copyText(text, [=](wchar_t* buffer) {
    return GetCalendarInfoW(locale, calendar, item, buffer, kRoom, nullptr);
  });
  return text[0] != 0;
}

// 1, the Gregorian calendar, for those with its months and years under another number: 2 in English
// wherever the locale is, 9 to 12 with names in French, Arabic and transliterated.
NosCalendar calendarOf(DWORD number) {
  const bool isGregorian = number == 0 || number == 2 || (number >= 9 && number <= 12);
  return static_cast<NosCalendar>(isGregorian ? 1 : number);
}

// In a calendar of its own where the system has such names, else those of the locale.
void copyMonths(LCID locale, NosCalendar calendar, LocaleDescription& description) {
  for (unsigned month = 0; month < 12; ++month) {
    LocaleDescription::Text* const forms[] = {
        &description.months[0][month], &description.months[1][month], &description.months[2][month],
        &description.months[3][month]};
    const auto number = static_cast<CALID>(calendar);
    const CALTYPE full = CAL_SMONTHNAME1 + month;
    const CALTYPE abbreviated = CAL_SABBREVMONTHNAME1 + month;
    if (calendar != NosCalendar::Gregorian && getCalendarText(locale, number, full, *forms[2])) {
      getCalendarText(locale, number, full | CAL_RETURN_GENITIVE_NAMES, *forms[0]);
      getCalendarText(locale, number, abbreviated | CAL_RETURN_GENITIVE_NAMES, *forms[1]);
      getCalendarText(locale, number, abbreviated, *forms[3]);
      continue;
    }
    copyLocaleText(locale, (LOCALE_SMONTHNAME1 + month) | LOCALE_RETURN_GENITIVE_NAMES, *forms[0]);
    copyLocaleText(locale, (LOCALE_SABBREVMONTHNAME1 + month) | LOCALE_RETURN_GENITIVE_NAMES,
                   *forms[1]);
    copyLocaleText(locale, LOCALE_SMONTHNAME1 + month, *forms[2]);
    copyLocaleText(locale, LOCALE_SABBREVMONTHNAME1 + month, *forms[3]);
  }
}

SYSTEMTIME systemTimeOf(std::uint32_t date) {
  int day, month, year;
  julianToGregorian(date, &day, &month, &year);
  SYSTEMTIME time{};
  time.wYear = static_cast<WORD>(year);
  time.wMonth = static_cast<WORD>(month);
  time.wDay = static_cast<WORD>(day);
  return time;
}

}  // namespace

bool describeLocale(unsigned locale, LocaleDescription& description) noexcept {
  DWORD calendar = 0;
  if (GetLocaleInfoW(locale, LOCALE_ICALENDARTYPE | LOCALE_RETURN_NUMBER,
                     reinterpret_cast<wchar_t*>(&calendar),
                     sizeof calendar / sizeof(wchar_t)) == 0) {
    return false;
  }
  description.calendar = calendarOf(calendar);
  copyLocaleText(locale, LOCALE_SSHORTDATE, description.shortDate);
  copyLocaleText(locale, LOCALE_SLONGDATE, description.longDate);
  copyLocaleText(locale, LOCALE_S1159, description.morning);
  copyLocaleText(locale, LOCALE_S2359, description.afternoon);
  copyMonths(locale, description.calendar, description);
  for (unsigned day = 0; day < 7; ++day) {
    copyLocaleText(locale, LOCALE_SDAYNAME1 + day, description.days[0][day]);
    copyLocaleText(locale, LOCALE_SABBREVDAYNAME1 + day, description.days[1][day]);
  }
  return true;
}

namespace {

char32_t mapCase(char32_t character, DWORD mapping) {
  if (character > 0xFFFF) return character;
  const auto unit = static_cast<wchar_t>(character);
  wchar_t mapped = unit;
  LCMapStringW(LOCALE_INVARIANT, mapping, &unit, 1, &mapped, 1);
  return mapped;
}

}  // namespace

char32_t lowerCase(char32_t character) noexcept {
  return mapCase(character, LCMAP_LOWERCASE);
}
char32_t upperCase(char32_t character) noexcept {
  return mapCase(character, LCMAP_UPPERCASE);
}

// ---- Locales by name ----

unsigned findLocale(const char* name) noexcept {
  wchar_t wide[kNameRoom];
  unsigned length = 0;
  for (; name[length] != '\0'; ++length) {
    const auto byte = static_cast<unsigned char>(name[length]);
    if (length + 1 == kNameRoom || byte > 0x7F) return 0;
    wide[length] = byte == '_' ? L'-' : static_cast<wchar_t>(byte);
  }
  if (length == 0) return 0;
  wide[length] = 0;
  constexpr DWORD kAllowNeutralNames = 0x08000000;
  const LCID locale = LocaleNameToLCID(wide, kAllowNeutralNames);
  return locale != LOCALE_CUSTOM_UNSPECIFIED ? locale : 0;  // no number of its own
}

namespace {

using Names = std::vector<std::string>;

// Names are ASCII. The first, of the invariant locale, is empty. What cannot be kept ends the list.
BOOL CALLBACK collectName(LPWSTR name, DWORD, LPARAM names) {
  try {
    const std::string text(name, name + std::char_traits<wchar_t>::length(name));
    if (!text.empty()) reinterpret_cast<Names*>(names)->push_back(text);
    return TRUE;
  } catch (const std::bad_alloc&) {
    return FALSE;
  }
}

}  // namespace

bool localeName(unsigned index, char* buffer, unsigned size) noexcept {
  static const Names names = [] {
    Names all;
    EnumSystemLocalesEx(collectName, LOCALE_ALL, reinterpret_cast<LPARAM>(&all), nullptr);
    return all;
  }();
  if (index >= names.size()) return false;
  std::snprintf(buffer, size, "%s", names[index].c_str());
  return true;
}

bool formatDateIn(unsigned locale, NosDateStyle style, std::uint32_t date, char16_t* buffer,
                  unsigned room) noexcept {
  if (style == NosDateStyle::Full) return false;
  const DWORD flags = style == NosDateStyle::Short ? DATE_SHORTDATE : DATE_LONGDATE;
  const SYSTEMTIME time = systemTimeOf(date);
  return GetDateFormatW(locale, flags, &time, nullptr, reinterpret_cast<wchar_t*>(buffer),
                        static_cast<int>(room)) > 0;
}

// ---- Calendars ----

namespace {

// The system's record of a date, which its headers do not declare.
struct CalendarDate {
  CALID calendar;
  UINT era, year, month, day, dayOfWeek, hour, minute, second, tick;
};
using ToSystemTime = BOOL(WINAPI*)(const CalendarDate*, SYSTEMTIME*);
using FromSystemTime = BOOL(WINAPI*)(SYSTEMTIME, CALID, CalendarDate*);

template <class Function>
Function findInKernel(const char* name) {
  const FARPROC entry = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name);
  Function function;
  static_assert(sizeof function == sizeof entry);
  std::memcpy(&function, &entry, sizeof function);
  return function;
}

}  // namespace

// The era is the one of today.
std::uint32_t dayNumberIn(NosCalendar calendar, int day, int month, int year) noexcept {
  constexpr std::uint32_t kNoDate = 0xFFFFFFFF;
  static const auto toSystemTime = findInKernel<ToSystemTime>("ConvertCalDateTimeToSystemTime");
  static const auto fromSystemTime = findInKernel<FromSystemTime>("ConvertSystemTimeToCalDateTime");
  if (toSystemTime == nullptr || fromSystemTime == nullptr) return kNoDate;
  if (day < 1 || month < 1 || year < 1) return kNoDate;
  SYSTEMTIME time;
  GetSystemTime(&time);
  CalendarDate date{};
  if (!fromSystemTime(time, static_cast<CALID>(calendar), &date)) return kNoDate;
  date.year = static_cast<UINT>(year);
  date.month = static_cast<UINT>(month);
  date.day = static_cast<UINT>(day);
  if (!toSystemTime(&date, &time)) return kNoDate;
  return julianDay(time.wDay, time.wMonth, time.wYear);
}

// The setting is the user's for each calendar, but the system tells it only of a locale that has
// the calendar.
int lastTwoDigitYear(NosCalendar calendar) noexcept {
  struct Home {
    NosCalendar calendar;
    LCID locale;
  };
  static constexpr Home kHomes[] = {
      {NosCalendar::Gregorian, LOCALE_USER_DEFAULT},
      {NosCalendar::Taiwan, 0x0404},
      {NosCalendar::Korean, 0x0412},
      {NosCalendar::Hijri, 0x0401},
      {NosCalendar::Thai, 0x041E},
      {NosCalendar::Hebrew, 0x040D},
      {NosCalendar::Persian, 0x0429},
      {NosCalendar::UmAlQura, 0x0401},
  };
  for (const Home& home : kHomes) {
    if (home.calendar != calendar) continue;
    DWORD last = 0;
    GetCalendarInfoW(home.locale, static_cast<CALID>(calendar),
                     CAL_ITWODIGITYEARMAX | CAL_RETURN_NUMBER, nullptr, 0, &last);
    return static_cast<int>(last);
  }
  return 0;
}

}  // namespace nomos::platform
