// The date and time of day in the zone of the system, split by the system: months count from 1,
// years from the year 0, and a fraction of a millisecond is cut.

#include "platform.h"

#include <windows.h>

nomos::platform::LocalTime nomos::platform::localTime() {
  SYSTEMTIME local;
  GetLocalTime(&local);
  return {local.wYear,   local.wMonth,  local.wDay,         local.wHour,
          local.wMinute, local.wSecond, local.wMilliseconds};
}
