// The clock on the wall and the thread's locale: the system's own.

#include "nomos/calendar.h"
#include "platform.h"

#include <windows.h>

nomos::platform::LocalTime nomos::platform::localTime() {
  SYSTEMTIME local;
  GetLocalTime(&local);
  return {local.wYear,   local.wMonth,  local.wDay,         local.wHour,
          local.wMinute, local.wSecond, local.wMilliseconds};
}

unsigned nosGetThreadLocale() {
  return GetThreadLocale();
}
void nosSetThreadLocale(unsigned locale) {
  SetThreadLocale(locale);
}
