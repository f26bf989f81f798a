// The calling thread's last system error: errno's numbers on Linux except where an operation
// names a number, the system's own on Windows.
#ifndef NOMOS_LASTERROR_H
#define NOMOS_LASTERROR_H

#include "nomos/export.h"

NOMOS_API unsigned nosGetLastError();
NOMOS_API void nosSetLastError(unsigned error);

#endif  // NOMOS_LASTERROR_H
