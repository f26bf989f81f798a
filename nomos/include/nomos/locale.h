// The locale of the calling thread, as a Windows identifier: 1033, English of the United States, or
// what the system has for the thread, until it is set. On Windows it can only be set to one that
// the system knows.
#ifndef NOMOS_LOCALE_H
#define NOMOS_LOCALE_H

#include "nomos/export.h"

NOMOS_API unsigned nosGetThreadLocale();
NOMOS_API void nosSetThreadLocale(unsigned locale);

#endif  // NOMOS_LOCALE_H
