// The thread's last error, a variable of each thread. It holds errno's numbers (2 is ENOENT, no
// such file) and those that an operation names.

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
