// The thread's last error: the system's own, so that 2 is ERROR_FILE_NOT_FOUND, and any call of the
// system may change it.

#include "nomos/lasterror.h"

#include <windows.h>

unsigned nosGetLastError() {
  return GetLastError();
}
void nosSetLastError(unsigned error) {
  SetLastError(error);
}
