// The thread's last error.

#include "nomos/lasterror.h"

namespace {
thread_local unsigned lastError = 0;
}

unsigned nosGetLastError() {
  return lastError;
}
void nosSetLastError(unsigned error) {
  lastError = error;
}
