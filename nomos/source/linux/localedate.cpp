// Locales through ICU, in the module beside this library. Without it the locales of English remain,
// with the patterns and designators of CLDR 42, and the Gregorian calendar alone.

#include "linux/icumodule.h"
#include "platform.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string_view>

namespace nomos::platform {
namespace {

const IcuLocales* icu() noexcept {
  static const auto* const table = static_cast<const IcuLocales*>(findIcuEntry("nomosIcuLocales"));
  return table;
}

enum class Designators { Capitals, Plain, Points };

struct EnglishLocale {
  unsigned identifier;
  const char* name;
  std::u16string_view shortDate;
  std::u16string_view longDate;
  Designators designators;
};

constexpr Designators kCapitals = Designators::Capitals;
constexpr Designators kPlain = Designators::Plain;
constexpr Designators kPoints = Designators::Points;

constexpr EnglishLocale kEnglish[] = {
    {0x0009, "en", u"M/d/yy", u"MMMM d, y", kCapitals},
    {0x0409, "en_US", u"M/d/yy", u"MMMM d, y", kCapitals},
    {0x0809, "en_GB", u"dd/MM/y", u"d MMMM y", kPlain},
    {0x0C09, "en_AU", u"d/M/yy", u"d MMMM y", kPlain},
    {0x1009, "en_CA", u"M/d/yy", u"MMMM d, y", kPoints},
    {0x1409, "en_NZ", u"d/MM/yy", u"d MMMM y", kPlain},
    {0x1809, "en_IE", u"dd/MM/y", u"d MMMM y", kPoints},
    {0x1C09, "en_ZA", u"y/MM/dd", u"dd MMMM y", kPlain},
    {0x2009, "en_JM", u"dd/MM/y", u"d MMMM y", kPlain},
    {0x2809, "en_BZ", u"dd/MM/yy", u"dd MMMM y", kPlain},
    {0x2C09, "en_TT", u"dd/MM/y", u"d MMMM y", kPlain},
    {0x3009, "en_ZW", u"d/M/y", u"dd MMMM y", kPlain},
    {0x3409, "en_PH", u"M/d/yy", u"MMMM d, y", kCapitals},
    {0x3C09, "en_HK", u"d/M/y", u"d MMMM y", kPlain},
    {0x4009, "en_IN", u"dd/MM/yy", u"d MMMM y", kPlain},
    {0x4409, "en_MY", u"dd/MM/y", u"d MMMM y", kPlain},
    {0x4809, "en_SG", u"d/M/yy", u"d MMMM y", kPlain},
};

constexpr const char16_t* kDesignators[][2] = {{u"AM", u"PM"}, {u"am", u"pm"}, {u"a.m.", u"p.m."}};

constexpr std::u16string_view kMonths[12] = {u"January",   u"February", u"March",    u"April",
                                             u"May",       u"June",     u"July",     u"August",
                                             u"September", u"October",  u"November", u"December"};
constexpr std::u16string_view kDays[7] = {u"Monday", u"Tuesday",  u"Wednesday", u"Thursday",
                                          u"Friday", u"Saturday", u"Sunday"};

// A description has room for any text of these tables.
void copyText(std::u16string_view text, LocaleDescription::Text& target) {
  std::copy(text.begin(), text.end(), target);
}

bool describeEnglish(unsigned locale, LocaleDescription& description) noexcept {
  const auto* const found =
      std::find_if(std::begin(kEnglish), std::end(kEnglish),
                   [locale](const EnglishLocale& entry) { return entry.identifier == locale; });
  if (found == std::end(kEnglish)) return false;
  description.calendar = NosCalendar::Gregorian;
  copyText(found->shortDate, description.shortDate);
  copyText(found->longDate, description.longDate);
  const auto& [morning, afternoon] = kDesignators[static_cast<unsigned>(found->designators)];
  copyText(morning, description.morning);
  copyText(afternoon, description.afternoon);
  for (unsigned month = 0; month < 12; ++month) {
    copyText(kMonths[month], description.months[0][month]);
    copyText(kMonths[month].substr(0, 3), description.months[1][month]);
  }
  // "Sept" is what they write who begin a date with its day.
  if (found->longDate.front() == 'd') copyText(u"Sept", description.months[3][8]);
  for (unsigned day = 0; day < 7; ++day) {
    copyText(kDays[day], description.days[0][day]);
    copyText(kDays[day].substr(0, 3), description.days[1][day]);
  }
  return true;
}

}  // namespace

bool describeLocale(unsigned locale, LocaleDescription& description) noexcept {
  return icu() != nullptr ? icu()->describeLocale(locale, description)
                          : describeEnglish(locale, description);
}

char32_t lowerCase(char32_t character) noexcept {
  if (icu() != nullptr) return icu()->lowerCase(character);
  return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
}

char32_t upperCase(char32_t character) noexcept {
  if (icu() != nullptr) return icu()->upperCase(character);
  return character >= 'a' && character <= 'z' ? character - ('a' - 'A') : character;
}

unsigned findLocale(const char* name) noexcept {
  if (icu() != nullptr) return icu()->findLocale(name);
  const auto isNamed = [name](const EnglishLocale& entry) {
    return std::equal(entry.name, entry.name + std::strlen(entry.name) + 1, name,
                      [](char own, char given) { return own == (given == '-' ? '_' : given); });
  };
  const auto* const found = std::find_if(std::begin(kEnglish), std::end(kEnglish), isNamed);
  return found != std::end(kEnglish) ? found->identifier : 0;
}

bool localeName(unsigned index, char* buffer, unsigned size) noexcept {
  if (icu() != nullptr) return icu()->localeName(index, buffer, size);
  if (index >= std::size(kEnglish)) return false;
  std::snprintf(buffer, size, "%s", kEnglish[index].name);
  return true;
}

std::uint32_t dayNumberIn(NosCalendar calendar, int day, int month, int year) noexcept {
  return icu() != nullptr ? icu()->dayNumberIn(calendar, day, month, year) : 0xFFFFFFFF;
}

bool formatDateIn(unsigned locale, NosDateStyle style, std::uint32_t date, char16_t* buffer,
                  unsigned room) noexcept {
  return icu() != nullptr && icu()->formatDateIn(locale, style, date, buffer, room);
}

// The year of each calendar on 31 December 2049.
int lastTwoDigitYear(NosCalendar calendar) noexcept {
  switch (calendar) {
    case NosCalendar::Gregorian:
      return 2049;
    case NosCalendar::Taiwan:
      return 138;
    case NosCalendar::Korean:
      return 4382;
    case NosCalendar::Hijri:
    case NosCalendar::UmAlQura:
      return 1472;
    case NosCalendar::Thai:
      return 2592;
    case NosCalendar::Hebrew:
      return 5810;
    case NosCalendar::Persian:
      return 1428;
    case NosCalendar::Japanese:
      break;
  }
  return 0;
}

}  // namespace nomos::platform
