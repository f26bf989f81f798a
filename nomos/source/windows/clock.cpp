// The clock on the wall.

#include "platform.h"

#include <windows.h>

nomos::platform::LocalTime nomos::platform::localTime() {
  SYSTEMTIME local;
  GetLocalTime(&local);
  return {local.wYear,   local.wMonth,  local.wDay,         local.wHour,
          local.wMinute, local.wSecond, local.wMilliseconds};
}
