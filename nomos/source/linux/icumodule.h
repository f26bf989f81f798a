// The module that links ICU, libnomos_icu.so beside this library: opened on first need, and open
// for the life of the process. icu/localedate.cpp gives the functions of locales as one table.
#ifndef NOMOS_SOURCE_LINUX_ICUMODULE_H
#define NOMOS_SOURCE_LINUX_ICUMODULE_H

#include "platform.h"

#include <cstdint>

namespace nomos::platform {

// The address of an entry of the module; null without it. Defined in codepage.cpp.
void* findIcuEntry(const char* name) noexcept;

// The entry "nomosIcuLocales". Each member is as the function of its name in platform.h.
struct IcuLocales {
  bool (*describeLocale)(unsigned locale, LocaleDescription& description) noexcept;
  char32_t (*lowerCase)(char32_t character) noexcept;
  char32_t (*upperCase)(char32_t character) noexcept;
  unsigned (*findLocale)(const char* name) noexcept;
  bool (*localeName)(unsigned index, char* buffer, unsigned size) noexcept;
  std::uint32_t (*dayNumberIn)(NosCalendar calendar, int day, int month, int year) noexcept;
  bool (*formatDateIn)(unsigned locale, NosDateStyle style, std::uint32_t date, char16_t* buffer,
                       unsigned room) noexcept;
};

}  // namespace nomos::platform

#endif  // NOMOS_SOURCE_LINUX_ICUMODULE_H
