// The clock on the wall and the thread's locale.

#include "nomos/calendar.h"
#include "platform.h"

#include <ctime>

namespace {
thread_local unsigned threadLocale = 1033;
}

nomos::platform::LocalTime nomos::platform::localTime() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  tm local;
  localtime_r(&now.tv_sec, &local);
  return {local.tm_year + 1900,
          local.tm_mon + 1,
          local.tm_mday,
          local.tm_hour,
          local.tm_min,
          local.tm_sec,
          static_cast<int>(now.tv_nsec / 1000000)};
}

unsigned nosGetThreadLocale() {
  return threadLocale;
}
void nosSetThreadLocale(unsigned locale) {
  threadLocale = locale;
}
