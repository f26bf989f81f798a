// The thread's last error: the system's own.

#include "nomos/lasterror.h"

#include <windows.h>

unsigned nosGetLastError() {
  return GetLastError();
}
void nosSetLastError(unsigned error) {
  SetLastError(error);
}
