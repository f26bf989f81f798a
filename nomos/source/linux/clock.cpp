// The date and time of day in the zone of the process, split by the C library: months count from 1,
// years from the year 0, and a fraction of a millisecond is cut.

#include "platform.h"

#include <ctime>

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
